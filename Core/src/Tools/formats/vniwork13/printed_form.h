// The printed form of a message, which the text sweep scrapes.
//
// It is the multi-line text format of protobuf's 2.5 line, to the letter: a line
// for each field in ascending number, two blanks of indentation a level, extensions
// in square brackets, unknown fields by number. Values of string and bytes fields
// are quoted and stand on one line; see appendEscaped for their escapes. Of an
// unknown field it is not known what it holds: a value that is a message to its
// exact end, at any depth, is printed as one, any other is quoted with the plain
// escaping, octal from 0x80 up. A float has six digits, or eight where those do not
// give it back, a double fifteen or seventeen.
//
// Printing is our own: later releases of the library differ in all of this.
#pragma once

#include <string>
#include <string_view>

namespace google::protobuf {
class Message;
}

namespace vn::iwork13 {

class FieldTree;

// Appends the printed form of a string or bytes value, without its quotes:
// line feed, carriage return, tab, both quotes and the backslash get a
// backslash, other bytes below 0x20 and 0x7F three octal digits, and all other
// bytes stand as they are, valid UTF-8 or not.
void appendEscaped(std::string_view value, std::string& printed);

// The printed form of a message; ends in a line feed unless it is empty. That of
// an instance needs descriptors.
std::string printMessage(const FieldTree& message);
std::string printMessage(const google::protobuf::Message& message);

}  // namespace vn::iwork13
