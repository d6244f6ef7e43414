// Whatever can be drawn on a slide, sheet or page, as a block.
#pragma once

#include <optional>
#include <vector>

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// The block of a drawable; nothing for what shows nothing of its own (a line, an empty
// shape without a description) or has been read before. One of an unknown type is counted,
// and a shape or a group with what can be made out of it.
std::optional<Block> readDrawable(Reading& reading, const Object& drawable);

// Makes a box of a slide a placeholder of that kind, and its paragraphs what they are there.
void setPlaceholderKind(PlaceholderKind kind, Box& box);

// Appends the block of the drawable that is referred to, if it has one.
void appendDrawable(Reading& reading, const Message<TSP::Reference>& reference,
                    std::vector<Block>& blocks);

}  // namespace dorvex::content
