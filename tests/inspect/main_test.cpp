#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "dorvex/sandbox.h"
#include "program.h"
#include "support/corpus.h"
#include "support/package_writer.h"
#include "support/self_containing_zip.h"
#include "support/temporary_directory.h"

namespace dorvex::main_test {
namespace {

using namespace testing;
using nlohmann::json;

class InspectTest : public ::testing::Test {
 protected:
  std::string document(const std::string& bytes, const std::string& name = "a.pages") {
    writeFile(folder.path() / name, bytes);
    return folder.path() / name;
  }
  TemporaryDirectory folder;
};

const std::string kDocument =
    zip({{"Index/Document.iwa",
          iwa({object(1, 10000, ""), storage(2, {"one", "two"}), object(3, 99999, "\x08\x05")})},
         {"preview.jpg", "jpg"}});

TEST_F(InspectTest, PrintsMembersAndObjectsInTables) {
  const Finished run = runTool({"inspect", document(kDocument)});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.errors, "");
  EXPECT_NE(run.output.find(": pages, a zip, 2 members, 3 objects, 2 texts\n"), std::string::npos)
      << run.output;
  EXPECT_NE(run.output.find("  yes   Index/Document.iwa\n"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("-  no    preview.jpg\n"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("TP.DocumentArchive"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("TSWP.StorageArchive"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("99999     2      0  (unknown)"), std::string::npos) << run.output;
}

TEST_F(InspectTest, PrintsTheSameAsJson) {
  const Finished run = runTool({"inspect", "--json", document(kDocument)});
  EXPECT_EQ(run.status, 0);
  const json listing = json::parse(run.output);
  EXPECT_EQ(listing["version"], 1);
  EXPECT_EQ(listing["application"], "pages");
  EXPECT_EQ(listing["complete"], true);
  EXPECT_EQ(listing["texts"], 2);
  EXPECT_EQ(listing["members"][0]["chunks"], 1);
  EXPECT_EQ(listing["members"][1]["chunks"], nullptr);
  EXPECT_EQ(listing["objects"][1]["messages"][0]["name"], "TSWP.StorageArchive");
  EXPECT_EQ(listing["objects"][1]["messages"][0]["texts"], 2);
  EXPECT_EQ(listing["objects"][2]["messages"][0]["name"], nullptr);
}

TEST_F(InspectTest, PrintsAnObjectInTextForm) {
  const Finished run = runTool({"inspect", "--object", "2", document(kDocument)});
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("# object 2 of Index/Document.iwa: type 2001 TSWP.StorageArchive, "),
            std::string::npos)
      << run.output;
  EXPECT_NE(run.output.find("text: \"one\"\ntext: \"two\"\n"), std::string::npos) << run.output;
}

TEST_F(InspectTest, PrintsAnObjectOfUnknownTypeByItsFieldNumbers) {
  const Finished run = runTool({"inspect", "--object", "3", document(kDocument)});
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("\n1: 5\n"), std::string::npos) << run.output;
}

TEST_F(InspectTest, SaysThatThereIsNoSuchObject) {
  const Finished run = runTool({"inspect", "--object", "44", document(kDocument)});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_NE(run.errors.find("there is no object 44"), std::string::npos) << run.errors;
}

TEST_F(InspectTest, NamesTypesByTheApplicationOfThePackage) {
  const auto nameOfType1 = [&](const std::string& path, const std::string& application) {
    const Finished run = runTool({"inspect", "--json", "--app", application, path});
    return json::parse(run.output)["objects"][0]["messages"][0]["name"];
  };
  const std::string root = iwa({object(1, 1, "")});
  const std::string slides =
      document(zip({{"Index/Document.iwa", root}, {"Index/Slide.iwa", iwa({storage(2, {"a"})})}}));
  EXPECT_EQ(nameOfType1(slides, "auto"), "KN.DocumentArchive");
  EXPECT_EQ(nameOfType1(slides, "numbers"), "TN.DocumentArchive");
  EXPECT_EQ(nameOfType1(slides, "pages"), nullptr);
  const std::string sheets = document(zip({{"Index/Document.iwa", root}}), "b");
  EXPECT_EQ(nameOfType1(sheets, "auto"), "TN.DocumentArchive");
}

// The package does not tell, and is not said to; but its types have better names.
TEST_F(InspectTest, NamesTypesByTheEndOfThePathWhereThePackageTellsNothing) {
  const std::string bytes = zip({{"Index/Other.iwa", iwa({object(1, 1, "")})}});
  const auto listing = [&](const std::string& name) {
    return json::parse(runTool({"inspect", "--json", document(bytes, name)}).output);
  };
  EXPECT_EQ(listing("a.key")["objects"][0]["messages"][0]["name"], "KN.DocumentArchive");
  EXPECT_EQ(listing("a.numbers")["objects"][0]["messages"][0]["name"], "TN.DocumentArchive");
  EXPECT_EQ(listing("a.key")["application"], "unknown");
}

TEST_F(InspectTest, TellsTheKindThatARecordTells) {
  const std::string root = iwa({object(1, 1, "")});
  for (const char* other : {"Index/Slide.iwa", "Index/MasterSlide-1.iwa", "Data/Document.iwa"}) {
    const std::string path =
        document(zip({{"Index/Document.iwa", root}, {other, iwa({object(1, 10000, "")})}}));
    const json record = json::parse(runTool({"text", "--format", "json", path}).output);
    EXPECT_EQ(json::parse(runTool({"inspect", "--json", path}).output)["application"],
              record["kind"]);
  }
}

TEST_F(InspectTest, ListsWhatADamagedDocumentStillHolds) {
  const std::string good = objectStream({storage(1, {"kept"})});
  const Finished run =
      runTool({"inspect",
               document(zip({{"Index/Document.iwa", chunk(compressedBlock(good)) + damagedChunk()},
                             {"Index/Slide.iwa", iwa({storage(2, {"text"})})}}))});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.output.find("2 objects, 1 text, listing incomplete"), std::string::npos)
      << run.output;
  EXPECT_NE(run.errors.find("damaged member Index/Document.iwa: chunk 2 holds damaged data"),
            std::string::npos)
      << run.errors;
}

TEST_F(InspectTest, SaysWhatAFileIsThatIsNoPackage) {
  const Finished run = runTool({"inspect", document("words")});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors.find("not a package at all"), std::string::npos) << run.errors;
}

TEST_F(InspectTest, LetsNoNameReachTheTerminalAsItStands) {
  writeDirectory(folder.path() / "a.pages", {{"Index/a\n\x1b[1m", "x"}});
  const Finished run = runTool({"inspect", folder.path() / "a.pages"});
  EXPECT_NE(run.output.find("a??[1m"), std::string::npos) << run.output;
}

TEST_F(InspectTest, PrintsJsonForNamesThatAreNotUtf8) {
  const Finished run = runTool({"inspect", "--json", document(kDocument, "a\xff.pages")});
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(json::accept(run.output)) << run.output;
}

TEST_F(InspectTest, ReadsStandardInput) {
  const Finished run = runTool({"inspect", "-"}, {.input = document(kDocument)});
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.output.find("3 objects"), std::string::npos) << run.output;
}

