// Comments: on text, on drawables and on cells.
#pragma once

#include <string>

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// A comment with its replies.
Comment readComment(Reading& reading, const Message<TSD::CommentStorageArchive>& storage);

// Whether somebody wrote something: a text that is only marked has a comment as well,
// one without words.
bool saysSomething(const Comment& comment);

// The name of an annotation author; empty when it is not known.
std::string authorName(Reading& reading, const Message<TSP::Reference>& author);

}  // namespace dorvex::content
