// A document made of an input, through a writer.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fuzz_input.h"
#include "writers/options.h"

namespace dorvex::fuzz {

struct Rendering {
  content::WriterOptions options;
  std::string output;
  std::vector<std::string> files;
};

// The first bytes of the input choose the options, the others make the document.
Rendering writtenDocument(FuzzInput& input, content::Format format);

// Ends the run unless flaw, what is wrong with an output, is empty.
void requireNoFlaw(const std::string& flaw, std::string_view output);

}  // namespace dorvex::fuzz
