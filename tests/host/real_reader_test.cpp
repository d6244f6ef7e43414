// Whole documents through the real reader and the real container module, both
// loaded as any host loads them.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "dorvex/host.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"
#include "support/unconfined.h"
#include "support/zip_bytes.h"

#ifdef __SANITIZE_ADDRESS__
// What the reader parsed stays allocated for ever by rule, and the module is
// gone by the time that leaks are counted, so that none can be told by name.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }
#endif

namespace dorvex::real_reader_test {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;

struct Reading {
  Texts texts;
  Result result;
};

class RealReader : public ::testing::TestWithParam<Isolation> {
 protected:
  static HostOptions options() {
    HostOptions options;
    options.module = DORVEX_READER_MODULE;
    options.isolation = GetParam();
    if (unconfined()) options.sandbox = Sandbox::kOff;
    return options;
  }

  static Reading read(const Input& input, const HostOptions& with = options()) {
    Reading reading;
    reading.result = Host(with).forEachText(
        input, [&](std::string_view text) { reading.texts.emplace_back(text); });
    return reading;
  }

  static Reading readBytes(const std::string& bytes, const HostOptions& with = options()) {
    return read(Input::memory({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}),
                with);
  }

  static std::string documentWith(const std::string& member) {
    return zip({{"Index/Document.iwa", iwa({storage(1, {"first"})})},
                {"Index/Tables/Tile.iwa", member},
                {"Index/Slide.iwa", iwa({storage(3, {"third"})})}});
  }

