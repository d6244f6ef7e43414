#include "reading/reader_module.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::reader_module_test {
namespace {

bool isMapped(const std::string& file) {
  return testing::readFile("/proc/self/maps").find(file) != std::string::npos;
}

TEST(ReaderModule, IsLoadedOnceShutDownByItsLastUserAndGoneThen) {
  const testing::TemporaryDirectory folder;
  const auto log = folder.path() / "log";
  testing::writeFile(log, "");
  ::setenv("FAKE_READER_SHUTDOWN_LOG", log.c_str(), 1);
  auto first = ReaderModule::load(FAKE_READER_MODULE);
  auto second = ReaderModule::load(FAKE_READER_MODULE);
  EXPECT_EQ(first, second);
  EXPECT_NE(first->reader().FillBuffer, nullptr);
  first.reset();
  EXPECT_EQ(testing::readFile(log), "");
  EXPECT_TRUE(isMapped("fake_reader"));
  second.reset();
  EXPECT_EQ(testing::readFile(log), "shutdown\n");
  EXPECT_FALSE(isMapped("fake_reader"));
  ::unsetenv("FAKE_READER_SHUTDOWN_LOG");
}

TEST(ReaderModule, ThatIsNotThereIsAnErrorThatNamesTheFile) {
  try {
    ReaderModule::load("/no/such/module.so");
    FAIL() << "loaded";
  } catch (const ModuleError& error) {
    EXPECT_NE(std::string(error.what()).find("/no/such/module.so"), std::string::npos);
  }
}

TEST(ReaderModule, IsLookedForWhereItsPathSaysNotWhereTheLoaderWould) {
  EXPECT_THROW(ReaderModule::load("libc.so.6"), ModuleError);
}

TEST(ReaderModule, ThatIsNoReaderIsAnError) {
  try {
    ReaderModule::load(DORVEX_CONTAINER_MODULE);
    FAIL() << "loaded";
  } catch (const ModuleError& error) {
    EXPECT_NE(std::string(error.what()).find("not a reader module"), std::string::npos);
  }
}

}  // namespace
}  // namespace dorvex::reader_module_test
