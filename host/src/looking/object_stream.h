// The objects of a member stream, as far as a host has to know them.
//
// Decompressed, a member is a run of archives: a length, a header that lists
// messages, and the messages. The reader goes over damage in it without a word
// and gives the text of what it could still read. A host that must not pass such
// a text off as whole looks for itself.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace dorvex {

// Bytes of an object stream beyond which the reader's walk reads nothing, and
// never ends.
constexpr std::uint64_t kMostReadableObjects = std::uint64_t{64} * 1024 * 1024;

// Looks through a decompressed member: that archives fill it, that each header
// and each message is a run of well-formed fields, and that nothing is cut
// short. Nothing for a sound stream (an empty one is sound); otherwise what is
// wrong, as a phrase for people. Fields inside fields are not looked at: what is
// a message and what is text only the schema tells.
std::optional<std::string> findObjectFault(std::string_view objectStream);

// The type of the object with identifier 1, which is the document itself;
// nothing where no such object can be read.
std::optional<std::uint64_t> findRootType(std::string_view objectStream);

}  // namespace dorvex
