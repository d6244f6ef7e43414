// What formats show of values, and formulas as text.
//
// Input: eight bytes, a double; one word, the length of a format; that payload, of a
// FormatStructArchive and of a CustomFormatArchive; the rest is the payload of a
// FormulaArchive.
#include <bit>
#include <cmath>
#include <cstdint>
#include <string>

#include "content/support/objects.h"
#include "fuzz_input.h"
#include "graph/utf8.h"
#include "tables/custom_format.h"
#include "tables/format.h"
#include "tables/formula.h"

namespace dorvex::fuzz {
namespace {

namespace content = dorvex::content;
using content::Message;

constexpr std::size_t kMostBytes = 1 << 20;

void checkText(const std::string& text) {
  require(text.size() <= kMostBytes, "what a format shows is bounded");
  require(content::validUtf8(text) == text, "what a format shows is UTF-8");
}

template <typename Shown>
void checkFormat(const Shown& format, double value, const content::Symbols& symbols) {
  std::string text;
  if (std::isfinite(value)) format.appendNumber(content::Decimal(value), symbols, text);
  format.appendDate(value, symbols, text);
  format.appendText("a text\xC3", text);
  checkText(text);
}

void checkFormats(double value, std::string_view bytes) {
  testing::Objects objects({}, content::Application::kNumbers);
  content::Formatting formatting(objects.reading());
  const content::Symbols& symbols = formatting.symbols();
  const content::CellFormat format(content::FormatArchive(bytes), formatting);
  checkFormat(format, value, symbols);
  std::string text;
  format.appendDuration(value, symbols, text);
  checkText(text);
  const content::CustomFormat custom(Message<content::schema::TSK::CustomFormatArchive>(bytes),
                                     symbols);
  checkFormat(custom, value, symbols);
}

void checkFormula(std::string_view bytes) {
  testing::Objects objects({}, content::Application::kNumbers);
  const auto formula = content::formulaText(
      objects.reading(), Message<content::schema::TSCE::FormulaArchive>(bytes), {nullptr, {7, 3}});
  checkText(formula.text);
  require(formula.text.empty() != formula.problem.empty() || formula.text.empty(),
          "a formula has a text or a problem");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  std::uint64_t bits = 0;
  for (unsigned i = 0; i < 8; ++i) bits |= std::uint64_t{input.byte()} << (8 * i);
  const std::size_t formatSize = input.word();
  const std::string format(input.take(formatSize));
  checkFormats(std::bit_cast<double>(bits), format);
  checkFormula(input.rest());
  return 0;
}
