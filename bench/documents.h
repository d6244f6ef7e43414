// The documents that the benchmarks read.
#pragma once

#include <string>
#include <vector>

#include "Tools/formats/vniwork13/iwa_utils.h"

namespace dorvex::bench {

struct Document {
  std::string name;
  std::string bytes;                 // the zip; empty for a directory package
  std::string memberPath;            // of a directory package: a marker member
  std::vector<std::string> members;  // the selected .iwa members, compressed
  std::size_t streamBytes = 0;       // their size, decompressed
};

// The real documents that the reader accepts; none where their folder is absent.
const std::vector<Document>& corpus();

// A generated document: that many text storages and table strings, styles and
// cells, in that many members.
Document generated(const std::string& name, int objects, int members);

// Generated documents of growing size, the second last 100 times the first.
const std::vector<Document>& generatedBySize();

// Decompresses the members of a document, as the reader does.
std::vector<std::vector<unsigned char>> objectStreams(const Document& document);

}  // namespace dorvex::bench
