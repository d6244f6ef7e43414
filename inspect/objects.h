// The objects of a member stream, as the inspector lists them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorvex::cli {

// One message of an object.
struct ListedMessage {
  int type = 0;
  std::uint64_t size = 0;  // bytes of its payload
  std::size_t texts = 0;   // that the reader takes from it
  bool damaged = false;    // the reader cannot parse it, or not to its end
  std::string payload;     // only of the object that is asked for
};

struct ListedObject {
  std::uint64_t identifier = 0;
  std::size_t member = 0;  // index of its member in the listing
  std::vector<ListedMessage> messages;
};

// Lists object streams one after the other, in the order of the reader: of two
// objects with one identifier it keeps the first, and takes no text from the
// second.
class ObjectLister {
 public:
  // Keeps the payloads of this object.
  explicit ObjectLister(std::optional<std::uint64_t> wanted) : wanted_(wanted) {}

  // Lists the objects of one decompressed stream. The reader takes texts from it
  // if it is selected. What ends the listing early, as a phrase for people; or
  // nothing.
  std::optional<std::string> list(std::string_view stream, std::size_t member, bool selected);

  // Gives away what has been listed.
  std::vector<ListedObject> take() { return std::move(objects_); }

 private:
  std::size_t countTexts(ListedMessage& message, std::string_view payload,
                         std::uint64_t identifier);

  std::optional<std::uint64_t> wanted_;
  std::set<std::uint64_t> taken_;  // identifiers that the reader has an object for
  std::vector<ListedObject> objects_;
};

}  // namespace dorvex::cli
