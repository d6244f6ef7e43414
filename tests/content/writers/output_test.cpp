#include "writers/output.h"

#include <gtest/gtest.h>

#include <string>

namespace dorvex::content::output_test {
namespace {

TEST(Output, HandsOnAllBytesInTheirOrder) {
  std::string taken;
  std::string put;
  Output output([&](std::string_view bytes) { taken += bytes; });
  const auto add = [&](const std::string& bytes) {
    put += bytes;
    output.put(bytes);
  };
  // Up to a piece, across its end, and more than one has room for.
  for (const std::size_t size : {0, 1, 65'534, 1, 3, 65'536, 7, 65'537, 300'000, 2})
    add(std::string(size, static_cast<char>('a' + size % 26)));
  for (char c = 'A'; c <= 'Z'; ++c) {
    put += c;
    output.put(c);
  }
  output.flush();
  EXPECT_EQ(taken, put);
}

TEST(Output, HandsOnNothingWhereNothingIsPending) {
  int calls = 0;
  Output output([&](std::string_view) { ++calls; });
  output.flush();
  output.put("a");
  EXPECT_EQ(calls, 0);
  output.flush();
  output.flush();
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace dorvex::content::output_test
