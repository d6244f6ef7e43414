#include "reading/io_object.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <new>
#include <utility>

#include "looking/object_stream.h"

namespace dorvex {
namespace {

// The first end is news to the reader. It never asks again unless it has lost
// count, and then it never stops.
constexpr int kEndsBeforeEndless = 2;

bool beginsLikeAZip(ByteStore& store) {
  std::array<char, 2> start{};
  return store.readAt(0, start.data(), start.size()) == 2 && start[0] == 'P' && start[1] == 'K';
}

}  // namespace

IoObject::Content contentOf(const std::string& name) {
  return name.ends_with(".iwa") ? IoObject::Content::kChunks : IoObject::Content::kBytes;
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

IoObject::~IoObject() {
  if (settings_.quota != nullptr) settings_.quota->giveBack(size());
}

void IoObject::receiveMember(std::string name) {
  settings_.content = contentOf(name);
  settings_.name = std::move(name);
}

int IoObject::open(_VPTPIOobj* io) {
  auto& self = *static_cast<IoObject*>(io);
  self.position_ = 0;
  try {
    self.lookThrough();
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

// Once only, when the stream has all its bytes.
void IoObject::lookThrough() {
  if (lookedThrough_) return;
  lookedThrough_ = true;
  if (!settings_.lookThrough) settings_.content = Content::kBytes;
  if (settings_.content == Content::kUnknown) {
    settings_.content = beginsLikeAZip(*store_) ? Content::kBytes : Content::kChunks;
  }
  if (settings_.content == Content::kChunks) lookThroughChunks();
}

void IoObject::lookThroughChunks() {
  if (settings_.alignReads) aligned_.emplace(*store_);
  using Root = ObjectLook::Root;
  const bool mayHoldRoot = KindEvidence::mayHoldRoot(settings_.name);
  ObjectLook objects(mayHoldRoot ? Root::kWanted : Root::kIgnored);
  auto [fault, bytes] = ::dorvex::lookThroughChunks(*store_, objects);
  const bool tooMany = bytes > kMostReadableObjects;
  observations_.kind.noteRoot(settings_.name, tooMany ? std::nullopt : objects.rootType());
  const bool endless = !fault && tooMany;
  if (endless) fault = "it holds more than 64 MiB of objects";
  if (!fault) {
    fault = objects.fault();
    observations_.filed.add(settings_.name, objects.takeFiled());
  }
  if (!fault && bytes == 0) fault = "it is empty";
  if (!fault) return;
  observations_.unsound.push_back({settings_.name, std::move(*fault)});
  if (!endless) return;
  observations_.endlessRead = settings_.name;
  throw EndlessRead{};
}

int IoObject::read(_VPTPIOobj* io, void* buffer, std::uint32_t count) {
  auto& self = *static_cast<IoObject*>(io);
  std::int64_t got = 0;
  try {
    self.lookThrough();
    got = self.readSome(buffer, count);
  } catch (const std::bad_alloc&) {
    got = -1;
    errno = ENOMEM;
  }
  if (got < 0) self.observations_.readFailure = {self.settings_.name, errno};
  self.noteEnd(count > 0 && got <= 0);
  return static_cast<int>(std::max<std::int64_t>(got, 0));
}

std::int64_t IoObject::readSome(void* buffer, std::uint32_t count) {
  count = std::min<std::uint32_t>(count, std::numeric_limits<int>::max());
  const std::int64_t got = aligned_ ? aligned_->readAt(position_, buffer, count)
                                    : store_->readAt(position_, buffer, count);
  if (got > 0) position_ += static_cast<std::uint64_t>(got);
  return got;
}

// The container module may well ask twice at the end of a zip; the reader's
// chunk loop may not.
void IoObject::noteEnd(bool atEnd) {
  if (settings_.content != Content::kChunks || !atEnd) {
    endsReported_ = 0;
    return;
  }
  if (++endsReported_ < kEndsBeforeEndless) return;
  observations_.endlessRead = settings_.name;
  throw EndlessRead{};
}

int IoObject::write(_VPTPIOobj* io, const void* buffer, std::uint32_t count) {
  auto& self = *static_cast<IoObject*>(io);
  count = std::min<std::uint32_t>(count, std::numeric_limits<int>::max());
  if (!self.mayTake(count)) return 0;
  errno = ENOMEM;
  try {
    if (self.store_->append(buffer, count)) return static_cast<int>(count);
  } catch (const std::bad_alloc&) {
  }
  self.observations_.scratchFailure = {self.settings_.name, errno};
  return 0;
}

bool IoObject::mayTake(std::uint32_t count) {
  if (settings_.quota == nullptr) return true;
  const Limit passed = settings_.quota->take(size(), count);
  if (passed == Limit::kNone) return true;
  observations_.limitPassed = {passed, settings_.quota->allowed(passed), settings_.name};
  return false;
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
