#include "isolation/worker_protocol.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <type_traits>

#include "isolation/fd_channel.h"

namespace dorvex {
namespace {

constexpr std::size_t kLongestString = 65536;
constexpr std::size_t kMostSkipped = 100;

class Writer {
 public:
  template <typename Number>
  void number(Number value) {
    static_assert(std::is_integral_v<Number>);
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  void string(const std::string& text) {
    const std::size_t length = std::min(text.size(), kLongestString);
    number(static_cast<std::uint32_t>(length));
    bytes_.append(text, 0, length);
  }
  std::vector<unsigned char> bytes() const { return {bytes_.begin(), bytes_.end()}; }

 private:
  std::string bytes_;
};

// After a value that is not there everything reads as zero, and endedWell is
// false.
class Reader {
 public:
  explicit Reader(std::span<const unsigned char> bytes) : rest_(bytes) {}

  template <typename Number>
  Number number() {
    Number value{};
    if (const auto bytes = take(sizeof value)) std::memcpy(&value, bytes->data(), sizeof value);
    return value;
  }
  // A number of an enumeration that ends with last.
  template <typename Enum>
  Enum choice(Enum last) {
    const auto value = number<std::uint8_t>();
    good_ = good_ && value <= static_cast<std::uint8_t>(last);
    return good_ ? static_cast<Enum>(value) : Enum{};
  }
  std::string string() {
    const auto bytes = take(count<std::uint32_t>(kLongestString));
    return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
  }
  // A number of things, which must not be more than most.
  template <typename Number>
  Number count(std::size_t most) {
    const auto value = number<Number>();
    require(value <= most);
    return good_ ? value : Number{};
  }
  void require(bool condition) { good_ = good_ && condition; }
  bool good() const { return good_; }
  bool endedWell() const { return good_ && rest_.empty(); }

 private:
  std::optional<std::span<const unsigned char>> take(std::size_t count) {
    good_ = good_ && count <= rest_.size();
    if (!good_) return std::nullopt;
    const auto taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }

  std::span<const unsigned char> rest_;
  bool good_ = true;
};

struct LengthRange {
  std::size_t least;
  std::size_t most;
};

// No length at all is in the range of an unknown type.
LengthRange lengthsOf(FrameType type, std::size_t largestTokens) {
  switch (type) {
    case FrameType::kTokens:
      return {1, largestTokens};
    case FrameType::kOutput:
    case FrameType::kFileName:
    case FrameType::kFileBytes:
      return {1, kLargestPieceFrame};
    case FrameType::kLessConfined:
      return {1, kLongestPhraseFrame};
    case FrameType::kResult:
      return {0, kLargestResultFrame};
    case FrameType::kTaken:
    case FrameType::kOutOfMemory:
    case FrameType::kNeedScratch:
    case FrameType::kNeedLibzip:
      return {0, 0};
  }
  return {1, 0};
}

}  // namespace

std::array<unsigned char, kFrameHeaderSize> encodeHeader(FrameHeader header) {
  std::array<unsigned char, kFrameHeaderSize> bytes{};
  bytes[0] = static_cast<unsigned char>(header.type);
  std::memcpy(&bytes[1], &header.length, sizeof header.length);
  return bytes;
}

std::optional<FrameHeader> decodeHeader(std::span<const unsigned char> bytes,
                                        std::size_t largestTokens) {
  if (bytes.size() != kFrameHeaderSize) return std::nullopt;
  FrameHeader header{static_cast<FrameType>(bytes[0]), 0};
  std::memcpy(&header.length, &bytes[1], sizeof header.length);
  const LengthRange range = lengthsOf(header.type, largestTokens);
  const bool fits = header.length >= range.least && header.length <= range.most;
  return fits ? std::optional(header) : std::nullopt;
}

std::vector<unsigned char> encodeResult(const Result& result) {
  Writer writer;
  writer.number(static_cast<std::uint8_t>(result.status));
  writer.number(static_cast<std::uint8_t>(result.failure));
  writer.number(static_cast<std::uint8_t>(result.kind));
  writer.number(static_cast<std::uint8_t>(result.limit));
  writer.string(result.message);
  writer.number(static_cast<std::uint8_t>(result.moduleResult.has_value()));
  writer.number(static_cast<std::int32_t>(result.moduleResult.value_or(0)));
  writer.number(result.inputBytes);
  const std::size_t skipped = std::min(result.skipped.size(), kMostSkipped);
  writer.number(static_cast<std::uint32_t>(skipped));
  for (std::size_t i = 0; i < skipped; ++i) {
    writer.string(result.skipped[i].name);
    writer.string(result.skipped[i].reason);
  }
  return writer.bytes();
}

std::optional<Result> decodeResult(std::span<const unsigned char> payload) {
  Reader reader(payload);
  Result result;
  result.status = reader.choice(Status::kFailed);
  result.failure = reader.choice(Failure::kOther);
  result.kind = reader.choice(Kind::kNumbers);
  result.limit = reader.choice(Limit::kInput);
  result.message = reader.string();
  const bool answered = reader.count<std::uint8_t>(1) != 0;
  const auto moduleResult = reader.number<std::int32_t>();
  reader.require(answered || moduleResult == 0);
  if (answered) result.moduleResult = moduleResult;
  result.inputBytes = reader.number<std::uint64_t>();
  const auto skipped = reader.count<std::uint32_t>(kMostSkipped);
  for (std::uint32_t i = 0; i < skipped && reader.good(); ++i) {
    std::string name = reader.string();
    result.skipped.push_back({std::move(name), reader.string()});
  }
  return reader.endedWell() ? std::optional(std::move(result)) : std::nullopt;
}

bool sendFrame(int channel, FrameType type, std::span<const unsigned char> payload) {
  return sendBytes(channel, encodeHeader({type, static_cast<std::uint32_t>(payload.size())})) &&
         sendBytes(channel, payload);
}

}  // namespace dorvex
