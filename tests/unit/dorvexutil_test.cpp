#include "Readers/dorvexsr/dorvexutil.h"

#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>

#include "Readers/dorvexsr/dorvexsr.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/vennik/vnexcept/vnexcept.h"
#include "support/bare_host.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace {

using namespace dorvex::testing;
namespace fs = std::filesystem;

TEST(FindVirtualDirectoryEnd, CutsThePathAtTheFolderOfTheMarker) {
  EXPECT_EQ(findVirtualDirectoryEnd("a/b/Index/Document.iwa"), 3U);
  EXPECT_EQ(findVirtualDirectoryEnd("a/b/Metadata/BuildVersionHistory.plist"), 3U);
  EXPECT_EQ(findVirtualDirectoryEnd("/Index/Document.iwa"), 0U);
}

TEST(FindVirtualDirectoryEnd, FindsNothingWithoutAMarker) {
  for (const std::string path :
       {"", "a/b.pages", "a/Index/Other.iwa", "a/Metadata/Properties.plist", "a/Index/document.iwa",
        "a/Index/Document.IWA"})
    EXPECT_EQ(findVirtualDirectoryEnd(path), std::string::npos) << path;
}

TEST(FindVirtualDirectoryEnd, FindsNothingWithoutTheKeyOfTheMarker) {
  EXPECT_EQ(findVirtualDirectoryEnd("a/b/Document.iwa"), std::string::npos);
  EXPECT_EQ(findVirtualDirectoryEnd("a/Index/BuildVersionHistory.plist"), std::string::npos);
}

TEST(FindVirtualDirectoryEnd, GivesAnEmptyRootForAPathThatStartsWithTheKey) {
  EXPECT_EQ(findVirtualDirectoryEnd("Index/Document.iwa"), 0U);
  EXPECT_EQ(findVirtualDirectoryEnd("Metadata/BuildVersionHistory.plist"), 0U);
}

TEST(FindVirtualDirectoryEnd, TakesTheFirstKeyOfTheWholePathAlsoInsideAName) {
  EXPECT_EQ(findVirtualDirectoryEnd("a/MyIndexes/b/Index/Document.iwa"), 3U);
  EXPECT_EQ(findVirtualDirectoryEnd("xIndex/Index/Document.iwa"), 0U);
}

TEST(FindVirtualDirectoryEnd, PrefersTheDocumentToTheHistory) {
  EXPECT_EQ(findVirtualDirectoryEnd("a/Metadata/BuildVersionHistory.plist/Index/Document.iwa"),
            36U);
}

TEST(FindVirtualDirectoryEnd, TestsForSubstringsOnly) {
  EXPECT_EQ(findVirtualDirectoryEnd("a/Index/OldDocument.iwa.bak"), 1U);
}

// ---------------------------------------------------------------------------

TEST(ModuleFunctions, StartWithoutDoingAnything) {
  EXPECT_TRUE(vnDllInit());
  init();
}

TEST(ModuleFunctions, ShutTheLibraryOfTheMessagesDownByEitherWay) {
  const auto exitWithSeven = [](const void*) { std::_Exit(7); };
  for (void (*const shutDown)() : {vnDllShutdown, fini}) {
    EXPECT_EXIT(
        {
          google::protobuf::internal::OnShutdownRun(exitWithSeven, nullptr);
          shutDown();
          std::_Exit(0);
        },
        ::testing::ExitedWithCode(7), "^$");
  }
}

