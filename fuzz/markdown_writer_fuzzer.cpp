// The writer of Markdown, over any document: every row of a table has as many cells.
//
// Input: one word, the options; the choices that make the document.
#include "content/support/valid_output.h"
#include "fuzz_input.h"
#include "written_document.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex;
  fuzz::FuzzInput input(data, size);
  const fuzz::Rendering rendering = fuzz::writtenDocument(input, content::Format::kMarkdown);
  fuzz::requireNoFlaw(testing::flawOfText(rendering.output, "\n\t"), rendering.output);
  fuzz::requireNoFlaw(testing::flawOfMarkdown(rendering.output), rendering.output);
  return 0;
}
