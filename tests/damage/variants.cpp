#include "damage/variants.h"

#include <snappy.h>

#include <algorithm>
#include <optional>
#include <random>
#include <stdexcept>

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

using Random = std::mt19937_64;

// The same on every platform, unlike the distributions of the library.
std::size_t below(Random& random, std::size_t limit) {
  return limit == 0 ? 0 : static_cast<std::size_t>(random() % limit);
}

std::uint64_t hashOf(const std::string& name) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
  return hash;
}

// A range of bytes, most often a short one.
struct Range {
  std::size_t start;
  std::size_t length;
};

Range chooseRange(Random& random, std::size_t first, std::size_t size) {
  const std::size_t start = first + below(random, size - first);
  const std::size_t longest = below(random, 8) == 0 ? size - start : std::size_t{64};
  return {start, 1 + below(random, std::min(longest, size - start))};
}

void damageOnce(Random& random, std::string& bytes, std::size_t first) {
  if (first >= bytes.size()) return;
  const auto [start, length] = chooseRange(random, first, bytes.size());
  switch (below(random, 5)) {
    case 0:
      bytes.erase(start, length);
      break;
    case 1:
      bytes.insert(start, bytes.substr(start, length));
      break;
    case 2: {
      const std::size_t other = first + below(random, bytes.size() - first);
      const std::size_t count = std::min({length, bytes.size() - other, bytes.size() - start});
      for (std::size_t i = 0; i < count; ++i) std::swap(bytes[start + i], bytes[other + i]);
      break;
    }
    default:
      bytes[start] = static_cast<char>(bytes[start] ^ (1 + below(random, 255)));
  }
}

void damage(Random& random, std::string& bytes, std::size_t first = 0) {
  for (std::size_t times = 1 + below(random, 4); times > 0; --times)
    damageOnce(random, bytes, first);
}

bool isStream(const Member& member) { return member.name.ends_with(".iwa"); }
bool isContainer(const Member& member) { return member.name.ends_with("Index.zip"); }

// Nothing where a chunk is not sound.
std::optional<std::string> decompress(const std::string& member) {
  std::string stream;
  for (std::size_t at = 0; at < member.size();) {
    if (member.size() - at < 4 || member[at] != 0) return std::nullopt;
    const auto byte = [&](std::size_t i) {
      return std::size_t{static_cast<unsigned char>(member[at + i])};
    };
    const std::size_t length = byte(1) | byte(2) << 8 | byte(3) << 16;
    if (length > member.size() - at - 4) return std::nullopt;
    std::string block;
    if (!snappy::Uncompress(member.data() + at + 4, length, &block)) return std::nullopt;
    stream += block;
    at += 4 + length;
  }
  return stream;
}

std::vector<Member> membersOf(const std::string& zip) {
  try {
    return unzip(zip);
  } catch (const std::runtime_error&) {
    return {};
  }
}

// Changes one member stream, in a nested container where there is one. False
// where there is none.
template <typename Change>
bool changeStream(Random& random, std::vector<Member>& members, Change change) {
  std::vector<Member*> candidates;
  for (Member& member : members) {
    if (isStream(member) || isContainer(member)) candidates.push_back(&member);
  }
  if (candidates.empty()) return false;
  Member& chosen = *candidates[below(random, candidates.size())];
  if (isStream(chosen)) {
    change(chosen.contents);
    return true;
  }
  std::vector<Member> inner = membersOf(chosen.contents);
  if (!changeStream(random, inner, change)) return false;
  chosen.contents = zip(inner);
  return true;
}

void damageObjects(Random& random, std::string& member) {
  std::optional<std::string> stream = decompress(member);
  if (!stream) {
    damage(random, member);
    return;
  }
  damage(random, *stream);
  member = iwa(*stream);
}

void collectStreams(const std::vector<Member>& members, std::vector<std::string>& streams) {
  for (const Member& member : members) {
    if (isContainer(member)) collectStreams(membersOf(member.contents), streams);
    if (!isStream(member)) continue;
    if (auto stream = decompress(member.contents)) streams.push_back(std::move(*stream));
  }
}

void emptyOthers(std::vector<Member>& members) {
  for (Member& member : members) {
    if (!isStream(member) && !isContainer(member)) member.contents.clear();
  }
}

std::vector<Member> filesBelow(const fs::path& root) {
  std::vector<Member> files;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_regular_file())
      files.push_back({fs::relative(entry.path(), root).string(), readFile(entry.path())});
  }
  std::ranges::sort(files, {}, &Member::name);
  return files;
}

void damageFile(Random& random, DamagedDocument& document) {
  constexpr std::size_t kListAtTheEnd = 4096;
  std::string* bytes = &document.zip;
  for (Member& file : document.files) {
    if (isContainer(file)) bytes = &file.contents;
  }
  if (bytes->empty() && !document.files.empty())
    bytes = &document.files[below(random, document.files.size())].contents;
  const bool nearTheEnd = below(random, 2) == 0 && bytes->size() > kListAtTheEnd;
  damage(random, *bytes, nearTheEnd ? bytes->size() - kListAtTheEnd : 0);
}

template <typename Change>
bool changeStreamOf(Random& random, DamagedDocument& document, Change change) {
  if (document.zip.empty()) return changeStream(random, document.files, change);
  std::vector<Member> members = membersOf(document.zip);
  if (!changeStream(random, members, change)) return false;
  document.zip = zip(members);
  return true;
}

}  // namespace

Variants::Variants(const fs::path& path) : name_(path.filename()) {
  if (fs::is_directory(path))
    whole_.files = filesBelow(path);
  else
    whole_.zip = readFile(path);
  lean_ = whole_;
  emptyOthers(lean_.files);
  std::vector<Member> members = membersOf(lean_.zip);
  emptyOthers(members);
  if (!members.empty()) lean_.zip = zip(members);
}

DamagedDocument Variants::make(std::uint64_t number) const {
  Random random(hashOf(name_) + number);
  DamagedDocument document = lean_;
  bool done = false;
  if (number % 3 == 1) {
    done = changeStreamOf(random, document, [&](auto& member) { damage(random, member); });
  } else if (number % 3 == 2) {
    done = changeStreamOf(random, document, [&](auto& member) { damageObjects(random, member); });
  }
  if (done) return document;
  document = whole_;
  damageFile(random, document);
  return document;
}

std::vector<std::string> Variants::objectStreams(const DamagedDocument& document) {
  std::vector<std::string> streams;
  collectStreams(document.zip.empty() ? document.files : membersOf(document.zip), streams);
  return streams;
}

}  // namespace dorvex::testing
