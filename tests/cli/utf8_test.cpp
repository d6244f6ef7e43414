#include "utf8.h"

#include <gtest/gtest.h>

namespace dorvex::cli::utf8_test {
namespace {

using Form = FirstCharacter::Form;

struct Row {
  std::string_view text;
  Form form;
  std::size_t length;
};

TEST(FirstCharacterOf, TellsWhatATextBeginsWith) {
  for (const Row& row :
       {Row{"a", Form::kWhole, 1}, Row{"\x7F", Form::kWhole, 1},
        Row{std::string_view("\0b", 2), Form::kWhole, 1}, Row{"\xC3\xA9", Form::kWhole, 2},
        Row{"\xE2\x82\xAC", Form::kWhole, 3}, Row{"\xF0\x9F\x8D\xB5", Form::kWhole, 4},
        Row{"\xC3", Form::kCut, 1}, Row{"\xF0\x9F\x8D", Form::kCut, 3},
        Row{"\x80", Form::kInvalid, 1}, Row{"\xC0\xAF", Form::kInvalid, 1},
        Row{"\xC3x", Form::kInvalid, 1}, Row{"\xE0\x80\x80", Form::kInvalid, 1},
        Row{"\xE2\x82x", Form::kInvalid, 2}, Row{"\xED\xA0\x80", Form::kInvalid, 1},
        Row{"\xF4\x90\x80\x80", Form::kInvalid, 1}, Row{"\xF0\x9F\x8D\x20", Form::kInvalid, 3},
        Row{"\xFF", Form::kInvalid, 1}}) {
    const auto [form, length] = firstCharacterOf(row.text);
    EXPECT_EQ(form, row.form) << row.text;
    EXPECT_EQ(length, row.length) << row.text;
  }
}

TEST(IsC1Control, HoldsForThoseBehindDelete) {
  EXPECT_TRUE(isC1Control("\xC2\x80"));
  EXPECT_TRUE(isC1Control("\xC2\x9F"));
  EXPECT_FALSE(isC1Control("\xC2\xA0"));
  EXPECT_FALSE(isC1Control("\xC3\x80"));
  EXPECT_FALSE(isC1Control("\x1B"));
}

}  // namespace
}  // namespace dorvex::cli::utf8_test
