// Styles of paragraphs.
#pragma once

#include <string>

#include "dorvex/content.h"
#include "graph/reading.h"
#include "styles/character_marks.h"
#include "styles/paragraph_role.h"

namespace dorvex::content {

struct ParagraphStyle {
  std::string name;  // as the application shows it
  ParagraphRole role;
  // What somebody made of the paragraph beyond its style: a heading is not marked for
  // being bold, but a line of the body that was made bold is.
  CharacterMarks marks;
};

// The style of that object; one without name where that is null.
ParagraphStyle readParagraphStyle(Reading& reading, const Object* object);

}  // namespace dorvex::content
