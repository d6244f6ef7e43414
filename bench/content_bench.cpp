// What a document says as JSON, against the reader's first fill of the same document: both
// modules in one process by turns, as a warm worker runs them, then each in a process of
// its own for its memory.
//
//   content_bench DOCUMENT...
//
// Prints a line for each document: processor milliseconds of the reader and of the content
// module, their ratio, peak memory of both in MiB.
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "Readers/hostapi/reader_interface.h"
#include "dorvex/content_module.h"
#include "support/bare_host.h"
#include "support/package_writer.h"

namespace dorvex {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kBufferSize = 8U << 20;
constexpr int kTurns = 7;

void* symbolOf(const char* module, const char* name) {
  void* const handle = dlopen(module, RTLD_NOW | RTLD_LOCAL);
  void* const symbol = handle != nullptr ? dlsym(handle, name) : nullptr;
  if (symbol == nullptr) {
    std::fprintf(stderr, "%s: %s\n", module, dlerror());
    std::exit(EXIT_FAILURE);
  }
  return symbol;
}

struct Modules {
  ReaderInterface reader{};
  DorvexRenderContentFunction render;

  Modules() {
    symbolOf(DORVEX_CONTAINER_MODULE, "unzipGetContainerReaderInterface");
    reinterpret_cast<GetReaderInterfaceFunction>(
        symbolOf(DORVEX_READER_MODULE, "dorvexGetReaderInterface"))(&reader);
    render = reinterpret_cast<DorvexRenderContentFunction>(
        symbolOf(DORVEX_CONTENT_MODULE, kDorvexRenderContent));
  }
};

struct Document {
  std::string path;
  std::string bytes;  // empty for a directory
};

// Whether the reader gave the first buffer.
bool fill(const Modules& modules, const Document& document) {
  static std::vector<unsigned char> buffer(kBufferSize + 14);
  testing::BareHost host;
  host.useContainerModule(DORVEX_CONTAINER_MODULE);
  testing::Stream& stream = document.bytes.empty()
                                ? host.addDirectoryDocument(document.path + "/Index/Document.iwa")
                                : host.addDocument(document.bytes);
  std::uint32_t result = 0;
  unsigned length = 0;
  int percent = 0;
  void* context = modules.reader.AllocateContext(nullptr, nullptr, &result, host.services(), 0);
  modules.reader.InitDoc(context, nullptr, 0, &stream);
  const int status =
      modules.reader.FillBuffer(context, buffer.data(), &length, &percent, kBufferSize);
  modules.reader.FreeContext(context);
  return status == 0;
}

int passOver(void*, DorvexContentPiece, const char*, std::size_t) { return 1; }

bool render(const Modules& modules, const Document& document) {
  testing::BareHost host;
  host.useContainerModule(DORVEX_CONTAINER_MODULE);
  DorvexContentOptions options{};
  options.size = sizeof options;
  options.delimiter = ',';
  const DorvexContentRequest request{&options,
                                     host.services(),
                                     &host.addDocument(document.bytes),
                                     document.bytes.empty() ? document.path.c_str() : nullptr,
                                     passOver,
                                     nullptr};
  DorvexContentAnswer answer{};
  return modules.render(&request, &answer) == DORVEX_CONTENT_RENDERED;
}

using Work = bool (*)(const Modules&, const Document&);

double processorMilliseconds(Work work, const Modules& modules, const Document& document) {
  timespec before{};
  timespec after{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &before);
  work(modules, document);
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &after);
  return static_cast<double>(after.tv_sec - before.tv_sec) * 1e3 +
         static_cast<double>(after.tv_nsec - before.tv_nsec) / 1e6;
}

// The most memory that a process of its own takes.
double peakMebibytes(Work work, const Modules& modules, const Document& document) {
  const pid_t child = ::fork();
  if (child == 0) {
    work(modules, document);
    ::_exit(0);
  }
  rusage usage{};
  int status = 0;
  ::wait4(child, &status, 0, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::ranges::sort(values);
  return values[values.size() / 2];
}

struct Figures {
  double reader = 0, content = 0, readerPeak = 0, contentPeak = 0;
};

// Before anything else: what the reader parses stays allocated by rule, and a process
// that is made later would inherit it.
Figures peaks(const Modules& modules, const Document& document) {
  Figures figures;
  figures.readerPeak = peakMebibytes(fill, modules, document);
  figures.contentPeak = peakMebibytes(render, modules, document);
  return figures;
}

// By turns, so that whatever else the machine does falls on both.
void measure(const Modules& modules, const Document& document, Figures& figures) {
  std::vector<double> reader;
  std::vector<double> content;
  for (int turn = 0; turn < kTurns; ++turn) {
    reader.push_back(processorMilliseconds(fill, modules, document));
    content.push_back(processorMilliseconds(render, modules, document));
  }
  figures.reader = median(reader);
  figures.content = median(content);
}

// Each document in a process of its own that has both modules loaded.
bool print(const Modules& modules, const std::string& path) {
  const Document document{path, fs::is_directory(path) ? "" : testing::readFile(path)};
  std::fflush(stdout);
  const pid_t child = ::fork();
  if (child == 0) {
    Figures figures = peaks(modules, document);
    const bool isRead = fill(modules, document) && render(modules, document);
    if (isRead) {
      measure(modules, document, figures);
      std::printf("%s\t%.3f\t%.3f\t%.2f\t%.1f\t%.1f\n", fs::path(path).filename().c_str(),
                  figures.reader, figures.content, figures.content / figures.reader,
                  figures.readerPeak, figures.contentPeak);
      std::fflush(stdout);
    }
    ::_exit(isRead ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return status == 0;
}

}  // namespace
}  // namespace dorvex

int main(int argc, char** argv) {
  const dorvex::Modules modules;
  std::printf("document\treader_ms\tcontent_ms\tratio\treader_mib\tcontent_mib\n");
  for (int i = 1; i < argc; ++i) {
    if (!dorvex::print(modules, argv[i])) std::fprintf(stderr, "%s: not read\n", argv[i]);
  }
}
