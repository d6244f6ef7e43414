// What is marked in a text: the tables of characters, fields, comments and changes,
// gone through together.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "dorvex/content.h"
#include "graph/reading.h"
#include "styles/known_styles.h"
#include "text/attribute_runs.h"

namespace dorvex::content {

// The marks at a position, as the objects that make them; null for none.
struct Marks {
  CharacterMarks characters;
  const Object* field = nullptr;
  const Object* bookmark = nullptr;
  const Object* ruby = nullptr;
  const Object* insertion = nullptr;
  const Object* deletion = nullptr;
  std::vector<const Object*> highlights;

  bool operator==(const Marks&) const = default;
};

class MarkTables {
 public:
  MarkTables(Reading& reading, const Message<TSWP::StorageArchive>& storage);

  // Goes on to a position, and not back.
  void moveTo(Position position);
  const Marks& marks() const { return marks_; }
  // Where the marks may change next.
  Position nextChange() const { return nextChange_; }

 private:
  struct Range {
    Position from, behind;
    const Object* object;
  };

  void readOverlapping(const Message<TSWP::OverlappingFieldAttributeTable>& table);
  void moveHighlights(Position position);

  Reading& reading_;
  KnownStyles& known_;
  ObjectRuns characters_, fields_, bookmarks_, rubies_, insertions_, deletions_, highlights_;
  std::vector<Range> overlapping_;  // by their starts
  std::size_t nextOverlapping_ = 0;
  std::vector<Range> open_;  // those of them that the position is in
  Marks marks_;
  Position nextChange_ = 0;
};

// Makes runs of marks.
class RunMaker {
 public:
  explicit RunMaker(Reading& reading) : reading_(reading) {}

  // A run without text. Of the paragraph are the marks that its characters have where
  // their own style says nothing.
  Run make(const Marks& marks, const CharacterMarks& ofParagraph);

 private:
  void setField(Run& run, const Object* field);
  void setBookmark(Run& run, const Object* bookmark);
  void setComments(Run& run, const std::vector<const Object*>& highlights);
  std::optional<Change> change(const Object* object);
  const Comment& comment(const Object* highlight);

  Reading& reading_;
  std::unordered_map<const Object*, Comment> comments_;
  std::size_t repeated_ = 0;  // bytes of comments that stand in several runs
};

// Whether a run is more than plain text.
bool isMarked(const Run& run);

}  // namespace dorvex::content
