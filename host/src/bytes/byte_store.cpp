#include "bytes/byte_store.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bytes/patiently.h"

namespace dorvex {
namespace {

std::int64_t copyOut(std::span<const unsigned char> bytes, std::uint64_t offset, void* buffer,
                     std::size_t count) {
  if (offset >= bytes.size()) return 0;
  count = std::min<std::size_t>(count, bytes.size() - offset);
  std::memcpy(buffer, bytes.data() + offset, count);
  return static_cast<std::int64_t>(count);
}

std::int64_t readFully(int fd, std::uint64_t offset, void* buffer, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got = ::pread(fd, static_cast<char*>(buffer) + done, count - done,
                                static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return static_cast<std::int64_t>(done);
}

bool writeFully(int fd, std::uint64_t offset, const void* data, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t put = ::pwrite(fd, static_cast<const char*>(data) + done, count - done,
                                 static_cast<off_t>(offset + done));
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return false;
    done += static_cast<std::size_t>(put);
  }
  return true;
}

class MemoryStore final : public ByteStore {
 public:
  explicit MemoryStore(std::span<const unsigned char> bytes) : bytes_(bytes) {}
  std::uint64_t size() const override { return bytes_.size(); }
  std::int64_t readAt(std::uint64_t offset, void* buffer, std::size_t count) override {
    return copyOut(bytes_, offset, buffer, count);
  }
  std::span<const unsigned char> inMemory() const override { return bytes_; }

 private:
  std::span<const unsigned char> bytes_;
};

class BorrowedStore final : public ByteStore {
 public:
  explicit BorrowedStore(ByteStore& store) : store_(store) {}
  std::uint64_t size() const override { return store_.size(); }
  std::int64_t readAt(std::uint64_t offset, void* buffer, std::size_t count) override {
    return store_.readAt(offset, buffer, count);
  }
  std::span<const unsigned char> inMemory() const override { return store_.inMemory(); }
  int file() const override { return store_.file(); }

 private:
  ByteStore& store_;
};

class FileStore final : public ByteStore {
 public:
  FileStore(UniqueFd file, std::uint64_t size) : file_(std::move(file)), size_(size) {}
  std::uint64_t size() const override { return size_; }
  std::int64_t readAt(std::uint64_t offset, void* buffer, std::size_t count) override {
    if (offset >= size_) return 0;
    return readFully(file_.get(), offset, buffer, std::min<std::uint64_t>(count, size_ - offset));
  }
  int file() const override { return file_.get(); }

 private:
  UniqueFd file_;
  std::uint64_t size_;
};

class ScratchStore final : public ByteStore {
 public:
  ScratchStore(std::size_t memoryLimit, OpenScratchFile openFile)
      : memoryLimit_(memoryLimit), openFile_(std::move(openFile)) {}

  std::uint64_t size() const override { return size_; }

  std::int64_t readAt(std::uint64_t offset, void* buffer, std::size_t count) override {
    if (!file_) return copyOut(memory_, offset, buffer, count);
    return readFully(file_.get(), offset, buffer, count);
  }

  bool append(const void* data, std::size_t count) override {
    if (!file_ && memory_.size() + count > memoryLimit_ && !moveToFile()) return false;
    if (file_) {
      if (!writeFully(file_.get(), size_, data, count)) return false;
    } else {
      const auto* bytes = static_cast<const unsigned char*>(data);
      memory_.insert(memory_.end(), bytes, bytes + count);
    }
    size_ += count;
    return true;
  }

  std::span<const unsigned char> inMemory() const override { return memory_; }
  int file() const override { return file_.get(); }

 private:
  bool moveToFile() {
    UniqueFd file = openFile_();
    if (!file || !writeFully(file.get(), 0, memory_.data(), memory_.size())) return false;
    file_ = std::move(file);
    memory_ = {};
    return true;
  }

  std::size_t memoryLimit_;
  OpenScratchFile openFile_;
  std::vector<unsigned char> memory_;
  UniqueFd file_;
  std::uint64_t size_ = 0;
};

}  // namespace

// O_TMPFILE where the file system has it, otherwise a name that is taken away
// at once.
UniqueFd openUnnamedFile() {
  const char* folder = std::getenv("TMPDIR");
  if (folder == nullptr || *folder == '\0') folder = "/tmp";
  UniqueFd file =
      patiently([&] { return UniqueFd(::open(folder, O_TMPFILE | O_RDWR | O_CLOEXEC, 0600)); });
  if (file) return file;
  std::string name = std::string(folder) + "/dorvex-XXXXXX";
  UniqueFd named(::mkostemp(name.data(), O_CLOEXEC));
  if (named) ::unlink(name.c_str());
  return named;
}

bool ByteStore::append(const void*, std::size_t) {
  errno = EBADF;
  return false;
}

std::unique_ptr<ByteStore> makeMemoryStore(std::span<const unsigned char> bytes) {
  return std::make_unique<MemoryStore>(bytes);
}

// Not fstat, which a confined worker may not call.
std::unique_ptr<ByteStore> makeBorrowedStore(ByteStore& store) {
  return std::make_unique<BorrowedStore>(store);
}

std::unique_ptr<ByteStore> makeFileStore(UniqueFd file) {
  const off_t size = ::lseek(file.get(), 0, SEEK_END);
  if (size < 0) return nullptr;
  return std::make_unique<FileStore>(std::move(file), static_cast<std::uint64_t>(size));
}

std::unique_ptr<ByteStore> makeScratchStore(std::size_t memoryLimit, OpenScratchFile openFile) {
  return std::make_unique<ScratchStore>(memoryLimit, std::move(openFile));
}

}  // namespace dorvex
