#include "io_source.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "io_reader.h"

namespace dorvex::unzip {
namespace {

constexpr unsigned char kUtf8Mark = 1U << 3;  // in the high byte of the flags

struct IoSource {
  IoReader reader;
  std::vector<std::uint64_t> flags;
  std::uint64_t position = 0;
  zip_error_t error{};
};

zip_int64_t fail(IoSource& source, int code) {
  zip_error_set(&source.error, code, 0);
  return -1;
}

void hideMarks(const IoSource& source, unsigned char* bytes, std::uint64_t count) {
  const std::uint64_t start = source.position;
  // The mark is in the second byte of the two.
  auto at = std::ranges::lower_bound(source.flags, start == 0 ? 0 : start - 1);
  for (; at != source.flags.end() && *at + 1 < start + count; ++at) {
    if (*at + 1 >= start) bytes[*at + 1 - start] &= static_cast<unsigned char>(~kUtf8Mark);
  }
}

zip_int64_t read(IoSource& source, void* data, zip_uint64_t wanted) {
  const std::int64_t got = source.reader.readSome(source.position, data, wanted);
  if (got < 0) return fail(source, ZIP_ER_READ);
  hideMarks(source, static_cast<unsigned char*>(data), static_cast<std::uint64_t>(got));
  source.position += static_cast<std::uint64_t>(got);
  return got;
}

zip_int64_t seek(IoSource& source, void* data, zip_uint64_t length) {
  const zip_int64_t target = zip_source_seek_compute_offset(source.position, source.reader.size(),
                                                            data, length, &source.error);
  if (target < 0) return -1;
  source.position = static_cast<std::uint64_t>(target);
  return 0;
}

zip_int64_t stat(IoSource& source, void* data, zip_uint64_t length) {
  if (length < sizeof(zip_stat_t)) return fail(source, ZIP_ER_INVAL);
  auto* stat = static_cast<zip_stat_t*>(data);
  zip_stat_init(stat);
  stat->valid = ZIP_STAT_SIZE;
  stat->size = source.reader.size();
  return sizeof(zip_stat_t);
}

zip_int64_t dispatch(IoSource& source, void* data, zip_uint64_t length, zip_source_cmd_t command) {
  switch (command) {
    case ZIP_SOURCE_OPEN:
      source.position = 0;
      return 0;
    case ZIP_SOURCE_READ:
      return read(source, data, length);
    case ZIP_SOURCE_SEEK:
      return seek(source, data, length);
    case ZIP_SOURCE_TELL:
      return static_cast<zip_int64_t>(source.position);
    case ZIP_SOURCE_STAT:
      return stat(source, data, length);
    case ZIP_SOURCE_CLOSE:
      return 0;
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&source.error, data, length);
    case ZIP_SOURCE_FREE:
      zip_error_fini(&source.error);
      delete &source;
      return 0;
    case ZIP_SOURCE_SUPPORTS:
      return zip_source_make_command_bitmap(
          ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR,
          ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, ZIP_SOURCE_SUPPORTS, -1);
    default:
      return fail(source, ZIP_ER_OPNOTSUPP);
  }
}

// libzip is C: what a host's slot throws must not pass through it.
zip_int64_t callback(void* state, void* data, zip_uint64_t length, zip_source_cmd_t command) {
  auto& source = *static_cast<IoSource*>(state);
  try {
    return dispatch(source, data, length, command);
  } catch (...) {
    return fail(source, ZIP_ER_READ);
  }
}

}  // namespace

zip_source_t* makeIoSource(_VPTPIOobj* io, std::vector<std::uint64_t> flags) {
  const auto reader = IoReader::over(io);
  if (!reader) return nullptr;
  std::unique_ptr<IoSource> source(new (std::nothrow) IoSource{*reader, std::move(flags)});
  if (!source) return nullptr;
  zip_error_init(&source->error);
  zip_source_t* result = zip_source_function_create(callback, source.get(), nullptr);
  if (result != nullptr)
    static_cast<void>(source.release());  // libzip frees it through ZIP_SOURCE_FREE
  return result;
}

}  // namespace dorvex::unzip
