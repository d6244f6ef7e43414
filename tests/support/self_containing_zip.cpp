// The member is a program in the two instructions that DEFLATE (RFC 1951) has:
// L(n), a stored block, which prints the n bytes behind it, and R(n), which prints
// the last n bytes of output once more. It prints what stands before it, itself,
// and what stands behind it. Every instruction is whole bytes long, and all of
// them but the last R are equally long, so that one can print another's place.
#include "support/self_containing_zip.h"

#include <array>
#include <bit>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

#include "support/wire_writer.h"
#include "support/zip_bytes.h"

namespace dorvex::testing {
namespace {

constexpr std::size_t kInstruction = 5;
constexpr std::size_t kLastInstruction = 6;
constexpr std::size_t kGroup = 4 * kInstruction;  // four instructions, printed at once

// Bits in the order of the format: numbers from their lowest bit, codes from
// their highest.
class BitWriter {
 public:
  void number(unsigned value, int width) {
    for (int bit = 0; bit < width; ++bit) add((value >> bit & 1) != 0);
  }
  void code(unsigned value, int width) {
    for (int bit = width - 1; bit >= 0; --bit) add((value >> bit & 1) != 0);
  }
  std::string bytes() const { return bytes_; }

 private:
  void add(bool bit) {
    if (used_ == 0) bytes_.push_back('\0');
    if (bit)
      bytes_.back() = static_cast<char>(static_cast<unsigned char>(bytes_.back()) | 1 << used_);
    used_ = (used_ + 1) % 8;
  }

