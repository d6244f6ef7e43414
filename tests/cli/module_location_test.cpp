#include <gtest/gtest.h>

#include <filesystem>

#include "program.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::module_location_test {
namespace {

using namespace testing;

const std::string kDocument = zip({{"Index/Document.iwa", iwa({storage(1, {"found"})})}});

// The tool, the modules and a document as they lie once installed.
struct Installation {
  Installation() {
    const std::filesystem::path tool = DORVEX_PROGRAM;
    const std::filesystem::path reader = DORVEX_READER_MODULE;
    const auto modules =
        folder.path() /
        std::filesystem::relative(reader.parent_path(), tool.parent_path().parent_path());
    std::filesystem::create_directories(modules);
    std::filesystem::create_directories(folder.path() / "bin");
    std::filesystem::copy_file(tool, folder.path() / "bin/dorvex");
    std::filesystem::copy_file(reader, modules / "dorvexsr.so");
    std::filesystem::copy_file(DORVEX_CONTAINER_MODULE, modules / "unzip.so");
    writeFile(folder.path() / "a.pages", kDocument);
  }
  Finished run(const std::string& program) const {
    return runProgram(program, {"text", folder.path() / "a.pages"});
  }
  TemporaryDirectory folder;
};

TEST(DefaultModule, IsTheOneInstalledWithTheTool) {
  const Installation installation;
  EXPECT_EQ(installation.run(installation.folder.path() / "bin/dorvex").output, "found\n");
}

TEST(DefaultModule, IsFoundThroughALinkToTheTool) {
  const Installation installation;
  const auto link = installation.folder.path() / "link";
  std::filesystem::create_symlink(installation.folder.path() / "bin/dorvex", link);
  EXPECT_EQ(installation.run(link).output, "found\n");
}

TEST(DefaultModule, ThatIsMissingIsNamed) {
  const TemporaryDirectory folder;
  std::filesystem::copy_file(DORVEX_PROGRAM, folder.path() / "dorvex");
  writeFile(folder.path() / "a.pages", kDocument);
  const Finished run = runProgram(folder.path() / "dorvex", {"text", folder.path() / "a.pages"});
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.errors.find("cannot load the module"), std::string::npos) << run.errors;
  EXPECT_NE(run.errors.find("dorvexsr.so"), std::string::npos) << run.errors;
}

// Runs a command of the shell in a folder, with nothing in /proc.
Finished runWithoutProc(const std::filesystem::path& folder, const std::string& command) {
  const std::string script =
      "mount -t tmpfs none /proc && cd '" + folder.string() + "' && exec " + command;
  return runProgram("/usr/bin/unshare", {"-m", "sh", "-c", script});
}

class WithoutProc : public ::testing::Test {
 protected:
  void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer looks at /proc for itself";
#endif
    if (runWithoutProc("/", "true").status != 0) GTEST_SKIP() << "mounting takes privileges";
  }
};

TEST_F(WithoutProc, NothingInTheWorkingDirectoryIsLoadedOrRun) {
  const TemporaryDirectory folder;
  const std::string tool = DORVEX_PROGRAM;
  std::filesystem::create_directories(folder.path() / "work");
  for (const std::string place : {"lib/dorvex", "lib/x86_64-linux-gnu/dorvex", "libexec/dorvex"}) {
    std::filesystem::create_directories(folder.path() / place);
    std::filesystem::copy_file(DORVEX_READER_MODULE, folder.path() / place / "dorvexsr.so");
    std::filesystem::copy_file(DORVEX_CONTAINER_MODULE, folder.path() / place / "unzip.so");
    writeFile(folder.path() / place / "dorvex-inspect", "#!/bin/sh\necho trapped\n");
    std::filesystem::permissions(folder.path() / place / "dorvex-inspect",
                                 std::filesystem::perms::owner_all);
  }
  writeFile(folder.path() / "work/a.pages", kDocument);
  const Finished text = runWithoutProc(folder.path() / "work", tool + " text a.pages");
  EXPECT_EQ(text.status, 3);
  EXPECT_NE(text.errors.find("without /proc"), std::string::npos) << text.errors;
  const Finished inspected =
      runWithoutProc(folder.path() / "work",
                     tool + " --module " + std::string(DORVEX_READER_MODULE) + " inspect a.pages");
  EXPECT_EQ(inspected.status, 3);
  EXPECT_EQ(inspected.output, "");
  EXPECT_NE(inspected.errors.find("without /proc"), std::string::npos) << inspected.errors;
}

TEST_F(WithoutProc, APackageDirectoryIsRead) {
  const TemporaryDirectory folder;
  writeDirectory(folder.path() / "a.pages", {{"Index/Document.iwa", iwa({storage(1, {"found"})})}});
  const Finished run = runWithoutProc(folder.path(), std::string(DORVEX_PROGRAM) + " --module " +
                                                         DORVEX_READER_MODULE + " text a.pages");
  EXPECT_EQ(run.output, "found\n") << run.errors;
}

}  // namespace
}  // namespace dorvex::module_location_test
