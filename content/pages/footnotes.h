// Footnotes and endnotes, in the order of their marks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "TPArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"
#include "text/paragraphs.h"

namespace dorvex::content {

class Footnotes {
 public:
  Footnotes(Reading& reading, const Message<TP::SettingsArchive>& settings);

  // Adds the footnote of a mark and gives its id and what is shown; no id where that is
  // none. One whose mark is deleted is not counted.
  NoteMark add(const Object& attachment, bool deleted);
  // A section of the text begins.
  void beginSection();

  // Hands all of them to the sink.
  void write(Sink& sink);

 private:
  struct Entry {
    const Object* attachment;
    std::string mark;
  };

  std::string nextMark();

  Reading& reading_;
  TP::SettingsArchive_FootnoteKind kind_;
  TP::SettingsArchive_FootnoteFormat format_;
  TP::SettingsArchive_FootnoteNumbering numbering_;
  std::uint32_t number_ = 0;
  std::vector<Entry> entries_;
};

}  // namespace dorvex::content
