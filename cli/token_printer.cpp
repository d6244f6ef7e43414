#include "token_printer.h"

#include <array>
#include <string_view>

namespace dorvex::cli {
namespace {

struct Escape {
  char byte;
  std::string_view text;
};

constexpr std::array<Escape, 5> kEscapes = {
    {{'\n', "\\n"}, {'\r', "\\r"}, {'\t', "\\t"}, {'"', "\\\""}, {'\\', "\\\\"}}};

bool isControl(char byte) { return (byte >= 0 && byte < 0x20) || byte == 0x7F; }

std::string inHex(char byte) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  return {'\\', 'x', digits[value >> 4], digits[value & 0xF]};
}

std::string escaped(char byte) {
  for (const Escape& escape : kEscapes) {
    if (escape.byte == byte) return std::string(escape.text);
  }
  return isControl(byte) ? inHex(byte) : std::string(1, byte);
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char byte : text) result += escaped(byte);
  return result + "\"";
}

template <typename Values>
std::string joined(const Values& values) {
  std::string result;
  for (const auto value : values) {
    result += ' ';
    result += std::to_string(value);
  }
  return result;
}

struct Printer {
  std::string operator()(const DocHeaderToken& token) const {
    return "DOC_HEADER" + joined(token.values);
  }
  std::string operator()(const PageSetupToken& token) const {
    return "PAGE_SETUP " + std::to_string(token.kind) + joined(token.values);
  }
  std::string operator()(const TextToken& token) const { return "TEXT " + quoted(token.text); }
  std::string operator()(const BreakToken&) const { return "BREAK"; }
};

}  // namespace

std::string print(const Token& token) { return std::visit(Printer{}, token) + "\n"; }

}  // namespace dorvex::cli
