// The printed form of a message, which the text sweep scrapes.
//
// It is protobuf's multi-line text format: a line for each field in ascending
// number, two blanks of indentation a level, extensions in square brackets,
// unknown fields by number. Values of string and bytes fields are quoted and
// stand on one line; see appendEscaped for their escapes. Values of unknown
// fields keep the library's plain escaping, octal from 0x80 up.
#pragma once

#include <google/protobuf/text_format.h>

#include <string>
#include <string_view>

namespace vn::iwork13 {

// Appends the printed form of a string or bytes value, without its quotes:
// line feed, carriage return, tab, both quotes and the backslash get a
// backslash, other bytes below 0x20 and 0x7F three octal digits, and all other
// bytes stand as they are, valid UTF-8 or not.
void appendEscaped(std::string_view value, std::string& printed);

// Prints messages. One printer serves any number of them, on one thread.
class MessagePrinter {
 public:
  MessagePrinter();

  // The printed form of the message; ends in a line feed unless it is empty.
  std::string print(const google::protobuf::Message& message) const;

 private:
  google::protobuf::TextFormat::Printer printer_;
};

}  // namespace vn::iwork13
