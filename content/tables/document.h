// What the documents of all applications share.
#pragma once

#include "TSAArchives.h"
#include "graph/reading.h"

namespace dorvex::content {

// The part of the document's object that is the same in all three applications.
Message<TSA::DocumentArchive> sharedDocument(const Reading& reading);

}  // namespace dorvex::content
