#include "Tools/vnose/vnose.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/long_string.h"
#include "support/temporary_directory.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#endif

extern "C" int dorvex_countEntriesInC(const char* path);
extern "C" int dorvex_holdsNothingInC(void);

// Calls of the C library, on their way to it --------------------------------

namespace {

int mkstempCalls = 0;
int mkstempFailures = 0;  // still to come
void (*beforeDlerror)() = nullptr;

}  // namespace

// A failure spoils the name, as it may.
extern "C" int mkstemp(char* name) {
  static const auto real = reinterpret_cast<int (*)(char*)>(dlsym(RTLD_NEXT, "mkstemp"));
  ++mkstempCalls;
  if (mkstempFailures == 0) return real(name);
  --mkstempFailures;
  std::fill_n(name + std::strlen(name) - 6, 6, '0');
  errno = EEXIST;
  return -1;
}

// The first call looks the real one up, which takes the text of a failure away.
extern "C" char* dlerror() noexcept {
  static const auto real = reinterpret_cast<char* (*)()>(dlsym(RTLD_NEXT, "dlerror"));
  if (beforeDlerror != nullptr) beforeDlerror();
  return real();
}

namespace dorvex::testing::vnose_test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr unsigned long kLimit = 0x7FFFFFFF;

void writeFile(const fs::path& path, const std::string& contents) {
  std::ofstream(path, std::ios::binary) << contents;
}

std::string readFile(const fs::path& path) {
  std::ostringstream contents;
  contents << std::ifstream(path, std::ios::binary).rdbuf();
  return contents.str();
}

// Each test has a folder of its own, which is the current one.
class Vnos : public ::testing::Test {
 protected:
  Vnos() : previous_(fs::current_path()) { fs::current_path(folder.path()); }
  ~Vnos() override { fs::current_path(previous_); }

  std::string in(const std::string& name) const { return (folder.path() / name).string(); }

  const TemporaryDirectory folder;

 private:
  const fs::path previous_;
};

// Memory ---------------------------------------------------------------------

// Blocks above this are mapped by themselves, and unmapped when they are freed.
constexpr unsigned long kBigBlock = 64UL << 20;

bool isReleased(void* block) {
#ifdef __SANITIZE_ADDRESS__
  return __asan_address_is_poisoned(block) != 0;
#else
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = (reinterpret_cast<std::uintptr_t>(block) + page) & ~(page - 1);
  unsigned char resident = 0;
  return mincore(reinterpret_cast<void*>(address), page, &resident) == -1 && errno == ENOMEM;
#endif
}

using VnosMalloc = Vnos;
using VnosValloc = Vnos;
using VnosCalloc = Vnos;
using VnosRealloc = Vnos;
using VnosSaferealloc = Vnos;

TEST_F(VnosMalloc, HasNoBlockOfZeroBytesOrAboveTheLimit) {
  EXPECT_EQ(vnos_malloc(0), nullptr);
  EXPECT_EQ(vnos_malloc(kLimit + 1), nullptr);
  EXPECT_EQ(vnos_malloc(ULONG_MAX), nullptr);
}

TEST_F(VnosMalloc, HasBlocksUpToTheLimit) {
  for (const unsigned long size : {1UL, kLimit}) {
    void* const block = vnos_malloc(size);
    EXPECT_NE(block, nullptr) << size;
    vnos_free(block);
  }
}

TEST_F(VnosValloc, HasNoLimit) {
  for (const unsigned long size : {0UL, 1UL, kLimit, kLimit + 1}) {
    void* const block = vnos_valloc(size);
    EXPECT_NE(block, nullptr) << size;
    vnos_free(block);
  }
}

TEST_F(VnosValloc, DoesNotAlignToPages) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  std::array<void*, 3> blocks{};
  for (void*& block : blocks) block = vnos_valloc(24);
  EXPECT_FALSE(std::all_of(blocks.begin(), blocks.end(), [page](void* block) {
    return reinterpret_cast<std::uintptr_t>(block) % page == 0;
  }));
  for (void* block : blocks) vnos_free(block);
}

TEST_F(VnosCalloc, HasNoBlockWhenAnythingIsZeroOrAboveTheLimit) {
  EXPECT_EQ(vnos_calloc(0, 1), nullptr);
  EXPECT_EQ(vnos_calloc(1, 0), nullptr);
  EXPECT_EQ(vnos_calloc(0, 0), nullptr);
  EXPECT_EQ(vnos_calloc(kLimit + 1, 1), nullptr);
  EXPECT_EQ(vnos_calloc(1, kLimit + 1), nullptr);
  EXPECT_EQ(vnos_calloc(0x10000, 0x10000), nullptr);
  EXPECT_EQ(vnos_calloc(0x10000, 0x8000), nullptr) << "0x80000000 bytes";
  EXPECT_EQ(vnos_calloc(kLimit, 2), nullptr);
  EXPECT_EQ(vnos_calloc(1UL << 32, 1UL << 32), nullptr) << "a product of 0 in 64 bits";
}

TEST_F(VnosCalloc, HasBlocksUpToTheLimit) {
  for (const auto& [count, size] : {std::pair{kLimit, 1UL}, {1UL, kLimit}, {0xFFFFUL, 0x8000UL}}) {
    void* const block = vnos_calloc(count, size);
    EXPECT_NE(block, nullptr) << count;
    vnos_free(block);
  }
}

TEST_F(VnosCalloc, GivesZeroedMemory) {
  auto* const block = static_cast<unsigned char*>(vnos_calloc(100, 3));
  ASSERT_NE(block, nullptr);
  EXPECT_TRUE(std::all_of(block, block + 300, [](unsigned char byte) { return byte == 0; }));
  vnos_free(block);
}

TEST_F(VnosRealloc, LeavesTheBlockAloneAboveTheLimit) {
  auto* const block = static_cast<char*>(vnos_malloc(16));
  std::strcpy(block, "still good");
  EXPECT_EQ(vnos_realloc(block, kLimit + 1), nullptr);
  EXPECT_STREQ(block, "still good");
  vnos_free(block);
}

TEST_F(VnosRealloc, GrowsUpToTheLimit) {
  auto* block = static_cast<char*>(vnos_malloc(16));
  std::strcpy(block, "kept");
  block = static_cast<char*>(vnos_realloc(block, kLimit));
  ASSERT_NE(block, nullptr);
  EXPECT_STREQ(block, "kept");
  vnos_free(block);
}

