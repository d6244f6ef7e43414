#include "writers/options.h"

#include <gtest/gtest.h>

#include "content/support/fixed_table.h"
#include "content/support/writing.h"

namespace dorvex::content::options_test {
namespace {

using namespace testing;

TEST(WriterOptions, MakeTheWriterOfTheirFormat) {
  const Sheet sheet{"S", false, {blockOf(fixedTable("T", {{textCell("a")}}))}};
  EXPECT_TRUE(writtenSheet(Format::kJson, sheet).starts_with("{"));
  EXPECT_TRUE(writtenSheet(Format::kMarkdown, sheet).starts_with("## S"));
  EXPECT_TRUE(writtenSheet(Format::kHtml, sheet).starts_with("<!DOCTYPE html>"));
  EXPECT_TRUE(writtenSheet(Format::kText, sheet).starts_with("S\n"));
  EXPECT_EQ(writtenSheet(Format::kCsv, sheet), "a\r\n");
}

}  // namespace
}  // namespace dorvex::content::options_test
