#include "reading/open_input.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "bytes/patiently.h"
#include "looking/diagnosis.h"

namespace dorvex {
namespace {

constexpr std::size_t kBlock = 65536;

[[noreturn]] void raiseErrno() { throw std::system_error(errno, std::generic_category()); }

// What was to be copied passes its limit.
struct TooMuchInput {
  std::uint64_t most;
};

Result tooMuchInput(std::uint64_t most) {
  return failedResult(Failure::kLimitPassed,
                      "stopped: it gives more than " + std::to_string(most) + " bytes",
                      Limit::kInput);
}

Result inputOutOfTime() {
  return failedResult(Failure::kTimedOut, "stopped: reading it to its end took too long",
                      Limit::kWallTime);
}

// One that can only be read, so that whoever it is handed to cannot write to it,
// and that stands at its beginning.
bool canBeReadInPlace(int fd) {
  const int flags = ::fcntl(fd, F_GETFL);
  return flags >= 0 && (flags & O_ACCMODE) == O_RDONLY && ::lseek(fd, 0, SEEK_CUR) == 0;
}

Input::ReadFunction readerOf(std::istream& stream) {
  return [&stream](void* buffer, std::size_t count) {
    stream.read(static_cast<char*>(buffer), static_cast<std::streamsize>(count));
    if (stream.bad()) throw std::system_error(EIO, std::generic_category());
    return static_cast<std::size_t>(stream.gcount());
  };
}

UniqueFd memoryFile(std::span<const unsigned char> bytes) {
  UniqueFd file(::memfd_create("document", MFD_CLOEXEC));
  while (file && !bytes.empty()) {
    const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return {};
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return file;
}

}  // namespace

OpenInput OpenInput::open(const Input& input, CopyLimits limits, Result& failure) {
  OpenInput opened;
  try {
    if (const auto* path = std::get_if<std::filesystem::path>(&input.source_)) {
      opened.openPath(*path, limits);
    } else if (const auto* bytes = std::get_if<std::span<const unsigned char>>(&input.source_)) {
      opened.store_ = makeMemoryStore(*bytes);
    } else if (const auto* descriptor = std::get_if<Input::Descriptor>(&input.source_)) {
      opened.openDescriptor(descriptor->fd, limits);
    } else if (const auto* stream = std::get_if<std::istream*>(&input.source_)) {
      opened.copy(readerOf(**stream), limits);
    } else {
      opened.copy(std::get<Input::ReadFunction>(input.source_), limits);
    }
  } catch (const std::system_error& error) {
    failure = systemFailure(error.code().value());
    return {};
  } catch (const TooMuchInput& input) {
    failure = tooMuchInput(input.most);
    return {};
  }
  return opened;
}

OpenInput OpenInput::fromDescriptor(UniqueFd fd, bool isDirectory) {
  OpenInput opened;
  if (isDirectory) {
    opened.directory_ = std::move(fd);
  } else {
    opened.store_ = makeFileStore(std::move(fd));
  }
  return opened;
}

OpenInput OpenInput::fromStore(std::unique_ptr<ByteStore> store) {
  OpenInput opened;
  opened.store_ = std::move(store);
  return opened;
}

OpenInput OpenInput::fromMemory(std::span<const unsigned char> bytes) {
  OpenInput opened;
  opened.store_ = makeMemoryStore(bytes);
  return opened;
}

UniqueFd OpenInput::takeDescriptor() {
  if (directory_) return std::move(directory_);
  const auto store = takeStore();
  return patiently([&] {
    const int file = store->file();
    return file >= 0 ? UniqueFd(::fcntl(file, F_DUPFD_CLOEXEC, 0)) : memoryFile(store->inMemory());
  });
}

// Neither a pipe that nobody writes to nor a device keeps open from returning.
void OpenInput::openPath(const std::filesystem::path& path, CopyLimits limits) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  UniqueFd file = patiently([&] { return UniqueFd(::open(path.c_str(), kFlags)); });
  if (!file) raiseErrno();
  hold(std::move(file), true, limits);
}

void OpenInput::openDescriptor(int fd, CopyLimits limits) {
  UniqueFd file = patiently([&] { return UniqueFd(::fcntl(fd, F_DUPFD_CLOEXEC, 0)); });
  if (!file) raiseErrno();
  const bool inPlace = canBeReadInPlace(file.get());
  hold(std::move(file), inPlace, limits);
}

void OpenInput::hold(UniqueFd file, bool inPlace, CopyLimits limits) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) raiseErrno();
  if (S_ISDIR(status.st_mode)) {
    directory_ = std::move(file);
  } else if (S_ISREG(status.st_mode) && inPlace) {
    store_ = makeFileStore(std::move(file));
    if (!store_) raiseErrno();
  } else {
    store_ = makeScratchStore(limits.memory);
    unread_ = std::move(file);
    most_ = limits.most;
  }
}

void OpenInput::copy(const Input::ReadFunction& read, CopyLimits limits) {
  store_ = makeScratchStore(limits.memory);
  most_ = limits.most;
  std::vector<unsigned char> block(kBlock);
  while (const std::size_t got = read(block.data(), block.size())) {
    append(std::span(block).first(got));
  }
}

void OpenInput::append(std::span<const unsigned char> bytes) {
  if (most_ != 0 && bytes.size() > most_ - store_->size()) throw TooMuchInput{most_};
  if (!store_->append(bytes.data(), bytes.size())) raiseErrno();
}

// The caller's descriptor may be one that waits, so it is read only when there is
// something to read.
bool OpenInput::readToEnd(const TimeBudget& budget, Result& failure) {
  std::vector<unsigned char> block(kBlock);
  try {
    while (isUnread()) {
      const TimeBudget::Wait wait = budget.waitFor(unread_.get());
      if (wait == TimeBudget::Wait::kOver || budget.isOver()) {
        failure = inputOutOfTime();
        return false;
      }
      const ssize_t got = ::read(unread_.get(), block.data(), block.size());
      if (got < 0 && errno != EINTR && errno != EAGAIN) raiseErrno();
      if (got > 0) append(std::span(block).first(static_cast<std::size_t>(got)));
      if (got == 0) unread_ = {};
    }
    return true;
  } catch (const std::system_error& error) {
    failure = systemFailure(error.code().value());
  } catch (const TooMuchInput& input) {
    failure = tooMuchInput(input.most);
  }
  return false;
}

}  // namespace dorvex
