// operator new fails while protobuf builds its descriptors, which the reader needs
// only where an instance of a message is looked up.
#include "Tools/formats/vniwork13/descriptors.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/printed_form.h"
#include "Tools/formats/vniwork13/protobuf_general.h"
#include "Tools/formats/vniwork13/registry.h"
#include "support/failing_allocation.h"
#include "support/package_writer.h"

namespace dorvex::testing {
namespace {

using vn::iwork13::getPagesMessage;
using vn::iwork13::MessageMap;

// Exit codes of a child.
enum Exit : int { kHeld = 0, kNothingFailed = 100, kBroken = 1 };

bool runsOutOfMemory(const auto& call) {
  try {
    call();
    return false;
  } catch (const std::bad_alloc&) {
    return true;
  }
}

// In a process that has not needed descriptors yet: a first need that runs out of
// memory, then whatever else needs them, and the end of the library.
[[noreturn]] void needDescriptors(long index) {
  const std::string stream = objectStream({storage(1, {"text"}), storage(2, {"See text: "})});
  MessageMap map;
  map.populate(std::vector<unsigned char>(stream.begin(), stream.end()), getPagesMessage);
  bool failed = false;
  bool first = false;
  {
    const FailingAllocation failing(index, [&failed] { failed = true; });
    first = runsOutOfMemory([] { vn::iwork13::requireDescriptors(); });
  }
  if (first != failed) std::_Exit(kBroken);
  const google::protobuf::Message* instance = getPagesMessage(2001);
  for (int again = 0; again < 2; ++again) {
    if (runsOutOfMemory([&] { vn::iwork13::printMessage(*instance); }) != failed ||
        runsOutOfMemory([&] { map.lookup(1); }) != failed ||
        runsOutOfMemory([&] { map.lookup(2); }) != failed)
      std::_Exit(kBroken);
  }
  vn_iwork13_ShutDownProtobuf();
  std::_Exit(failed ? kHeld : kNothingFailed);
}

int exitOf(long index) {
  const pid_t child = ::fork();
  if (child == 0) needDescriptors(index);
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// There are some 85,000 of them, so only the first ones and then one in some
// hundreds take a process each.
TEST(DescriptorFaults, AreOutOfMemoryFromThenOnAndNeverACrash) {
  constexpr long kEachOfTheFirst = 50;
  constexpr long kStep = 997;
  long index = 0;
  int exit = kHeld;
  while (exit == kHeld) {
    exit = exitOf(index);
    index += index < kEachOfTheFirst ? 1 : kStep;
  }
  EXPECT_EQ(exit, kNothingFailed) << "allocation " << index;
  EXPECT_GT(index, 20 * kStep);
}

}  // namespace
}  // namespace dorvex::testing
