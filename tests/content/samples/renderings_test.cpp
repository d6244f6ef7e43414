// What the samples of the tea shop say in every format, beside what they are expected to
// say. scripts/render-samples renders them anew.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "content/support/files.h"
#include "support/corpus.h"
#include "writers/options.h"

namespace dorvex::testing::renderings_test {
namespace {

namespace fs = std::filesystem;
using namespace content;

const fs::path kSamples = DORVEX_SAMPLES;
const fs::path kExpected = kSamples / "expected";

// The files of a rendering by their names.
using Files = std::map<std::string, std::string>;

Files rendered(const fs::path& sample, Format format, const std::string& ending) {
  Files files;
  std::string* file = nullptr;
  std::string output;
  WriterOptions options;
  options.format = format;
  options.csv.eachTable = true;
  const auto writer =
      makeWriter(options, {[&](std::string_view bytes) { output += bytes; },
                           [&](std::string_view name) { file = &files[std::string(name)]; },
                           [&](std::string_view bytes) { *file += bytes; }});
  MemoryPackage package = packageAt(sample);
  EXPECT_EQ(read(package, *writer), Outcome::kRead);
  if (format != Format::kCsv) files[sample.filename().string() + ending] = output;
  return files;
}

void expectAsKept(const fs::path& sample, Format format, const std::string& ending) {
  for (const auto& [name, text] : rendered(sample, format, ending)) {
    ASSERT_TRUE(fs::exists(kExpected / name)) << name << ": see scripts/render-samples";
    EXPECT_EQ(text, readFile(kExpected / name)) << name << ": see scripts/render-samples";
  }
}

std::vector<fs::path> samples() {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(kSamples)) {
    const fs::path& path = entry.path();
    if (path.filename().string().starts_with("tea-shop") && path.extension() != ".json")
      paths.push_back(path);
  }
  std::ranges::sort(paths);
  return paths;
}

class Renderings : public ::testing::TestWithParam<fs::path> {};

TEST_P(Renderings, AreThoseThatAreKept) {
  expectAsKept(GetParam(), Format::kJson, ".json");
  expectAsKept(GetParam(), Format::kMarkdown, ".md");
  expectAsKept(GetParam(), Format::kHtml, ".html");
  expectAsKept(GetParam(), Format::kText, ".txt");
  if (GetParam().extension() == ".numbers") expectAsKept(GetParam(), Format::kCsv, "");
}

INSTANTIATE_TEST_SUITE_P(Samples, Renderings, ::testing::ValuesIn(samples()), [](const auto& info) {
  return testNameOf(info.param.filename().string());
});

}  // namespace
}  // namespace dorvex::testing::renderings_test