TEST_F(VnosRealloc, AllocatesForANullBlock) {
  for (const unsigned long size : {0UL, 16UL, kLimit}) {
    void* const block = vnos_realloc(nullptr, size);
    EXPECT_NE(block, nullptr) << size;
    vnos_free(block);
  }
  EXPECT_EQ(vnos_realloc(nullptr, kLimit + 1), nullptr);
}

TEST_F(VnosRealloc, PassesASizeOfZeroOn) {
  void* const block = vnos_malloc(kBigBlock);
  EXPECT_EQ(vnos_realloc(block, 0), nullptr);
  EXPECT_TRUE(isReleased(block)) << "as realloc does here";
}

TEST_F(VnosSaferealloc, GivesTheBlockUpAboveTheLimit) {
  void* const block = vnos_malloc(kBigBlock);
  ASSERT_FALSE(isReleased(block));
  EXPECT_EQ(vnos_Saferealloc(block, kLimit + 1), nullptr);
  EXPECT_TRUE(isReleased(block));
  EXPECT_EQ(vnos_Saferealloc(nullptr, kLimit + 1), nullptr);
}

TEST_F(VnosSaferealloc, GivesTheBlockUpForASizeOfZero) {
  void* const block = vnos_malloc(kBigBlock);
  EXPECT_EQ(vnos_Saferealloc(block, 0), nullptr);
  EXPECT_TRUE(isReleased(block));
}

TEST_F(VnosSaferealloc, GrowsUpToTheLimit) {
  auto* block = static_cast<char*>(vnos_malloc(16));
  std::strcpy(block, "kept");
  block = static_cast<char*>(vnos_Saferealloc(block, kLimit));
  ASSERT_NE(block, nullptr);
  EXPECT_STREQ(block, "kept");
  vnos_free(block);
}

TEST_F(VnosSaferealloc, AllocatesForANullBlock) {
  for (const unsigned long size : {0UL, 16UL}) {
    void* const block = vnos_Saferealloc(nullptr, size);
    EXPECT_NE(block, nullptr) << size;
    vnos_free(block);
  }
}

#ifndef __SANITIZE_ADDRESS__
// The address sanitizer ends the process where malloc would give null.
TEST_F(VnosSaferealloc, LeavesTheBlockAloneWhenThereIsNoMemory) {
  auto* const block = static_cast<char*>(vnos_malloc(16));
  std::strcpy(block, "still good");
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  const rlimit tight{kLimit / 2, before.rlim_max};
  setrlimit(RLIMIT_AS, &tight);
  void* const grown = vnos_Saferealloc(block, kLimit);
  setrlimit(RLIMIT_AS, &before);
  EXPECT_EQ(grown, nullptr);
  EXPECT_STREQ(block, "still good");
  vnos_free(block);
}
#endif

TEST(VnosFree, DoesNothingForNull) { vnos_free(nullptr); }

// Descriptors ----------------------------------------------------------------

using VnosOpen = Vnos;

std::set<int> openDescriptors() {
  std::set<int> descriptors;
  for (int fd = 0; fd < 1024; ++fd) {
    if (fcntl(fd, F_GETFD) != -1) descriptors.insert(fd);
  }
  return descriptors;
}

// What a call has left open, closed again.
template <typename Open>
std::vector<int> opened(Open open) {
  const std::set<int> before = openDescriptors();
  open();
  std::vector<int> added;
  for (const int fd : openDescriptors()) {
    if (!before.contains(fd)) added.push_back(fd);
  }
  for (const int fd : added) close(fd);
  return added;
}

TEST_F(VnosOpen, KeepsDescriptorsOutOfTheLowRange) {
  writeFile("file", "x");
  int fd = -1;
  const std::vector<int> added = opened([&] { fd = vnos_open("file", O_RDONLY); });
  EXPECT_GE(fd, 256);
  EXPECT_EQ(added, std::vector<int>{fd}) << "the low descriptor is closed";
}

TEST_F(VnosOpen, HoldsForEveryFunctionThatOpens) {
  writeFile("file", "x");
  for (const long fd : {vnos_fopen("file", "r"), vnos_fopen64("file", "r")}) {
    EXPECT_GE(fd, 256);
    EXPECT_EQ(vnos_fclose(static_cast<int>(fd)), 0);
  }
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDWR, "file"), 0);
  EXPECT_GE(record.fd, 256);
  vnos_flock_free(&record);
}

TEST_F(VnosOpen, ReturnsAHighDescriptorAsItIs) {
  writeFile("file", "x");
  std::vector<int> filling;
  while (filling.empty() || filling.back() < 256) filling.push_back(open("/dev/null", O_RDONLY));
  const int lowestFree = filling.back();
  close(lowestFree);
  filling.pop_back();
  const int fd = vnos_open("file", O_RDONLY);
  EXPECT_EQ(fd, lowestFree);
  vnos_close(fd);
  for (const int low : filling) close(low);
}

TEST_F(VnosOpen, MovesTheDescriptorZeroToo) {
  writeFile("file", "x");
  const int input = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  const int fd = vnos_open("file", O_RDONLY);
  EXPECT_GE(fd, 256);
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "closed again";
  vnos_close(fd);
  if (input >= 0) {
    dup2(input, STDIN_FILENO);
    close(input);
  }
}

TEST_F(VnosOpen, ReturnsTheLowDescriptorWhenThereAreNoHighOnes) {
  writeFile("file", "x");
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit tight{256, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &tight), 0);
  const int fd = vnos_open("file", O_RDONLY);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_GE(fd, 0);
  EXPECT_LT(fd, 256);
  char byte = 0;
  EXPECT_EQ(vnos_read(fd, &byte, 1), 1);
  EXPECT_EQ(vnos_close(fd), 0);
}

