// Whole first fills through the built modules, as a host sees them.
#include "whole_bench.h"

#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <utility>

#include "Readers/hostapi/reader_interface.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/formats/vniwork13/registry.h"
#include "documents.h"
#include "limit.h"
#include "support/bare_host.h"

namespace dorvex::bench {
namespace {

constexpr unsigned kBufferSize = 192U << 20;

// Allocated once and touched only where tokens are written.
unsigned char* outputBuffer() {
  static const std::unique_ptr<unsigned char, void (*)(void*)> buffer(
      static_cast<unsigned char*>(std::malloc(kBufferSize + 4110)), std::free);
  return buffer.get();
}

[[noreturn]] void fail(const std::string& message) {
  std::cerr << message << '\n';
  std::exit(EXIT_FAILURE);
}

void* loadModule(const char* path) {
  void* module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) fail(dlerror());
  return module;
}

ReaderInterface loadReader(const char* path) {
  void* module = loadModule(path);
  ReaderInterface reader{};
  reinterpret_cast<GetReaderInterfaceFunction>(dlsym(module, "dorvexGetReaderInterface"))(&reader);
  return reader;
}

// The length of the token stream; 0 where the module refuses the document.
unsigned fill(const ReaderInterface& reader, const Document& document) {
  testing::BareHost host;
  host.useContainerModule(DORVEX_CONTAINER_MODULE);
  testing::Stream& stream = document.memberPath.empty()
                                ? host.addDocument(document.bytes)
                                : host.addDirectoryDocument(document.memberPath);
  std::uint32_t result = 0;
  unsigned length = 0;
  int percent = 0;
  void* context = reader.AllocateContext(nullptr, nullptr, &result, host.services(), 0);
  reader.InitDoc(context, nullptr, 0, &stream);
  const int status = reader.FillBuffer(context, outputBuffer(), &length, &percent, kBufferSize);
  reader.FreeContext(context);
  return status == 0 ? length : 0;
}

std::string tokens(const ReaderInterface& reader, const Document& document) {
  const unsigned length = fill(reader, document);
  return {reinterpret_cast<const char*>(outputBuffer()), length};
}

// Decompressing and the generated parser alone. As in the reader, nothing of what
// was built is freed.
void readFloor(const Document& document) {
  vn::iwork13::MessageMap::Map map;
  for (const auto& stream : objectStreams(document))
    vn::iwork13::walkObjectStream(stream, vn::iwork13::getPagesMessage,
                                  vn::iwork13::PayloadReading::kBuild, map);
  benchmark::DoNotOptimize(map.size());
}

using Read = void (*)(const ReaderInterface&, const Document&);

// The answer first, then its speed.
void check(const Document& document, const ReaderInterface& reader, const ReaderInterface& plain) {
  const std::string answer = tokens(reader, document);
  if (answer != tokens(plain, document)) fail(document.name + ": the two ways differ");
  // A chunk header at the end of a read makes the reader lose a whole member.
  if (answer.empty()) fail(document.name + ": gives nothing");
  if (readLimit(document) != document.streamBytes) fail(document.name + ": not all is read");
}

// For the first benchmark that runs over documents; none for those that are filtered out.
using CheckOnce = std::function<void()>;

CheckOnce checkOnce(std::vector<const Document*> documents, const ReaderInterface& reader,
                    const ReaderInterface& plain) {
  return [=, checked = std::make_shared<bool>(false)] {
    if (std::exchange(*checked, true)) return;
    for (const Document* document : documents) check(*document, reader, plain);
  };
}

void addBenchmark(const std::string& name, const std::vector<const Document*>& documents,
                  const CheckOnce& checkDocuments, const ReaderInterface& reader, Read read) {
  std::size_t bytes = 0;
  for (const Document* document : documents) bytes += document->streamBytes;
  benchmark::RegisterBenchmark(
      name.c_str(),
      [=](benchmark::State& state) {
        checkDocuments();
        for (auto _ : state)
          for (const Document* document : documents) read(reader, *document);
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
        state.counters["stream_bytes"] = static_cast<double>(bytes);
        state.counters["documents"] =
            benchmark::Counter(static_cast<double>(state.iterations() * documents.size()),
                               benchmark::Counter::kIsRate);
      })
      ->Unit(benchmark::kMillisecond)
      ->Iterations(1);
}

}  // namespace

void readDocuments(const std::filesystem::path& listing) {
  loadModule(DORVEX_CONTAINER_MODULE);
  const ReaderInterface reader = loadReader(DORVEX_READER_MODULE);
  std::map<std::string, Document> documents;
  std::vector<const Document*> lines;
  std::ifstream file(listing);
  for (std::string line; std::getline(file, line);) {
    auto found = documents.find(line);
    if (found == documents.end()) found = documents.emplace(line, openDocument(line)).first;
    lines.push_back(&found->second);
  }
  for (const Document* document : lines) fill(reader, *document);
}

void registerWholeBenchmarks() {
  // Held, as a host does that reads more than one document: otherwise each
  // document would load and unload the container module's libraries.
  loadModule(DORVEX_CONTAINER_MODULE);
  const ReaderInterface reader = loadReader(DORVEX_READER_MODULE);
  const ReaderInterface plain = loadReader(DORVEX_PLAIN_READER_MODULE);
  const Read fillOnce = [](const ReaderInterface& module, const Document& document) {
    fill(module, document);
  };
  const Read limitOnce = [](const ReaderInterface&, const Document& document) {
    benchmark::DoNotOptimize(readLimit(document));
  };
  const Read floorOnce = [](const ReaderInterface&, const Document& document) {
    readFloor(document);
  };

  std::vector<const Document*> all;
  for (const Document& document : corpus()) all.push_back(&document);
  std::vector<std::pair<std::string, std::vector<const Document*>>> sets;
  if (!all.empty()) sets.emplace_back("corpus", all);
  for (const Document& document : corpus())
    if (document.streamBytes > 200'000) sets.push_back({document.name, {&document}});
  for (const Document& document : generatedDocuments())
    sets.push_back({document.name, {&document}});

  for (const auto& [name, documents] : sets) {
    const CheckOnce checkDocuments = checkOnce(documents, reader, plain);
    addBenchmark("whole/" + name, documents, checkDocuments, reader, fillOnce);
    addBenchmark("plain/" + name, documents, checkDocuments, plain, fillOnce);
    addBenchmark("floor/" + name, documents, checkDocuments, reader, floorOnce);
    addBenchmark("limit/" + name, documents, checkDocuments, reader, limitOnce);
  }
}

}  // namespace dorvex::bench
