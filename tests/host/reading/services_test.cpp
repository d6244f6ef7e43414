#include "reading/services.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "Readers/hostapi/container_status.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::services_test {
namespace {

using testing::chunk;
using testing::damagedChunk;
using testing::iwa;
using testing::literalBlock;
using testing::Member;
using testing::storage;
using testing::TemporaryDirectory;
using testing::writeFile;
using testing::zip;

constexpr char kEntryPoint[] = "unzipGetContainerReaderInterface";

class HostServicesTest : public ::testing::Test {
 protected:
  explicit HostServicesTest() : services(settings({}, 0), seen) {}

  HostServices::Settings settings(const ContainerLimits& containers, std::uint64_t scratchBytes) {
    return {.moduleFolder = std::filesystem::path(DORVEX_CONTAINER_MODULE).parent_path(),
            .scratchMemory = 1 << 20,
            .alignReads = true,
            .containers = containers,
            .scratchBytes = scratchBytes,
            .root = folder.path().string()};
  }

  ~HostServicesTest() override {
    if (module_ != nullptr) services.FreeDll(&services, module_);
  }

  ContainerReaderInterface container() {
    ContainerReaderInterface interface {};
    EXPECT_NE(services.LoadDll(&services, "unzip.so", &module_), 0);
    const auto fill = reinterpret_cast<GetContainerReaderInterfaceFunction>(
        services.GetDllSymbol(&services, module_, kEntryPoint));
    EXPECT_NE(fill, nullptr);
    if (fill != nullptr) fill(&interface);
    return interface;
  }

  _VPTPIOobj* scratch() { return services.OpenFile(&services, nullptr, "a+"); }

  _VPTPIOobj* file(const std::string& name, const std::string& bytes) {
    writeFile(folder.path() / name, bytes);
    return services.OpenFile(&services, (folder.path() / name).c_str(), "rb");
  }

  static std::string readAll(_VPTPIOobj* io) {
    std::string all;
    char block[4096];
    io->Open(io);
    while (const int got = io->Read(io, block, sizeof block)) {
      all.append(block, static_cast<std::size_t>(got));
    }
    return all;
  }

  TemporaryDirectory folder;
  Observations seen;
  HostServices services;

