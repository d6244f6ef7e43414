#pragma once

namespace dorvex::bench {

// Checks that both ways give the same tokens for every document, and registers
// whole/, plain/ and floor/ benchmarks for it.
void registerWholeBenchmarks();

}  // namespace dorvex::bench
