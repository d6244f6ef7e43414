#include "reading/open_input.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <vector>

#include "looking/diagnosis.h"

namespace dorvex {
namespace {

constexpr std::size_t kBlock = 65536;

[[noreturn]] void raiseErrno() { throw std::system_error(errno, std::generic_category()); }

Input::ReadFunction readerOf(int fd) {
  return [fd](void* buffer, std::size_t count) {
    ssize_t got = 0;
    do got = ::read(fd, buffer, count);
    while (got < 0 && errno == EINTR);
    if (got < 0) raiseErrno();
    return static_cast<std::size_t>(got);
  };
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

OpenInput OpenInput::open(const Input& input, std::size_t scratchMemory, Result& failure) {
  OpenInput opened;
  try {
    if (const auto* path = std::get_if<std::filesystem::path>(&input.source_)) {
      opened.openPath(*path, scratchMemory);
    } else if (const auto* bytes = std::get_if<std::span<const unsigned char>>(&input.source_)) {
      opened.store_ = makeMemoryStore(*bytes);
    } else if (const auto* stream = std::get_if<std::istream*>(&input.source_)) {
      opened.keep(readerOf(**stream), scratchMemory);
    } else {
      opened.keep(std::get<Input::ReadFunction>(input.source_), scratchMemory);
    }
  } catch (const std::system_error& error) {
    failure = systemFailure(error.code().value());
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
  const int file = store->file();
  return file >= 0 ? UniqueFd(::fcntl(file, F_DUPFD_CLOEXEC, 0)) : memoryFile(store->inMemory());
}

void OpenInput::openPath(const std::filesystem::path& path, std::size_t scratchMemory) {
  UniqueFd file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) raiseErrno();
  if (S_ISDIR(status.st_mode)) {
    directory_ = std::move(file);
  } else if (S_ISREG(status.st_mode)) {
    store_ = makeFileStore(std::move(file));
    if (!store_) raiseErrno();
  } else {
    keep(readerOf(file.get()), scratchMemory);
  }
}

void OpenInput::keep(const Input::ReadFunction& read, std::size_t scratchMemory) {
  auto store = makeScratchStore(scratchMemory);
  std::vector<unsigned char> block(kBlock);
  while (const std::size_t got = read(block.data(), block.size())) {
    if (!store->append(block.data(), got)) raiseErrno();
  }
  store_ = std::move(store);
}

}  // namespace dorvex