  TemporaryDirectory folder;
};

std::string good() { return iwa({storage(2, {"second"})}); }

std::string goodDocument() { return zip({{"Index/Document.iwa", iwa({storage(1, {"text"})})}}); }

// Of this process and of those that it has started.
bool isMappedAnywhere(const std::string& file) {
  const auto has = [&](const std::filesystem::path& process) {
    std::error_code gone;
    return std::filesystem::exists(process, gone) &&
           readFile((process / "maps").string()).find(file) != std::string::npos;
  };
  std::istringstream children(
      readFile("/proc/self/task/" + std::to_string(::getpid()) + "/children"));
  for (std::string child; children >> child;) {
    if (has("/proc/" + child)) return true;
  }
  return has("/proc/self");
}

std::string unusualZip(const std::string& text) {
  return rawZip64({{.name = "Index/Document.iwa", .contents = iwa({storage(1, {text})})}});
}

// libzip takes longer to load than a small document to read. A worker is confined by the
// time that it meets a zip for which it lacks it; another one reads it then.
TEST_P(RealReader, LoadsLibzipWithTheFirstZipThatNeedsItAndThenHasIt) {
  const Host host(options());
  const auto texts = [&](const std::string& bytes) {
    Texts texts;
    const Input input =
        Input::memory({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
    const Result result =
        host.forEachText(input, [&](std::string_view text) { texts.emplace_back(text); });
    EXPECT_EQ(result.status, Status::kOk) << result.message;
    EXPECT_EQ(result.inputBytes, bytes.size());
    return texts;
  };
  EXPECT_EQ(texts(goodDocument()), Texts{"text"});
  EXPECT_FALSE(isMappedAnywhere("/unzip-libzip.so"));
  for (const char* text : {"one", "two", "three"}) {
    EXPECT_EQ(texts(unusualZip(text)), Texts{text});
    EXPECT_EQ(texts(goodDocument()), Texts{"text"});
  }
  EXPECT_EQ(texts(zip({{"Index.zip", unusualZip("inner")}})), Texts{"inner"});
}

TEST_P(RealReader, SaysThatLibzipIsMissing) {
  const std::filesystem::path modules = std::filesystem::path(DORVEX_READER_MODULE).parent_path();
  for (const char* module : {"dorvexsr.so", "unzip.so"})
    std::filesystem::copy_file(modules / module, folder.path() / module);
  HostOptions alone = options();
  alone.module = folder.path() / "dorvexsr.so";
  const Reading reading = readBytes(unusualZip("text"), alone);
  EXPECT_EQ(reading.result.status, Status::kFailed);
  EXPECT_EQ(reading.result.failure, Failure::kModuleMissing);
  EXPECT_NE(reading.result.message.find("unzip-libzip.so"), std::string::npos)
      << reading.result.message;
  EXPECT_TRUE(reading.texts.empty());
  EXPECT_EQ(readBytes(goodDocument(), alone).texts, Texts{"text"});
}

TEST_P(RealReader, DoesNotPassAnEmptyMemberOffAsRead) {
  for (const std::string& empty : {std::string(), chunk(literalBlock(""))}) {
    const Reading reading = readBytes(documentWith(empty));
    EXPECT_EQ(reading.texts, (Texts{"first", "third"}));
    EXPECT_EQ(reading.result.status, Status::kPartial);
    EXPECT_EQ(reading.result.skipped,
              (std::vector<SkippedMember>{{"Index/Tables/Tile.iwa", "it is empty"}}));
  }
}

TEST_P(RealReader, CostsAMemberWithStrayBytesItsOwnTextsOnly) {
  const Reading reading = readBytes(documentWith(good() + "stray bytes"));
  EXPECT_EQ(reading.texts, (Texts{"first", "third"}));
  EXPECT_EQ(reading.result.status, Status::kPartial);
  ASSERT_EQ(reading.result.skipped.size(), 1u);
  EXPECT_EQ(reading.result.skipped.front().name, "Index/Tables/Tile.iwa");
}

TEST_P(RealReader, NamesTheMemberThatWasRefusedAndTellsOfTheOthers) {
  std::string bytes = documentWith(good());
  const auto at = bytes.find("second");
  ASSERT_NE(at, std::string::npos);
  bytes[at] = 'S';
  const Reading reading = readBytes(bytes);
  EXPECT_EQ(reading.result.status, Status::kFailed);
  EXPECT_EQ(reading.result.failure, Failure::kDamaged);
  EXPECT_EQ(reading.result.moduleResult, 6);
  EXPECT_EQ(reading.result.message,
            "the zip member Index/Tables/Tile.iwa is damaged; the other 2 streams are sound");
  EXPECT_EQ(reading.result.skipped,
            (std::vector<SkippedMember>{{"Index/Tables/Tile.iwa", "is damaged"}}));
}

TEST_P(RealReader, NamesOtherMembersThatAreNotSoundEither) {
  std::string bytes = zip({{"Index/Document.iwa", iwa({storage(1, {"first"})})},
                           {"Index/Slide.iwa", damagedChunk()},
                           {"Index/Slide-2.iwa", good()}});
  bytes[bytes.find("first")] = 'F';
  const Reading reading = readBytes(bytes);
  EXPECT_EQ(reading.result.message,
            "the zip member Index/Document.iwa is damaged; of the other streams 1 are sound and 1 "
            "not");
  ASSERT_EQ(reading.result.skipped.size(), 2u);
  EXPECT_EQ(reading.result.skipped[1].name, "Index/Slide.iwa");
}

TEST_P(RealReader, CountsTheStreamsOfNestedContainersBesidesARefusedMember) {
  std::string inner = zip({{"Index/Document.iwa", iwa({storage(1, {"first"})})},
                           {"Index/Slide.iwa", iwa({storage(2, {"second"})})},
                           {"Index/Slide-2.iwa", damagedChunk()},
                           {"Index/Slide-3.iwa", iwa({storage(3, {"third"})})}});
  inner[inner.find("second")] = 'S';
  const Reading reading = readBytes(zip({{"Index.zip", inner}, {"Index/Slide-4.iwa", good()}}));
  EXPECT_EQ(reading.result.moduleResult, 6);
  EXPECT_EQ(reading.result.message,
            "the zip member Index.zip/Index/Slide.iwa is damaged; of the other streams 3 are sound "
            "and 1 not");
  ASSERT_EQ(reading.result.skipped.size(), 2u);
  EXPECT_EQ(reading.result.skipped[0], (SkippedMember{"Index.zip/Index/Slide.iwa", "is damaged"}));
  EXPECT_EQ(reading.result.skipped[1].name, "Index.zip/Index/Slide-2.iwa");
}

TEST_P(RealReader, TellsOfStreamsBesidesANestedContainerThatIsRefused) {
  std::string bytes = zip({{"Index/Slide.iwa", good()},
                           {"Index.zip", zip({{"Document.iwa", iwa({storage(1, {"first"})})}})}});
  bytes[bytes.find("first")] = 'F';
  const Reading reading = readBytes(bytes);
  EXPECT_EQ(reading.result.message,
            "the zip member Index.zip is damaged; the other stream is sound");
  EXPECT_EQ(reading.result.skipped, (std::vector<SkippedMember>{{"Index.zip", "is damaged"}}));
}

TEST_P(RealReader, NamesAnObjectThatIsDroppedForOneOfAnotherMember) {
  const std::string bytes =
      zip({{"Index/Document.iwa", iwa({storage(1, {"first"})})},
           {"Index/Slide.iwa", iwa({storage(1, {"dropped"}), storage(2, {"second"})})}});
  const Reading reading = readBytes(bytes);
  EXPECT_EQ(reading.texts, (Texts{"first", "second"}));
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.failure, Failure::kDamaged);
  EXPECT_EQ(reading.result.skipped,
            (std::vector<SkippedMember>{
                {"Index/Slide.iwa",
                 "its object 1 is dropped, since Index/Document.iwa has one of that identifier"}}));
}

TEST_P(RealReader, NamesAnObjectThatIsDroppedInAPackageDirectory) {
  writeDirectory(folder.path(), {{"Index/Document.iwa", iwa({storage(1, {"first"})})},
                                 {"Index/Slide.iwa", iwa({storage(1, {"dropped"})})}});
  const Reading reading = read(Input::path(folder.path()));
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.skipped.size(), 1u);
}

TEST_P(RealReader, HasNothingToTellOfSeveralMessagesInOneArchive) {
  Archive archive = storage(1, {"first"});
  archive.payloads.push_back(storage(1, {"a difference to it"}).payloads.front());
  const Reading reading = readBytes(zip({{"Index/Document.iwa", iwa({archive})},
                                         {"Index/Slide.iwa", iwa({storage(2, {"second"})})}}));
  EXPECT_EQ(reading.texts, (Texts{"first", "second"}));
  EXPECT_EQ(reading.result.status, Status::kOk);
  EXPECT_TRUE(reading.result.skipped.empty());
}

TEST_P(RealReader, HasNothingToTellWhereTheReaderKnowsOneOfTwoObjectsOnly) {
  for (const bool unknownFirst : {true, false}) {
    std::vector<Member> members = {{"Index/Document.iwa", iwa({object(1, kUnknownType, "")})},
                                   {"Index/Slide.iwa", iwa({storage(1, {"text"})})}};
    if (!unknownFirst) std::swap(members[0].contents, members[1].contents);
    const Reading reading = readBytes(zip(members));
    EXPECT_EQ(reading.texts, Texts{"text"});
    EXPECT_EQ(reading.result.status, Status::kOk);
  }
}

TEST_P(RealReader, MeasuresWhatItReads) {
  const std::string bytes = goodDocument();
  EXPECT_EQ(readBytes(bytes).result.inputBytes, bytes.size());
  writeDirectory(folder.path(), {{"Index/Document.iwa", iwa({storage(1, {"text"})})},
                                 {"Data/a/b/picture", "12345"}});
  EXPECT_EQ(read(Input::path(folder.path())).result.inputBytes,
            iwa({storage(1, {"text"})}).size() + 5);
}

TEST_P(RealReader, TellsTheKindByMembersThatTheReaderPassesOver) {
  const std::string bytes = zip({{"Index/Document.iwa", iwa({storage(1, {"first"})})},
                                 {"Index/MasterSlide-1.iwa", iwa({storage(2, {"master"})})}});
  EXPECT_EQ(readBytes(bytes).result.kind, Kind::kKeynote);
}

TEST_P(RealReader, ReadsADocumentFromMemoryFileAndStream) {
  const std::string bytes = documentWith(good());
  const Texts expected{"first", "second", "third"};
  EXPECT_EQ(readBytes(bytes).texts, expected);
  EXPECT_EQ(readBytes(bytes).result.status, Status::kOk);
  const auto path = folder.path() / "a.pages";
  writeFile(path, bytes);
  EXPECT_EQ(read(Input::path(path)).texts, expected);
  std::istringstream stream(bytes);
  EXPECT_EQ(read(Input::stream(stream)).texts, expected);
}

TEST_P(RealReader, ReadsMembersThatDoNotFitIntoScratchMemory) {
  HostOptions small = options();
  small.scratchMemory = 16;
  const std::string inner = zip({{"Document.iwa", good()}});
  EXPECT_EQ(readBytes(zip({{"Index.zip", inner}}), small).texts, Texts{"second"});
}

TEST_P(RealReader, CallsATextPartialWhenAMemberIsDamaged) {
  const Reading reading = readBytes(documentWith(damagedChunk()));
  EXPECT_EQ(reading.texts, (Texts{"first", "third"}));
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.skipped,
            (std::vector<SkippedMember>{{"Index/Tables/Tile.iwa", "chunk 1 holds damaged data"}}));
}

