// The objects of a member stream, as far as a host has to know them.
//
// Decompressed, a member is a run of archives: a length, a header that lists
// messages, and the messages. The reader goes over damage in it without a word
// and gives the text of what it could still read. A host that must not pass such
// a text off as whole looks for itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorvex {

// Bytes of an object stream beyond which the reader's walk reads nothing, and
// never ends.
constexpr std::uint64_t kMostReadableObjects = std::uint64_t{64} * 1024 * 1024;

// Looks through a decompressed member while it comes, in pieces of any size: that
// archives fill it, that each header and each message is a run of well-formed fields,
// and that nothing is cut short. Fields inside fields are not looked at: what is a
// message and what is text only the schema tells.
//
// Of what has come it keeps the part that is not looked through yet, less than a
// message and a piece. Behind a fault it goes on only as far as the type of the
// document object may still be found.
class ObjectLook {
 public:
  enum class Root { kIgnored, kWanted };

  // The header of an archive. What it does not state is 0, and the last statement
  // counts.
  struct MessageInfo {
    std::uint64_t type = 0;
    std::uint64_t length = 0;
  };
  struct ArchiveInfo {
    std::uint64_t identifier = 0;
    std::vector<MessageInfo> messages;
  };

  explicit ObjectLook(Root root);
  ObjectLook(const ObjectLook&) = delete;
  ObjectLook& operator=(const ObjectLook&) = delete;
  ~ObjectLook();

  // Where the next piece goes, of up to count bytes; valid until it is taken.
  char* room(std::size_t count);
  // Looks through the count bytes that now stand there.
  void take(std::size_t count);
  void takeCopy(std::string_view bytes);

  // Of the whole stream, which has come: nothing for a sound one (an empty one is
  // sound); otherwise what is wrong, as a phrase for people.
  std::optional<std::string> fault() const;

  // The type of the object with identifier 1, which is the document itself; nothing
  // where no such object has come, or none can be read.
  std::optional<std::uint64_t> rootType() const { return root_; }

  // The identifiers of the objects that the reader files, up to the first fault, in
  // their order.
  std::vector<std::uint64_t> takeFiled() { return std::move(filed_); }

 private:
  std::string_view atHand() const { return {room_.data() + begin_, end_ - begin_}; }
  bool next();
  void passEmptyArchives();
  bool nextHeader();
  bool nextMessage();
  void finishArchive();
  void note(const char* fault);
  bool lose(const char* fault);

  std::string room_;  // what is not looked through stands from begin_ to end_
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  std::size_t needed_ = 0;    // bytes without which there is no going on
  std::uint64_t number_ = 1;  // of the archive at hand, from 1
  ArchiveInfo archive_;       // its header
  std::size_t message_ = 0;   // the one at hand
  bool lost_ = false;         // what comes now cannot be told apart
  bool wantsRoot_;
  std::optional<std::uint64_t> root_;
  std::vector<std::uint64_t> filed_;
  std::optional<std::string> fault_;
};

// The same for a stream that is there as a whole.
std::optional<std::string> findObjectFault(std::string_view objectStream,
                                           std::vector<std::uint64_t>* filed = nullptr);
std::optional<std::uint64_t> findRootType(std::string_view objectStream);

}  // namespace dorvex
