// The module can be loaded, used, shut down (vnDllShutdown) and unloaded any number
// of times.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "module/module_life.h"

namespace dorvex::testing::reload_test {
namespace {

// Each runs in a process of its own that is started anew, since another test of
// this program may hold the module.
class Reload : public ::testing::Test {
 protected:
  Reload() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(Reload, LeavesNothingBehindAndWorksAgainAnyNumberOfTimes) {
  if (!DORVEX_PROTOBUF_IS_PRIVATE)
    GTEST_SKIP() << "the build fell back to the system's protobuf, which cannot be unloaded";
  EXPECT_EXIT(
      {
        liveFlat(reloadRounds(), [] { return true; });
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "rounds");
}

TEST_F(Reload, ShutsDownAtUnloadWithoutVnDllShutdown) {
  EXPECT_EXIT(
      {
        void* handle = dlopen(ReaderModule::path(), RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) std::_Exit(1);
        dlclose(handle);
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
}

TEST_F(Reload, ShutsDownAtTheEndOfTheProcess) {
  EXPECT_EXIT(
      {
        const bool lived = liveAndRead(1);
        if (DORVEX_PROTOBUF_IS_PRIVATE && !lived) std::_Exit(1);
        if (dlopen(ReaderModule::path(), RTLD_NOW | RTLD_LOCAL) == nullptr) std::_Exit(2);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace dorvex::testing::reload_test
