#include "support/package_writer.h"

#include <snappy.h>
#include <zip.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace dorvex::testing {
namespace {

// 2013-10-22 12:00 for every member, so that a package comes out the same each time.
constexpr zip_uint16_t kDosDate = (2013 - 1980) << 9 | 10 << 5 | 22;
constexpr zip_uint16_t kDosTime = 12 << 11;

struct ZipDiscarder {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
using ZipPointer = std::unique_ptr<zip_t, ZipDiscarder>;

struct SourceFreer {
  void operator()(zip_source_t* source) const { zip_source_free(source); }
};
using SourcePointer = std::unique_ptr<zip_source_t, SourceFreer>;

void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

void addMember(zip_t* archive, const Member& member) {
  zip_source_t* source =
      zip_source_buffer(archive, member.contents.data(), member.contents.size(), 0);
  require(source != nullptr, "no source for a zip member");
  const zip_int64_t index = zip_file_add(archive, member.name.c_str(), source, ZIP_FL_ENC_UTF_8);
  if (index < 0) zip_source_free(source);
  require(index >= 0, "cannot add a zip member");
  const auto position = static_cast<zip_uint64_t>(index);
  zip_set_file_compression(archive, position, member.deflated ? ZIP_CM_DEFLATE : ZIP_CM_STORE, 0);
  zip_file_set_dostime(archive, position, kDosTime, kDosDate, 0);
}

std::string readSource(zip_source_t* source) {
  require(zip_source_open(source) == 0, "cannot read a zip back");
  zip_source_seek(source, 0, SEEK_END);
  std::string bytes(static_cast<std::size_t>(zip_source_tell(source)), '\0');
  zip_source_seek(source, 0, SEEK_SET);
  zip_source_read(source, bytes.data(), bytes.size());
  zip_source_close(source);
  return bytes;
}

std::string readMember(zip_t* archive, zip_uint64_t index, zip_uint64_t size) {
  std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(zip_fopen_index(archive, index, 0),
                                                         zip_fclose);
  require(file != nullptr, "cannot open a zip member");
  std::string contents(size, '\0');
  require(zip_fread(file.get(), contents.data(), size) == static_cast<zip_int64_t>(size),
          "cannot read a zip member");
  return contents;
}

}  // namespace

std::string encodeArchive(const Archive& archive) {
  Wire header;
  if (archive.identifier) header.varint(1, *archive.identifier);
  std::string payloads;
  for (const auto& [type, bytes, statedLength] : archive.payloads) {
    header.message(2, Wire()
                          .varint(1, static_cast<std::uint64_t>(type))
                          .bytes(2, std::string("\1\0\5", 3))
                          .varint(3, statedLength.value_or(bytes.size())));
    payloads += bytes;
  }
  return encodeVarint(header.str().size()) + header.str() + payloads;
}

Archive object(std::uint64_t identifier, int type, std::string payload) {
  return {identifier, {{type, std::move(payload)}}};
}

Archive storage(std::uint64_t identifier, const std::vector<std::string>& texts) {
  Wire message;
  for (const std::string& text : texts) message.bytes(3, text);
  return object(identifier, kStorageType, message);
}

Archive comment(std::uint64_t identifier, std::string_view text) {
  return object(identifier, kCommentStorageType, Wire().bytes(1, text));
}

std::string objectStream(const std::vector<Archive>& archives) {
  std::string stream;
  for (const Archive& archive : archives) stream += encodeArchive(archive);
  return stream;
}

std::string compressedBlock(std::string_view bytes) {
  std::string block;
  snappy::Compress(bytes.data(), bytes.size(), &block);
  return block;
}

std::string literalBlock(std::string_view bytes) {
  constexpr std::size_t kMaxLiteral = 60;  // lengths that need no byte of their own
  std::string block = encodeVarint(bytes.size());
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kMaxLiteral))) {
    const std::string_view literal = bytes.substr(0, kMaxLiteral);
    block += static_cast<char>((literal.size() - 1) << 2);
    block += literal;
  }
  return block;
}

std::string chunk(std::string_view body, std::optional<std::uint32_t> statedLength) {
  const auto length = statedLength.value_or(static_cast<std::uint32_t>(body.size()));
  return '\0' + encodeLittleEndian(length, 3) + std::string(body);
}

std::string damagedChunk() {
  // A preamble of five bytes, then a copy from before the block's beginning.
  return chunk(std::string("\x05\x01\x07", 3));
}

std::string iwa(std::string_view stream, std::size_t pieceSize) {
  std::string member;
  for (; !stream.empty(); stream.remove_prefix(std::min(stream.size(), pieceSize)))
    member += chunk(compressedBlock(stream.substr(0, pieceSize)));
  return member;
}

std::string zip(const std::vector<Member>& members) {
  // The smallest zip there is: libzip writes none for a container without members.
  if (members.empty()) return "PK\5\6" + std::string(18, '\0');
  zip_error_t error{};
  const SourcePointer buffer(zip_source_buffer_create(nullptr, 0, 0, &error));
  require(buffer != nullptr, "no buffer for a zip");
  zip_source_keep(buffer.get());  // the archive takes one reference
  ZipPointer archive(zip_open_from_source(buffer.get(), ZIP_TRUNCATE, &error));
  require(archive != nullptr, "cannot create a zip");
  for (const Member& member : members) addMember(archive.get(), member);
  require(zip_close(archive.get()) == 0, "cannot write a zip");
  static_cast<void>(archive.release());
  return readSource(buffer.get());
}

std::vector<Member> unzip(std::string_view bytes, std::uint64_t mostBytes) {
  zip_error_t error{};
  zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
  require(source != nullptr, "no source for a zip");
  const ZipPointer archive(zip_open_from_source(source, ZIP_RDONLY, &error));
  if (archive == nullptr) zip_source_free(source);
  require(archive != nullptr, "not a zip");
  std::vector<Member> members;
  const auto count = static_cast<zip_uint64_t>(zip_get_num_entries(archive.get(), 0));
  for (zip_uint64_t index = 0; index < count; ++index) {
    zip_stat_t stat{};
    require(zip_stat_index(archive.get(), index, 0, &stat) == 0, "no entry of a zip");
    require(stat.size <= mostBytes, "a zip of too many bytes");
    mostBytes -= stat.size;
    members.push_back(
        {stat.name, readMember(archive.get(), index, stat.size), stat.comp_method != ZIP_CM_STORE});
  }
  return members;
}

void writeDirectory(const std::filesystem::path& root, const std::vector<Member>& members) {
  std::filesystem::create_directories(root);
  for (const Member& member : members) {
    const std::filesystem::path path = root / member.name;
    std::filesystem::create_directories(path.parent_path());
    writeFile(path, member.contents);
  }
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  require(file.is_open(), path.c_str());
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  require(file.good(), path.c_str());
}

}  // namespace dorvex::testing
