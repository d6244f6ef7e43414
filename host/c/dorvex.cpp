// The C interface. Exceptions end here, in guarded().
#include "dorvex/dorvex.h"

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "codes.h"
#include "dorvex/host.h"

struct dorvex_host {
  std::shared_ptr<const dorvex::Host> host;
};

struct dorvex_document {
  std::shared_ptr<const dorvex::Host> host;  // outlives the document
  dorvex::Document document;
  std::string text;                      // the last one given
  std::optional<dorvex::Result> result;  // once it has been asked for
};

namespace dorvex::c {
namespace {

// Records of the first version, which every caller has. Fixed: a record that
// grows leaves them behind.
constexpr std::size_t kFirstOptionsSize = 112;
constexpr std::size_t kFirstResultSize = 56;
static_assert(sizeof(dorvex_options) >= kFirstOptionsSize);
static_assert(sizeof(dorvex_result) >= kFirstResultSize);

std::string& lastError() {
  thread_local std::string message;
  return message;
}

struct ReadFailed : std::runtime_error {
  ReadFailed() : std::runtime_error("the read callback reported a failure") {}
};

int fail(dorvex_code code, const char* message) noexcept {
  try {
    lastError() = message;
  } catch (...) {
    lastError().clear();  // the code says enough
  }
  return code;
}

// Runs a function that returns a dorvex_code, and turns what it throws into one.
template <typename Function>
int guarded(Function function) noexcept {
  try {
    return function();
  } catch (const WaitOver&) {
    return DORVEX_AGAIN;
  } catch (const std::invalid_argument& error) {
    return fail(DORVEX_INVALID_ARGUMENT, error.what());
  } catch (const ReadFailed& error) {
    return fail(DORVEX_READ_FAILED, error.what());
  } catch (const std::bad_alloc&) {
    return fail(DORVEX_OUT_OF_MEMORY, "memory is out");
  } catch (const std::exception& error) {
    return fail(DORVEX_INTERNAL, error.what());
  } catch (...) {
    return fail(DORVEX_INTERNAL, "unknown failure");
  }
}

void require(bool condition, const char* message) {
  if (!condition) throw std::invalid_argument(message);
}

template <typename... Pointers>
void requireSet(Pointers... pointers) {
  require(((pointers != nullptr) && ...), "a pointer that must be set is null");
}

// --- Options ---

// The module is installed in the folder dorvex beside this library. A library that
// was loaded by a relative path does not know where it is: the working directory
// may have changed since, and what lies there may be anybody's.
std::filesystem::path installedModule() {
  Dl_info info{};
  const bool known = ::dladdr(reinterpret_cast<const void*>(&dorvex_version), &info) != 0;
  const std::filesystem::path library = known ? info.dli_fname : "";
  require(library.is_absolute(), "module must be set: the library does not know its own place");
  return library.parent_path() / "dorvex" / "dorvexsr.so";
}

dorvex_options defaults() {
  const HostOptions options;
  const Limits& limits = options.limits;
  dorvex_options record{};
  record.struct_size = sizeof record;
  record.isolation = DORVEX_ISOLATION_WORKERS;
  record.sandbox = DORVEX_SANDBOX_WHERE_POSSIBLE;
  record.documents_per_worker = options.documentsPerWorker;
  record.buffer_size = options.bufferSize;
  record.scratch_memory = options.scratchMemory;
  record.wall_time_ms = static_cast<std::uint64_t>(limits.wallTime.count());
  record.processor_time_ms =
      static_cast<std::uint64_t>(std::chrono::milliseconds(limits.processorTime).count());
  record.memory = limits.memory;
  record.scratch = limits.scratch;
  record.output = limits.output;
  record.member_bytes = limits.container.memberBytes;
  record.total_bytes = limits.container.totalBytes;
  record.members = limits.container.members;
  record.depth = limits.container.depth;
  record.expansion = limits.container.expansion;
  record.input = limits.input;
  record.wait_ms = static_cast<std::uint32_t>(options.wait.count());
  return record;
}

bool isZero(const char* bytes, std::size_t count) {
  return std::all_of(bytes, bytes + count, [](char byte) { return byte == 0; });
}

// The caller's record may be shorter or longer than this library's. What it
// lacks has its default; what this library lacks must not have been set.
dorvex_options complete(const dorvex_options& given) {
  require(given.struct_size >= kFirstOptionsSize,
          "struct_size is too small: use dorvex_options_init");
  dorvex_options record = defaults();
  const std::size_t common = std::min(given.struct_size, sizeof record);
  require(isZero(reinterpret_cast<const char*>(&given) + common, given.struct_size - common),
          "an option is set that this version of the library does not know");
  std::memcpy(&record, &given, common);
  return record;
}

std::chrono::milliseconds milliseconds(std::uint64_t count) {
  // A year is for ever, and adding it to a time cannot overflow.
  constexpr std::uint64_t kLongest = std::uint64_t{365} * 24 * 3600 * 1000;
  return std::chrono::milliseconds(std::min(count, kLongest));
}

Limits limitsOf(const dorvex_options& record) {
  Limits limits;
  limits.wallTime = milliseconds(record.wall_time_ms);
  limits.processorTime =
      std::chrono::ceil<std::chrono::seconds>(milliseconds(record.processor_time_ms));
  limits.memory = record.memory;
  limits.scratch = record.scratch;
  limits.output = record.output;
  limits.input = record.input;
  limits.container.memberBytes = record.member_bytes;
  limits.container.totalBytes = record.total_bytes;
  limits.container.members = record.members;
  limits.container.depth = record.depth;
  limits.container.expansion = record.expansion;
  return limits;
}

HostOptions hostOptionsOf(const dorvex_options& record) {
  HostOptions options;
  require(isolationOf(record.isolation, options.isolation), "isolation is out of range");
  require(sandboxOf(record.sandbox, options.sandbox), "sandbox is out of range");
  require(record.documents_per_worker > 0, "documents_per_worker must be at least 1");
  options.module =
      record.module != nullptr ? std::filesystem::path(record.module) : installedModule();
  options.documentsPerWorker = record.documents_per_worker;
  options.bufferSize = record.buffer_size;
  options.scratchMemory = record.scratch_memory;
  options.limits = limitsOf(record);
  options.wait = std::chrono::milliseconds(record.wait_ms);
  return options;
}

// --- Documents ---

int open(dorvex_host* host, const Input& input, dorvex_document** document) {
  requireSet(host, document);
  *document = new dorvex_document{host->host, host->host->open(input), {}, {}};
  return DORVEX_OK;
}

Input::ReadFunction readThrough(dorvex_read_function read, void* user) {
  return [read, user](void* buffer, std::size_t count) {
    const std::ptrdiff_t got = read(user, buffer, count);
    if (got < 0 || static_cast<std::size_t>(got) > count) throw ReadFailed();
    return static_cast<std::size_t>(got);
  };
}

const Result& resultOf(dorvex_document& document) {
  if (!document.result) document.result = document.document.result();
  return *document.result;
}

dorvex_result recordOf(const Result& result) {
  dorvex_result record{};
  record.status = codeOf(result.status);
  record.failure = codeOf(result.failure);
  record.limit = codeOf(result.limit);
  record.module_result = result.moduleResult.value_or(-1);
  record.signal = result.signal;
  record.kind = codeOf(result.kind);
  record.message = result.message.c_str();
  record.token_bytes = result.tokenBytes;
  record.skipped = result.skipped.size();
  record.input_bytes = result.inputBytes;
  return record;
}

}  // namespace
}  // namespace dorvex::c

