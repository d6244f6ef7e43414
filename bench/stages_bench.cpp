// Each stage of reading on its own, over all real documents together.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <google/protobuf/message.h>

#include <cstring>

#include "Readers/dorvexsr/dorvexlistutil.h"
#include "Readers/dorvexsr/dorvexutil.h"
#include "Readers/hostapi/container_reader.h"
#include "Tools/formats/vniwork13/member_kind.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/formats/vniwork13/registry.h"
#include "documents.h"
#include "support/bare_host.h"

namespace dorvex::bench {
namespace {

using vn::iwork13::MessageMap;
using vn::iwork13::PayloadReading;
using Streams = std::vector<std::vector<unsigned char>>;

std::size_t totalStreamBytes() {
  std::size_t bytes = 0;
  for (const Document& document : corpus()) bytes += document.streamBytes;
  return bytes;
}

void reportBytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * totalStreamBytes()));
  state.counters["documents"] = benchmark::Counter(
      static_cast<double>(state.iterations() * corpus().size()), benchmark::Counter::kIsRate);
}

void walk(Streams streams, PayloadReading reading, MessageMap::Map& map) {
  for (auto& stream : streams)
    vn::iwork13::walkObjectStream(std::move(stream), vn::iwork13::getPagesMessage, reading, map);
}

void clear(MessageMap::Map& map) {
  for (auto& [identifier, message] : map) delete message;
  map.clear();
}

void decompression(benchmark::State& state) {
  for (auto _ : state)
    for (const Document& document : corpus()) benchmark::DoNotOptimize(objectStreams(document));
  reportBytes(state);
}

void objectWalk(benchmark::State& state, PayloadReading reading) {
  std::vector<Streams> all;
  for (const Document& document : corpus()) all.push_back(objectStreams(document));
  for (auto _ : state) {
    for (const Streams& streams : all) {
      state.PauseTiming();
      Streams copy = streams;
      MessageMap::Map map;
      state.ResumeTiming();
      walk(std::move(copy), reading, map);
      state.PauseTiming();
      clear(map);
      state.ResumeTiming();
    }
  }
  reportBytes(state);
}

// A stream that keeps the last bytes it was given, in room that is used again.
class Sink : public _VPTPIOobj {
 public:
  Sink() : _VPTPIOobj{} { Write = write; }

  std::size_t taken() const { return taken_; }

 private:
  static int write(_VPTPIOobj* io, const void* bytes, std::uint32_t count) {
    auto& self = *static_cast<Sink*>(io);
    if (self.kept_.size() < count) self.kept_.resize(count);
    std::memcpy(self.kept_.data(), bytes, count);
    self.taken_ += count;
    return static_cast<int>(count);
  }

  std::vector<unsigned char> kept_;
  std::size_t taken_ = 0;
};

// The container module, as the reader uses it: members that it does not select stay where
// they are.
class ContainerStage {
 public:
  explicit ContainerStage(testing::BareHost& host) : host_(host) {
    void* module = dlopen(DORVEX_CONTAINER_MODULE, RTLD_NOW | RTLD_LOCAL);
    reinterpret_cast<GetContainerReaderInterfaceFunction>(
        dlsym(module, "unzipGetContainerReaderInterface"))(&zip_);
  }

  void unpack(_VPTPIOobj* io) {
    void* container = zip_.OpenContainer(io, host_.services(), 0);
    for (int index = 0; index < zip_.GetEntryCount(container); ++index) {
      ContainerEntryInfo entry;
      zip_.GetEntryInfo(container, index, &entry);
      const auto kind = vn::iwork13::classifyMember(entry.name);
      if (kind == vn::iwork13::MemberKind::kObjectStream)
        zip_.ExtractEntry(container, index, &sink_);
      if (kind == vn::iwork13::MemberKind::kNestedContainer) unpackNested(container, index);
    }
    zip_.CloseContainer(container);
  }

  std::size_t unpackedBytes() const { return sink_.taken(); }

 private:
  void unpackNested(void* container, int index) {
    _VPTPIOobj* nested = host_.services()->OpenFile(host_.services(), nullptr, "a+");
    zip_.ExtractEntry(container, index, nested);
    nested->Open(nested);
    unpack(nested);
    nested->Close(nested);
  }

  testing::BareHost& host_;
  ContainerReaderInterface zip_{};
  Sink sink_;
};

