// dorvex_bench: the benchmarks; --write_documents=FOLDER writes the generated
// documents there instead, for what is measured by whole processes.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string_view>

#include "documents.h"
#include "support/package_writer.h"
#include "whole_bench.h"

namespace {

void writeDocuments(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  for (const auto& document : dorvex::bench::generatedDocuments()) {
    dorvex::testing::writeFile(folder / (document.name + ".zip"), document.bytes);
  }
}

}  // namespace

int main(int argc, char** argv) {
  constexpr std::string_view kWrite = "--write_documents=";
  if (argc == 2 && std::string_view(argv[1]).starts_with(kWrite)) {
    writeDocuments(std::string_view(argv[1]).substr(kWrite.size()));
    return 0;
  }
  benchmark::AddCustomContext("build_type", DORVEX_BUILD_TYPE);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  dorvex::bench::registerWholeBenchmarks();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
