// The container module over an I/O object, against libzip over the same bytes.
//
// Input: one byte, how the object behaves; twelve bytes, the lengths of its
// reads; the zip.
#include <zip.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "fuzz_input.h"
#include "support/host_tables.h"

extern "C" int unzipGetContainerReaderInterface(ContainerReaderInterface* interface);

namespace dorvex::fuzz {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 20;  // that a stream takes
constexpr int kMostMembers = 64;                          // that are looked at

// Behaviour of the object, by bit.
enum Behaviour : unsigned { kShortReads = 1, kShortWrites = 2, kFailingReads = 4 };

struct Object : _VPTPIOobj {
  Object(std::string_view bytes, unsigned howToBehave, ReadLengths readLengths)
      : _VPTPIOobj{}, contents(bytes), behaviour(howToBehave), lengths(readLengths) {
    Read = read;
    Write = write;
    Seek = seek;
    Tell = [](_VPTPIOobj* io) { return self(io).position; };
  }

  static Object& self(_VPTPIOobj* io) { return *static_cast<Object*>(io); }

  static int read(_VPTPIOobj* io, void* buffer, std::uint32_t count) {
    Object& object = self(io);
    if ((object.behaviour & kFailingReads) != 0 && ++object.reads % 16 == 0) return -1;
    const auto size = static_cast<std::int64_t>(object.contents.size());
    const auto left = static_cast<std::size_t>(std::max<std::int64_t>(size - object.position, 0));
    const std::size_t wanted =
        (object.behaviour & kShortReads) != 0 ? object.lengths.next(count) : count;
    const std::size_t got = std::min(wanted, left);
    if (got == 0) return 0;
    std::memcpy(buffer, object.contents.data() + object.position, got);
    object.position += static_cast<std::int64_t>(got);
    return static_cast<int>(got);
  }

  static int write(_VPTPIOobj* io, const void* buffer, std::uint32_t count) {
    Object& object = self(io);
    const std::size_t room = kMostBytes - std::min(kMostBytes, object.written.size());
    const std::size_t wanted =
        (object.behaviour & kShortWrites) != 0 ? object.lengths.next(count) : count;
    const std::size_t taken = std::min(wanted, room);
    object.written.append(static_cast<const char*>(buffer), taken);
    return static_cast<int>(taken);
  }

  static int seek(_VPTPIOobj* io, std::int64_t offset, int whence) {
    Object& object = self(io);
    object.position =
        offset + (whence == VN_SEEK_END ? static_cast<std::int64_t>(object.contents.size()) : 0);
    require(object.position >= 0, "the position stays in the stream");
    return 0;
  }

  std::string_view contents;
  std::string written;
  unsigned behaviour;
  ReadLengths lengths;
  std::int64_t position = 0;
  int reads = 0;
};

struct Discard {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, Discard>;

Archive openDirectly(std::string_view bytes) {
  zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, nullptr);
  Archive archive(zip_open_from_source(source, ZIP_RDONLY, nullptr));
  if (archive == nullptr) zip_source_free(source);
  return archive;
}

// Whether a member of a central directory is marked as having a name in UTF-8.
bool hasNameMarkedAsUtf8(std::string_view bytes) {
  constexpr std::string_view kCentralSignature = "PK\1\2";
  constexpr std::size_t kHighFlags = 9;
  constexpr int kUtf8Mark = 1 << 3;
  for (auto at = bytes.find(kCentralSignature); at != std::string_view::npos;
       at = bytes.find(kCentralSignature, at + 1)) {
    if (at + kHighFlags < bytes.size() && (bytes[at + kHighFlags] & kUtf8Mark) != 0) return true;
  }
  return false;
}

std::string readDirectly(zip_t* archive, int index, std::size_t size) {
  zip_file_t* file = zip_fopen_index(archive, static_cast<zip_uint64_t>(index), 0);
  require(file != nullptr, "what is extracted can be opened");
  std::string bytes(size, '\0');
  const zip_int64_t got = zip_fread(file, bytes.data(), bytes.size());
  zip_fclose(file);
  require(got == static_cast<zip_int64_t>(size), "what is extracted has its whole length");
  return bytes;
}

void checkMember(const ContainerReaderInterface& module, void* container, zip_t* direct, int index,
                 const Object& source) {
  ContainerEntryInfo entry;
  std::memset(&entry, testing::kDirty, sizeof entry);
  const int status = module.GetEntryInfo(container, index, &entry);
  require(std::memchr(entry.name, 0, sizeof entry.name) != nullptr, "a name has an end");
  if (status != VN_CONTAINER_OK) {
    require(entry.name[0] == '\0' && entry.size == 0, "nothing is told of a bad member");
    return;
  }
  Object target({}, source.behaviour & kShortWrites, source.lengths);
  if (module.ExtractEntry(container, index, &target) != VN_CONTAINER_OK) return;
  require(target.written.size() == entry.size, "as many bytes come as the record says");
  require(target.written == readDirectly(direct, index, entry.size), "the right bytes come");
}

void checkMembers(const ContainerReaderInterface& module, void* container, const Object& object) {
  const Archive direct = openDirectly(object.contents);
  // libzip refuses a whole zip for one name that is marked as UTF-8 and is not, and the
  // module does not. Its error is that of the last end record that it has tried.
  if (direct == nullptr && hasNameMarkedAsUtf8(object.contents)) return;
  require(direct != nullptr, "what the module opens is a zip");
  const int count = module.GetEntryCount(container);
  require(count >= 0 && count <= zip_get_num_entries(direct.get(), 0), "members are no more");
  for (int index = 0; index < std::min(count, kMostMembers); ++index)
    checkMember(module, container, direct.get(), index, object);
  ContainerEntryInfo entry;
  for (const int index : {-1, count})
    require(module.GetEntryInfo(container, index, &entry) == VN_CONTAINER_INVALID_ARGUMENT,
            "a member that is not there is refused");
}

void checkZip(Object& object) {
  ContainerReaderInterface module{};
  unzipGetContainerReaderInterface(&module);
  void* container = module.OpenContainer(&object, nullptr, 0);
  if (container == nullptr) return;
  checkMembers(module, container, object);
  require(module.CloseContainer(container) == VN_CONTAINER_OK, "a container can be closed");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const unsigned behaviour = input.byte();
  const ReadLengths readLengths(input);
  Object object(input.rest(), behaviour, readLengths);
  checkZip(object);
  return 0;
}
