// The folder around a package that was zipped together with its own name.
#pragma once

#include <string>
#include <vector>

#include "dorvex/content.h"

namespace dorvex::content {

// Takes the folder off the names that lie in it, so that they are paths within the
// package. There is none where the object streams lie at the top.
void stripOuterFolder(std::vector<Package::Member>& members);

}  // namespace dorvex::content
