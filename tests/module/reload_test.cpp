// The module can be loaded, used, shut down and unloaded any number of times.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing {
namespace {

bool isMapped(const std::string& path) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.ends_with(path)) return true;
  }
  return false;
}

// One life of the module. True if all of it went well.
bool loadUseAndUnload() {
  void* handle = dlopen(ReaderModule::path(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return false;
  const auto find = [handle](const char* name) { return dlsym(handle, name); };
  ReaderInterface reader{};
  reinterpret_cast<GetReaderInterfaceFunction>(find("dorvexGetReaderInterface"))(&reader);
  const bool started = reinterpret_cast<DllInitFunction>(find("vnDllInit"))();
  bool used = false;
  {
    BareHost host;
    const std::string bytes =
        zip({{"Index/Document.iwa", iwa({storage(1, {"alive"}), storage(2, {"a text: "})})}});
    const Pumped pumped = pump(reader, host, &host.addDocument(bytes));
    used = pumped.result() == 0 && textsOf(pumped.stream())[0] == "alive";
  }
  const bool mapped = isMapped(ReaderModule::path());
  reinterpret_cast<DllShutdownFunction>(find("vnDllShutdown"))();
  dlclose(handle);  // runs the terminator, which shuts down once more
  return started && used && mapped;
}

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
        for (int life = 0; life < 10; ++life) {
          if (!loadUseAndUnload()) std::_Exit(1);
          if (isMapped(ReaderModule::path())) std::_Exit(2);
        }
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
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
        if (!loadUseAndUnload()) std::_Exit(1);
        if (dlopen(ReaderModule::path(), RTLD_NOW | RTLD_LOCAL) == nullptr) std::_Exit(2);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace dorvex::testing
