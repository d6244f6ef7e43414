// Writes the sample packages beside their descriptions.
//
//   make_samples FOLDER
#include <exception>
#include <filesystem>
#include <iostream>

#include "samples/sample_writer.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_samples FOLDER\n";
    return 2;
  }
  try {
    const std::filesystem::path folder = argv[1];
    for (const char* name : dorvex::samples::kDescriptions) {
      const auto sample = dorvex::samples::makeSample(dorvex::testing::readFile(folder / name));
      dorvex::testing::writeFile(folder / sample.fileName, dorvex::testing::zip(sample.members));
    }
  } catch (const std::exception& error) {
    std::cerr << "make_samples: " << error.what() << '\n';
    return 1;
  }
}
