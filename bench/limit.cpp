#include "limit.h"

#include <snappy.h>
#include <zip.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <string_view>

namespace dorvex::bench {
namespace {

namespace fs = std::filesystem;

struct Discard {
  void operator()(zip_t* archive) const { zip_discard(archive); }
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};

// Used again from one member to the next.
struct Buffers {
  std::string member;
  std::string objects;
};

std::size_t decompress(std::string_view member, std::string& objects) {
  constexpr std::size_t kHeader = 4;
  std::size_t total = 0;
  while (member.size() > kHeader) {
    const auto byte = [&](std::size_t i) {
      return std::size_t{static_cast<unsigned char>(member[i])};
    };
    const std::size_t length = byte(1) | byte(2) << 8U | byte(3) << 16U;
    std::size_t size = 0;
    if (!snappy::GetUncompressedLength(member.data() + kHeader, length, &size)) break;
    if (objects.size() < size) objects.resize(size);
    if (!snappy::RawUncompress(member.data() + kHeader, length, objects.data())) break;
    total += size;
    member.remove_prefix(kHeader + length);
  }
  return total;
}

std::size_t readZip(std::string_view bytes, Buffers& buffers) {
  zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, nullptr);
  const std::unique_ptr<zip_t, Discard> archive(zip_open_from_source(source, ZIP_RDONLY, nullptr));
  if (!archive) {
    zip_source_free(source);
    return 0;
  }
  std::size_t total = 0;
  const auto count = static_cast<zip_uint64_t>(zip_get_num_entries(archive.get(), 0));
  for (zip_uint64_t index = 0; index < count; ++index) {
    zip_stat_t stat;
    if (zip_stat_index(archive.get(), index, 0, &stat) != 0) continue;
    const std::string_view name = stat.name;
    const bool isContainer = name.ends_with("Index.zip");
    if (!isContainer && !isSelected(name)) continue;
    const std::unique_ptr<zip_file_t, Discard> file(zip_fopen_index(archive.get(), index, 0));
    buffers.member.resize(stat.size);
    if (zip_fread(file.get(), buffers.member.data(), stat.size) < 0) continue;
    total += isContainer ? readZip(std::string(buffers.member), buffers)
                         : decompress(buffers.member, buffers.objects);
  }
  return total;
}

std::string contentsOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(fs::file_size(path), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

std::size_t readFolder(const fs::path& folder, Buffers& buffers) {
  std::size_t total = 0;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string name = entry.path().filename();
    if (name == "Index.zip") total += readZip(contentsOf(entry.path()), buffers);
    if (name == "Index" || name == "Tables") total += readFolder(entry.path(), buffers);
    if (name.ends_with(".iwa")) total += decompress(contentsOf(entry.path()), buffers.objects);
  }
  return total;
}

}  // namespace

std::size_t readLimit(const Document& document) {
  Buffers buffers;
  return document.memberPath.empty()
             ? readZip(document.bytes, buffers)
             : readFolder(fs::path(document.memberPath).parent_path().parent_path(), buffers);
}

}  // namespace dorvex::bench
