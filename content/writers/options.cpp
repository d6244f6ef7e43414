#include "writers/options.h"

#include "writers/csv_writer.h"
#include "writers/html_writer.h"
#include "writers/json_writer.h"
#include "writers/markdown_writer.h"
#include "writers/text_writer.h"

namespace dorvex::content {

std::unique_ptr<Sink> makeWriter(const WriterOptions& options, const Receiver& receiver) {
  switch (options.format) {
    case Format::kJson:
      return std::make_unique<JsonWriter>(receiver.output, options.oneLine);
    case Format::kMarkdown:
      return std::make_unique<MarkdownWriter>(options, receiver.output);
    case Format::kHtml:
      return std::make_unique<HtmlWriter>(options, receiver.output);
    case Format::kText:
      return std::make_unique<TextWriter>(options, receiver.output);
    case Format::kCsv:
      break;
  }
  return std::make_unique<CsvWriter>(options.csv, receiver);
}

}  // namespace dorvex::content
