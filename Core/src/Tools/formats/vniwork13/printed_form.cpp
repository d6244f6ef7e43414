#include "Tools/formats/vniwork13/printed_form.h"

#include <google/protobuf/message.h>

#include <array>

namespace vn::iwork13 {
namespace {

using google::protobuf::TextFormat;

// How one byte is printed: itself, a backslash and a letter, or octal digits.
enum : char { kPlain = 0, kOctal = 1 };

constexpr std::array<char, 256> makeEscapeTable() {
  std::array<char, 256> table{};
  for (int byte = 0; byte < 0x20; ++byte) table[static_cast<unsigned>(byte)] = kOctal;
  table[0x7F] = kOctal;
  table['\n'] = 'n';
  table['\r'] = 'r';
  table['\t'] = 't';
  table['"'] = '"';
  table['\''] = '\'';
  table['\\'] = '\\';
  return table;
}

constexpr std::array<char, 256> kEscapes = makeEscapeTable();

void appendOctal(unsigned char byte, std::string& printed) {
  printed += static_cast<char>('0' + (byte >> 6));
  printed += static_cast<char>('0' + (byte >> 3 & 7));
  printed += static_cast<char>('0' + (byte & 7));
}

// The library's own printer for UTF-8 escapes the high bytes of bytes fields;
// the sweep needs one form for string and bytes fields alike.
class ValuePrinter : public TextFormat::FastFieldValuePrinter {
 public:
  void PrintString(const std::string& value,
                   TextFormat::BaseTextGenerator* generator) const override {
    std::string printed(1, '"');
    printed.reserve(value.size() + 2);
    appendEscaped(value, printed);
    printed += '"';
    generator->PrintString(printed);
  }

  void PrintBytes(const std::string& value,
                  TextFormat::BaseTextGenerator* generator) const override {
    PrintString(value, generator);
  }
};

}  // namespace

void appendEscaped(std::string_view value, std::string& printed) {
  std::size_t plainFrom = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const auto byte = static_cast<unsigned char>(value[i]);
    const char escape = kEscapes[byte];
    if (escape == kPlain) continue;
    printed.append(value, plainFrom, i - plainFrom);
    plainFrom = i + 1;
    printed += '\\';
    if (escape == kOctal)
      appendOctal(byte, printed);
    else
      printed += escape;
  }
  printed.append(value, plainFrom);
}

MessagePrinter::MessagePrinter() {
  printer_.SetDefaultFieldValuePrinter(new ValuePrinter);  // the printer owns it
}

std::string MessagePrinter::print(const google::protobuf::Message& message) const {
  std::string printed;
  printer_.PrintToString(message, &printed);
  return printed;
}

}  // namespace vn::iwork13
