#include "graph/graph.h"

#include <algorithm>
#include <utility>

#include "KNArchives.h"
#include "TNArchives.h"
#include "TSPArchiveMessages.h"
#include "TSPMessages.h"
#include "Tools/formats/vniwork13/snappy_utils.h"
#include "graph/message.h"
#include "graph/sorted.h"
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

// The chunks of a member, decompressed up to the first one that cannot be; whether
// that was all.
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
      addStream(name, *bytes, leftOut);
    } else {
      addDamage(name, "cannot be read", leftOut);
    }
  }
  // The first object stored under an identifier is the one.
  sortAndKeepFirst(objects_, &Object::identifier);
}

void Graph::addStream(std::string_view name, std::string_view member, LeftOut& leftOut) {
  std::string& stream = streams_.emplace_back();
  const bool whole = decompress(member, stream);
  if (stream.empty() && !whole) {
    streams_.pop_back();
    ++leftOut.passedOver;
    return;
  }
  std::string_view rest = stream;
  while (!rest.empty() && addArchive(rest)) {
  }
  if (!whole || !rest.empty()) addDamage(name, "is damaged", leftOut);
}

// Adds the object of the archive that stream begins with, and takes it off.
bool Graph::addArchive(std::string_view& stream) {
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
      objects_.push_back(
          {info.get(Info::identifier), message.get(TSP::MessageInfo::type), rest.substr(0, size)});
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
