#include "Tools/formats/vniwork13/protobuf_general.h"

#include <google/protobuf/message_lite.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(ShutDownProtobuf, ShutsTheLibraryDown) {
  const auto exitWithSeven = [](const void*) { std::_Exit(7); };
  EXPECT_EXIT(
      {
        google::protobuf::internal::OnShutdownRun(exitWithSeven, nullptr);
        vn_iwork13_ShutDownProtobuf();
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(7), "^$");
}

// In a process of its own: no message may be used afterwards.
TEST(ShutDownProtobuf, MayBeCalledTwice) {
  EXPECT_EXIT(
      {
        vn_iwork13_ShutDownProtobuf();
        vn_iwork13_ShutDownProtobuf();
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
}

}  // namespace
