#include "convert_command.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "program.h"
#include "side_files.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::convert_command_test {
namespace {

using namespace testing;

constexpr int kPagesDocumentType = 10000;

class ConvertCommand : public ::testing::Test {
 protected:
  std::string document(const std::string& name, const std::string& bytes) {
    writeFile(folder.path() / name, bytes);
    return folder.path() / name;
  }
  std::string empty(const std::string& name) {
    return document(name, zip({{"Index/Document.iwa", iwa({object(1, kPagesDocumentType, "")})}}));
  }
  TemporaryDirectory folder;
};

TEST_F(ConvertCommand, RendersJson) {
  const Finished run = runTool({"convert", "--to", "json", empty("a.pages")});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(nlohmann::json::parse(run.output)["kind"], "pages");
}

TEST_F(ConvertCommand, RendersEveryFormatOfASample) {
  const std::string sample = DORVEX_SOURCE_DIR "/samples/tea-shop.key";
  for (const char* format : {"json", "markdown", "html", "text"}) {
    const Finished run = runTool({"convert", "--to", format, sample});
    EXPECT_EQ(run.status, 0) << format << ": " << run.errors;
    EXPECT_NE(run.output, "") << format;
  }
}

TEST_F(ConvertCommand, WritesAFileForEachDocument) {
  const std::string target = folder.path() / "out/";
  const Finished run =
      runTool({"convert", "--to", "html", "-o", target, empty("a.pages"), empty("b.pages")});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_TRUE(readFile(folder.path() / "out/a.pages.html").starts_with("<!DOCTYPE html>"));
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "out/b.pages.html"));
}

TEST_F(ConvertCommand, RefusesSeveralDocumentsForOneOutput) {
  const Finished run = runTool({"convert", empty("a.pages"), empty("b.pages")});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.errors.find("-o DIRECTORY/"), std::string::npos);
}

TEST_F(ConvertCommand, EndsWithOneForADocumentThatCannotBeRendered) {
  const Finished run = runTool({"convert", document("a.pages", "nothing")});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_NE(run.errors.find("not a package"), std::string::npos) << run.errors;
}

TEST_F(ConvertCommand, GivesNoTableOfADocumentWithoutOne) {
  const Finished run = runTool({"convert", "--to", "csv", empty("a.pages")});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors.find("no table in the document"), std::string::npos) << run.errors;
}

TEST_F(ConvertCommand, WritesMediaBesideTheRenderingThatLinksToThem) {
  const std::string sample = DORVEX_SOURCE_DIR "/samples/tea-shop.key";
  const std::string rendering = folder.path() / "deck.md";
  const Finished run = runTool(
      {"convert", "--extract-media", folder.path() / "some media", "-o", rendering, sample});
  EXPECT_EQ(run.status, 0) << run.errors;
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path() / "some media"))
    names.insert(entry.path().filename());
  EXPECT_EQ(names, (std::set<std::string>{"1-teapot.svg", "2-kettle.mov", "3-tea cup.svg",
                                          "4-whistle.m4a"}));
  EXPECT_TRUE(readFile(folder.path() / "some media/1-teapot.svg").starts_with("<svg"));
  EXPECT_NE(readFile(rendering).find("](some%20media/3-tea%20cup.svg)"), std::string::npos);
}

TEST_F(ConvertCommand, ExtractsMediaOfOneDocumentOnly) {
  const Finished run = runTool({"convert", "--extract-media", folder.path() / "media", "-o",
                                folder.path() / "out/", empty("a.pages"), empty("b.pages")});
  EXPECT_EQ(run.status, 2) << run.errors;
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "media"));
}

TEST_F(ConvertCommand, GoesIntoRecordsOfABatch) {
  const Finished run = runTool({"batch", "--content", "json", empty("a.pages")});
  EXPECT_EQ(run.status, 0) << run.errors;
  const auto record = nlohmann::json::parse(run.output);
  EXPECT_EQ(nlohmann::json::parse(record["content"].get<std::string>())["kind"], "pages");
  EXPECT_TRUE(record["texts"].empty());
}

TEST(SideFiles, HaveNamesThatStayInTheirFolder) {
  EXPECT_EQ(cli::plainFileName("a.png"), "a.png");
  EXPECT_EQ(cli::plainFileName("../../etc/passwd"), "_.._.._etc_passwd");
  EXPECT_EQ(cli::plainFileName(""), "_");
  EXPECT_EQ(cli::plainFileName(std::string("a\0b\n", 4)), "a_b_");
  EXPECT_EQ(cli::plainFileName(std::string(500, 'a')).size(), 200U);
}

TEST(SideFiles, TakeTheirNamesWhenTheyAreWhole) {
  const TemporaryDirectory folder;
  {
    cli::SideFiles files(folder.path() / "media", cli::OnExists::kFail);
    files.take({PieceType::kFileName, "a"});
    files.take({PieceType::kFileBytes, "one"});
    files.take({PieceType::kFileName, "b"});
    files.take({PieceType::kFileBytes, "half"});
  }
  EXPECT_EQ(readFile(folder.path() / "media/a"), "one");
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "media/b"));
}

}  // namespace
}  // namespace dorvex::convert_command_test