TEST_F(InspectTest, AnswersBadUsageWithStatusTwo) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"inspect"}, {"inspect", "--app", "x", "a"}, {"inspect", "--object", "x", "a"}}) {
    EXPECT_EQ(runTool(arguments).status, 2) << ::testing::PrintToString(arguments);
  }
}

TEST_F(InspectTest, SaysThatStandardOutputIsFull) {
  const Finished run = runTool({"inspect", document(kDocument)}, {.output = "/dev/full"});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors.find("cannot write to standard output"), std::string::npos) << run.errors;
}

TEST_F(InspectTest, EndsAtTheTimeLimit) {
  std::filesystem::path pipe = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const Finished run = runTool({"--timeout", "0.2", "inspect", pipe});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "dorvex: inspect: stopped at the time limit\n");
}

TEST_F(InspectTest, SaysThatMemoryIsOut) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer lets nobody limit the address space";
#endif
  const std::string stream = iwa({storage(1, {std::string(std::size_t{60} << 20, 'x')})});
  const Finished run =
      runTool({"inspect", "--max-memory", "64MB", document(zip({{"Index/Document.iwa", stream}}))});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors.find("memory is out"), std::string::npos) << run.errors;
}

TEST_F(InspectTest, LeavesItselfNothingButTheDocument) {
  if (const auto missing = missingConfinement(); !missing.empty()) GTEST_SKIP() << missing.front();
  const std::string module = DORVEX_NOSY_MODULES "/dorvexsr.so";
  const auto inspected = [&](const char* sandbox) {
    return runTool({"--module", module, sandbox, "inspect", document(kDocument)}).output;
  };
  const std::string confined = inspected("--require-sandbox");
  EXPECT_NE(confined.find("open: Operation not permitted, connect: Operation not permitted, "
                          "fork: Operation not permitted"),
            std::string::npos)
      << confined;
  const std::string free = inspected("--no-sandbox");
  EXPECT_NE(free.find("open: done, connect: done, fork: done"), std::string::npos) << free;
}

