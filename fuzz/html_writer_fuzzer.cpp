// The writer of HTML, over any document: every element of its output ends where it should.
//
// Input: one word, the options; the choices that make the document.
#include "content/support/valid_output.h"
#include "fuzz_input.h"
#include "written_document.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex;
  fuzz::FuzzInput input(data, size);
  const fuzz::Rendering rendering = fuzz::writtenDocument(input, content::Format::kHtml);
  fuzz::requireNoFlaw(testing::flawOfText(rendering.output, "\n\t"), rendering.output);
  fuzz::requireNoFlaw(testing::flawOfHtml(rendering.output), rendering.output);
  return 0;
}
