#include "written_document.h"

#include "fuzz_choices.h"

namespace dorvex::fuzz {
namespace {

using namespace content;

// A choice of few bytes makes a row of a table, with a few texts in each cell.
constexpr std::size_t kMostOutput = std::size_t{8} << 20;

WriterOptions optionsFrom(FuzzInput& input, Format format) {
  WriterOptions options;
  options.format = format;
  const unsigned choices = input.word();
  const auto has = [choices](unsigned bit) { return (choices >> bit & 1U) != 0; };
  options.comments = static_cast<CommentPlace>((choices & 3U) % 3);
  options.changes = static_cast<ShownChanges>((choices >> 2U & 3U) % 3);
  options.csv.values = static_cast<CellValues>((choices >> 4U & 3U) % 3);
  options.dropSkipped = has(6);
  options.htmlTables = has(7);
  options.frontMatter = has(8);
  options.pandoc = has(9);
  options.oneLine = has(10);
  options.csv.header = !has(11);
  options.csv.fillMerged = has(12);
  options.csv.guard = has(13);
  options.csv.delimiter = has(14) ? ';' : ',';
  options.csv.eachTable = true;
  if (has(15)) options.mediaFolder = "some media";
  return options;
}

}  // namespace

Rendering writtenDocument(FuzzInput& input, Format format) {
  Rendering rendering{optionsFrom(input, format), {}, {}};
  FuzzChoices choices(input);
  const auto writer = makeWriter(
      rendering.options, {[&](std::string_view bytes) { rendering.output += bytes; },
                          [&](std::string_view name) {
                            require(!name.empty() && name.find('/') == std::string_view::npos,
                                    "a file has a plain name");
                            rendering.files.emplace_back();
                          },
                          [&](std::string_view bytes) { rendering.files.back() += bytes; }});
  try {
    testing::giveOddDocument(choices, *writer);
  } catch (const NoSuchTable&) {
    require(format == Format::kCsv && rendering.files.empty(), "only CSV needs a table");
  }
  require(rendering.output.size() <= kMostOutput, "the output is bounded");
  return rendering;
}

void requireNoFlaw(const std::string& flaw, std::string_view output) {
  if (flaw.empty()) return;
  std::fwrite(output.data(), 1, output.size(), stderr);
  require(false, flaw.c_str());
}

}  // namespace dorvex::fuzz
