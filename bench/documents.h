// The documents that the benchmarks read.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
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

// Whether the reader takes a member of that name.
bool isSelected(std::string_view name);

// A document of the file system, ready to be read; its members are not looked for.
Document openDocument(const std::filesystem::path& path);

// The real documents that the reader accepts; none where their folder is absent.
const std::vector<Document>& corpus();

// Generated documents in pairs, the second 100 times the first: "objects-3k" and
// "objects-300k", and so on for the rows of a table, text storages, members and
// the length of one text; and "objects-30k", between the two of the first pair.
const std::vector<Document>& generatedDocuments();

// Decompresses the members of a document, as the reader does.
std::vector<std::vector<unsigned char>> objectStreams(const Document& document);

}  // namespace dorvex::bench
