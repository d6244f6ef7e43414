// Texts that a document holds and does not show, by what they are in its objects.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "TSPMessages.h"
#include "dorvex/content.h"
#include "graph/graph.h"
#include "graph/message.h"
#include "graph/types.h"

namespace dorvex::testing {

// A text without what its form may change: blanks, characters that are not shown, and
// the backslashes of escapes.
std::string squeezed(std::string_view text);

class LeftOutTexts {
 public:
  explicit LeftOutTexts(const content::Graph& graph);

  // Of which kind a text is, squeezed; nothing where it should be shown.
  std::optional<std::string> kindOf(const std::string& text) const;

 private:
  using Identifier = std::uint64_t;
  using Reference = content::Message<content::TSP::Reference>;

  template <typename M>
  content::Message<M> get(const Reference& reference) const;
  bool hasText(Identifier storage) const;

  // Each adds what one rule knows.
  void findSwitchedOff();
  void findTemplates();
  void findHiddenCaptions();
  void findGalleryCaptions();
  void findUnusedMasters();
  void findBodyOfPageLayout();
  void findTextsOfBoxes();
  void findSummaries();

  void addStorages();
  void addTableStrings();

  const content::Graph& graph_;
  std::map<Identifier, std::string> boxes_;     // those that are not shown, and their kinds
  std::map<Identifier, std::string> storages_;  // likewise
  std::set<Identifier> summaryLists_;
  std::map<std::string, std::string> kinds_;  // by text
};

}  // namespace dorvex::testing