TEST_F(VnosOpen, GivesMinusOneAndErrnoOnFailure) {
  errno = 0;
  EXPECT_EQ(vnos_open("absent", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(vnos_fopen("absent", "r"), -1);
  EXPECT_EQ(vnos_fopen64("absent", "r+"), -1);
}

TEST_F(VnosOpen, MakesFilesWithTheMode0644) {
  const mode_t before = vnos_umask(0);
  vnos_close(vnos_open("made", O_WRONLY | O_CREAT));
  vnos_close(static_cast<int>(vnos_fopen("made too", "w")));
  vnos_umask(before);
  for (const char* name : {"made", "made too"}) {
    struct stat status {};
    ASSERT_EQ(vnos_stat(name, &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644U) << name;
  }
}

using VnosFopen = Vnos;

TEST_F(VnosFopen, TakesItsFlagsFromTheFirstCharacterAndAPlusSign) {
  struct Row {
    const char* mode;
    int flags;  // that the descriptor shows
    bool creates;
    bool truncates;
  };
  const Row rows[] = {
      {"r", O_RDONLY, false, false},
      {"r+", O_RDWR, false, false},
      {"w", O_WRONLY, true, true},
      {"w+", O_RDWR, true, true},
      {"a", O_WRONLY | O_APPEND, true, false},
      {"a+", O_RDWR | O_APPEND, true, false},
      {"rb", O_RDONLY, false, false},
      {"rb+", O_RDWR, false, false},
      {"r+b", O_RDWR, false, false},
      {"wb+", O_RDWR, true, true},
      {"wb", O_WRONLY, true, true},
      {"abc+", O_RDWR | O_APPEND, true, false},
      {"x", O_RDONLY, false, false},
      {"x+", O_RDONLY, false, false},
      {"br+", O_RDONLY, false, false},
      {"+", O_RDONLY, false, false},
      {"", O_RDONLY, false, false},
      {"R+", O_RDONLY, false, false},
  };
  for (auto* const function : {vnos_fopen, vnos_fopen64}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.mode);
      writeFile("file", "contents");
      const auto fd = static_cast<int>(function("file", row.mode));
      ASSERT_GE(fd, 0);
      EXPECT_EQ(fcntl(fd, F_GETFL) & (O_ACCMODE | O_APPEND), row.flags);
      EXPECT_EQ(vnos_filesize(fd), row.truncates ? 0 : 8);
      vnos_fclose(fd);

      fs::remove("new");
      const auto created = static_cast<int>(function("new", row.mode));
      EXPECT_EQ(created >= 0, row.creates);
      if (created >= 0) vnos_fclose(created);
    }
  }
}

// Reading, writing and seeking -----------------------------------------------

using VnosFread = Vnos;
using VnosFwrite = Vnos;
using VnosSeek = Vnos;
using VnosFilesize = Vnos;

TEST_F(VnosFread, CountsWholeItems) {
  writeFile("file", "0123456789");
  const int fd = vnos_open("file", O_RDONLY);
  std::string buffer(12, '#');
  EXPECT_EQ(vnos_fread(fd, buffer.data(), 4, 3), 2);
  EXPECT_EQ(buffer, "0123456789##") << "the item that is cut off is read all the same";
  EXPECT_EQ(vnos_fread(fd, buffer.data(), 4, 3), 0) << "at the end";
  vnos_fseek(fd, 0, SEEK_SET);
  EXPECT_EQ(vnos_fread(fd, buffer.data(), 1, 12), 10);
  vnos_fseek(fd, 0, SEEK_SET);
  EXPECT_EQ(vnos_fread(fd, buffer.data(), 5, 1), 1);
  EXPECT_EQ(vnos_fread(fd, buffer.data(), 5, 0), 0);
  vnos_close(fd);
}

TEST_F(VnosFread, CountsAFailureAsNoItems) {
  char buffer[4];
  EXPECT_EQ(vnos_fread(-1, buffer, 1, 4), 0);
  EXPECT_EQ(errno, EBADF);
}

TEST_F(VnosFwrite, WritesWholeItems) {
  const auto fd = static_cast<int>(vnos_fopen("file", "w"));
  EXPECT_EQ(vnos_fwrite(fd, "0123456789", 2, 5), 5);
  EXPECT_EQ(vnos_fwrite(fd, "ab", 2, 0), 0);
  vnos_close(fd);
  EXPECT_EQ(readFile("file"), "0123456789");
}

TEST_F(VnosFwrite, CountsOnlyTheItemsThatWereWrittenWhole) {
  const auto fd = static_cast<int>(vnos_fopen("file", "w"));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit tight{10, before.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &tight);
  const long items = vnos_fwrite(fd, "0123456789ab", 4, 3);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(items, 2);
  EXPECT_EQ(vnos_filesize(fd), 10);
  vnos_close(fd);
}

TEST_F(VnosFwrite, CountsAFailureAsNoItems) { EXPECT_EQ(vnos_fwrite(-1, "abcd", 1, 4), 0); }

TEST_F(VnosSeek, MovesAndReportsThePosition) {
  writeFile("file", "0123456789");
  const int fd = vnos_open("file", O_RDONLY);
  EXPECT_EQ(vnos_lseek(fd, 3, SEEK_SET), 3);
  EXPECT_EQ(vnos_lseek64(fd, 2, SEEK_CUR), 5);
  EXPECT_EQ(vnos_ftell(fd), 5);
  EXPECT_EQ(vnos_ftell64(fd), 5);
  EXPECT_EQ(vnos_fseek(fd, -1, SEEK_END), 0);
  EXPECT_EQ(vnos_ftell(fd), 9);
  EXPECT_EQ(vnos_fseek64(fd, 4, SEEK_SET), 0);
  EXPECT_EQ(vnos_ftell(fd), 4);
  vnos_close(fd);
}

TEST_F(VnosSeek, GoesPastTheEndAndBeyond32Bits) {
  writeFile("file", "x");
  const int fd = vnos_open("file", O_RDONLY);
  EXPECT_EQ(vnos_fseek(fd, 100, SEEK_END), 0);
  EXPECT_EQ(vnos_ftell(fd), 101);
  EXPECT_EQ(vnos_fseek(fd, 0x500000000, SEEK_SET), 0);
  EXPECT_EQ(vnos_ftell64(fd), 0x500000000);
  vnos_close(fd);
}

TEST_F(VnosSeek, FailsOnABadDescriptorAndABadPosition) {
  EXPECT_EQ(vnos_fseek(-1, 0, SEEK_SET), -1);
  EXPECT_EQ(vnos_fseek64(-1, 0, SEEK_SET), -1);
  EXPECT_EQ(vnos_lseek(-1, 0, SEEK_SET), -1);
  EXPECT_EQ(vnos_lseek64(-1, 0, SEEK_SET), -1);
  EXPECT_EQ(vnos_ftell(-1), -1);
  EXPECT_EQ(vnos_ftell64(-1), -1);
  writeFile("file", "x");
  const int fd = vnos_open("file", O_RDONLY);
  EXPECT_EQ(vnos_fseek(fd, -1, SEEK_SET), -1);
  vnos_close(fd);
}

TEST_F(VnosFilesize, GivesTheSizeWithoutMovingThePosition) {
  writeFile("file", "0123456789");
  const int fd = vnos_open("file", O_RDWR);
  vnos_lseek(fd, 4, SEEK_SET);
  EXPECT_EQ(vnos_filesize(fd), 10);
  EXPECT_EQ(vnos_filesize64(fd), 10);
  EXPECT_EQ(vnos_ftell(fd), 4);
  EXPECT_EQ(vnos_ftruncate(fd, 0x180000000), 0);
  EXPECT_EQ(vnos_filesize(fd), 0x180000000) << "sparse, beyond 32 bits";
  vnos_close(fd);
}

TEST_F(VnosFilesize, IsMinusOneOnFailure) {
  EXPECT_EQ(vnos_filesize(-1), -1);
  EXPECT_EQ(vnos_filesize64(-1), -1);
}

// Forwarders -----------------------------------------------------------------

using VnosForwarders = Vnos;

TEST_F(VnosForwarders, ReadWriteSyncAndTruncate) {
  const int fd = vnos_open("file", O_RDWR | O_CREAT);
  EXPECT_EQ(vnos_write(fd, "0123456789", 10), 10);
  EXPECT_EQ(vnos_fsync(fd), 0);
  EXPECT_EQ(vnos_ftruncate(fd, 4), 0);
  EXPECT_EQ(vnos_lseek(fd, 0, SEEK_SET), 0);
  std::string buffer(10, '#');
  EXPECT_EQ(vnos_read(fd, buffer.data(), 10), 4);
  EXPECT_EQ(buffer, "0123######");
  EXPECT_EQ(vnos_close(fd), 0);

  EXPECT_EQ(vnos_read(fd, buffer.data(), 1), -1);
  EXPECT_EQ(vnos_write(fd, "x", 1), -1);
  EXPECT_EQ(vnos_fsync(fd), -1);
  EXPECT_EQ(vnos_ftruncate(fd, 0), -1);
  EXPECT_EQ(vnos_close(fd), -1);
  EXPECT_EQ(vnos_fclose(fd), -1);
}

TEST_F(VnosForwarders, DescribeFiles) {
  writeFile("file", "0123");
  struct stat status {};
  EXPECT_EQ(vnos_stat("file", &status), 0);
  EXPECT_EQ(status.st_size, 4);
  EXPECT_EQ(vnos_stat("absent", &status), -1);

  const int fd = vnos_open("file", O_RDONLY);
  status = {};
  EXPECT_EQ(vnos_fstat(fd, &status), 0);
  EXPECT_EQ(status.st_size, 4);
  vnos_close(fd);
  EXPECT_EQ(vnos_fstat(fd, &status), -1);

  struct statfs system {};
  EXPECT_EQ(vnos_statfs(".", &system), 0);
  EXPECT_GT(system.f_bsize, 0);
  EXPECT_EQ(vnos_statfs("absent", &system), -1);
}

TEST_F(VnosForwarders, ChangeFiles) {
  writeFile("file", "x");
  EXPECT_EQ(vnos_access("file", R_OK), 0);
  EXPECT_EQ(vnos_access("absent", F_OK), -1);

  EXPECT_EQ(vnos_chmod("file", 0600), 0);
  struct stat status {};
  vnos_stat("file", &status);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
  EXPECT_EQ(vnos_chmod("absent", 0600), -1);

  const timeval times[2] = {{1000, 0}, {2000, 0}};
  EXPECT_EQ(vnos_utimes("file", times), 0);
  vnos_stat("file", &status);
  EXPECT_EQ(status.st_atime, 1000);
  EXPECT_EQ(status.st_mtime, 2000);
  EXPECT_EQ(vnos_utimes("absent", times), -1);

  EXPECT_EQ(vnos_rename("file", "renamed"), 0);
  EXPECT_TRUE(fs::exists("renamed"));
  EXPECT_EQ(vnos_rename("file", "renamed"), -1);

  EXPECT_EQ(vnos_unlink("renamed"), 0);
  EXPECT_FALSE(fs::exists("renamed"));
  EXPECT_EQ(vnos_unlink("renamed"), -1);
}

TEST_F(VnosForwarders, ChangeFolders) {
  ASSERT_EQ(vnos_mkdir("below", 0755), 0);
  EXPECT_EQ(vnos_chdir("below"), 0);
  char buffer[PATH_MAX];
  EXPECT_EQ(vnos_getcwd(buffer, sizeof buffer), buffer);
  EXPECT_EQ(buffer, fs::canonical(folder.path() / "below").string());
  EXPECT_EQ(vnos_getcwd(buffer, 1), nullptr);
  EXPECT_EQ(errno, ERANGE);
  char* const allocated = vnos_getcwd(nullptr, 0);
  EXPECT_STREQ(allocated, fs::canonical(folder.path() / "below").c_str());
  vnos_free(allocated);
  EXPECT_EQ(vnos_chdir(".."), 0);
  EXPECT_EQ(vnos_chdir("absent"), -1);
  EXPECT_EQ(vnos_rmdir("below"), 0);
  EXPECT_EQ(vnos_rmdir("below"), -1);
}

TEST_F(VnosForwarders, Umask) {
  const mode_t before = vnos_umask(027);
  EXPECT_EQ(vnos_umask(before), 027U);
}

TEST_F(VnosForwarders, System) {
  EXPECT_EQ(WEXITSTATUS(vnos_system("exit 7")), 7);
  EXPECT_NE(vnos_system(nullptr), 0);
}

TEST_F(VnosForwarders, UsleepAlwaysReturnsZero) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(vnos_usleep(20000), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
  EXPECT_EQ(vnos_usleep(0), 0);
}

TEST_F(VnosForwarders, UsleepReturnsZeroWhenASignalEndsTheWait) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, &before);
  const itimerval soon{{0, 0}, {0, 20000}};
  setitimer(ITIMER_REAL, &soon, nullptr);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(vnos_usleep(20000000), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
  sigaction(SIGALRM, &before, nullptr);
}

