// Chunk decoding: the form over a buffer, the form over reads that are cut
// anywhere, and the host's own look at chunks.
//
// Input: one word, the size of the read buffer; twelve bytes, the lengths of the
// reads; the member.
#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/snappy_utils.h"
#include "fuzz_input.h"
#include "looking/chunk_stream.h"

namespace dorvex::fuzz {
namespace {

using vn::iwork13::DataDecompresser;
using vn::iwork13::kChunkHeaderSize;

constexpr std::size_t kLargestBuffer = 4096;
// The host's rule keeps the place only for reads longer than a header.
constexpr std::size_t kSmallestAligned = kChunkHeaderSize + 1;

// The reader goes round for ever once the end was reported: the host's part.
struct EndOfStream {};

// A member behind a Read slot.
struct MemberObject : _VPTPIOobj {
  MemberObject(std::span<const unsigned char> member, ReadLengths readLengths, bool keepStep)
      : _VPTPIOobj{}, lengths(readLengths), inStep(keepStep) {
    store = makeMemoryStore(member);
    aligned.emplace(*store);
    Read = read;
  }

  static int read(_VPTPIOobj* io, void* buffer, std::uint32_t count) {
    auto& self = *static_cast<MemberObject*>(io);
    if (self.ended) throw EndOfStream{};
    const std::size_t wanted = self.lengths.next(count);
    const std::int64_t got = self.inStep ? self.aligned->readAt(self.position, buffer,
                                                                std::max(wanted, kSmallestAligned))
                                         : self.store->readAt(self.position, buffer, wanted);
    require(got >= 0 && got <= static_cast<std::int64_t>(count), "a read keeps to its buffer");
    self.position += static_cast<std::uint64_t>(got);
    self.ended = got == 0;
    return static_cast<int>(got);
  }

  std::unique_ptr<ByteStore> store;
  std::optional<ChunkAlignedReader> aligned;
  ReadLengths lengths;
  bool inStep;  // with the chunks, as the host reads
  std::uint64_t position = 0;
  bool ended = false;
};

// The object stream by reads; nothing where the member is refused or never ends.
std::optional<std::string> decodeByReads(MemberObject& member, std::size_t size,
                                         std::vector<unsigned char>& buffer) {
  DataDecompresser decompresser{
      buffer.data(), static_cast<std::uint32_t>(buffer.size()), {}, {}, 0, 0};
  try {
    while (decompresser.bytesConsumed < size) {
      const std::uint32_t before = decompresser.bytesConsumed;
      decompresser.read(&member);
      require(decompresser.bytesConsumed >= before, "the count of consumed bytes only grows");
      require(decompresser.bytesConsumed <= member.position, "no byte is consumed unread");
    }
  } catch (const vn::iwork13::iwa_uncompression_error&) {
    return std::nullopt;
  } catch (const EndOfStream&) {
    return std::nullopt;
  }
  return std::string(decompresser.objectStream.begin(), decompresser.objectStream.end());
}

void checkMember(std::string_view member, std::size_t bufferSize, ReadLengths lengths) {
  const std::vector<char> whole =
      vn::iwork13::uncompressIwaBuffer(member.data(), static_cast<std::uint32_t>(member.size()));
  const std::span bytes(reinterpret_cast<const unsigned char*>(member.data()), member.size());

  ObjectStream objects;
  const auto store = makeMemoryStore(bytes);
  const auto fault = findChunkFault(*store, &objects);
  require(std::ranges::equal(whole, objects.bytes), "host and reader decode the same chunks");
  require(findChunkFault(*store) == fault, "decoding along does not change the fault");

  std::vector<unsigned char> buffer(bufferSize);
  MemberObject cut(bytes, lengths, false);
  decodeByReads(cut, member.size(), buffer);

  buffer.resize(std::max(bufferSize, kSmallestAligned));
  MemberObject stepped(bytes, lengths, true);
  const auto decoded = decodeByReads(stepped, member.size(), buffer);
  if (!fault) require(decoded == objects.bytes, "a sound member comes out whole by reads in step");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const std::size_t bufferSize = 1 + input.word() % kLargestBuffer;
  const ReadLengths lengths(input);
  checkMember(input.rest(), bufferSize, lengths);
  return 0;
}
