// The writer of text, over any document: no control characters but those that it sets.
//
// Input: one word, the options; the choices that make the document.
#include "content/support/valid_output.h"
#include "fuzz_input.h"
#include "written_document.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex;
  fuzz::FuzzInput input(data, size);
  const fuzz::Rendering rendering = fuzz::writtenDocument(input, content::Format::kText);
  fuzz::requireNoFlaw(testing::flawOfText(rendering.output, "\n\t\f"), rendering.output);
  return 0;
}
