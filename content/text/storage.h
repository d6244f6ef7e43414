// Text storages: from a storage's text and its tables of runs to paragraphs, with what
// is drawn in line between them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "dorvex/content.h"
#include "graph/reading.h"
#include "text/paragraphs.h"

namespace dorvex::content {

// The blocks of a storage: its paragraphs, breaks and inline drawables, in order. What
// is drawn in front of a paragraph's text comes before the paragraph, all else that it
// holds after it.
std::vector<Block> readStorage(Reading& reading, const Message<TSWP::StorageArchive>& storage);

// Takes the blocks of a storage as they are read.
class StorageSink {
 public:
  virtual ~StorageSink() = default;
  virtual void block(Block&& block) = 0;
  // A section begins with the next block.
  virtual void section(const Object&) {}
  // A footnote's mark stands in the paragraph that comes next, in text that is deleted
  // or not. Gives the footnote's id and its mark, an empty id where it is not shown;
  // nothing where there is no place for footnotes: what it says follows the paragraph.
  virtual std::optional<NoteMark> footnote(const Object&, bool) { return std::nullopt; }
};

void readStorage(Reading& reading, const Message<TSWP::StorageArchive>& storage, StorageSink& sink);

}  // namespace dorvex::content
