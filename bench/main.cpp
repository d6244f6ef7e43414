#include <benchmark/benchmark.h>

#include "whole_bench.h"

int main(int argc, char** argv) {
  benchmark::AddCustomContext("build_type", DORVEX_BUILD_TYPE);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  dorvex::bench::registerWholeBenchmarks();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