TEST_P(RealReader, CallsATextPartialWhenAMemberLosesItsEnd) {
  const std::string member = good() + chunk(literalBlock("lost"), 1000);
  const Reading reading = readBytes(documentWith(member));
  EXPECT_EQ(reading.texts, (Texts{"first", "second", "third"}));
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.skipped.front().reason, "chunk 2 is cut short");
}

TEST_P(RealReader, EndsADocumentAtOnceThatWouldNeverEnd) {
  for (const std::size_t stray : {1u, 2u, 3u}) {
    const Reading reading = readBytes(documentWith(good() + std::string(stray, '\0')));
    EXPECT_EQ(reading.texts, Texts{});
    EXPECT_EQ(reading.result.status, Status::kFailed);
    EXPECT_EQ(reading.result.failure, Failure::kEndlessRead);
    EXPECT_EQ(reading.result.moduleResult, 6);
    EXPECT_NE(reading.result.message.find("Index/Tables/Tile.iwa"), std::string::npos);
  }
}

// A member with a chunk whose header starts at the given offset. Literals take
// a byte of their own for every 60, so not every size can be had in one chunk.
std::string memberWithHeaderAt(std::size_t offset) {
  const std::string stream = objectStream({storage(2, {std::string(8000, 'x')})});
  for (const std::size_t start : {0u, 10u, 70u}) {
    for (std::size_t cut = offset - 150; cut < offset; ++cut) {
      std::string member = start == 0 ? "" : chunk(literalBlock(stream.substr(0, start)));
      member += chunk(literalBlock(stream.substr(start, cut - start)));
      if (member.size() == offset) return member + chunk(literalBlock(stream.substr(cut)));
    }
  }
  throw std::logic_error("no cut fits");
}

