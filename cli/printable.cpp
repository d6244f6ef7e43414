#include "printable.h"

#include <algorithm>

namespace dorvex::cli {

std::string printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; },
      '?');
  return text;
}

}  // namespace dorvex::cli
