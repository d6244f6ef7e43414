// Driving the reader through one document.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "looking/diagnosis.h"
#include "looking/package.h"
#include "looking/package_folder.h"
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

bool isWorkingDirectory(int directory) {
  struct stat here {};
  struct stat there {};
  return ::stat(".", &here) == 0 && ::fstat(directory, &there) == 0 &&
         here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

// The path of a directory package as the reader gets it. It looks for marker
// names anywhere in the path and cuts long ones, so the true path, which may
// hold such a name by chance, never reaches it.
//
// A worker works in the directory, and so needs no /proc.
std::string neutralRoot(const UniqueFd& directory) {
  if (!directory) return "";
  return isWorkingDirectory(directory.get()) ? "."
                                             : "/proc/self/fd/" + std::to_string(directory.get());
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
    begin();
  }

  ~Session() override { end(); }

  std::optional<std::span<const unsigned char>> next() override {
    for (int empty = 0; empty < kMostEmptyAnswers; ++empty) {
      if (context_ == nullptr || returned_ != 0 || percent_ == 100) return std::nullopt;
      const unsigned int length = fill();
      if (returned_ != 0) return std::nullopt;
      if (length > buffer_.size()) return fail("the module wrote beyond its buffer");
      if (length > 0) return std::span(buffer_).first(length);
    }
    return fail("the module never reports its end");
  }

  Result result() override {
    if (!fault_.empty()) return moduleFailure(fault_);
    if (input_.directory()) {
      lookAgain();
    } else if (seen_.refused) {
      lookAtTheOthers();
    }
    if (!seen_.refused) noteDropped();
    Result result = diagnose(returned_, seen_, [this] { return look(); });
    if (hasChanged_) noteChange(result);
    result.kind = seen_.kind.kind();
    result.inputBytes = input_.directory() ? folder_.bytes : io_.size();
    return result;
  }

 private:
  const ReaderInterface& reader() const { return module_->reader(); }

  void begin() {
    io_.Seek(&io_, 0, VN_SEEK_START);
    std::uint32_t allocated = 0;
    context_ = reader().AllocateContext(nullptr, nullptr, &allocated, &services_, 0);
    if (context_ == nullptr) {
      returned_ = kOutOfMemory;
    } else {
      reader().InitDoc(context_, nullptr, 0, &io_);
    }
  }

  void end() {
    if (context_ != nullptr) reader().FreeContext(context_);
    context_ = nullptr;
  }

  // The reader reads the whole document in the first call, before it hands anything
  // out: if the document has changed meanwhile, it is read again, once.
  unsigned int fill() {
    if (isRead_) return fillOnce();
    isRead_ = true;
    const std::uint64_t before = state();
    unsigned int length = fillOnce();
    const std::uint64_t after = state();
    if (before == after) return length;
    end();
    seen_ = {};
    percent_ = 0;
    returned_ = 0;
    begin();
    if (context_ == nullptr) return 0;
    length = fillOnce();
    hasChanged_ = state() != after;
    return length;
  }

  unsigned int fillOnce() {
    unsigned int length = 0;
    returned_ = reader().FillBuffer(context_, buffer_.data(), &length, &percent_, declaredSize_);
    return length;
  }

  std::uint64_t state() {
    if (!input_.directory()) {
      const int file = io_.store().file();
      return file >= 0 ? stateOfFile(file) : 0;
    }
    folder_ = lookAtFolder(input_.directory().get());
    return folder_.streams;
  }

  void noteChange(Result& result) const {
    const char* text = "it was written to while it was read";
    result.failure = Failure::kChanged;
    result.status = returned_ == 0 ? Status::kPartial : Status::kFailed;
    result.message = returned_ == 0 ? std::string("partial text: ") + text : text;
  }

  void lookAgain() {
    if (!isRead_) folder_ = lookAtFolder(input_.directory().get());
    seen_.kind.add(folder_.kind);
    seen_.listFailure = folder_.failure;
    struct stat status {};
    if (folder_.failure || returned_ == 0 || ::stat(root_.c_str(), &status) == 0) return;
    if (errno == ENOENT) {
      seen_.listFailure = SystemFailure{"a package directory without /proc", ENOENT};
    }
  }

  // What a document that ends early would have dropped does not matter.
  void noteDropped() {
    auto dropped = seen_.filed.dropped();
    std::move(dropped.begin(), dropped.end(), std::back_inserter(seen_.unsound));
  }

  // The member that the container module refused ended the document, whatever else
  // there is.
  void lookAtTheOthers() {
    std::size_t sound = 0;
    auto unsound = services_.findUnsoundStreams(io_, sound);
    std::erase_if(unsound,
                  [&](const SkippedMember& member) { return member.name == seen_.refused->name; });
    if (unsound.empty() && sound == 0) return;
    seen_.unsound = std::move(unsound);
    seen_.soundBesides = sound;
  }

  std::nullopt_t fail(const char* fault) {
    fault_ = fault;
    percent_ = 100;
    return std::nullopt;
  }

  PackageLook look() {
    if (input_.directory()) return folder_.package;
    PackageLook look;
    lookAtStart(io_.store(), look);
    if (const auto names = services_.listMembers(io_)) lookAtNames(*names, look);
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
  bool isRead_ = false;
  bool hasChanged_ = false;  // in the second reading, too
  FolderLook folder_;        // into a package directory
  int percent_ = 0;          // the reader adds to it from call to call
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
