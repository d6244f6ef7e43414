// What every drawable has beside what it draws: a description, a title, a caption, a
// link, comments.
#pragma once

#include "TSDArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// Sets the fields of a block that belong to its drawable.
void readAttributes(Reading& reading, const Message<TSD::DrawableArchive>& drawable, Block& block);

// Whether somebody wrote something about it, beside its description.
bool hasRemarks(const Block& block);

}  // namespace dorvex::content
