#include "writers/json_writer.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "content/support/writing.h"

namespace dorvex::content::json_writer_test {
namespace {

using nlohmann::json;
using namespace testing;

TEST(JsonWriter, GivesEveryListOfAnApplicationEvenWhereItIsEmpty) {
  const json pages = json::parse(writtenBody(Format::kJson, {}));
  for (const char* key : {"body", "sections", "floating", "footnotes", "media"})
    EXPECT_EQ(pages.at(key), json::array()) << key;
  EXPECT_EQ(pages["version"], 1);
  const json keynote = json::parse(
      written(Format::kJson, {}, [](Sink& sink) { sink.document(Application::kKeynote, {}); }));
  EXPECT_EQ(keynote.at("slides"), json::array());
}

TEST(JsonWriter, SaysOnlyWhatApplies) {
  Slide slide;
  slide.number = 1;
  EXPECT_EQ(json::parse(writtenSlide(Format::kJson, slide))["slides"][0],
            json::parse(R"({"number": 1, "skipped": false, "depth": 1, "title": null,
                            "blocks": []})"));
}

TEST(JsonWriter, LeavesSizesOutThatAreNoNumbers) {
  const auto metadataOf = [](double width) {
    return json::parse(written(Format::kJson, {}, [&](Sink& sink) {
      Metadata metadata;
      metadata.pageSize = {width, 842};
      sink.document(Application::kPages, metadata);
    }))["metadata"];
  };
  EXPECT_EQ(metadataOf(595)["page_size"], json({595, 842}));
  EXPECT_FALSE(metadataOf(std::numeric_limits<double>::infinity()).contains("page_size"));
}

TEST(JsonWriter, StandsInOneLineOnRequest) {
  WriterOptions options;
  options.oneLine = true;
  const std::string line = writtenBody(Format::kJson, {paragraph("a\nb")}, options);
  EXPECT_EQ(line.find('\n'), line.size() - 1);
}

}  // namespace
}  // namespace dorvex::content::json_writer_test
