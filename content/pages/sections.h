// Sections of a document and what stands at the head and the foot of their pages.
#pragma once

#include <cstddef>
#include <optional>

#include "TPArchives.h"
#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

class Sections {
 public:
  Sections(Reading& reading, const Message<TP::SettingsArchive>& settings);

  // The section of that object, which begins with the block of that number. Headers
  // and footers that it repeats from the section before it are left out.
  Section read(const Object& object, std::size_t from);

 private:
  using Texts = std::map<PageClass, HeaderText>;

  void add(PageClass page, const Message<TSP::Reference>& reference, bool withLines,
           Section& section);
  void addOlder(const Message<TP::SectionArchive>& archive, Section& section);

  Reading& reading_;
  bool headersShown_, footersShown_;
  Texts headers_, footers_;  // of the section before
};

}  // namespace dorvex::content
