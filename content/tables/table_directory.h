// All tables of a document, as formulas name them.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TSTArchives.h"
#include "graph/reading.h"
#include "tables/uid_map.h"

namespace dorvex::content {

// A table that formulas may refer to.
struct NamedTable {
  std::uint64_t identifier = 0;  // of its model
  std::string name;
  std::string sheet;  // empty where a document has no sheets
  bool isOnSheet = false;
  std::uint32_t rows = 0, columns = 0;
  Message<TST::TableModelArchive> model;
};

class TableDirectory {
 public:
  explicit TableDirectory(Reading& reading);

  const NamedTable* byModel(std::uint64_t identifier) const;
  // The table that a reference in a formula means by an identifier.
  const NamedTable* byOwner(const Uid& uid) const;

  // What stands before a reference to a table in a formula of another one: as little as
  // tells it from all others.
  std::string qualifier(const NamedTable& table, const NamedTable* host) const;

  // The text of the header of a whole column or row, if it names only that one in its
  // table.
  std::string_view columnHeader(const NamedTable& table, std::uint32_t column);
  std::string_view rowHeader(const NamedTable& table, std::uint32_t row);
  const UidMap& uids(const NamedTable& table);

 private:
  using Headers = std::vector<std::string>;

  void addTables();
  void addSheets();
  void countAllNames();
  void addToSheet(const Message<TSP::Reference>& drawable, std::string_view sheet, unsigned depth);
  void addOwners();
  Headers readColumnHeaders(const NamedTable& table);
  Headers readRowHeaders(const NamedTable& table);

  Reading& reading_;
  std::deque<NamedTable> tables_;
  std::map<std::uint64_t, NamedTable*> byModel_;
  std::map<Uid, const NamedTable*> byOwner_;
  // How many tables have each; of those of a document with sheets, the ones that lie there.
  std::map<std::string, unsigned, std::less<>> names_;
  std::map<std::uint64_t, Headers> columnHeaders_, rowHeaders_;
  std::map<std::uint64_t, UidMap> uids_;
};

// A name of a table, a sheet or a header as a formula has it.
std::string quotedName(std::string_view name);

}  // namespace dorvex::content
