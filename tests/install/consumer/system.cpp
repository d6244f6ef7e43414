// The layer over the operating system, in a folder of its own.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "Tools/vnose/vnose.h"
#include "documents.h"

namespace dorvex::consumer {
namespace {

// Works in a new folder, and removes it at the end.
class SystemLayer : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(vnos_getcwd(before_, sizeof before_), nullptr);
    // vnos_tempnam makes a file; the folder takes its place.
    char* name = vnos_tempnam(nullptr, "consumer");
    ASSERT_NE(name, nullptr);
    folder_ = name;
    vnos_free(name);
    ASSERT_EQ(vnos_unlink(folder_.c_str()), 0);
    ASSERT_EQ(vnos_mkdir(folder_.c_str(), 0700), 0);
    ASSERT_EQ(vnos_chdir(folder_.c_str()), 0);
  }

  void TearDown() override {
    EXPECT_EQ(vnos_chdir(before_), 0);
    EXPECT_EQ(vnos_rmdir(folder_.c_str()), 0) << "something was left behind";
  }

  char before_[4096] = {};
  std::string folder_;
};

TEST_F(SystemLayer, LoadsModules) {
  void* module = vnos_dlopen((documents.moduleFolder + "/unzip.so").c_str(), RTLD_NOW);
  ASSERT_NE(module, nullptr);
  EXPECT_NE(vnos_dlsym(module, "unzipGetContainerReaderInterface"), nullptr);
  EXPECT_EQ(vnos_dlclose(module), 0);
  EXPECT_EQ(vnos_dlopen("./absent.so", RTLD_NOW), nullptr);
  EXPECT_EQ(vnos_dlsym(nullptr, "no such symbol"), nullptr);
  EXPECT_NE(vnos_dlerror(), nullptr);
}

TEST_F(SystemLayer, HandsOutMemory) {
  auto* block = static_cast<char*>(vnos_malloc(4));
  ASSERT_NE(block, nullptr);
  std::memcpy(block, "abc", 4);
  block = static_cast<char*>(vnos_realloc(block, 100));
  block = static_cast<char*>(vnos_Saferealloc(block, 1000));
  EXPECT_STREQ(block, "abc");
  EXPECT_EQ(vnos_Saferealloc(block, 0x80000000), nullptr);  // frees it
  EXPECT_EQ(vnos_malloc(0x80000000), nullptr);

  auto* zeroed = static_cast<char*>(vnos_calloc(2, 2));
  EXPECT_EQ(std::memcmp(zeroed, "\0\0\0\0", 4), 0);
  vnos_free(zeroed);
  void* whatever = vnos_valloc(1);
  EXPECT_NE(whatever, nullptr);
  vnos_free(whatever);
}

TEST_F(SystemLayer, WritesAndReadsFiles) {
  const int fd = static_cast<int>(vnos_fopen("file", "w+"));
  ASSERT_GE(fd, 256);
  EXPECT_EQ(vnos_fwrite(fd, "abcd", 2, 2), 2);
  EXPECT_EQ(vnos_write(fd, "ef", 2), 2);
  EXPECT_EQ(vnos_fsync(fd), 0);
  EXPECT_EQ(vnos_ftell(fd), 6);
  EXPECT_EQ(vnos_ftell64(fd), 6);
  EXPECT_EQ(vnos_filesize(fd), 6);
  EXPECT_EQ(vnos_filesize64(fd), 6);
  EXPECT_EQ(vnos_ftruncate(fd, 5), 0);
  struct stat status {};
  EXPECT_EQ(vnos_fstat(fd, &status), 0);
  EXPECT_EQ(status.st_size, 5);
  vnos_fstat64(fd, nullptr);  // does nothing

  char bytes[3] = {};
  EXPECT_EQ(vnos_lseek(fd, 1, SEEK_SET), 1);
  EXPECT_EQ(vnos_read(fd, bytes, 2), 2);
  EXPECT_STREQ(bytes, "bc");
  EXPECT_EQ(vnos_lseek64(fd, 3, SEEK_SET), 3);
  EXPECT_EQ(vnos_fseek(fd, -3, SEEK_CUR), 0);
  EXPECT_EQ(vnos_fread(fd, bytes, 1, 2), 2);
  EXPECT_STREQ(bytes, "ab");
  EXPECT_EQ(vnos_fseek64(fd, -1, SEEK_SET), -1);
  EXPECT_EQ(vnos_fclose(fd), 0);

  const int again = static_cast<int>(vnos_fopen64("file", "r"));
  ASSERT_GE(again, 256);
  EXPECT_EQ(vnos_close(again), 0);
  const int third = vnos_open("file", O_RDONLY);
  ASSERT_GE(third, 256);
  EXPECT_EQ(vnos_close(third), 0);
  EXPECT_EQ(vnos_unlink("file"), 0);
}

