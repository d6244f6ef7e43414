// Tables as CSV (RFC 4180), a row at a time. What is no table is left out.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "dorvex/content.h"
#include "writers/options.h"
#include "writers/shown_table.h"

namespace dorvex::content {

class CsvWriter final : public Sink {
 public:
  CsvWriter(CsvOptions options, Receiver receiver);

  void document(Application, const Metadata&) override {}
  void slide(const Slide& slide) override;
  void sheet(const Sheet& sheet) override;
  void body(const Block& block) override;
  void floating(const FloatingPage& page) override;
  // Throws NoSuchTable where none was written.
  void end(const Summary& summary) override;

 private:
  void enterPart(std::string name);
  void tablesIn(const std::vector<Block>& blocks);
  void tableOf(const Block& block);
  void table(const Table& table);
  bool wants(const Table& table) const;
  bool wantsPart() const;
  void list(const Table& table);
  void write(const Table& table, Output& output);
  void writeRow(const ShownTable& shown, const ShownRow& row, Output& output);
  std::string valueOf(const ShownCell& cell) const;
  void put(std::string_view value, Output& output) const;
  std::string fileNameFor(const Table& table);

  CsvOptions options_;
  Receiver receiver_;
  Output output_;
  std::string part_;          // the name of the sheet, or of the slide
  unsigned partNumber_ = 0;   // from 1
  unsigned tableNumber_ = 0;  // from 1, in its part
  unsigned written_ = 0;
  std::string firstWritten_;
  std::optional<Table> only_;
  std::set<std::string> fileNames_;
};

}  // namespace dorvex::content
