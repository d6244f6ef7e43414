#include "inspect/options.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <algorithm>

namespace dorvex::cli::options_test {
namespace {

InspectOptions parsed(std::vector<std::string> arguments) {
  CLI::App app;
  InspectOptions options;
  addInspectOptions(app, options);
  std::reverse(arguments.begin(), arguments.end());
  app.parse(arguments);
  return options;
}

TEST(InspectOptions, ComeBackFromTheArgumentsThatTheyAreWrittenAs) {
  const auto again =
      parsed(argumentsOf(parsed({"--json", "--object", "42", "--app", "keynote", "a.key"})));
  EXPECT_TRUE(again.json);
  EXPECT_EQ(again.object, 42U);
  EXPECT_EQ(again.application, "keynote");
  EXPECT_EQ(again.path, "a.key");
}

TEST(InspectOptions, ComeBackForAPathThatLooksLikeAnOption) {
  const auto again = parsed(argumentsOf(parsed({"--", "--json"})));
  EXPECT_FALSE(again.json);
  EXPECT_EQ(again.object, std::nullopt);
  EXPECT_EQ(again.application, "auto");
  EXPECT_EQ(again.path, "--json");
}

TEST(InspectOptions, TakeNoOtherApplication) {
  EXPECT_THROW(parsed({"--app", "sheets", "a"}), CLI::ValidationError);
}

}  // namespace
}  // namespace dorvex::cli::options_test