using namespace dorvex::c;

const char* dorvex_version(void) { return DORVEX_VERSION; }

uint32_t dorvex_abi_version(void) { return DORVEX_ABI_VERSION; }

const char* dorvex_last_error(void) { return lastError().c_str(); }

int dorvex_options_init(dorvex_options* options, size_t struct_size) {
  return guarded([&] {
    requireSet(options);
    require(struct_size >= kFirstOptionsSize, "struct_size is too small");
    const dorvex_options record = defaults();
    std::memset(options, 0, struct_size);
    std::memcpy(options, &record, std::min(struct_size, sizeof record));
    options->struct_size = struct_size;
    return DORVEX_OK;
  });
}

int dorvex_host_new(const dorvex_options* options, dorvex_host** host) {
  return guarded([&] {
    requireSet(host);
    const dorvex_options record = options != nullptr ? complete(*options) : defaults();
    *host = new dorvex_host{std::make_shared<const dorvex::Host>(hostOptionsOf(record))};
    return DORVEX_OK;
  });
}

void dorvex_host_free(dorvex_host* host) { delete host; }

int dorvex_open_path(dorvex_host* host, const char* path, dorvex_document** document) {
  return guarded([&] {
    requireSet(path);
    return open(host, dorvex::Input::path(path), document);
  });
}

int dorvex_open_memory(dorvex_host* host, const void* bytes, size_t length,
                       dorvex_document** document) {
  return guarded([&] {
    require(bytes != nullptr || length == 0, "bytes is null");
    const auto* first = static_cast<const unsigned char*>(bytes);
    return open(host, dorvex::Input::memory({first, length}), document);
  });
}

int dorvex_open_callback(dorvex_host* host, dorvex_read_function read, void* user,
                         dorvex_document** document) {
  return guarded([&] {
    requireSet(read);
    return open(host, dorvex::Input::callback(readThrough(read, user)), document);
  });
}

int dorvex_next_text(dorvex_document* document, const char** text, size_t* length) {
  return guarded([&] {
    requireSet(document, text, length);
    auto next = document->document.nextText();
    if (!next) return DORVEX_END;
    document->text = std::move(*next);
    *text = document->text.c_str();
    *length = document->text.size();
    return DORVEX_OK;
  });
}

int dorvex_next_tokens(dorvex_document* document, const unsigned char** tokens, size_t* length) {
  return guarded([&] {
    requireSet(document, tokens, length);
    const auto buffer = document->document.nextBuffer();
    if (!buffer) return DORVEX_END;
    *tokens = buffer->data();
    *length = buffer->size();
    return DORVEX_OK;
  });
}

int dorvex_document_result(dorvex_document* document, dorvex_result* result) {
  return guarded([&] {
    requireSet(document, result);
    const size_t size = result->struct_size;
    require(size >= kFirstResultSize, "struct_size of the result is too small");
    const dorvex_result record = recordOf(resultOf(*document));
    std::memset(result, 0, size);
    std::memcpy(result, &record, std::min(size, sizeof record));
    result->struct_size = size;
    return DORVEX_OK;
  });
}

int dorvex_skipped_member(dorvex_document* document, size_t index, const char** name,
                          const char** reason) {
  return guarded([&] {
    requireSet(document, name, reason);
    require(document->result && index < document->result->skipped.size(),
            "there is no skipped member of that index");
    *name = document->result->skipped[index].name.c_str();
    *reason = document->result->skipped[index].reason.c_str();
    return DORVEX_OK;
  });
}

void dorvex_document_free(dorvex_document* document) { delete document; }
