#include "graph/graph.h"

#include <snappy.h>

#include <algorithm>
#include <map>
#include <utility>

#include "KNArchives.h"
#include "TNArchives.h"
#include "TSPArchiveMessages.h"
#include "TSPMessages.h"
#include "Tools/formats/vniwork13/snappy_utils.h"
#include "graph/message.h"
#include "graph/types.h"

namespace dorvex::content {
namespace {

constexpr std::uint64_t kDocument = 1;  // the identifier of the document object
constexpr std::uint32_t kPagesDocument = 10000;
constexpr std::uint32_t kOtherDocument = 1;  // Keynote's or Numbers'

// Files that macOS lays beside those of a folder that it zips.
bool isResourceFork(std::string_view name) {
  const auto slash = name.rfind('/');
  return name.substr(slash == std::string_view::npos ? 0 : slash + 1).starts_with("._");
}

// How long the chunks of a member say that they are decompressed. What states more than
// the compression can give is a lie, and ends the sum.
std::size_t statedLength(std::string_view member) {
  std::size_t sum = 0;
  while (member.size() >= vn::iwork13::kChunkHeaderSize && member.front() == 0) {
    const auto length =
        vn::iwork13::getChunkLength(reinterpret_cast<const unsigned char*>(member.data()));
    member.remove_prefix(vn::iwork13::kChunkHeaderSize);
    std::size_t stated = 0;
    if (length > member.size() || !snappy::GetUncompressedLength(member.data(), length, &stated) ||
        stated > std::size_t{vn::iwork13::kMostExpansion} * length)
      break;
    sum += stated;
    member.remove_prefix(length);
  }
  return sum;
}

// Appends the chunks of a member, decompressed up to the first one that cannot be, as far
// as there is room; whether that was all.
bool decompress(std::string_view member, std::string& stream) {
  using namespace vn::iwork13;
  try {
    std::vector<char> block;
    while (member.size() >= kChunkHeaderSize) {
      const auto length = getChunkLength(reinterpret_cast<const unsigned char*>(member.data()));
      member.remove_prefix(kChunkHeaderSize);
      if (length > member.size()) return false;
      block.clear();
      appendUncompressedChunk(member.data(), length, block);
      if (block.size() > stream.capacity() - stream.size()) return false;
      stream.append(block.data(), block.size());
      member.remove_prefix(length);
    }
    return member.empty();
  } catch (const iwa_uncompression_error&) {
    return false;
  }
}

void addDamage(std::string_view name, const char* reason, LeftOut& leftOut) {
  leftOut.damaged.push_back({std::string(name), reason});
  leftOut.problems.push_back(std::string(name) + " " + reason);
}

// Objects of a member whose identifiers others have taken.
class Displaced {
 public:
  void add(const Object& keeper) {
    if (count_++ == 0) {
      keeper_ = keeper;
    } else {
      severalKeepers_ = severalKeepers_ || keeper.member != keeper_.member;
    }
  }

  std::string reason(const Package& package, std::uint32_t member) const {
    std::string keeper = keeper_.member == member ? "it" : package.members()[keeper_.member].name;
    if (severalKeepers_) keeper += " or another member";
    const std::string has = keeper_.member == member ? " has another" : " has one";
    if (count_ == 1)
      return "its object " + std::to_string(keeper_.identifier) + " is dropped, since " + keeper +
             has + " of that identifier";
    return std::to_string(count_) + " of its objects are dropped, since " + keeper + has +
           " of each of their identifiers";
  }

