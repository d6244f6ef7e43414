// The whole reader behind the services of the replacement host: what the host
// makes of a document, against what any other host gets.
//
// Input: one word, the size of the host's buffer; the document, which has no path.
#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dorvex/result.h"
#include "fuzz_host.h"
#include "fuzz_input.h"
#include "input_form.h"
#include "looking/diagnosis.h"
#include "looking/package.h"
#include "reader_document.h"
#include "reading/io_object.h"
#include "reading/services.h"

namespace dorvex::fuzz {
namespace {

constexpr std::uint32_t kSmallestBuffer = 51;
constexpr int kDone = 100;
constexpr std::size_t kScratchMemory = std::size_t{1} << 22;

// What all calls of the pump gave.
struct Pumped {
  int result = 0;
  std::string stream;
};

Pumped pump(tag_TPVAPIServices* services, _VPTPIOobj* io, std::uint32_t bufferSize) {
  const ReaderDocument document(services, io);
  std::vector<unsigned char> buffer(std::max<std::size_t>(bufferSize + 14U, 4110));
  Pumped pumped;
  int percent = 0;
  do {
    unsigned int length = 0;
    pumped.result = document.interface().FillBuffer(document.context(), buffer.data(), &length,
                                                    &percent, bufferSize);
    if (pumped.result != 0) break;
    pumped.stream.append(reinterpret_cast<const char*>(buffer.data()), length);
  } while (percent != kDone);
  return pumped;
}

// Kept loaded, for the fuzzer's sake: a module that it sees unloaded and loaded
// again is a new one to it.
std::filesystem::path containerModule() {
  static void* const handle = dlopen(DORVEX_CONTAINER_MODULE, RTLD_NOW | RTLD_LOCAL);
  require(handle != nullptr, "the container module can be loaded");
  return DORVEX_CONTAINER_MODULE;
}

PackageLook look(HostServices& services, IoObject& io) {
  PackageLook look;
  lookAtStart(io.store(), look);
  if (const auto names = services.listMembers(io)) lookAtNames(*names, look);
  return look;
}

void checkResult(const Result& result, const Pumped& pumped) {
  const bool whole = result.status == Status::kOk;
  require(!whole || pumped.result == 0, "no failure passes for a whole text");
  require(whole == (result.failure == Failure::kNone), "what is not whole has a reason");
  require(whole == result.message.empty(), "and words for it");
  require(whole || !describe(result).empty(), "a failure can be described");
}

void checkDocument(std::string_view contents, std::uint32_t bufferSize) {
  // First of all a host that knows beforehand whether the reader would come back.
  FuzzHost plain(ReadLengths(), FuzzHost::Reading::kInStep);
  const Pumped expected =
      pump(plain.services(), plain.addDocument(std::string(contents)), bufferSize);
  if (plain.hasEndedTheDocument()) return;

  Observations seen;
  HostServices::Settings settings;
  settings.moduleFolder = containerModule().parent_path();
  settings.scratchMemory = kScratchMemory;
  settings.containers = ContainerLimits{};
  HostServices services(std::move(settings), seen);
  IoObject io(
      makeMemoryStore({reinterpret_cast<const unsigned char*>(contents.data()), contents.size()}),
      {}, seen);
  const Pumped pumped = pump(&services, &io, bufferSize);
  require(!seen.missingModule && !seen.readFailure && !seen.scratchFailure,
          "nothing fails that need not");
  if (!seen.limitPassed && !seen.endlessRead) {
    require(pumped.result == expected.result, "the reader returns the same to any host");
    require(pumped.stream == expected.stream, "the reader gives the same to any host");
  }
  checkResult(diagnose(pumped.result, seen, [&] { return look(services, io); }), pumped);
}

}  // namespace

const InputForm kInputForm{2, Level::kPackage};

}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const auto bufferSize = static_cast<std::uint32_t>(kSmallestBuffer + input.word() % 8192);
  checkDocument(input.rest(), bufferSize);
  return 0;
}