 private:
  void* module_ = nullptr;
};

TEST_F(HostServicesTest, FillsTheSlotsThatReadersUse) {
  EXPECT_NE(services.LoadDll, nullptr);
  EXPECT_NE(services.GetDllSymbol, nullptr);
  EXPECT_NE(services.FreeDll, nullptr);
  EXPECT_NE(services.OpenFile, nullptr);
  EXPECT_NE(services.allocator.Alloc, nullptr);
  EXPECT_NE(services.allocator.Free, nullptr);
  EXPECT_EQ(services.ConvertText, nullptr);
}

TEST_F(HostServicesTest, AllocatesAndTakesBack) {
  void* memory = services.allocator.Alloc(&services.allocator, 100);
  ASSERT_NE(memory, nullptr);
  services.allocator.Free(&services.allocator, memory);
  services.allocator.Free(&services.allocator, nullptr);
}

TEST_F(HostServicesTest, OpensAFileByItsPathAndShowsThePath) {
  _VPTPIOobj* io = file("plain.txt", "contents");
  ASSERT_NE(io, nullptr);
  EXPECT_EQ(io->pathName, (folder.path() / "plain.txt").string());
  EXPECT_EQ(readAll(io), "contents");
  io->Close(io);
}

TEST_F(HostServicesTest, NotesAFileThatItCannotOpenByItsNameInThePackage) {
  EXPECT_EQ(services.OpenFile(&services, (folder.path() / "Index/a.iwa").c_str(), "rb"), nullptr);
  EXPECT_EQ(seen.openFailure, (SystemFailure{"Index/a.iwa", ENOENT}));
}

TEST_F(HostServicesTest, DoesNotOpenWhatIsNoRegularFile) {
  EXPECT_EQ(services.OpenFile(&services, folder.path().c_str(), "rb"), nullptr);
  EXPECT_EQ(seen.openFailure->error, EISDIR);
  const auto pipe = folder.path() / "pipe.iwa";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(services.OpenFile(&services, pipe.c_str(), "rb"), nullptr);
  EXPECT_EQ(seen.openFailure, (SystemFailure{"pipe.iwa", EINVAL}));
}

TEST_F(HostServicesTest, OpensNothingInOtherWays) {
  EXPECT_EQ(services.OpenFile(&services, nullptr, "rb"), nullptr);
  EXPECT_EQ(services.OpenFile(&services, "/dev/null", "a+"), nullptr);
  EXPECT_EQ(services.OpenFile(&services, nullptr, nullptr), nullptr);
}

TEST_F(HostServicesTest, GivesScratchStreamsThatAreWrittenThenReadBack) {
  _VPTPIOobj* io = scratch();
  ASSERT_NE(io, nullptr);
  EXPECT_EQ(io->pathName, nullptr);
  const std::string bytes = chunk(literalBlock("abc"));
  EXPECT_EQ(io->Write(io, bytes.data(), static_cast<std::uint32_t>(bytes.size())),
            static_cast<int>(bytes.size()));
  EXPECT_EQ(readAll(io), bytes);
  EXPECT_EQ(io->Close(io), 1);
}

TEST_F(HostServicesTest, ReadsAMemberFileInStepWithItsChunks) {
  const std::string first = chunk(literalBlock(std::string(4019, 'x')));
  ASSERT_EQ(first.size(), 4092u);
  _VPTPIOobj* io = file("a.iwa", first + chunk(literalBlock("y")));
  std::string block(4096, '\0');
  io->Open(io);
  EXPECT_EQ(io->Read(io, block.data(), 4096), 4092);
  io->Close(io);
}

TEST_F(HostServicesTest, ClosesWhatTheReaderLeftOpen) {
  Observations ignored;
  HostServices other({.moduleFolder = "", .scratchMemory = 1, .root = ""}, ignored);
  EXPECT_NE(other.OpenFile(&other, nullptr, "a+"), nullptr);
}

TEST_F(HostServicesTest, LoadsModulesFromItsFolderOnly) {
  void* handle = nullptr;
  EXPECT_EQ(services.LoadDll(&services, "libc.so.6", &handle), 0);
  EXPECT_TRUE(seen.missingModule.has_value());
  EXPECT_EQ(services.LoadDll(&services, "../dorvex/unzip.so", &handle), 0);
  EXPECT_EQ(services.LoadDll(&services, DORVEX_CONTAINER_MODULE, &handle), 0);
  EXPECT_EQ(services.LoadDll(&services, "", &handle), 0);
}

TEST_F(HostServicesTest, FindsNoSymbolThatIsNotThere) {
  void* handle = nullptr;
  ASSERT_NE(services.LoadDll(&services, "unzip.so", &handle), 0);
  EXPECT_EQ(services.GetDllSymbol(&services, handle, "noSuchSymbol"), nullptr);
  services.FreeDll(&services, handle);
}

TEST_F(HostServicesTest, PassesAContainersMembersOn) {
  const std::string stream = iwa({storage(1, {"abc"})});
  _VPTPIOobj* document = file("doc", zip({{"Index/Document.iwa", stream}, {"b.txt", "bee"}}));
  const auto module = container();
  void* handle = module.OpenContainer(document, &services, 0);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(module.GetEntryCount(handle), 2);
  ContainerEntryInfo entry;
  EXPECT_EQ(module.GetEntryInfo(handle, 1, &entry), 0);
  EXPECT_STREQ(entry.name, "b.txt");
  EXPECT_EQ(entry.size, 3u);
  _VPTPIOobj* out = scratch();
  EXPECT_EQ(module.ExtractEntry(handle, 0, out), 0);
  EXPECT_EQ(readAll(out), stream);
  out->Close(out);
  module.CloseContainer(handle);
  document->Close(document);
  EXPECT_TRUE(seen.unsound.empty());
  EXPECT_EQ(seen.refused, std::nullopt);
}

TEST_F(HostServicesTest, LearnsTheNameOfAnUnsoundMemberOfANestedContainer) {
  const std::string inner = zip({{"Document.iwa", damagedChunk()}});
  _VPTPIOobj* document = file("doc", zip({{"Index.zip", inner}}));
  const auto module = container();
  void* outer = module.OpenContainer(document, &services, 0);
  _VPTPIOobj* nested = scratch();
  EXPECT_EQ(module.ExtractEntry(outer, 0, nested), 0);
  nested->Open(nested);
  void* handle = module.OpenContainer(nested, &services, 0);
  ASSERT_NE(handle, nullptr);
  _VPTPIOobj* member = scratch();
  EXPECT_EQ(module.ExtractEntry(handle, 0, member), 0);
  member->Open(member);
  ASSERT_EQ(seen.unsound.size(), 1u);
  EXPECT_EQ(seen.unsound[0].name, "doc/Index.zip/Document.iwa");
  member->Close(member);
  module.CloseContainer(handle);
  nested->Close(nested);
  module.CloseContainer(outer);
  document->Close(document);
}

TEST_F(HostServicesTest, NotesWhatIsNoContainer) {
  const auto module = container();
  _VPTPIOobj* io = file("Index.zip", "no zip");
  EXPECT_EQ(module.OpenContainer(io, &services, 0), nullptr);
  EXPECT_EQ(seen.notAContainer, "Index.zip");
  io->Close(io);
}

TEST_F(HostServicesTest, NotesAMemberThatTheModuleRefuses) {
  std::string bytes = zip({{"a.iwa", "contents"}});
  bytes[bytes.find("contents")] = 'k';
  _VPTPIOobj* document = file("doc", bytes);
  const auto module = container();
  void* handle = module.OpenContainer(document, &services, 0);
  _VPTPIOobj* out = scratch();
  EXPECT_EQ(module.ExtractEntry(handle, 0, out), VN_CONTAINER_DAMAGED);
  EXPECT_EQ(seen.refused, (RefusedMember{"doc/a.iwa", VN_CONTAINER_DAMAGED}));
  ContainerEntryInfo entry;
  EXPECT_EQ(module.GetEntryInfo(handle, 9, &entry), VN_CONTAINER_INVALID_ARGUMENT);
  EXPECT_EQ(seen.refused, (RefusedMember{"doc/member number 10", VN_CONTAINER_INVALID_ARGUMENT}));
  out->Close(out);
  module.CloseContainer(handle);
  document->Close(document);
}

TEST_F(HostServicesTest, ListsTheMembersOfAZipWithoutNotingAnything) {
  _VPTPIOobj* document = file("doc", zip({{"a", "1"}, {"b/c", "2"}}));
  EXPECT_EQ(services.listMembers(*document), (std::vector<std::string>{"a", "b/c"}));
  document->Close(document);
  _VPTPIOobj* other = file("other", "no zip");
  EXPECT_EQ(services.listMembers(*other), std::nullopt);
  other->Close(other);
  EXPECT_EQ(seen.notAContainer, std::nullopt);
}

}  // namespace
}  // namespace dorvex::services_test
