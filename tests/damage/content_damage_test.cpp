// Damaged documents through the module that renders what they say: whatever is damaged,
// every rendering ends, with a stated outcome, and what it gave is sound.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "content/support/valid_output.h"
#include "damage/readings.h"
#include "damage/variants.h"
#include "dorvex/content_module.h"
#include "module/reader_module.h"
#include "support/corpus.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/temporary_directory.h"

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

DorvexRenderContentFunction renderContent() {
  static void* const module = dlopen(DORVEX_CONTENT_MODULE, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<DorvexRenderContentFunction>(dlsym(module, kDorvexRenderContent));
}

// What a host is given.
struct Received {
  std::string output;
  std::vector<std::string> files;
  std::vector<std::string> damaged;
  std::string message;

  static int take(void* receiver, DorvexContentPiece piece, const char* bytes, std::size_t count) {
    auto& received = *static_cast<Received*>(receiver);
    const std::string_view text(bytes, count);
    switch (piece) {
      case DORVEX_CONTENT_OUTPUT:
        received.output += text;
        break;
      case DORVEX_CONTENT_FILE_NAME:
        received.files.emplace_back();
        break;
      case DORVEX_CONTENT_FILE_BYTES:
        received.files.back() += text;
        break;
      case DORVEX_CONTENT_DAMAGED:
        received.damaged.emplace_back(text);
        break;
      case DORVEX_CONTENT_MESSAGE:
        received.message += text;
        break;
    }
    return 1;
  }
};

std::string flawOf(const Received& received, DorvexContentFormat format) {
  static const std::string schema = readFile(DORVEX_CONTENT_SCHEMA);
  for (const std::string& damaged : received.damaged)
    if (damaged.find('\0') == std::string::npos) return "damage without a reason";
  switch (format) {
    case DORVEX_CONTENT_JSON:
      return flawOfJson(received.output, schema, false);
    case DORVEX_CONTENT_MARKDOWN:
      return flawOfMarkdown(received.output);
    case DORVEX_CONTENT_HTML:
      return flawOfHtml(received.output);
    case DORVEX_CONTENT_TEXT:
      return flawOfText(received.output, "\n\t\f");
    case DORVEX_CONTENT_CSV:
      break;
  }
  for (const std::string& file : received.files)
    if (const std::string flaw = flawOfCsv(file, ','); !flaw.empty()) return flaw;
  return {};
}

int render(const DamagedDocument& document, DorvexContentFormat format) {
  BareHost host;
  host.useContainerModule(containerModulePath());
  const TemporaryDirectory folder;
  writeDirectory(folder.path(), document.files);
  const std::string root = folder.path();
  DorvexContentOptions options{};
  options.size = sizeof options;
  options.format = format;
  options.flags = format == DORVEX_CONTENT_CSV ? DORVEX_CONTENT_EACH_TABLE : DORVEX_CONTENT_MEDIA;
  options.delimiter = ',';
  Received received;
  const DorvexContentRequest request{&options,
                                     host.services(),
                                     &host.addDocument(document.zip),
                                     document.files.empty() ? nullptr : root.c_str(),
                                     Received::take,
                                     &received};
  DorvexContentAnswer answer{};
  const DorvexContentOutcome outcome = renderContent()(&request, &answer);
  if (host.openStreams() != 0 || host.openContainers() != 0 || host.loadedModules() != 0)
    return kLeftOpen;
  if (outcome < DORVEX_CONTENT_RENDERED || outcome > DORVEX_CONTENT_NO_TABLE) return kUnstated;
  if (outcome == DORVEX_CONTENT_NO_TABLE && received.message.empty()) return kUnstated;
  const bool sound = outcome != DORVEX_CONTENT_RENDERED || flawOf(received, format).empty();
  return sound ? static_cast<int>(outcome) : kBadOutput;
}

// The worst of all formats.
int renderAll(const DamagedDocument& document) {
  int worst = 0;
  for (const DorvexContentFormat format :
       {DORVEX_CONTENT_JSON, DORVEX_CONTENT_MARKDOWN, DORVEX_CONTENT_HTML, DORVEX_CONTENT_TEXT,
        DORVEX_CONTENT_CSV})
    worst = std::max(worst, render(document, format));
  return worst;
}

int renderJson(const DamagedDocument& document) { return render(document, DORVEX_CONTENT_JSON); }

// Nearly all of a reading is the check of what was rendered, which is seconds for the
// largest documents where tests are not optimised.
constexpr std::chrono::seconds kContentPatience{60};

void expectSoundRenderings(const fs::path& path, const Read& read) {
  const Variants variants(path);
  renderContent();  // before the processes that read
  OutcomeCounts counts;
  readVariants(variants, read, kContentPatience, [&](std::uint64_t variant, int outcome) {
    counts.add(outcome);
    EXPECT_TRUE(outcome >= 0 && outcome < kUnstated) << "variant " << variant << ": " << outcome;
  });
  counts.print(path);
}

class DamagedContent : public ::testing::TestWithParam<fs::path> {};

TEST_P(DamagedContent, IsRenderedInEveryFormatOrRefused) {
  expectSoundRenderings(GetParam(), renderAll);
}

INSTANTIATE_TEST_SUITE_P(Samples, DamagedContent, ::testing::ValuesIn(samples()),
                         [](const auto& info) { return testNameOf(info.param.filename()); });

TEST(DamagedContentOfRealDocuments, IsRenderedAsJsonOrRefused) {
  if (!hasCorpus()) GTEST_SKIP() << corpusIsAbsent();
  for (const std::string& name : corpusDocuments())
    expectSoundRenderings(corpusPath(name), renderJson);
}

}  // namespace
}  // namespace dorvex::testing