TEST_F(SystemLayer, ChangesWhatPathsName) {
  const mode_t before = vnos_umask(022);
  EXPECT_EQ(vnos_umask(before), mode_t{022});
  ASSERT_EQ(vnos_close(vnos_open("old", O_CREAT | O_WRONLY)), 0);
  EXPECT_EQ(vnos_rename("old", "new"), 0);
  EXPECT_EQ(vnos_chmod("new", 0600), 0);
  EXPECT_EQ(vnos_access("new", R_OK | W_OK), 0);
  EXPECT_EQ(vnos_access("old", F_OK), -1);
  const timeval times[2] = {{1000, 0}, {2000, 0}};
  EXPECT_EQ(vnos_utimes("new", times), 0);
  struct stat status {};
  EXPECT_EQ(vnos_stat("new", &status), 0);
  EXPECT_EQ(status.st_mtime, 2000);
  struct statfs system {};
  EXPECT_EQ(vnos_statfs(".", &system), 0);
  EXPECT_GT(system.f_bsize, 0);
  EXPECT_EQ(vnos_unlink("new"), 0);
}

// The one entry of a folder that is neither "." nor "..".
template <typename Read>
std::string onlyEntry(Read readNext) {
  DIR* dir = vnos_opendir(".", 0);
  std::string name;
  while (const dirent* entry = readNext(dir)) {
    if (entry->d_name[0] != '.') name += entry->d_name;
  }
  EXPECT_EQ(vnos_closedir(dir, 0), 0);
  return name;
}

TEST_F(SystemLayer, WalksDirectories) {
  ASSERT_EQ(vnos_mkdir("entry", 0700), 0);
  EXPECT_EQ(onlyEntry([](DIR* dir) { return vnos_readdir(dir); }), "entry");
  EXPECT_EQ(onlyEntry([](DIR* dir) { return vnos_readdir_r(dir, nullptr, 0); }), "entry");
  EXPECT_EQ(vnos_rmdir("entry"), 0);
}

TEST_F(SystemLayer, LocksFiles) {
  vnos_flock lock;
  ASSERT_EQ(vnos_flock_init(&lock, O_CREAT | O_RDWR, "lock"), 0);
  EXPECT_EQ(vnos_flock_trywrlock(&lock, SEEK_SET, 0, 10), 0);
  EXPECT_EQ(vnos_flock_unlock(&lock, SEEK_SET, 0, 10), 0);
  EXPECT_EQ(vnos_flock_free(&lock), 0);
  EXPECT_EQ(vnos_unlink("lock"), 0);
}

TEST_F(SystemLayer, DealsWithTheProcess) {
  EXPECT_EQ(vnos_usleep(1), 0);
  EXPECT_EQ(vnos_system("exit 3"), 3 << 8);
  vnos_dummy();
}

TEST(SystemLayerDeathTest, EndsTheProcess) {
  EXPECT_EXIT(vnos_exit(7), ::testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace dorvex::consumer