TEST(VnosExitDeathTest, EndsTheProcessAsExitDoes) {
  EXPECT_EXIT(
      {
        std::atexit([] { static_cast<void>(write(STDERR_FILENO, "handlers ran", 12)); });
        vnos_exit(42);
      },
      ::testing::ExitedWithCode(42), "handlers ran");
}

TEST(VnosDummy, DoesNothing) { vnos_dummy(); }

TEST_F(VnosForwarders, Fstat64FillsNothing) {
  writeFile("file", "x");
  const int fd = vnos_open("file", O_RDONLY);
  std::vector<unsigned char> record(sizeof(struct stat), 0xA5);
  vnos_fstat64(fd, record.data());
  EXPECT_EQ(record, std::vector<unsigned char>(sizeof(struct stat), 0xA5));
  vnos_close(fd);
}

// Directories ----------------------------------------------------------------

using VnosReaddir = Vnos;

TEST_F(VnosReaddir, GivesEachEntryOnceAndThenNull) {
  writeFile("a", "");
  writeFile("b", "");
  DIR* const dir = vnos_opendir(".", 0);
  ASSERT_NE(dir, nullptr);
  std::multiset<std::string> names;
  while (const dirent* entry = vnos_readdir(dir)) names.insert(entry->d_name);
  EXPECT_EQ(names, (std::multiset<std::string>{".", "..", "a", "b"}));
  EXPECT_EQ(vnos_closedir(dir, 0), 0);
}

