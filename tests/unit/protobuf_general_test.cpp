#include "Tools/formats/vniwork13/protobuf_general.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

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
