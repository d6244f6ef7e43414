// Blocks in tests of the content view.
#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "dorvex/content.h"

namespace dorvex::testing {

inline content::Block paragraph(std::string text) {
  content::Paragraph paragraph;
  paragraph.text = std::move(text);
  content::Block block;
  block.what = std::move(paragraph);
  return block;
}

// What a block holds. Throws std::bad_variant_access where it holds something else.
template <typename What>
const What& as(const content::Block& block) {
  return std::get<What>(block.what);
}

// The texts of the paragraphs among blocks, not of those in boxes.
inline std::vector<std::string> textsIn(const std::vector<content::Block>& blocks) {
  std::vector<std::string> texts;
  for (const content::Block& block : blocks) {
    if (const auto* paragraph = std::get_if<content::Paragraph>(&block.what))
      texts.push_back(paragraph->text);
  }
  return texts;
}

}  // namespace dorvex::testing