TEST_F(VnosReaddir, IgnoresTheEntryOfItsReentrantName) {
  writeFile("a", "");
  DIR* const dir = vnos_opendir(".", 0);
  dirent untouched;
  std::memset(&untouched, 0xA5, sizeof untouched);
  dirent ours = untouched;
  std::multiset<std::string> names;
  while (const dirent* entry = vnos_readdir_r(dir, &ours, 0)) {
    EXPECT_NE(entry, &ours);
    names.insert(entry->d_name);
  }
  EXPECT_EQ(names, (std::multiset<std::string>{".", "..", "a"}));
  EXPECT_EQ(std::memcmp(&ours, &untouched, sizeof ours), 0);
  EXPECT_EQ(vnos_readdir_r(dir, nullptr, 0), nullptr);
  vnos_closedir(dir, 0);
}

TEST_F(VnosReaddir, CannotOpenWhatIsAbsent) {
  EXPECT_EQ(vnos_opendir("absent", 0), nullptr);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(VnosReaddir, CanBeCalledFromC) {
  writeFile("a", "");
  EXPECT_EQ(dorvex_countEntriesInC("."), 3);
  EXPECT_TRUE(dorvex_holdsNothingInC());
}

// vnos_mkdir -----------------------------------------------------------------

using VnosMkdir = Vnos;

TEST_F(VnosMkdir, MakesAllThatIsMissing) {
  EXPECT_EQ(vnos_mkdir("a/b/c", 0755), 0);
  EXPECT_TRUE(fs::is_directory("a/b/c"));
  EXPECT_EQ(vnos_mkdir("a/b/d/e", 0755), 0);
  EXPECT_TRUE(fs::is_directory("a/b/d/e"));
}

TEST_F(VnosMkdir, GivesMinusOneForADirectoryThatExists) {
  fs::create_directories("a/b");
  EXPECT_EQ(vnos_mkdir("a/b", 0755), -1);
  EXPECT_EQ(vnos_mkdir("a/b/", 0755), -1);
  EXPECT_EQ(vnos_mkdir("/", 0755), -1);
  EXPECT_EQ(vnos_mkdir(".", 0755), -1);
  EXPECT_EQ(std::distance(fs::recursive_directory_iterator("."), {}), 2) << "and makes nothing";
}

TEST_F(VnosMkdir, GivesMinusOneForNoPath) {
  EXPECT_EQ(vnos_mkdir(nullptr, 0755), -1);
  EXPECT_EQ(vnos_mkdir("", 0755), -1);
}

TEST_F(VnosMkdir, TakesAbsolutePaths) {
  EXPECT_EQ(vnos_mkdir(in("x/y").c_str(), 0755), 0);
  EXPECT_TRUE(fs::is_directory("x/y"));
}

TEST_F(VnosMkdir, DoesNotMindSlashesAtTheEndOrInARow) {
  EXPECT_EQ(vnos_mkdir("a/b/", 0755), 0);
  EXPECT_TRUE(fs::is_directory("a/b"));
  EXPECT_EQ(vnos_mkdir("c//d", 0755), 0);
  EXPECT_TRUE(fs::is_directory("c/d"));
}

TEST_F(VnosMkdir, NeverMakesTheFirstNameBehindTwoSlashes) {
  const std::string share = "//dorvex-absent-server/share";
  EXPECT_EQ(vnos_mkdir(share.c_str(), 0755), -1);
  EXPECT_EQ(errno, ENOENT) << "mkdir of the share was tried";
  EXPECT_FALSE(fs::exists("/dorvex-absent-server"));
}

TEST_F(VnosMkdir, MakesWhatFollowsTheFirstNameBehindTwoSlashes) {
  const std::string path = "/" + in("m/n");
  ASSERT_EQ(path.substr(0, 2), "//");
  EXPECT_EQ(vnos_mkdir(path.c_str(), 0755), 0);
  EXPECT_TRUE(fs::is_directory("m/n"));
}

TEST_F(VnosMkdir, MakesNothingOfTwoSlashesAndANameAlone) {
  for (const char* path : {"//dorvex-absent-server", "//", "///", "//d", "///dorvex-absent"}) {
    errno = 0;
    EXPECT_EQ(vnos_mkdir(path, 0755), -1) << path;
    EXPECT_EQ(errno, 0) << path << ": nothing was asked of the disk";
  }
  EXPECT_FALSE(fs::exists("/dorvex-absent-server"));
  EXPECT_FALSE(fs::exists("/dorvex-absent"));
}

TEST_F(VnosMkdir, StartsBehindTheSlashFromTheFourthCharacterOn) {
  // A name of one character ends at the fourth; two slashes and a third one have
  // no name before the next slash.
  EXPECT_EQ(vnos_mkdir("//q/dorvex-absent", 0755), -1);
  EXPECT_FALSE(fs::exists("/q"));
  EXPECT_EQ(vnos_mkdir("///dorvex-absent/x", 0755), -1);
  EXPECT_FALSE(fs::exists("/dorvex-absent"));
}

TEST_F(VnosMkdir, ReturnsTheResultOfTheLastAttempt) {
  const std::string tooLong(300, 'x');
  EXPECT_EQ(vnos_mkdir(("made/" + tooLong).c_str(), 0755), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_TRUE(fs::is_directory("made"));
  writeFile("file", "");
  EXPECT_EQ(vnos_mkdir("file/below", 0755), -1);
  EXPECT_EQ(errno, ENOTDIR);
  EXPECT_EQ(vnos_mkdir("file", 0755), -1) << "stat does not mind what it is";
}

TEST_F(VnosMkdir, GivesEachNewDirectoryTheMode) {
  const mode_t before = vnos_umask(0);
  EXPECT_EQ(vnos_mkdir("p/q", 0751), 0);
  vnos_umask(before);
  for (const char* path : {"p", "p/q"}) {
    struct stat status {};
    ASSERT_EQ(vnos_stat(path, &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0751U) << path;
  }
}

TEST_F(VnosMkdir, CutsThePathAt1024Bytes) {
  std::string path;
  while (path.size() < 1000) path += std::string(199, 'd') + '/';
  path += std::string(100, 'e');
  ASSERT_EQ(path.size(), 1100U);
  EXPECT_EQ(vnos_mkdir(path.c_str(), 0755), 0);
  EXPECT_TRUE(fs::is_directory(path.substr(0, 1024)));
  EXPECT_FALSE(fs::exists(path.substr(0, 1025)));
}

// vnos_tempnam ---------------------------------------------------------------

using VnosTempnam = Vnos;

bool isGenerated(std::string_view text) {
  return text.size() == 6 && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
         });
}

TEST_F(VnosTempnam, ReservesAFileWithTheGivenPrefix) {
  const std::set<int> before = openDescriptors();
  char* const name = vnos_tempnam(folder.path().c_str(), "pre");
  ASSERT_NE(name, nullptr);
  const std::string path = name;
  vnos_free(name);
  const std::string start = in("pre");
  ASSERT_EQ(path.substr(0, start.size()), start);
  EXPECT_TRUE(isGenerated(path.substr(start.size()))) << path;
  EXPECT_TRUE(fs::is_regular_file(path));
  EXPECT_EQ(fs::file_size(path), 0U);
  EXPECT_EQ(openDescriptors(), before) << "the descriptor is closed";
}

TEST_F(VnosTempnam, GivesANewNameEachTime) {
  char* const first = vnos_tempnam(".", "");
  char* const second = vnos_tempnam(".", "");
  EXPECT_STRNE(first, second);
  EXPECT_EQ(std::string(first).substr(0, 2), "./");
  vnos_free(first);
  vnos_free(second);
}

TEST_F(VnosTempnam, UsesTmpAndNoPrefixForNull) {
  setenv("TMPDIR", folder.path().c_str(), 1);
  char* const name = vnos_tempnam(nullptr, nullptr);
  unsetenv("TMPDIR");
  ASSERT_NE(name, nullptr);
  const std::string path = name;
  vnos_free(name);
  EXPECT_EQ(path.substr(0, 5), "/tmp/");
  EXPECT_TRUE(isGenerated(path.substr(5))) << path;
  EXPECT_TRUE(fs::is_regular_file(path));
  fs::remove(path);
}

TEST_F(VnosTempnam, IsNullWhenTheFileCannotBeMade) {
  errno = 0;
  EXPECT_EQ(vnos_tempnam(in("absent").c_str(), "x"), nullptr);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(vnos_tempnam(".", "absent/x"), nullptr);
}

// While it lives, mkstemp fails that often, and its calls are counted.
class FailingMkstemp {
 public:
  explicit FailingMkstemp(int failures) {
    mkstempFailures = failures;
    mkstempCalls = 0;
  }
  FailingMkstemp(const FailingMkstemp&) = delete;
  FailingMkstemp& operator=(const FailingMkstemp&) = delete;
  ~FailingMkstemp() { mkstempFailures = 0; }
};

TEST_F(VnosTempnam, TriesOnceMoreWithTheNameWrittenAgain) {
  const FailingMkstemp failing(1);
  char* const name = vnos_tempnam(".", "pre");
  ASSERT_NE(name, nullptr);
  const std::string path = name;
  vnos_free(name);
  EXPECT_EQ(mkstempCalls, 2);
  EXPECT_EQ(path.substr(0, 5), "./pre");
  EXPECT_TRUE(isGenerated(path.substr(5))) << path;
  EXPECT_TRUE(fs::is_regular_file(path));
}

TEST_F(VnosTempnam, IsNullAfterASecondFailureAndTriesNoThirdTime) {
  const FailingMkstemp failing(2);
  EXPECT_EQ(vnos_tempnam(".", "pre"), nullptr);
  EXPECT_EQ(mkstempCalls, 2);
  EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(VnosTempnam, IsNullForNamesBeyondTheLimitWithoutTryingThem) {
  const LongString half(kLimit / 2 - 8);
  const LongString rest(kLimit / 2 - 6);  // together with 16: one above the limit
  const LongString whole(kLimit - 15);
  const LongString beyond(kLimit + 1UL);
  const std::pair<const char*, const char*> rows[] = {{half.c_str(), rest.c_str()},
                                                      {whole.c_str(), ""},
                                                      {"", whole.c_str()},
                                                      {beyond.c_str(), ""},
                                                      {"", beyond.c_str()}};
  for (const auto& [directory, prefix] : rows) {
    errno = 0;
    EXPECT_EQ(vnos_tempnam(directory, prefix), nullptr);
    EXPECT_EQ(errno, 0) << "neither malloc nor mkstemp was asked";
  }
}

#ifndef __SANITIZE_ADDRESS__
// The address sanitizer ends the process where malloc would give null.
TEST_F(VnosTempnam, IsNullWhenThereIsNoMemory) {
  const LongString directory(kBigBlock);
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  const rlimit tight{kBigBlock, before.rlim_max};
  setrlimit(RLIMIT_AS, &tight);
  errno = 0;
  char* const name = vnos_tempnam(directory.c_str(), "");
  const int error = errno;
  setrlimit(RLIMIT_AS, &before);
  EXPECT_EQ(name, nullptr);
  EXPECT_EQ(error, ENOMEM);
}
#endif

// vnos_dlopen ----------------------------------------------------------------

class VnosDlopen : public Vnos {
 protected:
  VnosDlopen() {
    dlerror();
    setenv("VN_DLL_LOG", "", 1);
  }
  ~VnosDlopen() override {
    beforeDlerror = nullptr;
    unsetenv("VN_DLL_LOG");
  }

  static constexpr const char* kModule = "libm.so.6";
  static constexpr const char* kAbsent = "./absent.so";
};

TEST_F(VnosDlopen, LogsOneLineForAModuleThatExists) {
  void* const handle = vnos_dlopen(kModule, RTLD_NOW);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(readFile("dll_debug.log"), "vnos_dlopen dll libm.so.6 \n");
  EXPECT_EQ(vnos_dlclose(handle), 0);
}

TEST_F(VnosDlopen, LogsThreeLinesForAModuleThatDoesNot) {
  dlopen(kAbsent, RTLD_NOW);
  const std::string reason = dlerror();
  EXPECT_EQ(vnos_dlopen(kAbsent, RTLD_NOW), nullptr);
  EXPECT_EQ(readFile("dll_debug.log"), "vnos_dlopen dll ./absent.so \nvnos_dlopen error: " +
                                           reason + "\nERROR: vnos_dlopen dll ./absent.so \n");
  EXPECT_EQ(vnos_dlerror(), nullptr) << "the text is used up";
}

TEST_F(VnosDlopen, AddsToTheLog) {
  writeFile("dll_debug.log", "before\n");
  vnos_dlclose(vnos_dlopen(kModule, RTLD_NOW));
  vnos_dlclose(vnos_dlopen(kModule, RTLD_NOW));
  EXPECT_EQ(readFile("dll_debug.log"),
            "before\nvnos_dlopen dll libm.so.6 \nvnos_dlopen dll libm.so.6 \n");
}

TEST_F(VnosDlopen, LogsWhateverTheValueOfTheVariable) {
  setenv("VN_DLL_LOG", "0", 1);
  vnos_dlclose(vnos_dlopen(kModule, RTLD_NOW));
  EXPECT_EQ(readFile("dll_debug.log"), "vnos_dlopen dll libm.so.6 \n");
}

TEST_F(VnosDlopen, TakesAPercentSignInANameForWhatItIs) {
  EXPECT_EQ(vnos_dlopen("./%s%n.so", RTLD_NOW), nullptr);
  EXPECT_EQ(readFile("dll_debug.log").substr(0, 27), "vnos_dlopen dll ./%s%n.so \n");
}

TEST_F(VnosDlopen, LogsNothingWithoutTheVariable) {
  unsetenv("VN_DLL_LOG");
  void* const handle = vnos_dlopen(kModule, RTLD_NOW);
  EXPECT_NE(handle, nullptr);
  vnos_dlclose(handle);
  EXPECT_EQ(vnos_dlopen(kAbsent, RTLD_NOW), nullptr);
  EXPECT_FALSE(fs::exists("dll_debug.log"));
}

TEST_F(VnosDlopen, LooksTheVariableUpAtEachStep) {
  beforeDlerror = [] { unsetenv("VN_DLL_LOG"); };
  EXPECT_EQ(vnos_dlopen(kAbsent, RTLD_NOW), nullptr);
  EXPECT_EQ(readFile("dll_debug.log"), "vnos_dlopen dll ./absent.so \n");

  beforeDlerror = [] { setenv("VN_DLL_LOG", "", 1); };
  fs::remove("dll_debug.log");
  EXPECT_EQ(vnos_dlopen(kAbsent, RTLD_NOW), nullptr);
  const std::string log = readFile("dll_debug.log");
  EXPECT_EQ(log.substr(0, 19), "vnos_dlopen error: ") << "the first step was not logged";
  EXPECT_NE(log.find("\nERROR: vnos_dlopen dll ./absent.so \n"), std::string::npos);
}

TEST_F(VnosDlopen, WorksWhenTheLogCannotBeOpened) {
  fs::create_directory("dll_debug.log");
  void* const handle = vnos_dlopen(kModule, RTLD_NOW);
  EXPECT_NE(handle, nullptr);
  vnos_dlclose(handle);
}

TEST_F(VnosDlopen, PassesTheFlagsOn) {
  EXPECT_EQ(vnos_dlopen(kModule, 0), nullptr) << "neither RTLD_NOW nor RTLD_LAZY";
}

TEST_F(VnosDlopen, FindsSymbolsAndTellsWhyNot) {
  void* const handle = vnos_dlopen(kModule, RTLD_NOW);
  const auto cosine = reinterpret_cast<double (*)(double)>(vnos_dlsym(handle, "cos"));
  ASSERT_NE(cosine, nullptr);
  EXPECT_EQ(cosine(0), 1);
  EXPECT_EQ(vnos_dlsym(handle, "dorvex_absent"), nullptr);
  const char* const error = vnos_dlerror();
  ASSERT_NE(error, nullptr);
  EXPECT_NE(std::string(error).find("dorvex_absent"), std::string::npos);
  EXPECT_EQ(vnos_dlerror(), nullptr);
  EXPECT_EQ(vnos_dlclose(handle), 0);
}

// Locks ----------------------------------------------------------------------

// A second process that locks the whole of a file, or asks who does.
class OtherProcess {
 public:
  explicit OtherProcess(const std::string& path) {
    int ready[2];
    int done[2];
    EXPECT_EQ(pipe(ready), 0);
    EXPECT_EQ(pipe(done), 0);
    child_ = fork();
    if (child_ == 0) {
      close(done[1]);
      const int fd = open(path.c_str(), O_RDWR);
      struct flock lock {};
      lock.l_type = F_WRLCK;
      char held = fcntl(fd, F_SETLK, &lock) == 0 ? 'y' : 'n';
      if (write(ready[1], &held, 1) == 1) static_cast<void>(read(done[0], &held, 1));
      _exit(0);
    }
    close(ready[1]);
    close(done[0]);
    char held = 'n';
    EXPECT_EQ(read(ready[0], &held, 1), 1);
    EXPECT_EQ(held, 'y');
    close(ready[0]);
    done_ = done[1];
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;
  ~OtherProcess() {
    close(done_);
    waitpid(child_, nullptr, 0);
  }

 private:
  pid_t child_ = -1;
  int done_ = -1;
};

// The lock that another process would meet in a file.
struct flock lockSeenByAnotherProcess(const std::string& path) {
  int answer[2];
  EXPECT_EQ(pipe(answer), 0);
  struct flock seen {};
  const pid_t child = fork();
  if (child == 0) {
    const int fd = open(path.c_str(), O_RDWR);
    seen.l_type = F_WRLCK;
    fcntl(fd, F_GETLK, &seen);
    static_cast<void>(write(answer[1], &seen, sizeof seen));
    _exit(0);
  }
  EXPECT_EQ(read(answer[0], &seen, sizeof seen), static_cast<ssize_t>(sizeof seen));
  close(answer[0]);
  close(answer[1]);
  waitpid(child, nullptr, 0);
  return seen;
}

using VnosFlock = Vnos;

TEST_F(VnosFlock, RecordHasItsFieldsInOrder) {
  static_assert(offsetof(vnos_flock, lock) == 0);
  static_assert(offsetof(vnos_flock, path) == sizeof(struct flock));
  static_assert(offsetof(vnos_flock, fd) == sizeof(struct flock) + sizeof(char*));
}

TEST_F(VnosFlock, InitHoldsNothingForANullPath) {
  vnos_flock record;
  std::memset(&record, 0xA5, sizeof record);
  EXPECT_EQ(vnos_flock_init(&record, O_RDWR, nullptr), 0);
  EXPECT_EQ(record.fd, -1);
  EXPECT_EQ(record.path, nullptr);
  EXPECT_EQ(vnos_flock_free(&record), 0);
}

TEST_F(VnosFlock, InitKeepsACopyOfThePath) {
  std::string path = in("lock");
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDWR | O_CREAT, path.c_str()), 0);
  path.assign(path.size(), '#');
  EXPECT_STREQ(record.path, in("lock").c_str());
  EXPECT_EQ(vnos_flock_free(&record), 0);
}

TEST_F(VnosFlock, InitKeepsThePathWhenTheFileCannotBeOpened) {
  vnos_flock record;
  errno = 0;
  EXPECT_EQ(vnos_flock_init(&record, O_RDWR, "absent"), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(record.fd, -1);
  EXPECT_STREQ(record.path, "absent");
  EXPECT_EQ(vnos_flock_free(&record), 0);
  EXPECT_STREQ(record.path, "absent") << "stays allocated";
  vnos_free(record.path);
}

TEST_F(VnosFlock, LocksARange) {
  writeFile("lock", "0123456789");
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDWR, "lock"), 0);
  EXPECT_EQ(vnos_flock_trywrlock(&record, SEEK_SET, 2, 3), 0);
  const struct flock seen = lockSeenByAnotherProcess("lock");
  EXPECT_EQ(seen.l_type, F_WRLCK);
  EXPECT_EQ(seen.l_start, 2);
  EXPECT_EQ(seen.l_len, 3);
  EXPECT_EQ(seen.l_pid, getpid());
  EXPECT_EQ(vnos_ftell(record.fd), 0) << "a given length does not move the position";

  EXPECT_EQ(record.lock.l_type, F_WRLCK);
  EXPECT_EQ(record.lock.l_whence, SEEK_SET);
  EXPECT_EQ(record.lock.l_start, 2);
  EXPECT_EQ(record.lock.l_len, 3);
  vnos_flock_free(&record);
}

