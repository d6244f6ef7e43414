// The writers of tokens (dorvexutil.h). Integers are little-endian and unaligned.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "Readers/dorvexsr/dorvexlistutil.h"
#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/vennik/vnexcept/vnexcept.h"

namespace {

enum TokenType : unsigned char {
  TOKEN_TEXT = 0x00,
  TOKEN_BREAK = 0x0E,
  TOKEN_DOC_HEADER = 0x0F,
  TOKEN_PAGE_SETUP = 0x10,
};

constexpr std::uint32_t kBreakSize = 5;
constexpr std::uint32_t kTextFrameSize = 9;
constexpr std::uint32_t kDocHeaderSize = 13;
constexpr std::uint32_t kPageSetupSize = 38;

constexpr int kMaxPieceSize = 4096;
// What the room tests add to a text's length: one less than its frame and its
// break take. Hosts own the missing bytes; see the buffer rule of the boundary.
constexpr int kRoomBeyondText = 13;

// Letter paper with margins of an inch, in units of 1/1440 inch, for every
// document: no page geometry is read from a package.
constexpr std::array<std::uint32_t, 8> kPageSetup = {12240, 15840, 1440,       1440,
                                                     1440,  1440,  0xFFFFFFFF, 0xFFFFFFFF};

void putByte(TAG_VNDORVEXGlobals* context, unsigned char byte) { *context->tokenCursor++ = byte; }

void putInteger(TAG_VNDORVEXGlobals* context, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    putByte(context, static_cast<unsigned char>(value >> shift));
}

void putTokenHead(TAG_VNDORVEXGlobals* context, TokenType type, std::uint32_t size) {
  putByte(context, type);
  putInteger(context, size);
}

void putText(TAG_VNDORVEXGlobals* context, std::string_view text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  putTokenHead(context, TOKEN_TEXT, kTextFrameSize + length);
  putInteger(context, length);
  std::memcpy(context->tokenCursor, text.data(), text.size());
  context->tokenCursor += text.size();
}

void requireRoom(TAG_VNDORVEXGlobals* context, int needed) {
  // Out of memory reaches the host as 6 from here, and not as 2.
  if (dorvexCheckOutputBuf(context, needed) != 0) throw vn::except::general_error();
}

// Cuts at a fixed count of bytes, also inside a character: hosts join the pieces
// up to the break before they decode.
void putPieces(TAG_VNDORVEXGlobals* context, std::string_view text) {
  requireRoom(context, static_cast<int>(text.size()) + kRoomBeyondText);
  putText(context, text.substr(0, kMaxPieceSize));
  for (std::size_t cut = kMaxPieceSize; cut < text.size(); cut += kMaxPieceSize) {
    const std::string_view piece = text.substr(cut, kMaxPieceSize);
    requireRoom(context, static_cast<int>(piece.size()));  // its frame is not counted
    putText(context, piece);
  }
}

}  // namespace

void writePrologue(TAG_VNDORVEXGlobals* context) {
  putTokenHead(context, TOKEN_DOC_HEADER, kDocHeaderSize);
  putInteger(context, 0);
  putInteger(context, 10);
  putTokenHead(context, TOKEN_PAGE_SETUP, kPageSetupSize);
  putByte(context, 2);
  for (const std::uint32_t value : kPageSetup) putInteger(context, value);
}

void writeToOutput(TAG_VNDORVEXGlobals* context, std::string_view text) {
  if (context == nullptr) throw vn::except::general_error();
  if (text.empty()) return;
  const int length = static_cast<int>(text.size());
  if (length + kRoomBeyondText < kMaxPieceSize + 1) {
    requireRoom(context, length + kRoomBeyondText);
    putText(context, text);
  } else {
    putPieces(context, text);
  }
  putTokenHead(context, TOKEN_BREAK, kBreakSize);  // with no room test of its own
}
