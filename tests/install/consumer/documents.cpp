#include "documents.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace dorvex::consumer {

Documents documents;

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace dorvex::consumer