TEST_F(VnosFlock, TakesTheSizeOfTheFileForALengthOfZero) {
  writeFile("lock", "0123456789");
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDWR, "lock"), 0);
  EXPECT_EQ(vnos_flock_trywrlock(&record, SEEK_SET, 0, 0), 0);
  EXPECT_EQ(record.lock.l_len, 10);
  EXPECT_EQ(lockSeenByAnotherProcess("lock").l_len, 10);
  EXPECT_EQ(vnos_ftell(record.fd), 10) << "the position has moved";
  vnos_flock_free(&record);
}

TEST_F(VnosFlock, CountsFromWhence) {
  writeFile("lock", "0123456789");
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDWR, "lock"), 0);
  EXPECT_EQ(vnos_flock_trywrlock(&record, SEEK_END, -4, 2), 0);
  const struct flock seen = lockSeenByAnotherProcess("lock");
  EXPECT_EQ(seen.l_start, 6);
  EXPECT_EQ(seen.l_len, 2);
  vnos_flock_free(&record);
}

TEST_F(VnosFlock, IsBusyWhenAnotherProcessHoldsTheRange) {
  writeFile("lock", "0123456789");
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDWR, "lock"), 0);
  {
    const OtherProcess other("lock");
    errno = 0;
    EXPECT_EQ(vnos_flock_trywrlock(&record, SEEK_SET, 0, 0), -1);
    EXPECT_EQ(errno, EBUSY);
    errno = 0;
    EXPECT_EQ(vnos_flock_trywrlock(&record, SEEK_SET, 3, 1), -1);
    EXPECT_EQ(errno, EBUSY);
  }
  EXPECT_EQ(vnos_flock_trywrlock(&record, SEEK_SET, 0, 0), 0) << "the other one has gone";
  vnos_flock_free(&record);
}

