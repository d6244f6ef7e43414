// The module's boundary: what it exports, and that only numbers leave it.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "loaded_module.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"
#include "support/zip_bytes.h"

namespace dorvex::unzip_test {
namespace {

using testing::LoadedModule;
using testing::MemoryObject;
using testing::rawZip;
using testing::rawZip64;
using testing::TemporaryDirectory;
using testing::zip;

bool isMapped(const std::string& file) {
  return testing::readFile("/proc/self/maps").find(file) != std::string::npos;
}

std::vector<std::string> exportedNames() {
  const std::string command =
      std::string("nm -D --defined-only --format=posix ") + DORVEX_CONTAINER_MODULE;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::popen(command.c_str(), "r"),
                                                               ::pclose);
  std::vector<std::string> names;
  std::array<char, 4096> line;
  while (std::fgets(line.data(), line.size(), output.get()) != nullptr) {
    const std::string text = line.data();
    names.push_back(text.substr(0, text.find(' ')));
  }
  return names;
}

TEST(UnzipModule, ExportsItsEntryPointsAndNothingElse) {
  EXPECT_EQ(exportedNames(),
            (std::vector<std::string>{"unzipGetContainerReaderInterface", "unzipLoadLibzip",
                                      "unzipOpenLimitedContainer"}));
}

TEST(UnzipModule, FillsFiveSlotsAndNullsTheOthers) {
  const LoadedModule module;
  EXPECT_NE(module.interface.OpenContainer, nullptr);
  EXPECT_NE(module.interface.CloseContainer, nullptr);
  EXPECT_NE(module.interface.GetEntryInfo, nullptr);
  EXPECT_NE(module.interface.ExtractEntry, nullptr);
  EXPECT_NE(module.interface.GetEntryCount, nullptr);
  for (const void* slot : module.interface.reserved) EXPECT_EQ(slot, nullptr);
}

TEST(UnzipModule, CanBeLoadedAndUnloadedAgainAndAgain) {
  for (int round = 0; round < 20; ++round) {
    const LoadedModule module;
    MemoryObject io(zip({{"a", "1"}}));
    void* container = module.interface.OpenContainer(&io, nullptr, 0);
    ASSERT_NE(container, nullptr);
    module.interface.CloseContainer(container);
    EXPECT_EQ(module.loadLibzip(), 1);
  }
  EXPECT_FALSE(isMapped("/unzip.so"));
  EXPECT_FALSE(isMapped("/unzip-libzip.so"));
}

// A process that reads a document of 2 KB would spend a quarter of its time on it.
TEST(UnzipModule, LoadsLibzipForZipsThatNeedItAndForNoOthers) {
  const LoadedModule module;
  const auto open = [&](const std::string& bytes) {
    MemoryObject io(bytes);
    void* container = module.interface.OpenContainer(&io, nullptr, 0);
    EXPECT_NE(container, nullptr);
    module.interface.CloseContainer(container);
    return isMapped("/unzip-libzip.so");
  };
  EXPECT_FALSE(open(zip({{"a", "1"}, {"b", std::string(1000, 'x'), true}, {"c/", ""}})));
  EXPECT_TRUE(open(rawZip64({{.name = "a", .contents = "1"}})));
}

TEST(UnzipModule, OpensNoZipHalfWhereLibzipCannotBeLoaded) {
  constexpr std::uint16_t kUnknownMethod = 77;
  const TemporaryDirectory alone;
  std::filesystem::copy_file(DORVEX_CONTAINER_MODULE, alone.path() / "unzip.so");
  const LoadedModule module(alone.path() / "unzip.so");
  const std::string rareMember = rawZip(
      {{.name = "a", .contents = "1"}, {.name = "b", .contents = "", .method = kUnknownMethod}});
  for (const std::string& bytes : {rawZip64({{.name = "a", .contents = "1"}}), rareMember}) {
    MemoryObject io(bytes);
    UnzipLimits limits;
    EXPECT_EQ(module.openLimited(&io, &limits), nullptr);
    EXPECT_EQ(limits.passed, UNZIP_LIBZIP_MISSING);
    const std::string reason = ::dlerror();
    EXPECT_NE(reason.find((alone.path() / "unzip-libzip.so").string()), std::string::npos);
  }
  EXPECT_EQ(module.loadLibzip(), 0);
  MemoryObject io(zip({{"a", "1"}}));
  UnzipLimits limits;
  void* container = module.openLimited(&io, &limits);
  EXPECT_NE(container, nullptr);
  EXPECT_EQ(limits.passed, UNZIP_LIMIT_NONE);
  module.interface.CloseContainer(container);
}

TEST(UnzipModule, AnswersNullsWithStatusNumbers) {
  const LoadedModule module;
  ContainerEntryInfo entry;
  MemoryObject out;
  EXPECT_EQ(module.interface.OpenContainer(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(module.interface.GetEntryCount(nullptr), 0);
  EXPECT_EQ(module.interface.GetEntryInfo(nullptr, 0, &entry), VN_CONTAINER_INVALID_ARGUMENT);
  EXPECT_EQ(module.interface.ExtractEntry(nullptr, 0, &out), VN_CONTAINER_INVALID_ARGUMENT);
  EXPECT_EQ(module.interface.CloseContainer(nullptr), VN_CONTAINER_OK);
  MemoryObject io(zip({{"a", "1"}}));
  void* container = module.interface.OpenContainer(&io, nullptr, 0);
  EXPECT_EQ(module.interface.GetEntryInfo(container, 0, nullptr), VN_CONTAINER_INVALID_ARGUMENT);
  EXPECT_EQ(module.interface.ExtractEntry(container, 0, nullptr), VN_CONTAINER_INVALID_ARGUMENT);
  module.interface.CloseContainer(container);
}

TEST(UnzipModule, TurnsWhatASlotThrowsIntoAStatus) {
  const LoadedModule module;
  MemoryObject io(zip({{"a", "1"}}));
  void* container = module.interface.OpenContainer(&io, nullptr, 0);
  MemoryObject out;
  out.Write = [](_VPTPIOobj*, const void*, std::uint32_t) -> int { throw std::bad_alloc(); };
  EXPECT_EQ(module.interface.ExtractEntry(container, 0, &out), VN_CONTAINER_OUT_OF_MEMORY);
  out.Write = [](_VPTPIOobj*, const void*, std::uint32_t) -> int { throw 1; };
  EXPECT_EQ(module.interface.ExtractEntry(container, 0, &out), VN_CONTAINER_GENERAL_FAILURE);
  module.interface.CloseContainer(container);
  io.Seek = [](_VPTPIOobj*, std::int64_t, int) -> int { throw 1; };
  EXPECT_EQ(module.interface.OpenContainer(&io, nullptr, 0), nullptr);
}

}  // namespace
}  // namespace dorvex::unzip_test
