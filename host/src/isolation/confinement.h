// Confining the calling process. There is no way back.
#pragma once

#include <string>
#include <vector>

namespace dorvex {

// From here on the process works with the descriptors that it holds and opens
// nothing. Gives what could not be applied, a phrase for each.
std::vector<std::string> confineToHeldFiles();

// As above, but files and directories beneath the open directory may be opened
// for reading.
std::vector<std::string> confineToDirectory(int directory);

}  // namespace dorvex