 private:
  Object keeper_;  // that of the first one
  std::uint64_t count_ = 0;
  bool severalKeepers_ = false;
};

}  // namespace

Graph::Graph(Package& package, LeftOut& leftOut) {
  const auto& members = package.members();
  for (std::size_t i = 0; i < members.size(); ++i) {
    const std::string& name = members[i].name;
    if (!name.ends_with(".iwa")) continue;
    if (isResourceFork(name)) {
      ++leftOut.passedOver;
      continue;
    }
    const auto bytes = package.read(i);
    if (bytes) {
      addStream(i, name, *bytes, leftOut);
    } else {
      addDamage(name, "cannot be read", leftOut);
    }
  }
  dropDisplaced(package, leftOut);
}

// The first object stored under an identifier is the one.
void Graph::dropDisplaced(const Package& package, LeftOut& leftOut) {
  if (!std::ranges::is_sorted(objects_, {}, &Object::identifier))
    std::ranges::stable_sort(objects_, {}, &Object::identifier);
  std::map<std::uint32_t, Displaced> displaced;  // by member
  std::size_t kept = 0;
  for (const Object& object : objects_) {
    if (kept > 0 && objects_[kept - 1].identifier == object.identifier) {
      displaced[object.member].add(objects_[kept - 1]);
    } else {
      objects_[kept++] = object;
    }
  }
  objects_.resize(kept);
  for (const auto& [member, objects] : displaced) {
    const std::string& name = package.members()[member].name;
    std::string reason = objects.reason(package, member);
    leftOut.problems.emplace_back(name).append(": ").append(reason);
    leftOut.damaged.push_back({name, std::move(reason)});
  }
}

void Graph::addStream(std::size_t member, std::string_view name, std::string_view bytes,
                      LeftOut& leftOut) {
  std::string& streams = streamsWithRoom(statedLength(bytes));
  const std::size_t start = streams.size();
  const bool whole = decompress(bytes, streams);
  std::string_view rest = std::string_view(streams).substr(start);
  if (rest.empty() && !whole) {
    ++leftOut.passedOver;
    return;
  }
  do {
    // Archives without a header hold nothing: a bomb of them is not gone through singly.
    rest.remove_prefix(std::min(rest.find_first_not_of('\0'), rest.size()));
  } while (!rest.empty() && addArchive(member, rest));
  if (!whole || !rest.empty()) addDamage(name, "is damaged", leftOut);
}

// Streams that lay one by one among what is only needed to read them would leave gaps of
// that size, and one that grew would be there twice.
std::string& Graph::streamsWithRoom(std::size_t bytes) {
  constexpr std::size_t kTogether = std::size_t{1} << 20;
  if (streams_.empty() || streams_.back().capacity() - streams_.back().size() < bytes)
    streams_.emplace_back().reserve(std::max(bytes, kTogether));
  return streams_.back();
}

// Adds the object of the archive that stream begins with, and takes it off.
bool Graph::addArchive(std::size_t member, std::string_view& stream) {
  using Info = TSP::ArchiveInfo;
  WireReader reader(stream);
  std::uint64_t length = 0;
  if (!reader.varint(length) || length > reader.rest().size()) return false;
  const Message<Info> info(reader.rest().substr(0, length));
  std::string_view rest = reader.rest().substr(length);
  bool first = true;
  for (const auto& message : info.all(Info::message_infos)) {
    const std::uint32_t size = message.get(TSP::MessageInfo::length);
    if (size > rest.size()) return false;
    // What follows the first message of an object are differences to it.
    if (std::exchange(first, false)) {
      objects_.push_back({info.get(Info::identifier), message.get(TSP::MessageInfo::type),
                          static_cast<std::uint32_t>(member), rest.substr(0, size)});
    }
    rest.remove_prefix(size);
  }
  stream = rest;
  return true;
}

std::optional<Application> Graph::application() const {
  const Object* document = find(kDocument);
  if (document == nullptr) return std::nullopt;
  if (document->type == kPagesDocument) return Application::kPages;
  if (document->type != kOtherDocument) return std::nullopt;
  // Both have a field 8, but only Keynote's has a show.
  const bool keynote =
      Message<KN::DocumentArchive>(document->payload).has(KN::DocumentArchive::show);
  return keynote ? Application::kKeynote : Application::kNumbers;
}

Object Graph::document() const {
  const Object* document = find(kDocument);
  return document == nullptr ? Object{} : *document;
}

const Object* Graph::find(std::uint64_t identifier) const {
  const auto object = std::ranges::lower_bound(objects_, identifier, {}, &Object::identifier);
  return object != objects_.end() && object->identifier == identifier ? &*object : nullptr;
}

}  // namespace dorvex::content
