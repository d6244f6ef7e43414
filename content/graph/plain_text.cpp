#include "graph/plain_text.h"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>

#include <algorithm>

#include "graph/utf8.h"

namespace dorvex::content {
namespace {

bool isLineBreak(char32_t code) {
  return code == '\n' || code == '\r' || code == 0x0B || code == 0x85 || code == kLineSeparator ||
         code == kParagraphSeparator;
}

bool isControl(char32_t code) {
  return (code < 0x20 && code != '\t') || (code >= 0x7F && code < 0xA0) || code == kAttachment;
}

bool isPrintableAscii(char byte) { return byte >= 0x20 && byte < 0x7F; }

}  // namespace

char32_t plainCharacter(char32_t code) {
  if (isLineBreak(code)) return '\n';
  return isControl(code) ? 0 : code;
}

std::string plainText(std::string_view bytes) {
  std::string text;
  appendPlainText(bytes, text);
  return text;
}

void appendPlainText(std::string_view bytes, std::string& text) {
  text.reserve(text.size() + bytes.size());
  while (true) {
    const auto* const special = std::ranges::find_if_not(bytes, isPrintableAscii);
    text.append(bytes.begin(), special);
    bytes.remove_prefix(static_cast<std::size_t>(special - bytes.begin()));
    if (bytes.empty()) return;
    const Character character = firstCharacter(bytes);
    if (!character.valid) {
      text += kReplacementBytes;
    } else if (bytes.starts_with("\r\n")) {
      // The line feed that follows makes the line break.
    } else if (const char32_t code = plainCharacter(character.code); code != 0) {
      appendCharacter(text, code);
    }
    bytes.remove_prefix(character.length);
  }
}

std::string composed(std::string_view bytes) {
  std::string text = plainText(bytes);
  if (std::ranges::all_of(text, isPrintableAscii)) return text;
  UErrorCode error = U_ZERO_ERROR;
  const icu::Normalizer2* form = icu::Normalizer2::getNFCInstance(error);
  if (U_FAILURE(error)) return text;
  std::string normalized;
  icu::StringByteSink<std::string> sink(&normalized);
  form->normalizeUTF8(0, text, sink, nullptr, error);
  return U_SUCCESS(error) ? normalized : text;
}

}  // namespace dorvex::content