  std::string bytes_;
  int used_ = 0;  // bits of the last byte
};

// A symbol of the fixed codes: its number among those of its kind, and the bits
// behind it.
struct Symbol {
  unsigned number;
  unsigned extra;
  int extraBits;
};

// How long symbol number 1 and all after it are: from 3 bytes, or from a distance
// of 1, one more each until the bits behind the symbols begin to grow, after
// every perSize symbols.
Symbol symbolFor(std::size_t value, std::size_t first, unsigned perSize) {
  std::size_t start = first;
  for (unsigned number = 0;; ++number) {
    const int extraBits = number < 2 * perSize ? 0 : static_cast<int>(number / perSize) - 1;
    const std::size_t end = start + (std::size_t{1} << extraBits);
    if (value < end) return {number, static_cast<unsigned>(value - start), extraBits};
    start = end;
  }
}

void writeMatch(BitWriter& bits, std::size_t length, std::size_t distance) {
  const Symbol size = symbolFor(length, 3, 4);
  bits.code(size.number + 1, 7);  // the codes of 256 to 279; 256 ends a block
  bits.number(size.extra, size.extraBits);
  const Symbol back = symbolFor(distance, 1, 2);
  bits.code(back.number, 5);
  bits.number(back.extra, back.extraBits);
}

void writeBlockStart(BitWriter& bits) { bits.number(0b010, 3); }  // not the last, fixed codes
void writeBlockEnd(BitWriter& bits) { bits.code(0, 7); }

// L(n), without the bytes.
std::string store(std::size_t count) {
  return std::string(1, '\0') + encodeLittleEndian(count, 2) +
         encodeLittleEndian(~count & 0xFFFF, 2);
}

// R(n), in matches of these lengths and as many empty blocks as fill the last byte.
std::string repeat(const std::vector<std::size_t>& lengths, int emptyBlocks, std::size_t size) {
  std::size_t distance = 0;
  for (const std::size_t length : lengths) distance += length;
  BitWriter bits;
  writeBlockStart(bits);
  for (const std::size_t length : lengths) writeMatch(bits, length, distance);
  writeBlockEnd(bits);
  for (; emptyBlocks > 0; --emptyBlocks) {
    writeBlockStart(bits);
    writeBlockEnd(bits);
  }
  if (bits.bytes().size() != size) throw std::logic_error("an instruction has another length");
  return bits.bytes();
}

// The program between what stands before and behind it.
std::string program(const std::string& before, const std::string& behind) {
  const std::string five = store(kInstruction);
  const std::string group = store(kGroup);
  const std::string repeatGroup = repeat({10, 10}, 0, kInstruction);
  const std::string start = store(before.size() + kInstruction);
  const std::string repeatStart = repeat({before.size() + kInstruction}, 1, kInstruction);
  const std::string end = store(kLastInstruction + behind.size());
  const std::string repeatEnd =
      repeat({3, kLastInstruction + behind.size() - 3}, 0, kLastInstruction);
  const std::string nothing = store(0);
  return start + before + start +                             //
         repeatStart +                                        //
         five + repeatStart +                                 //
         five + five +                                        //
         group + repeatStart + five + five + group +          //
         repeatGroup +                                        //
         group + repeatGroup + group + repeatGroup + group +  //
         repeatGroup +                                        //
         group + repeatGroup + nothing + nothing + end +      //
         repeatGroup +                                        //
         nothing + nothing +                                  //
         end + repeatEnd + behind +                           //
         repeatEnd;
}

constexpr char kLastBlock[] = {0b011, 0};  // the last, fixed codes, empty

// 60 and 98 bytes before and behind the contents: then every R comes out in whole
// bytes.
RawMember memberWith(const std::string& contents, std::uint32_t crc, std::uint32_t size) {
  return {
      .name = "Index.zip",
      .contents = contents,
      .method = 8,
      .crc = crc,
      .size = size,
      .extra = encodeLittleEndian(0xD0D0, 2) + encodeLittleEndian(17, 2) + std::string(17, '.')};
}

// The zip that states this checksum. What it unpacks to is itself.
std::string zipThatStates(std::uint32_t crc) {
  const std::size_t frame = rawZip({memberWith("", 0, 0)}).size();
  std::string contents;
  // The lengths that the headers state do not change the contents' own.
  for (int round = 0; round < 2; ++round) {
    const auto size = static_cast<std::uint32_t>(frame + contents.size());
    const std::string whole = rawZip({memberWith(contents, crc, size)});
    const std::size_t head = frame - 98;
    const std::string behind =
        std::string(kLastBlock, sizeof kLastBlock) + whole.substr(head + contents.size());
    contents = program(whole.substr(0, head), behind) + std::string(kLastBlock, sizeof kLastBlock);
  }
  return rawZip({memberWith(contents, crc, static_cast<std::uint32_t>(frame + contents.size()))});
}

// The checksum c of the zip that states c. Checksums are linear in the bytes: the
// true one is that for zero with a fixed pattern flipped for each bit that is
// stated, which makes 32 equations with 32 unknowns over GF(2).
std::uint32_t ownChecksum() {
  const std::uint32_t constant = crcOf(zipThatStates(0));
  std::array<std::uint64_t, 32> rows{};  // the unknowns' coefficients, and the sum in bit 32
  for (unsigned bit = 0; bit < 32; ++bit) {
    const std::uint32_t stated = std::uint32_t{1} << bit;
    const std::uint32_t pattern = crcOf(zipThatStates(stated)) ^ constant ^ stated;
    for (unsigned row = 0; row < 32; ++row) rows[row] |= std::uint64_t{pattern >> row & 1} << bit;
  }
  for (unsigned row = 0; row < 32; ++row) rows[row] |= std::uint64_t{constant >> row & 1} << 32;
  for (unsigned column = 0; column < 32; ++column) {
    unsigned pivot = column;
    while (pivot < 32 && (rows[pivot] >> column & 1) == 0) ++pivot;
    if (pivot == 32) throw std::logic_error("no zip of this form states its own checksum");
    std::swap(rows[column], rows[pivot]);
    for (unsigned row = 0; row < 32; ++row)
      if (row != column && (rows[row] >> column & 1) != 0) rows[row] ^= rows[column];
  }
  std::uint32_t checksum = 0;
  for (unsigned bit = 0; bit < 32; ++bit)
    checksum |= static_cast<std::uint32_t>(rows[bit] >> 32 & 1) << bit;
  return checksum;
}

}  // namespace

std::string selfContainingZip() { return zipThatStates(ownChecksum()); }

}  // namespace dorvex::testing
