// Parsing of one message of an object stream.
//
// The walk of an object stream does not realign: after a failed parse the next
// item is read from the byte where the parse stopped. So not only the result of
// a parse counts, but also the cursor behind it, down to the byte, and the
// protobuf runtime's own entry point takes a whole limited range off the stream
// before it parses. The rules kept here, for one message under one limit:
//
//  - Tags and lengths are varints of at most ten bytes, of which the low 32 bits
//    count, a length as a signed number. A varint that does not end within ten
//    bytes fails without moving; one that the limit cuts off consumes up to the
//    limit and fails.
//  - A tag of 0 (the limit, a zero byte, an unreadable tag) and an end-group tag
//    end the message. At the top level that is success; an embedded message must
//    have ended exactly at its limit.
//  - The length of an embedded message or a packed field is a limit, clamped to
//    the enclosing one; a negative length is no limit of its own.
//  - A value that runs past the limit consumes up to the limit and fails; a
//    negative length of a string fails behind the length.
//  - Known fields of an unexpected wire type and unknown values of enums are kept
//    as unknown fields; repeated scalars are read packed and unpacked.
//  - A bool is true unless the low 32 bits of its varint are 0.
//  - At most 100 levels of embedded messages and unknown groups, counted on the
//    stream: a failed embedded message does not give its level back.
#pragma once

namespace google::protobuf {
class Message;
namespace io {
class CodedInputStream;
}
}  // namespace google::protobuf

namespace vn::iwork13 {

// Clears the message and parses it from the stream, under the limit that the
// caller has pushed. Required fields may be missing. True if the message ended
// well; in both cases the cursor stands behind what was consumed, and the
// caller pops its limit. Needs descriptors; see field_tree.h for a way without.
bool parseMessage(google::protobuf::Message& message,
                  google::protobuf::io::CodedInputStream& input);

// Levels of embedded messages and unknown groups that a stream starts with.
inline constexpr int kRecursionLimit = 100;

}  // namespace vn::iwork13
