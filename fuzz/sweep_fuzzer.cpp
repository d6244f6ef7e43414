// The text sweep: tokens of the sweep that scans against those of the sweep that
// parses and prints everything, through output buffers of any size; and the
// normalisation of values against plain search and replace.
//
// Input: one word, the size of the host's buffer; the object stream, which also
// stands for a printed value.
#include <algorithm>
#include <list>
#include <string>
#include <vector>

#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/formats/vniwork13/printed_form.h"
#include "Tools/formats/vniwork13/registry.h"
#include "fuzz_input.h"
#include "input_form.h"
#include "instances.h"
#include "reader_output.h"
#include "reference_walk.h"
#include "support/token_decoder.h"

namespace dorvex::fuzz {
namespace {

using vn::iwork13::MessageMap;

constexpr auto kFactory = makeRemembered<vn::iwork13::getPagesMessage>;

std::string sweepPlainly(const std::vector<unsigned char>& stream) {
  MessageMap::Map map;
  walkObjectStream(stream, kFactory, vn::iwork13::PayloadReading::kBuild, map);
  deleteStrayInstances(map);
  std::string tokens;
  for (const auto& [identifier, message] : map) {
    const std::string printed = vn::iwork13::printMessage(*message);
    delete message;
    std::list<std::string> values;
    extractFields(values, printed, "text");
    extractFields(values, printed, "string");
    for (const std::string& value : values)
      if (!value.empty()) tokens += testing::textTokens(value);
  }
  return tokens;
}

std::string replacedPlainly(std::string value, const std::string& search,
                            const std::string& replacement) {
  for (std::size_t found = value.find(search); found != std::string::npos;
       found = value.find(search, found + replacement.size()))
    value.replace(found, search.size(), replacement);
  return value;
}

void checkNormalisation(const std::string& value) {
  std::string converted = value;
  convertAllOctalCodesToAscii(converted);
  require(converted.size() <= value.size(), "normalisation does not lengthen a value");
  require(converted == value || value.find('\\') != std::string::npos,
          "a value without a backslash stays as it is");

  std::string replaced = converted;
  replaceAllLFsAndTabs(replaced);
  require(replaced == replacedPlainly(replacedPlainly(converted, "\\n", "\n"), "\\t", "\t"),
          "line feeds and tabs are replaced");

  for (const std::string pattern : {"\\'", "\\\"", "\\\\"}) {
    std::string plain = replaced;
    for (std::size_t found = plain.find(pattern); found != std::string::npos;
         found = plain.find(pattern, found + 1))
      plain.erase(found, 1);
    std::string removed = replaced;
    removeFirstCharOfPattern(removed, pattern);
    require(removed == plain, "the first character of a pattern is removed");
  }
}

}  // namespace

const InputForm kInputForm{2, Level::kObjectStream};

}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const auto bufferSize = static_cast<std::uint32_t>(1 + input.word() % 8192);
  const std::string_view bytes = input.rest();
  checkNormalisation(std::string(bytes));
  const std::vector<unsigned char> stream(bytes.begin(), bytes.end());
  if (!walkEnds(stream, vn::iwork13::getPagesMessage)) return 0;
  require(sweepTokens(stream, bufferSize) == sweepPlainly(stream),
          "both sweeps give the same tokens");
  return 0;
}
