// The writer of JSON, over any document: the output parses, and has the shape that is
// published.
//
// Input: one word, the options; the choices that make the document.
#include <string>

#include "content/support/valid_output.h"
#include "fuzz_input.h"
#include "support/package_writer.h"
#include "written_document.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex;
  static const std::string schema = testing::readFile(DORVEX_CONTENT_SCHEMA);
  fuzz::FuzzInput input(data, size);
  const fuzz::Rendering rendering = fuzz::writtenDocument(input, content::Format::kJson);
  const std::string& json = rendering.output;
  fuzz::requireNoFlaw(testing::flawOfText(json, "\n"), json);
  fuzz::requireNoFlaw(testing::flawOfJson(json, schema, rendering.options.oneLine), json);
  return 0;
}