void containerStage(benchmark::State& state) {
  testing::BareHost host;
  ContainerStage stage(host);
  std::vector<_VPTPIOobj*> zips;
  std::size_t selected = 0;
  for (const Document& document : corpus()) {
    if (document.bytes.empty()) continue;
    zips.push_back(&host.addDocument(document.bytes));
    for (const std::string& member : document.members) selected += member.size();
  }
  for (_VPTPIOobj* zip : zips) stage.unpack(zip);
  if (stage.unpackedBytes() != selected) state.SkipWithError("not what the reader selects");
  for (auto _ : state)
    for (_VPTPIOobj* zip : zips) stage.unpack(zip);
  reportBytes(state);
}

// The texts of messages that have been read, into an output that takes them all.
void sweep(benchmark::State& state) {
  testing::BareHost host;
  host.useContainerModule(DORVEX_CONTAINER_MODULE);
  std::vector<unsigned char> buffer(65536);
  std::vector<MessageMap> maps(corpus().size());
  for (std::size_t i = 0; i < maps.size(); ++i) {
    const Document& document = corpus()[i];
    if (document.bytes.empty()) continue;
    vn::iwork13::unzipFile(&host.addDocument(document.bytes), maps[i], host.services(),
                           buffer.data(), static_cast<std::uint32_t>(buffer.size()),
                           vn::iwork13::getPagesMessage);
  }
  std::vector<unsigned char> output(std::size_t{64} << 20U);
  for (auto _ : state) {
    for (const MessageMap& map : maps) {
      TAG_VNDORVEXGlobals context{};
      context.services = host.services();
      context.tokenBufStart = context.tokenCursor = output.data();
      context.tokenBufSize = static_cast<unsigned>(output.size()) - 4110;
      getAllText(&context, map);
    }
  }
  reportBytes(state);
}

// What any reader of the format pays: decompressing, and protobuf's own parser.
void floorOfReading(benchmark::State& state) {
  for (auto _ : state) {
    for (const Document& document : corpus()) {
      MessageMap::Map map;
      walk(objectStreams(document), PayloadReading::kBuild, map);
      state.PauseTiming();
      clear(map);
      state.ResumeTiming();
    }
  }
  reportBytes(state);
}

void normalisation(benchmark::State& state, const std::string& piece) {
  std::string value;
  while (value.size() < 1U << 20U) value += piece;
  for (auto _ : state) {
    std::string copy = value;
    convertAllOctalCodesToAscii(copy);
    replaceAllLFsAndTabs(copy);
    removeFirstCharOfPattern(copy, "\\'");
    removeFirstCharOfPattern(copy, "\\\"");
    benchmark::DoNotOptimize(copy);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * value.size()));
}

// Texts through output staging, overflow buffers included.
void staging(benchmark::State& state) {
  const std::string text(200, 'x');
  std::size_t bytes = 0;
  for (auto _ : state) {
    testing::BareHost host;
    TAG_VNDORVEXGlobals context{};
    std::vector<unsigned char> buffer(65536 + 4110);
    context.services = host.services();
    context.tokenBufStart = context.tokenCursor = buffer.data();
    context.tokenBufSize = 65536;
    for (int i = 0; i < 10000; ++i) writeToOutput(&context, text);
    bytes += 10000 * text.size();
    while (OverflowNode* head = context.overflowHead) {
      host.services()->allocator.Free(&host.services()->allocator, head->data);
      dorvexOverflow_delete(&context);
    }
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

BENCHMARK(containerStage)->Unit(benchmark::kMillisecond);
BENCHMARK(decompression)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(objectWalk, scan, PayloadReading::kScan)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(objectWalk, build, PayloadReading::kBuild)->Unit(benchmark::kMillisecond);
BENCHMARK(sweep)->Unit(benchmark::kMillisecond);
BENCHMARK(floorOfReading)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(normalisation, prose, std::string("a line of prose\\n"));
BENCHMARK_CAPTURE(normalisation, backslashes, std::string("\\\\"));
BENCHMARK_CAPTURE(normalisation, octal, std::string("\\001"));
BENCHMARK_CAPTURE(normalisation, nested, std::string("\\0\\001\\00\\00202"));
BENCHMARK(staging);

}  // namespace
}  // namespace dorvex::bench