TEST_F(InspectTest, ReadsAPackageDirectoryInItsSandbox) {
  const auto package = folder.path() / "a.pages";
  std::filesystem::create_directories(package / "Index");
  writeFile(package / "Index" / "Document.iwa", iwa({storage(1, {"one"})}));
  writeFile(package / "Index.zip", zip({{"Index/Tables/Tile.iwa", iwa({storage(2, {"two"})})}}));
  const Finished run = runTool({"--require-sandbox", "inspect", package});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_NE(run.output.find("Index/Document.iwa\n"), std::string::npos) << run.output;
}

TEST_F(InspectTest, EndsAZipThatContainsItselfAtTheLimitOfDepth) {
  const Finished run = runTool({"inspect", document(selfContainingZip())});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors.find("lies in more than 16 containers"), std::string::npos) << run.errors;
  EXPECT_NE(run.output.find("  Index.zip/Index.zip\n"), std::string::npos) << run.output;
}

TEST_F(InspectTest, NamesTheInspectorWhereItIsMissing) {
  std::filesystem::copy_file(DORVEX_PROGRAM, folder.path() / "dorvex");
  const Finished run = runProgram(folder.path() / "dorvex", {"inspect", document(kDocument)});
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.errors.find("dorvex-inspect: No such file or directory"), std::string::npos)
      << run.errors;
}

// Each command of the page, with what stands below it.
TEST_F(InspectTest, PrintsWhatItsPageShows) {
  const std::filesystem::path project = DORVEX_SOURCE_DIR;
  const std::string page = readFile(project / "docs" / "inspect.md");
  const std::regex example("```\n\\$ dorvex ([^\n]*) (samples/[^\n]*)\n([^`]*)```");
  int shown = 0;
  for (std::sregex_iterator it(page.begin(), page.end(), example), end; it != end; ++it, ++shown) {
    std::istringstream words((*it)[1]);
    std::vector<std::string> arguments(std::istream_iterator<std::string>(words), {});
    arguments.push_back(project / (*it)[2].str());
    std::string output = runTool(arguments).output;
    if (output.starts_with(project.string())) output.erase(0, project.string().size() + 1);
    EXPECT_EQ(output, (*it)[3]);
  }
  EXPECT_EQ(shown, 2);
}

// What the two ways through a document have to agree on.
TEST_F(InspectTest, CountsTheTextsThatTheReaderGives) {
  if (!hasCorpus()) GTEST_SKIP() << corpusIsAbsent();
  int compared = 0;
  for (const std::string& name : corpusDocuments()) {
    const std::string path = corpusPath(name);
    const Finished read = runTool({"text", "-0", path});
    if (read.status != 0) continue;
    const auto texts = std::count(read.output.begin(), read.output.end(), '\0');
    EXPECT_EQ(json::parse(runTool({"inspect", "--json", path}).output)["texts"], texts) << name;
    ++compared;
  }
  EXPECT_GT(compared, 10);
}

}  // namespace
}  // namespace dorvex::main_test
