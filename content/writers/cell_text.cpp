#include "writers/cell_text.h"

namespace dorvex::content {

std::string richValue(const Cell& cell) {
  if (!cell.value.empty() || cell.paragraphs.empty()) return cell.value;
  std::string value;
  for (const Paragraph& paragraph : cell.paragraphs) {
    if (&paragraph != &cell.paragraphs.front()) value += '\n';
    value += paragraph.text;
  }
  return value;
}

}  // namespace dorvex::content