TEST_P(RealReader, ReadsSoundMembersWhoseChunkHeadersSitAtTheEndOfARead) {
  for (std::size_t offset = 4088; offset <= 4098; ++offset) {
    const Reading reading = readBytes(documentWith(memberWithHeaderAt(offset)));
    EXPECT_EQ(reading.texts, (Texts{"first", std::string(8000, 'x'), "third"})) << offset;
    EXPECT_EQ(reading.result.status, Status::kOk) << offset;
  }
}

// The reader's own rule, which the alignment exists for.
TEST_P(RealReader, LosesThemWithoutTheAlignment) {
  HostOptions plain = options();
  plain.alignReads = false;
  const Reading reading = readBytes(documentWith(memberWithHeaderAt(4092)), plain);
  EXPECT_EQ(reading.texts, (Texts{"first", "third"}));
}

TEST_P(RealReader, ReadsADirectoryPackage) {
  writeDirectory(folder.path(), {{"Index/Document.iwa", iwa({storage(1, {"first"})})},
                                 {"Index/Tables/Tile.iwa", good()}});
  EXPECT_EQ(read(Input::path(folder.path())).texts, (Texts{"first", "second"}));
}

TEST_P(RealReader, ReadsADirectoryPackageWithAnIndexZip) {
  writeDirectory(folder.path(), {{"Index.zip", zip({{"Document.iwa", good()}})},
                                 {"Metadata/BuildVersionHistory.plist", ""}});
  EXPECT_EQ(read(Input::path(folder.path())).texts, Texts{"second"});
}

