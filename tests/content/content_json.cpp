// Writes the content of a document as JSON, without host or confinement:
//
//   dorvex_content_json convert --to json FILE
#include <exception>
#include <iostream>
#include <string_view>

#include "content/support/files.h"
#include "writers/json_writer.h"

int main(int argc, char** argv) {
  using namespace dorvex;
  if (argc != 5 || std::string_view(argv[1]) != "convert" || std::string_view(argv[3]) != "json") {
    std::cerr << "usage: dorvex_content_json convert --to json FILE\n";
    return 2;
  }
  try {
    auto package = testing::packageAt(argv[4]);
    content::JsonWriter writer([](std::string_view bytes) { std::cout << bytes; });
    if (content::read(package, writer) == content::Outcome::kRead) return 0;
    std::cerr << "no document of the three applications\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
  }
  return 1;
}
