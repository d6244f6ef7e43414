#pragma once

#include <filesystem>

namespace dorvex::bench {

// Loads each document that a line of the listing names into memory, once, and then
// has the reader fill its first buffer with it, for each line.
void readDocuments(const std::filesystem::path& listing);

// Checks that both ways give the same tokens for every document, and registers
// whole/, plain/, floor/ and limit/ benchmarks for it.
void registerWholeBenchmarks();

}  // namespace dorvex::bench
