// Builds documents for tests, from archives up to whole packages, and damaged
// ones on request.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/wire_writer.h"

namespace dorvex::testing {

// Type ids of the messages that tests build most.
enum ObjectType : int {
  kStorageType = 2001,         // TSWP.StorageArchive
  kCommentStorageType = 3056,  // TSD.CommentStorageArchive
  kTableDataListType = 6005,   // TST.TableDataList
  kUnknownType = 1,            // known to no registry that the reader uses
};

// One message of an archive.
struct Payload {
  int type;
  std::string bytes;
  // What the archive header says in place of the number of bytes.
  std::optional<std::uint64_t> statedLength = {};
};

// One object of an object stream.
struct Archive {
  std::optional<std::uint64_t> identifier;
  std::vector<Payload> payloads;
};

// The archive as it stands in an object stream: length, header, payloads.
std::string encodeArchive(const Archive& archive);

// An archive of one message.
Archive object(std::uint64_t identifier, int type, std::string payload);
inline Archive object(std::uint64_t identifier, int type, const Wire& payload) {
  return object(identifier, type, payload.str());
}

// Objects that hold text.
Archive storage(std::uint64_t identifier, const std::vector<std::string>& texts);
Archive comment(std::uint64_t identifier, std::string_view text);

// The object stream of some archives.
std::string objectStream(const std::vector<Archive>& archives);

// One Snappy block: compressed as well as Snappy can, or written as literals.
std::string compressedBlock(std::string_view bytes);
std::string literalBlock(std::string_view bytes);

// One chunk around a body, which need be no Snappy block. The header states
// statedLength if it is given.
std::string chunk(std::string_view body, std::optional<std::uint32_t> statedLength = {});

// A chunk that Snappy refuses.
std::string damagedChunk();

// A whole .iwa member: the object stream cut into chunks of at most pieceSize
// bytes before compression.
std::string iwa(std::string_view stream, std::size_t pieceSize = 65536);
inline std::string iwa(const std::vector<Archive>& archives) { return iwa(objectStream(archives)); }

// A file of a package.
struct Member {
  std::string name;  // path inside the package, separated by forward slashes
  std::string contents;
  bool deflated = false;
};

// A zip of the members, in their order.
std::string zip(const std::vector<Member>& members);

// The members of a zip, in its order. Throws std::runtime_error for what is no zip
// and for one that states more than mostBytes bytes for all members together.
std::vector<Member> unzip(std::string_view bytes, std::uint64_t mostBytes = UINT32_MAX);

// Writes the members below a folder, which is made if need be.
void writeDirectory(const std::filesystem::path& root, const std::vector<Member>& members);

// Whole files.
std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace dorvex::testing