TEST(ModuleFunctions, ShutDownAnyNumberOfTimes) {
  EXPECT_EXIT(
      {
        vnDllShutdown();
        fini();
        fini();
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
}

// ---------------------------------------------------------------------------

// A directory package in a temporary folder, read through a host.
class DirectoryPackage : public ::testing::Test {
 protected:
  DirectoryPackage() {
    std::uint32_t result = 0;
    context_ = static_cast<TAG_VNDORVEXGlobals*>(
        dorvexAllocateContext(nullptr, nullptr, &result, host_.services(), 0));
  }
  ~DirectoryPackage() override {
    EXPECT_EQ(host_.openStreams(), 0U);
    delete context_->messageMap;
    dorvexFreeContext(context_);
  }

  fs::path root() const { return folder_.path() / "doc.pages"; }

  void write(const std::vector<Member>& members) { writeDirectory(root(), members); }

  void populate(const std::string& memberPath) {
    dorvexInitDoc(context_, nullptr, 0, &host_.addDirectoryDocument(memberPath));
    populateMessageMap(context_);
  }
  void populate() { populate(root() / "Index" / "Document.iwa"); }

  std::vector<unsigned long long> keys() const {
    std::vector<unsigned long long> keys;
    for (const auto& [key, message] : vn::iwork13::entriesOf(*context_->messageMap))
      keys.push_back(key);
    return keys;
  }

  // The descriptors that this process has open.
  static std::size_t openDescriptors() {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
  }

  TemporaryDirectory folder_;
  BareHost host_;
  TAG_VNDORVEXGlobals* context_;
};

using Keys = std::vector<unsigned long long>;

Member stream(const std::string& name, std::uint64_t identifier) {
  return {name, iwa({storage(identifier, {"text of " + name})})};
}

TEST_F(DirectoryPackage, ReadsTheStreamsOfIndexAndOfTables) {
  write({stream("Index/Document.iwa", 1), stream("Index/Tables/Tile.iwa", 2),
         stream("Index/ViewState.iwa", 3)});
  populate();
  EXPECT_EQ(keys(), (Keys{1, 2, 3}));  // no selection by prefix here
}

TEST_F(DirectoryPackage, IsFoundThroughEitherMarker) {
  write({stream("Index/Document.iwa", 1), {"Metadata/BuildVersionHistory.plist", ""}});
  populate(root() / "Metadata" / "BuildVersionHistory.plist");
  EXPECT_EQ(keys(), (Keys{1}));
}

TEST_F(DirectoryPackage, ReadsAnIndexZipWithoutCallingOpen) {
  write({{"Index.zip", zip({stream("Document.iwa", 1), stream("ViewState.iwa", 2)})}});
  populate();
  EXPECT_EQ(keys(), (Keys{1}));
  const std::string path = root() / "Index.zip";
  EXPECT_EQ(host_.logged("OpenFile " + path), 1);
  EXPECT_EQ(host_.logged("Open " + path), 0);
  EXPECT_EQ(host_.logged("Close " + path), 1);
}

TEST_F(DirectoryPackage, ReadsOnlyTheFirstListedOfIndexAndIndexZip) {
  write({stream("Index/Document.iwa", 1), {"Index.zip", zip({stream("Document.iwa", 2)})}});
  const auto first =
      std::ranges::find_if(
          fs::directory_iterator(root()), fs::directory_iterator(),
          [](const auto& entry) { return entry.path().filename().string().starts_with("Index"); })
          ->path()
          .filename();
  populate();
  EXPECT_EQ(keys(), first == "Index" ? (Keys{1}) : (Keys{2}));
}

TEST_F(DirectoryPackage, ReadsNoStreamThatIsListedBehindIndex) {
  std::vector<Member> members = {stream("Index/Document.iwa", 1000)};
  for (unsigned i = 1; i <= 30; ++i) members.push_back(stream("s" + std::to_string(i) + ".iwa", i));
  write(members);
  Keys expected;
  for (const auto& entry : fs::directory_iterator(root())) {
    const std::string name = entry.path().filename();
    if (name == "Index") break;
    expected.push_back(std::stoull(name.substr(1)));
  }
  std::ranges::sort(expected);
  expected.push_back(1000);
  populate();
  EXPECT_EQ(keys(), expected);
}

TEST_F(DirectoryPackage, GoesOnBehindTables) {
  std::vector<Member> members = {stream("Index/Tables/Tile.iwa", 1000)};
  for (unsigned i = 1; i <= 30; ++i)
    members.push_back(stream("Index/s" + std::to_string(i) + ".iwa", i));
  write(members);
  populate();
  EXPECT_EQ(keys().size(), 31U);
}

TEST_F(DirectoryPackage, FollowsTheSameRulesAtEveryLevel) {
  write({stream("Index/Tables/Tables/Index/Deep.iwa", 1)});
  populate();
  EXPECT_EQ(keys(), (Keys{1}));
}

TEST_F(DirectoryPackage, StopsAtIndexOrIndexZipInItsOwnFolderOnly) {
  const auto readBeside = [this](const Member& deep, std::uint64_t identifier) {
    fs::remove_all(root());
    std::vector<Member> members = {deep};
    for (unsigned i = 1; i <= 30; ++i)
      members.push_back(stream("Index/s" + std::to_string(i) + ".iwa", identifier + i));
    write(members);
    populate();
  };
  readBeside(stream("Index/Tables/Index/Deep.iwa", 100), 100);
  EXPECT_EQ(keys().size(), 31U);
  readBeside({"Index/Tables/Index.zip", zip({stream("Document.iwa", 200)})}, 200);
  EXPECT_EQ(keys().size(), 62U);
}

TEST_F(DirectoryPackage, IgnoresOtherNamesAndUpperCaseEndings) {
  write({stream("Index/Document.IWA", 1), stream("Index/Other/x.iwa", 2),
         stream("Index/x.iwa.bak", 3), stream("Metadata/x.iwa", 4), stream("index/x.iwa", 5)});
  populate();
  EXPECT_EQ(keys(), Keys{});
}

TEST_F(DirectoryPackage, ReadsNothingOfAnEmptyStream) {
  write({{"Index/Document.iwa", ""}, stream("Index/x.iwa", 2)});
  populate();
  EXPECT_EQ(keys(), (Keys{2}));
}

TEST_F(DirectoryPackage, LeavesTheMapEmptyWhereNothingMatches) {
  write({{"Index/nothing.txt", ""}});
  populate();
  EXPECT_EQ(keys(), Keys{});
}

TEST_F(DirectoryPackage, DoesNotReadOrCloseTheDocumentsOwnObject) {
  write({stream("Index/Document.iwa", 1)});
  Stream& document = host_.addDirectoryDocument(root() / "Index" / "Document.iwa");
  document.onRead = [](Stream&, void*, std::uint32_t) -> int { throw 1; };
  dorvexInitDoc(context_, nullptr, 0, &document);
  populateMessageMap(context_);
  EXPECT_EQ(host_.logged("Open document"), 0);
  EXPECT_EQ(host_.logged("Close document"), 0);
}

TEST_F(DirectoryPackage, MeasuresAStreamByItsEnd) {
  write({stream("Index/Document.iwa", 1)});
  std::vector<std::string> calls;
  host_.onOpenFile = [&calls](Stream& io) {
    io.onRead = [&calls](Stream& from, void* to, std::uint32_t count) {
      calls.push_back("Read at " + std::to_string(from.position));
      return readFromMemory(from, to, count);
    };
  };
  populate();
  EXPECT_EQ(calls, std::vector<std::string>{"Read at 0"});
  const std::string path = root() / "Index" / "Document.iwa";
  EXPECT_EQ(host_.log(),
            (std::vector<std::string>{"OpenFile " + path, "Open " + path, "Close " + path}));
}

TEST_F(DirectoryPackage, TakesAStreamWithoutTellForEmpty) {
  write({stream("Index/Document.iwa", 1)});
  host_.onOpenFile = [](Stream& io) { io.Tell = nullptr; };
  populate();
  EXPECT_EQ(keys(), Keys{});
}

TEST_F(DirectoryPackage, CutsTheSizeOfAStreamTo32Bits) {
  write({stream("Index/Document.iwa", 1)});
  int reads = 0;
  host_.onOpenFile = [&reads](Stream& io) {
    io.Tell = [](_VPTPIOobj*) { return std::int64_t{1} << 32; };
    io.onRead = [&reads](Stream& from, void* to, std::uint32_t count) {
      ++reads;
      return readFromMemory(from, to, count);
    };
  };
  populate();
  EXPECT_EQ(keys(), Keys{});
  EXPECT_EQ(reads, 0);
}

TEST_F(DirectoryPackage, DoesWithoutOpenAndIgnoresItsResult) {
  write({stream("Index/Document.iwa", 1)});
  host_.onOpenFile = [](Stream& io) { io.Open = nullptr; };
  populate();
  EXPECT_EQ(keys(), (Keys{1}));
  host_.onOpenFile = nullptr;
  write({stream("Index/Document.iwa", 2)});
  host_.failAt(Slot::kOpen, host_.calls(Slot::kOpen) + 1);
  populate();
  EXPECT_EQ(keys(), (Keys{1, 2}));
}

TEST_F(DirectoryPackage, MeasuresAStreamWithoutSeekByItsPosition) {
  write({stream("Index/Document.iwa", 1)});
  host_.onOpenFile = [](Stream& io) { io.Seek = nullptr; };
  populate();
  EXPECT_EQ(keys(), Keys{});  // Tell answers 0 at the beginning
}

TEST_F(DirectoryPackage, RaisesReaderInitForAFolderThatCannotBeOpened) {
  try {
    populate(root() / "Index" / "Document.iwa");
    FAIL() << "nothing thrown";
  } catch (const vn::except::reader_init_error& error) {
    EXPECT_EQ(error.code(), 12);
    EXPECT_STREQ(error.what(), "Vennik error 12");
  }
}

TEST_F(DirectoryPackage, RaisesReaderInitForAnEmptyRoot) {
  EXPECT_THROW(populate("Index/Document.iwa"), vn::except::reader_init_error);
}

TEST_F(DirectoryPackage, RaisesReaderInitForAPlainFileNamedIndexOrTables) {
  for (const std::string name : {"Index", "Tables"}) {
    fs::remove_all(root());
    write({{name, "a file"}});
    EXPECT_THROW(populate(), vn::except::reader_init_error) << name;
  }
}

TEST_F(DirectoryPackage, RaisesOutOfCoreForAMemberThatCannotBeOpened) {
  for (const Member& member :
       {stream("Index/Document.iwa", 1), Member{"Index.zip", zip({stream("Document.iwa", 1)})}}) {
    fs::remove_all(root());
    write({member});
    host_.failAt(Slot::kOpenFile, host_.calls(Slot::kOpenFile) + 1);
    EXPECT_THROW(populate(), vn::except::out_of_core_error) << member.name;
  }
}

TEST_F(DirectoryPackage, RaisesOutOfCoreForAPathThatIsTooLong) {
  const std::string longName(250, 'n');
  fs::path path = "Index/Tables";
  for (int i = 0; i < 4; ++i) path /= "Tables";
  const fs::path deep = root() / longName / longName / longName / longName;
  writeDirectory(deep, {stream((path / "Tile.iwa").string(), 1)});
  EXPECT_THROW(populate(deep / "Index" / "Document.iwa"), vn::except::out_of_core_error);
  const std::string opened = host_.log().back();
  EXPECT_EQ(opened.size(), std::string("OpenFile ").size() + 1023);
}

TEST_F(DirectoryPackage, EndsTheScanAtABadStreamAndKeepsWhatCameBefore) {
  std::vector<Member> members;
  for (unsigned i = 1; i <= 20; ++i)
    members.push_back(stream("Index/s" + std::to_string(i) + ".iwa", i));
  members.push_back({"Index/bad.iwa", iwa({storage(99, {"lost"})}) + damagedChunk()});
  write(members);
  std::size_t before = 0;
  for (const auto& entry : fs::directory_iterator(root() / "Index")) {
    if (entry.path().filename() == "bad.iwa") break;
    ++before;
  }
  EXPECT_THROW(populate(), vn::iwork13::iwa_uncompression_error);
  EXPECT_EQ(keys().size(), before);
}

TEST_F(DirectoryPackage, ClosesEveryFolderOnTheWayOut) {
  write({{"Index/Tables/bad.iwa", damagedChunk()}});
  const std::size_t open = openDescriptors();
  EXPECT_THROW(populate(), vn::iwork13::iwa_uncompression_error);
  EXPECT_EQ(openDescriptors(), open);
  fs::remove_all(root());
  write({stream("Index/Tables/good.iwa", 1)});
  populate();
  EXPECT_EQ(openDescriptors(), open);
}

TEST_F(DirectoryPackage, ClosesAnIndexZipThatIsNoZip) {
  write({{"Index.zip", "no zip"}});
  EXPECT_THROW(populate(), vn::except::reader_init_error);
  EXPECT_EQ(host_.logged("Close " + (root() / "Index.zip").string()), 1);
}

TEST_F(DirectoryPackage, LeavesStreamsWithoutCloseSlotAlone) {
  write({stream("Index/Document.iwa", 1)});
  host_.onOpenFile = [](Stream& io) { io.Close = nullptr; };
  populate();
  EXPECT_EQ(keys(), (Keys{1}));
  EXPECT_EQ(host_.openStreams(), 1U);
  host_.forgetStreams();
}

TEST_F(DirectoryPackage, LetsAnExceptionOfCloseRise) {
  host_.onOpenFile = [](Stream& io) { io.Close = [](_VPTPIOobj*) -> int { throw 42; }; };
  write({stream("Index/Document.iwa", 1)});
  const std::size_t open = openDescriptors();
  EXPECT_THROW(populate(), int);
  EXPECT_EQ(keys(), (Keys{1}));
  fs::remove_all(root());
  write({{"Index/Document.iwa", damagedChunk()}});
  EXPECT_THROW(populate(), vn::iwork13::iwa_uncompression_error);
  EXPECT_EQ(openDescriptors(), open);
  host_.forgetStreams();
}

TEST_F(DirectoryPackage, KeepsTheFirstObjectOfAnIdentifier) {
  write({{"Index/a.iwa", iwa({storage(1, {"a"})})}, {"Index/b.iwa", iwa({comment(1, "b")})}});
  const auto first = fs::directory_iterator(root() / "Index")->path().filename();
  populate();
  EXPECT_EQ(keys(), (Keys{1}));
  EXPECT_EQ(context_->messageMap->lookup(1)->GetTypeName(),
            first == "a.iwa" ? "TSWP.StorageArchive" : "TSD.CommentStorageArchive");
}

class ZipDocument : public DirectoryPackage {};

TEST_F(ZipDocument, IsTakenForAZipWithoutAPathOrWithAnyOther) {
  Keys expected;
  for (const std::optional<std::string>& path :
       {std::optional<std::string>(), {""}, {"/tmp/x.pages"}}) {
    expected.push_back(expected.size() + 1);
    dorvexInitDoc(context_, nullptr, 0,
                  &host_.addDocument(zip({stream("Index/Document.iwa", expected.back())}), path));
    populateMessageMap(context_);
    EXPECT_EQ(keys(), expected);
  }
  EXPECT_EQ(host_.logged("Close document"), 0);
}

TEST_F(ZipDocument, FailsAsAZipWhereItIsNone) {
  dorvexInitDoc(context_, nullptr, 0, &host_.addDocument("no zip"));
  EXPECT_THROW(populateMessageMap(context_), vn::except::reader_init_error);
}

}  // namespace
