// The samples hold an example of each thing that the content view takes: a table of
// things, and where in a sample's rendering as JSON one stands.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/package_writer.h"

namespace dorvex::testing::rows_test {
namespace {

using nlohmann::json;

struct Row {
  const char* thing;
  const char* sample;
  // The keys from the top to the example; "*" is any member or element, "**" any number
  // of levels.
  std::vector<std::string> path;
  json value = nullptr;  // what stands there; null for anything that says something
};

bool says(const json& found, const json& wanted) {
  if (!wanted.is_null()) return found == wanted;
  return !found.is_null() && found != "" && found != json::array() && found != json::object();
}

bool holds(const json& at, const std::vector<std::string>& path, std::size_t step,
           const json& wanted) {
  if (step == path.size()) return says(at, wanted);
  const std::string& key = path[step];
  if (key == "**" && holds(at, path, step + 1, wanted)) return true;
  if (key == "*" || key == "**") {
    for (const json& each : at) {
      if (each.is_structured() || key == "*") {
        if (holds(each, path, key == "*" ? step + 1 : step, wanted)) return true;
      }
    }
    return false;
  }
  return at.is_object() && at.contains(key) && holds(at[key], path, step + 1, wanted);
}

const char* const kDeck = "tea-shop.key";
const char* const kLetter = "tea-shop.pages";
const char* const kPoster = "tea-shop-poster.pages";
const char* const kRecipe = "tea-shop-recipe.pages";
const char* const kPrices = "tea-shop.numbers";
const char* const kTree = "tea-shop-tree.key";
const char* const kStock = "tea-shop-stock.numbers";

std::vector<Row> rows() {
  return {
      // Keynote
      {"slides in their order", kDeck, {"slides", "*", "number"}, 4},
      {"skipped slides", kDeck, {"slides", "*", "skipped"}, true},
      {"nesting depth", kDeck, {"slides", "*", "depth"}, 2},
      {"layout names", kDeck, {"slides", "*", "layout"}, "Title & Bullets"},
      {"titles", kDeck, {"slides", "*", "title"}, "Warm the pot"},
      {"bodies", kDeck, {"slides", "*", "blocks", "*", "kind"}, "body"},
      {"list levels", kDeck, {"slides", "**", "list", "level"}, 1},
      {"shapes", kDeck, {"slides", "**", "type"}, "shape"},
      {"groups", kDeck, {"slides", "**", "type"}, "group"},
      {"tables", kDeck, {"slides", "**", "type"}, "table"},
      {"charts", kDeck, {"slides", "**", "type"}, "chart"},
      {"images", kDeck, {"slides", "**", "type"}, "image"},
      {"movies", kDeck, {"slides", "**", "type"}, "movie"},
      {"sounds", kDeck, {"slides", "**", "type"}, "audio"},
      {"galleries", kDeck, {"slides", "**", "items", "*", "caption"}},
      {"presenter notes", kDeck, {"slides", "*", "notes", "*", "text"}},
      {"sticky notes", kDeck, {"slides", "*", "comments", "*", "text"}},
      {"threads with replies", kDeck, {"slides", "*", "comments", "*", "replies", "*", "text"}},
      {"comments of drawables", kDeck, {"slides", "*", "blocks", "*", "comments", "*", "text"}},
      {"switched-off placeholders and template texts", kDeck, {"left_out", "hidden_texts"}, 2},
      {"links of drawables", kDeck, {"slides", "*", "blocks", "*", "link"}},
      {"slides in a tree", kTree, {"slides", "*", "title"}, "Wash up"},
      {"placeholders without a kind", kTree, {"slides", "*", "title"}, "The water"},
      // Pages
      {"titles of documents", kLetter, {"body", "*", "role"}, "title"},
      {"subtitles", kLetter, {"body", "*", "role"}, "subtitle"},
      {"headings with levels", kLetter, {"body", "*", "level"}, 2},
      {"roles under localised names", kLetter, {"body", "*", "style"}, "Überschrift 1"},
      {"captions", kLetter, {"body", "*", "role"}, "caption"},
      {"bullets", kLetter, {"body", "*", "list", "kind"}, "bullet"},
      {"numbers of lists", kLetter, {"body", "*", "list", "kind"}, "number"},
      {"computed labels", kLetter, {"body", "*", "list", "label"}, "a)"},
      {"labels that start anew", kLetter, {"body", "*", "list", "label"}, "7."},
      {"inline drawables", kLetter, {"body", "*", "type"}, "image"},
      {"inline tables", kLetter, {"body", "*", "type"}, "table"},
      {"floating drawables", kLetter, {"floating", "*", "blocks", "*", "type"}, "text_box"},
      {"linked boxes", kLetter, {"floating", "**", "text"}},
      {"page layout: no body", kPoster, {"body"}, json::array()},
      {"page layout: boxes of pages", kPoster, {"floating", "*", "blocks", "*", "blocks"}},
      {"footnotes", kLetter, {"footnotes", "*", "kind"}, "footnote"},
      {"marks of notes in place", kLetter, {"body", "*", "runs", "*", "footnote"}, "1"},
      {"marks of one's own", kLetter, {"footnotes", "*", "mark"}, "†"},
      {"endnotes", kRecipe, {"footnotes", "*", "kind"}, "endnote"},
      {"marks in roman numerals", kRecipe, {"footnotes", "*", "mark"}, "ii"},
      {"headers of first pages", kLetter, {"sections", "*", "footers", "first", "center"}},
      {"headers of left pages", kLetter, {"sections", "*", "headers", "even", "center"}},
      {"headers", kLetter, {"sections", "*", "headers", "default", "left"}},
      {"footers", kLetter, {"sections", "*", "footers", "default", "center"}},
      {"sections", kLetter, {"sections", "*", "from"}, 24},
      {"page breaks", kLetter, {"body", "*", "type"}, "page_break"},
      {"section breaks", kLetter, {"body", "*", "type"}, "section_break"},
      {"column breaks", kLetter, {"body", "*", "type"}, "column_break"},
      {"tables of contents", kLetter, {"body", "**", "role"}, "toc"},
      {"bookmarks", kLetter, {"body", "*", "runs", "*", "bookmark"}},
      {"hyperlinks", kLetter, {"body", "*", "runs", "*", "link"}, "https://tea.example/"},
      {"comments with their range", kLetter, {"body", "*", "runs", "*", "comment", "*", "text"}},
      {"authors of comments", kLetter, {"body", "*", "runs", "*", "comment", "*", "author"}},
      {"dates of comments", kLetter, {"body", "*", "runs", "*", "comment", "*", "date"}},
      {"replies", kLetter, {"body", "*", "runs", "*", "comment", "*", "replies", "*", "text"}},
      {"insertions", kLetter, {"body", "*", "runs", "*", "inserted", "author"}},
      {"deletions with their dates", kLetter, {"body", "*", "runs", "*", "deleted", "date"}},
      {"readings of characters", kLetter, {"body", "*", "runs", "*", "ruby"}},
      {"line breaks",
       kLetter,
       {"body", "*", "text"},
       "First line\nsecond line of one paragraph 🫖."},
      {"equations in MathML", kLetter, {"body", "*", "notation"}, "mathml"},
      // Numbers
      {"sheets in order of their tabs", kPrices, {"sheets", "*", "name"}, "Order form"},
      {"hidden sheets", kPrices, {"sheets", "*", "hidden"}, true},
      {"tables with names", kPrices, {"sheets", "*", "blocks", "*", "name"}, "Price list"},
      {"captions of tables", kPrices, {"sheets", "*", "blocks", "*", "caption"}},
      {"header rows", kPrices, {"sheets", "*", "blocks", "*", "header_rows"}, 1},
      {"header columns", kPrices, {"sheets", "*", "blocks", "*", "header_columns"}, 1},
      {"footer rows", kPrices, {"sheets", "*", "blocks", "*", "footer_rows"}, 1},
      {"merges", kPrices, {"sheets", "*", "blocks", "*", "merges"}},
      {"hidden rows", kPrices, {"sheets", "*", "blocks", "*", "hidden_rows"}},
      {"hidden columns", kPrices, {"sheets", "*", "blocks", "*", "hidden_columns"}},
      {"text boxes of sheets", kPrices, {"sheets", "*", "blocks", "*", "type"}, "text_box"},
      {"charts of sheets", kPrices, {"sheets", "*", "blocks", "*", "type"}, "chart"},
      {"images of sheets", kPrices, {"sheets", "*", "blocks", "*", "type"}, "image"},
      {"comments of cells", kPrices, {"sheets", "**", "cells", "*", "*", "comment", "*", "text"}},
      {"rich cells", kPrices, {"sheets", "**", "cells", "*", "*", "paragraphs", "*", "text"}},
      {"cells of version 0", kStock, {"sheets", "**", "cells", "*", "*", "value"}, "version 0"},
      {"cells of version 4", kStock, {"sheets", "**", "cells", "*", "*", "value"}, "version 4"},
      {"custom formats of tables", kStock, {"sheets", "**", "cells", "**", "text"}, "3.5 tins"},
      {"older pop-up menus", kStock, {"sheets", "**", "cells", "**", "text"}, "Darjeeling"},
      {"lines that headers hide", kStock, {"sheets", "**", "hidden_rows", "*"}, 8},
      // All three
      {"types of charts", kDeck, {"slides", "**", "chart_type"}, "column_2d"},
      {"titles of charts", kDeck, {"slides", "**", "title"}, "Pots a day"},
      {"categories", kDeck, {"slides", "**", "categories", "*"}, "June"},
      {"names of series", kDeck, {"slides", "**", "series", "*", "name"}, "Sencha"},
      {"values", kDeck, {"slides", "**", "series", "*", "values", "*"}, 7.5},
      {"dates in charts", kPrices, {"sheets", "**", "values", "*"}, "2023-01-01T00:00:00"},
      {"titles of axes", kDeck, {"slides", "**", "axis_titles", "*"}},
      {"files of media", kDeck, {"media", "*", "member"}, "Data/teapot-50.svg"},
      {"alternative texts", kDeck, {"slides", "*", "blocks", "*", "alt"}},
      {"captions of pictures", kDeck, {"slides", "*", "blocks", "*", "caption"}},
      {"equations in LaTeX", kDeck, {"slides", "**", "notation"}, "latex"},
      {"language", kLetter, {"metadata", "language"}, "en"},
      {"locale", kLetter, {"metadata", "locale"}, "en_GB"},
      {"template", kLetter, {"metadata", "template"}},
      {"builds", kLetter, {"metadata", "application_builds", "*"}},
      {"document identifier", kLetter, {"metadata", "document_id"}},
      {"size of pages", kLetter, {"metadata", "page_size", "*"}, 842},
      {"size of slides", kDeck, {"metadata", "slide_size", "*"}, 1920},
      {"authors", kLetter, {"metadata", "authors", "*"}, "Mr Pottinger"},
  };
}

// The renderings are kept, and a test beside this one compares with them.
TEST(SamplesOfTheTeaShop, HoldAnExampleOfEachThing) {
  for (const Row& row : rows()) {
    const std::string file = DORVEX_SAMPLES "/expected/" + std::string(row.sample) + ".json";
    EXPECT_TRUE(holds(json::parse(readFile(file)), row.path, 0, row.value))
        << row.thing << ", in " << row.sample;
  }
}

TEST(SamplesOfTheTeaShop, AreNotSaidToHoldWhatTheyDoNot) {
  const json sample = json::parse(R"({"a": [{"b": 1}, {"b": ""}], "c": []})");
  EXPECT_TRUE(holds(sample, {"a", "*", "b"}, 0, 1));
  EXPECT_TRUE(holds(sample, {"**", "b"}, 0, 1));
  EXPECT_FALSE(holds(sample, {"a", "*", "b"}, 0, 2));
  EXPECT_FALSE(holds(sample, {"c"}, 0, nullptr));
  EXPECT_FALSE(holds(sample, {"b"}, 0, nullptr));
}

}  // namespace
}  // namespace dorvex::testing::rows_test
