// Property lists as packages hold them: in the binary form or as XML, with a list of
// strings or a dictionary that has strings.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorvex::content {

struct PropertyList {
  std::vector<std::string> strings;                          // of a list
  std::vector<std::pair<std::string, std::string>> entries;  // of a dictionary: key and string

  // The string of a key; empty where there is none.
  std::string_view at(std::string_view key) const;
};

// Values of other types than strings, and what lies deeper, are passed over. What is
// damaged gives what can be read. A list has at most a thousand strings, and a string
// at most a thousand characters.
PropertyList readPropertyList(std::string_view bytes);

}  // namespace dorvex::content