TEST_P(RealReader, ReadsADirectoryPackageBelowDirectoriesThatBearMarkerNames) {
  for (const char* parent : {"Index", "Metadata", "My Index of Document.iwa", "Index/Metadata"}) {
    const auto root = folder.path() / parent / "a.pages";
    writeDirectory(root, {{"Index/Document.iwa", good()}});
    EXPECT_EQ(read(Input::path(root)).texts, Texts{"second"}) << parent;
    std::filesystem::remove_all(folder.path() / parent);
  }
}

TEST_P(RealReader, ReadsADirectoryPackageWhosePathIsLong) {
  auto root = folder.path();
  for (int i = 0; i < 8; ++i) root /= std::string(200, 'd');
  ASSERT_GT(root.string().size(), 1023u);
  writeDirectory(root, {{"Index/Document.iwa", good()}});
  EXPECT_EQ(read(Input::path(root)).texts, Texts{"second"});
}

TEST_P(RealReader, ReadsAFileAsTheZipThatItIsWhateverItsPathSays) {
  for (const char* name : {"Index/Document.iwa", "Metadata/BuildVersionHistory.plist"}) {
    writeDirectory(folder.path(), {{name, goodDocument()}});
    EXPECT_EQ(read(Input::path(folder.path() / name)).texts, Texts{"text"}) << name;
  }
}

TEST_P(RealReader, NamesTheDamagedStreamOfADirectoryPackage) {
  writeDirectory(folder.path(), {{"Index/Document.iwa", damagedChunk()}});
  const Reading reading = read(Input::path(folder.path()));
  EXPECT_EQ(reading.result.status, Status::kFailed);
  EXPECT_EQ(reading.result.moduleResult, 6);
  EXPECT_EQ(reading.result.message,
            "damaged member Index/Document.iwa: chunk 1 holds damaged data");
}

TEST_P(RealReader, CallsADirectoryPackagePartialWhenAStreamLosesItsEnd) {
  writeDirectory(folder.path(),
                 {{"Index/Document.iwa", good() + chunk(literalBlock("lost"), 1000)}});
  const Reading reading = read(Input::path(folder.path()));
  EXPECT_EQ(reading.texts, Texts{"second"});
  EXPECT_EQ(reading.result.status, Status::kPartial);
}

// The chunks are sound, and so is the zip around them.
TEST_P(RealReader, CallsATextPartialWhenAnObjectIsDamaged) {
  const std::string stream = objectStream({storage(1, {"first"}), storage(2, {"second"}),
                                           object(3, kStorageType, std::string("\x1A\x7F", 2))});
  const Reading reading = readBytes(zip({{"Index/Document.iwa", iwa(stream)}}));
  EXPECT_EQ(reading.texts, (Texts{"first", "second"}));
  EXPECT_EQ(reading.result.status, Status::kPartial);
}

struct Outcome {
  std::string bytes;
  Failure failure;
  int moduleResult;
};

TEST_P(RealReader, SaysWhatADocumentIsThatItCannotRead) {
  std::string damaged = zip({{"Index/Document.iwa", good()}});
  damaged[damaged.find("second")] ^= 1;
  const std::string nested = zip({{"Index.zip", "no zip"}});
  const Outcome outcomes[] = {
      {"", Failure::kNotAPackage, 6},
      {"%PDF-1.4 something else", Failure::kNotAPackage, 6},
      {goodDocument().substr(0, 60), Failure::kDamaged, 6},
      {damaged, Failure::kDamaged, 6},
      {nested, Failure::kDamaged, 6},
      {zip({{"index.xml", "<x/>"}}), Failure::kIwork09, 4},
      {zip({{"index.apxl", "<x/>"}}), Failure::kIwork09, 4},
      {zip({{"Index.zip", "encrypted"}, {".iwpv2", ""}}), Failure::kPasswordProtected, 6},
      {zip({{"Index/Document.iwa", "encrypted"}, {".iwph", ""}}), Failure::kPasswordProtected, 4},
      {zip({{"Index/Document.iwa", ""}}), Failure::kDamaged, 4},
      {zip({{"word/document.xml", "<x/>"}}), Failure::kNothingRecognised, 4},
  };
  for (const Outcome& outcome : outcomes) {
    const Reading reading = readBytes(outcome.bytes);
    EXPECT_EQ(reading.result.status, Status::kFailed) << describe(reading.result);
    EXPECT_EQ(reading.result.failure, outcome.failure) << describe(reading.result);
    EXPECT_EQ(reading.result.moduleResult, outcome.moduleResult) << describe(reading.result);
  }
}

