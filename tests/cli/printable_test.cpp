#include "printable.h"

#include <gtest/gtest.h>

namespace dorvex::cli {
namespace {

TEST(Printable, ReplacesControlBytesOnly) {
  EXPECT_EQ(printable("a\nb\x1b[1m\x7f é"), "a?b?[1m? é");
}

}  // namespace
}  // namespace dorvex::cli
