// The whole reader, pumped by a host, with the container module.
//
// Input: one word, the size of the host's buffer; twelve bytes, the lengths of
// the reads; the document, which has no path.
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz_host.h"
#include "fuzz_input.h"
#include "input_form.h"
#include "reader_document.h"
#include "support/token_decoder.h"

namespace dorvex::fuzz {
namespace {

constexpr std::uint32_t kPrologueSize = 51;
constexpr std::uint32_t kLargeBuffer = 1U << 20;
constexpr int kDone = 100;

// All buffers, one behind the other; nothing for a document that is refused.
std::optional<std::string> pump(std::string_view contents, ReadLengths readLengths,
                                std::uint32_t bufferSize) {
  FuzzHost host(readLengths);
  const ReaderDocument document(host.services(), host.addDocument(std::string(contents)));
  // Just what a host must own.
  std::vector<unsigned char> buffer(std::max<std::size_t>(bufferSize + 14U, 4110));
  std::string stream;
  int percent = 0;
  do {
    unsigned int length = 0;
    const int result = document.interface().FillBuffer(document.context(), buffer.data(), &length,
                                                       &percent, bufferSize);
    host.requireAllClosed();
    host.requireSoundFrees();
    require(result == 0 || result == 2 || result == 4 || result == 6, "a stated result");
    if (result != 0) return std::nullopt;
    const std::string_view tokens(reinterpret_cast<const char*>(buffer.data()), length);
    require(testing::decodeTokens(tokens).has_value(), "a buffer holds whole tokens");
    require(percent >= 0 && percent <= kDone, "progress is a percentage");
    stream += tokens;
  } while (percent != kDone);
  require(stream.starts_with(testing::prologue()), "a stream begins with the prologue");
  return stream;
}

}  // namespace

const InputForm kInputForm{14, Level::kPackage};

}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const auto bufferSize = static_cast<std::uint32_t>(kPrologueSize + input.word() % 8192);
  const ReadLengths readLengths(input);
  const std::string_view contents = input.rest();
  const auto stream = pump(contents, readLengths, bufferSize);
  if (stream) {
    require(pump(contents, readLengths, kLargeBuffer) == stream,
            "tokens do not depend on the size of the buffer");
  }
  return 0;
}
