// Driving the reader through one document.

#include <algorithm>
#include <vector>

#include "looking/diagnosis.h"
#include "looking/package.h"
#include "reading/document_source.h"
#include "reading/io_object.h"
#include "reading/reader_module.h"
#include "reading/services.h"

namespace dorvex {
namespace {

// A reader that keeps answering with nothing will not come to an end.
constexpr int kMostEmptyAnswers = 1000;

// The only reason for which a reader has no context to give.
constexpr int kOutOfMemory = 2;

constexpr std::size_t kTokenOverhang = 14;
constexpr std::size_t kSmallestBuffer = 4110;

// The path of a directory package as the reader gets it. It looks for marker
// names anywhere in the path and cuts long ones, so the true path, which may
// hold such a name by chance, never reaches it.
std::string neutralRoot(const UniqueFd& directory) {
  return directory ? "/proc/self/fd/" + std::to_string(directory.get()) : "";
}

IoObject::Settings documentSettings(const std::string& root) {
  IoObject::Settings settings;
  if (!root.empty()) settings.path = root + "/Index/Document.iwa";
  return settings;
}

std::unique_ptr<ByteStore> storeOf(OpenInput& input) {
  auto store = input.takeStore();
  return store ? std::move(store) : makeMemoryStore({});
}

class Session final : public Document::Source {
 public:
  Session(const HostOptions& options, OpenInput input, std::shared_ptr<ReaderModule> module,
          OpenScratchFile openScratchFile)
      : input_(std::move(input)),
        root_(neutralRoot(input_.directory())),
        module_(std::move(module)),
        services_({.moduleFolder = options.module.parent_path(),
                   .scratchMemory = options.scratchMemory,
                   .alignReads = options.alignReads,
                   .containers = options.limits.container,
                   .scratchBytes = options.limits.scratch,
                   .root = root_,
                   .openScratchFile = std::move(openScratchFile)},
                  seen_),
        io_(storeOf(input_), documentSettings(root_), seen_),
        declaredSize_(options.bufferSize),
        buffer_(ownedBufferSize(options.bufferSize)) {
    std::uint32_t allocated = 0;
    context_ = reader().AllocateContext(nullptr, nullptr, &allocated, &services_, 0);
    if (context_ == nullptr) {
      returned_ = kOutOfMemory;
    } else {
      reader().InitDoc(context_, nullptr, 0, &io_);
    }
  }

  ~Session() override {
    if (context_ != nullptr) reader().FreeContext(context_);
  }

  std::optional<std::span<const unsigned char>> next() override {
    for (int empty = 0; empty < kMostEmptyAnswers; ++empty) {
      if (context_ == nullptr || returned_ != 0 || percent_ == 100) return std::nullopt;
      unsigned int length = 0;
      returned_ = reader().FillBuffer(context_, buffer_.data(), &length, &percent_, declaredSize_);
      if (returned_ != 0) return std::nullopt;
      if (length > buffer_.size()) return fail("the module wrote beyond its buffer");
      if (length > 0) return std::span(buffer_).first(length);
    }
    return fail("the module never reports its end");
  }

  Result result() override {
    Result result = fault_.empty() ? diagnose(returned_, seen_, [this] { return look(); })
                                   : moduleFailure(fault_);
    result.kind = seen_.kind.kind();
    result.inputBytes = io_.size();
    return result;
  }

 private:
  const ReaderInterface& reader() const { return module_->reader(); }

  std::nullopt_t fail(const char* fault) {
    fault_ = fault;
    percent_ = 100;
    return std::nullopt;
  }

  PackageLook look() {
    PackageLook look;
    if (input_.directory()) {
      look.directory = true;
      lookAtNames(listDirectory(input_.directory().get()), look);
    } else {
      lookAtStart(io_.store(), look);
      if (const auto names = services_.listMembers(io_)) lookAtNames(*names, look);
    }
    return look;
  }

  OpenInput input_;
  std::string root_;
  std::shared_ptr<ReaderModule> module_;
  Observations seen_;
  HostServices services_;
  IoObject io_;
  std::uint32_t declaredSize_;
  std::vector<unsigned char> buffer_;
  void* context_ = nullptr;
  int returned_ = 0;
  int percent_ = 0;  // the reader adds to it from call to call
  std::string fault_;
};

class FailedSource final : public Document::Source {
 public:
  explicit FailedSource(Result result) : result_(std::move(result)) {}
  std::optional<std::span<const unsigned char>> next() override { return std::nullopt; }
  Result result() override { return std::move(result_); }

 private:
  Result result_;
};

}  // namespace

std::size_t ownedBufferSize(std::uint32_t declared) {
  return std::max(declared + kTokenOverhang, kSmallestBuffer);
}

Result moduleFailure(const std::string& message) {
  return failedResult(Failure::kModuleUnusable, message);
}

Result unloadable(const std::string& error) {
  return failedResult(Failure::kModuleMissing, "cannot load the module: " + error);
}

std::unique_ptr<Document::Source> makeFailedSource(Result result) {
  return std::make_unique<FailedSource>(std::move(result));
}

std::unique_ptr<Document::Source> makeSession(const HostOptions& options, OpenInput input,
                                              std::shared_ptr<ReaderModule> module,
                                              OpenScratchFile openScratchFile) {
  return std::make_unique<Session>(options, std::move(input), std::move(module),
                                   std::move(openScratchFile));
}

}  // namespace dorvex