TEST_F(VnosFlock, LeavesErrnoOfAnyOtherFailure) {
  writeFile("lock", "x");
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDONLY, "lock"), 0);
  errno = 0;
  EXPECT_EQ(vnos_flock_trywrlock(&record, SEEK_SET, 0, 1), -1);
  EXPECT_EQ(errno, EBADF) << "not open for writing";
  errno = 0;
  EXPECT_EQ(vnos_flock_unlock(&record, 99, 0, 1), -1);
  EXPECT_EQ(errno, EINVAL);
  vnos_flock_free(&record);
}

TEST_F(VnosFlock, UnlocksARange) {
  writeFile("lock", "0123456789");
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDWR, "lock"), 0);
  ASSERT_EQ(vnos_flock_trywrlock(&record, SEEK_SET, 0, 10), 0);
  EXPECT_EQ(vnos_flock_unlock(&record, SEEK_SET, 0, 4), 0);
  EXPECT_EQ(record.lock.l_type, F_UNLCK);
  EXPECT_EQ(lockSeenByAnotherProcess("lock").l_start, 4);
  EXPECT_EQ(vnos_flock_unlock(&record, SEEK_SET, 0, 0), 0) << "the size of the file";
  EXPECT_EQ(record.lock.l_len, 10);
  EXPECT_EQ(lockSeenByAnotherProcess("lock").l_type, F_UNLCK);
  vnos_flock_free(&record);
}