TEST_P(RealReader, SaysThatADirectoryIsNoPackage) {
  const Reading reading = read(Input::path(folder.path()));
  EXPECT_EQ(reading.result.failure, Failure::kNotAPackage);
  EXPECT_EQ(reading.result.moduleResult, 4);
}

TEST_P(RealReader, GivesTheSameStreamForEveryBufferSize) {
  const std::string bytes =
      zip({{"Index/Document.iwa",
            iwa({storage(1, {std::string(9000, 'a')}), storage(2, {"b", "c"})})}});
  std::string whole;
  for (const std::uint32_t size : {1u << 20, 51u, 100u, 4096u, 4110u, 65536u}) {
    HostOptions sized = options();
    sized.bufferSize = size;
    Document document = Host(sized).open(
        Input::memory({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}));
    std::string stream;
    while (const auto buffer = document.nextBuffer()) stream.append(buffer->begin(), buffer->end());
    EXPECT_EQ(document.result().status, Status::kOk);
    if (whole.empty()) whole = stream;
    EXPECT_EQ(stream, whole) << size;
  }
  EXPECT_GT(whole.size(), 9000u);
}

TEST_P(RealReader, TellsTheKindOfRealDocumentsAsTheirNamesDo) {
  const std::filesystem::path documents = std::filesystem::path(DORVEX_CORPUS) / "documents";
  if (!std::filesystem::exists(documents)) GTEST_SKIP() << "no real documents at " << documents;
  const std::map<std::string, Kind> kinds = {
      {".pages", Kind::kPages}, {".key", Kind::kKeynote}, {".numbers", Kind::kNumbers}};
  int told = 0;
  for (const auto& entry : std::filesystem::directory_iterator(documents)) {
    const Result result = read(Input::path(entry.path())).result;
    if (result.status == Status::kFailed || !kinds.contains(entry.path().extension())) continue;
    EXPECT_EQ(result.kind, kinds.at(entry.path().extension())) << entry.path();
    ++told;
  }
  EXPECT_GT(told, 30);
}

TEST_P(RealReader, ReadsTheRealDocumentsAsExpected) {
  const std::filesystem::path corpus = DORVEX_CORPUS;
  if (!std::filesystem::exists(corpus / "expected.json")) {
    GTEST_SKIP() << "no real documents at " << corpus;
  }
  const auto expected = nlohmann::json::parse(readFile(corpus / "expected.json"));
  ASSERT_EQ(expected.size(), 42u);
  for (const auto& [name, document] : expected.items()) {
    const Reading reading = read(Input::path(corpus / "documents" / name));
    const int wanted = document["result"];
    EXPECT_EQ(reading.result.moduleResult, wanted) << name;
    EXPECT_EQ(reading.result.status, wanted == 0 ? Status::kOk : Status::kFailed)
        << name << ": " << describe(reading.result);
    Texts texts;
    if (wanted == 0) texts = document["texts"];
    // An empty text leaves no token behind.
    std::erase(texts, "");
    EXPECT_EQ(reading.texts, texts) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Isolations, RealReader,
                         ::testing::Values(Isolation::kInProcess, Isolation::kWorkers),
                         [](const auto& info) {
                           return info.param == Isolation::kInProcess ? "InProcess" : "Workers";
                         });

}  // namespace
}  // namespace dorvex::real_reader_test
