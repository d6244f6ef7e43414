// dorvex_bench: the benchmarks. For what is measured by whole processes,
// --write_documents=FOLDER writes the generated documents there instead, and
// --read=FILE reads the documents that the lines of a file name, which is the bare
// reader's part of what the tool does with them.
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
  constexpr std::string_view kRead = "--read=";
  if (argc == 2 && std::string_view(argv[1]).starts_with(kRead)) {
    dorvex::bench::readDocuments(std::string_view(argv[1]).substr(kRead.size()));
    return 0;
  }
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