TEST_F(VnosFlock, KeepsOutNoOtherRecordOfTheSameProcess) {
  writeFile("lock", "x");
  vnos_flock first;
  vnos_flock second;
  ASSERT_EQ(vnos_flock_init(&first, O_RDWR, "lock"), 0);
  ASSERT_EQ(vnos_flock_init(&second, O_RDWR, "lock"), 0);
  EXPECT_EQ(vnos_flock_trywrlock(&first, SEEK_SET, 0, 0), 0);
  EXPECT_EQ(vnos_flock_trywrlock(&second, SEEK_SET, 0, 0), 0);
  vnos_flock_free(&first);
  vnos_flock_free(&second);
}

TEST_F(VnosFlock, FreeUnlocksAndClosesAndLeavesTheFile) {
  vnos_flock record;
  ASSERT_EQ(vnos_flock_init(&record, O_RDWR | O_CREAT, "lock"), 0);
  ASSERT_EQ(vnos_flock_trywrlock(&record, SEEK_SET, 0, 0), 0);
  const int fd = record.fd;
  EXPECT_EQ(vnos_flock_free(&record), 0);
  EXPECT_EQ(record.fd, -1);
  EXPECT_EQ(record.path, nullptr);
  EXPECT_EQ(record.lock.l_type, F_UNLCK);
  EXPECT_EQ(fcntl(fd, F_GETFD), -1) << "closed";
  EXPECT_TRUE(fs::exists("lock"));
  EXPECT_EQ(lockSeenByAnotherProcess("lock").l_type, F_UNLCK);
  EXPECT_EQ(vnos_flock_free(&record), 0) << "a second time";
}

}  // namespace
}  // namespace dorvex::testing::vnose_test
