#include "io_object.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <new>

namespace dorvex {
namespace {

// The first end is news to the reader. It never asks again unless it has lost
// count, and then it never stops.
constexpr int kEndsBeforeEndless = 2;

bool begins_like_a_zip(ByteStore& store) {
  std::array<char, 2> start{};
  return store.read_at(0, start.data(), start.size()) == 2 && start[0] == 'P' && start[1] == 'K';
}

}  // namespace

IoObject::Content content_of(const std::string& name) {
  return name.ends_with(".iwa") ? IoObject::Content::chunks : IoObject::Content::bytes;
}

IoObject::IoObject(std::unique_ptr<ByteStore> store, Settings settings, Observations& observations)
    : _VPTPIOobj{},
      store_(std::move(store)),
      settings_(std::move(settings)),
      observations_(observations) {
  pathName = settings_.path.empty() ? nullptr : settings_.path.c_str();
  Open = open;
  Read = read;
  Write = write;
  Seek = seek;
  Tell = tell;
}

void IoObject::receive_member(std::string name) {
  settings_.content = content_of(name);
  settings_.name = std::move(name);
}

int IoObject::open(_VPTPIOobj* io) {
  auto& self = *static_cast<IoObject*>(io);
  self.position_ = 0;
  try {
    self.look_through();
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

// Once only, when the stream has all its bytes.
void IoObject::look_through() {
  if (looked_through_) return;
  looked_through_ = true;
  if (settings_.content == Content::unknown) {
    settings_.content = begins_like_a_zip(*store_) ? Content::bytes : Content::chunks;
  }
  if (settings_.content != Content::chunks) return;
  if (settings_.align_reads) aligned_.emplace(*store_);
  if (auto fault = find_chunk_fault(*store_)) {
    observations_.unsound.push_back({settings_.name, std::move(*fault)});
  }
}

int IoObject::read(_VPTPIOobj* io, void* buffer, std::uint32_t count) {
  auto& self = *static_cast<IoObject*>(io);
  std::int64_t got = 0;
  try {
    self.look_through();
    got = self.read_some(buffer, count);
  } catch (const std::bad_alloc&) {
    got = -1;
    errno = ENOMEM;
  }
  if (got < 0) self.observations_.read_failure = {self.settings_.name, errno};
  self.note_end(count > 0 && got <= 0);
  return static_cast<int>(std::max<std::int64_t>(got, 0));
}

std::int64_t IoObject::read_some(void* buffer, std::uint32_t count) {
  count = std::min<std::uint32_t>(count, std::numeric_limits<int>::max());
  const std::int64_t got = aligned_ ? aligned_->read_at(position_, buffer, count)
                                    : store_->read_at(position_, buffer, count);
  if (got > 0) position_ += static_cast<std::uint64_t>(got);
  return got;
}

// The container module may well ask twice at the end of a zip; the reader's
// chunk loop may not.
void IoObject::note_end(bool at_end) {
  if (settings_.content != Content::chunks || !at_end) {
    ends_reported_ = 0;
    return;
  }
  if (++ends_reported_ < kEndsBeforeEndless) return;
  observations_.endless_read = settings_.name;
  throw EndlessRead{};
}

int IoObject::write(_VPTPIOobj* io, const void* buffer, std::uint32_t count) {
  auto& self = *static_cast<IoObject*>(io);
  count = std::min<std::uint32_t>(count, std::numeric_limits<int>::max());
  errno = ENOMEM;
  try {
    if (self.store_->append(buffer, count)) return static_cast<int>(count);
  } catch (const std::bad_alloc&) {
  }
  self.observations_.scratch_failure = {self.settings_.name, errno};
  return 0;
}

int IoObject::seek(_VPTPIOobj* io, std::int64_t offset, int whence) {
  auto& self = *static_cast<IoObject*>(io);
  const auto size = static_cast<std::int64_t>(self.store_->size());
  std::int64_t target = offset;
  if (whence == VN_SEEK_END && __builtin_add_overflow(size, offset, &target)) return 0;
  if (target < 0 || (whence != VN_SEEK_START && whence != VN_SEEK_END)) return 0;
  self.position_ = static_cast<std::uint64_t>(target);
  return 1;
}

std::int64_t IoObject::tell(_VPTPIOobj* io) {
  return static_cast<std::int64_t>(static_cast<IoObject*>(io)->position_);
}

}  // namespace dorvex
