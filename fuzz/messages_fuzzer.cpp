// What the host believes of a worker process, and of a reader: frames, results
// and token streams.
//
// Input: one word, the largest token frame; then the bytes, which are taken for
// each of them in turn.
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "dorvex/token_stream.h"
#include "fuzz_input.h"
#include "isolation/worker_protocol.h"
#include "support/token_decoder.h"

namespace dorvex::fuzz {
namespace {

using Bytes = std::span<const unsigned char>;

void checkHeader(Bytes bytes, std::size_t largestTokens) {
  if (bytes.size() < kFrameHeaderSize) return;
  const Bytes encoded = bytes.first(kFrameHeaderSize);
  const auto header = decodeHeader(encoded, largestTokens);
  if (!header) return;
  require(header->length <= std::max<std::size_t>(largestTokens, kLargestResultFrame),
          "no length is believed");
  require(std::ranges::equal(encodeHeader(*header), encoded), "a header means just one frame");
}

void checkResult(Bytes bytes) {
  const auto result = decodeResult(bytes);
  if (result) require(std::ranges::equal(encodeResult(*result), bytes), "a result is all of it");
}

// The texts of a strict stream; nothing if it is not one.
std::optional<std::vector<std::string>> readTexts(Bytes bytes) {
  TokenStreamReader reader;
  TextJoiner joiner;
  std::vector<std::string> texts;
  try {
    reader.start(bytes);
    while (const auto token = reader.next())
      if (joiner.take(*token)) texts.push_back(joiner.text());
    reader.finish();
    return texts;
  } catch (const TokenStreamError&) {
    return std::nullopt;
  }
}

void checkTokens(Bytes bytes) {
  const auto texts = readTexts(bytes);
  if (!texts) return;
  const std::string stream(bytes.begin(), bytes.end());
  require(testing::decodeTokens(stream).has_value(), "a strict stream is a stream");
  require(testing::textsOf(stream) == *texts, "texts are joined alike");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const std::size_t largestTokens = input.word();
  const std::string_view rest = input.rest();
  const Bytes bytes(reinterpret_cast<const unsigned char*>(rest.data()), rest.size());
  checkHeader(bytes, largestTokens);
  checkResult(bytes);
  checkTokens(bytes);
  return 0;
}
