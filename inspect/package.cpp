#include "inspect/package.h"

#include <fcntl.h>

#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Readers/dorvexsr/dorvexutil.h"
#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "Tools/formats/vniwork13/member_kind.h"
#include "dorvex/unzip_limits.h"
#include "looking/diagnosis.h"
#include "looking/package.h"
#include "reading/open_input.h"
#include "reading/services.h"

namespace dorvex::cli {
namespace {

namespace fs = std::filesystem;
using vn::iwork13::MemberKind;

// What standard input may take of memory before it goes to a file. Members stay
// in memory, since no file can be made once the process is confined.
constexpr std::size_t kInputMemory = std::size_t{16} * 1024 * 1024;
constexpr std::size_t kScratchMemory = std::numeric_limits<std::size_t>::max();
constexpr char kContainerModule[] = "unzip.so";
constexpr char kContainerEntryPoint[] = "unzipGetContainerReaderInterface";
constexpr int kDeepest = 16;  // folders within each other

// What the reader returns when it found nothing and when it gave up; the host
// chooses its words by them.
constexpr int kNothingRecognised = 4;
constexpr int kGaveUp = 6;

bool isStreamName(std::string_view name) { return name.ends_with(".iwa"); }

std::string sentence(const Observations& seen) {
  return diagnose(kGaveUp, seen, [] { return PackageLook{}; }).message;
}

// What both walks work with.
struct Visit {
  HostServices& services;
  Observations& seen;
  const VisitMember& member;

  // The host's sentence about what it has just seen go wrong.
  std::string takeFault() const { return sentence(std::exchange(seen, {})); }
};

// Walks zips as the reader does, by the services that the host gives a reader,
// so that the host's limits hold here too.
class ZipWalk {
 public:
  explicit ZipWalk(Visit visit) : visit_(visit) {
    void* handle = nullptr;
    if (services().LoadDll(&services(), kContainerModule, &handle) == 0) return;
    void* fill = services().GetDllSymbol(&services(), handle, kContainerEntryPoint);
    if (fill != nullptr) reinterpret_cast<GetContainerReaderInterfaceFunction>(fill)(&module_);
    loadLibzip(handle);
  }

  // Null when io is no container, or the module is not there.
  using Container = std::unique_ptr<void, int (*)(void*)>;
  Container open(_VPTPIOobj& io) {
    void* handle =
        module_.OpenContainer != nullptr ? module_.OpenContainer(&io, &services(), 0) : nullptr;
    return {handle, module_.CloseContainer};
  }

  // prefix stands before the names; selected tells whether the reader opens it.
  void walk(void* container, const std::string& prefix, bool selected) {
    const int count = module_.GetEntryCount(container);
    for (std::int32_t index = 0; index < count; ++index) {
      ContainerEntryInfo entry{};
      const int status = module_.GetEntryInfo(container, index, &entry);
      if (status == VN_CONTAINER_OK) {
        visitEntry({container, index, prefix, selected}, entry);
      } else {
        const std::string name = prefix + "member number " + std::to_string(index + 1);
        visit_.member({name, 0, false, false, refusal(name, status)}, nullptr);
      }
    }
  }

 private:
  struct CloseStream {
    void operator()(_VPTPIOobj* io) const { io->Close(io); }
  };

  struct Place {
    void* container;
    std::int32_t index;
    const std::string& prefix;
    bool selected;
  };

  HostServices& services() const { return visit_.services; }

  // A confined process can no longer do so. A zip that would need it says what is missing.
  void loadLibzip(void* handle) {
    void* const load = services().GetDllSymbol(&services(), handle, kUnzipLoadLibzip);
    if (load != nullptr) static_cast<void>(reinterpret_cast<UnzipLoadLibzipFunction>(load)());
  }

  void visitEntry(const Place& place, const ContainerEntryInfo& entry) {
    const MemberKind kind = vn::iwork13::classifyMember(entry.name);
    PackageMember member{place.prefix + entry.name, entry.size,
                         place.selected && kind != MemberKind::kIgnored, isStreamName(entry.name),
                         ""};
    if (kind == MemberKind::kIgnored && !member.isStream) {
      visit_.member(member, nullptr);
      return;
    }
    const std::unique_ptr<_VPTPIOobj, CloseStream> stream(
        services().OpenFile(&services(), nullptr, "a+"));
    if (stream == nullptr) throw std::bad_alloc();
    const int status = module_.ExtractEntry(place.container, place.index, stream.get());
    if (status != VN_CONTAINER_OK) {
      member.fault = refusal(member.name, status);
      visit_.member(member, nullptr);
    } else if (kind == MemberKind::kNestedContainer) {
      enter(*stream, std::move(member));
    } else {
      visit_.member(member, &static_cast<IoObject*>(stream.get())->store());
    }
  }

  void enter(_VPTPIOobj& io, PackageMember member) {
    io.Open(&io);
    const Container container = open(io);
    if (container == nullptr) member.fault = visit_.takeFault();
    visit_.member(member, nullptr);
    if (member.fault.empty()) walk(container.get(), member.name + "/", member.selected);
  }

  std::string refusal(const std::string& name, int status) {
    if (!visit_.seen.refused) visit_.seen.refused = {name, status};
    return visit_.takeFault();
  }

  Visit visit_;
  ContainerReaderInterface module_{};
};

// Walks a package directory in the order of the system, as the reader does,
// which reads nothing of a folder that is listed behind Index or Index.zip.
class FolderWalk {
 public:
  explicit FolderWalk(Visit visit) : visit_(visit) {}

  void walk(const fs::path& folder, const std::string& prefix, bool selected, int depth = 0) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      const EntryAction action = actionFor(entry->path().filename());
      const std::string name = prefix + entry->path().filename().string();
      std::error_code unknown;
      if (entry->is_directory(unknown)) {
        const bool entered =
            selected && (action == EntryAction::kEnter || action == EntryAction::kEnterAndStop);
        // Links may lead in circles; the reader follows them, but only where it enters.
        if (depth < kDeepest && (entered || !entry->is_symlink(unknown)))
          walk(entry->path(), name + "/", entered, depth + 1);
      } else {
        visitFile(entry->path(), name, selected ? action : EntryAction::kIgnore);
      }
      if (action == EntryAction::kEnterAndStop || action == EntryAction::kReadZipAndStop)
        selected = false;
    }
    if (error) visit_.member({prefix, 0, false, false, systemFault(prefix, error)}, nullptr);
  }

 private:
  void visitFile(const fs::path& path, const std::string& name, EntryAction action) {
    PackageMember member{name, 0, action != EntryAction::kIgnore, isStreamName(name), ""};
    const auto store = openFile(path, member);
    if (store == nullptr || action != EntryAction::kReadZipAndStop) {
      visit_.member(member, member.isStream ? store.get() : nullptr);
    } else {
      enterZip(path, std::move(member));
    }
  }

  void enterZip(const fs::path& path, PackageMember member) {
    IoObject::Settings settings;
    settings.name = member.name;
    IoObject io(openFile(path, member), std::move(settings), visit_.seen);
    ZipWalk zip(visit_);
    const ZipWalk::Container container = zip.open(io);
    if (container == nullptr) {
      visit_.seen.notAContainer = member.name;
      member.fault = visit_.takeFault();
    }
    visit_.member(member, nullptr);
    if (container != nullptr) zip.walk(container.get(), member.name + "/", true);
  }

  // Never waits for a writer at a pipe that poses as a member.
  static std::unique_ptr<ByteStore> openFile(const fs::path& path, PackageMember& member) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
      member.fault = member.name + " is not a regular file";
      return nullptr;
    }
    auto store =
        makeFileStore(UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)));
    if (store == nullptr) {
      member.fault = systemFault(member.name, {errno, std::generic_category()});
    } else {
      member.size = store->size();
    }
    return store;
  }

  static std::string systemFault(const std::string& name, const std::error_code& error) {
    Observations seen;
    seen.openFailure = {name, error.value()};
    return sentence(seen);
  }

  Visit visit_;
};

// Collects what the host has to know to say what a package is.
class Look {
 public:
  void add(const PackageMember& member) {
    names_.push_back(member.name);
    anySelected_ |= member.selected;
  }
  void addStart(ByteStore& store) { lookAtStart(store, look_); }
  void setDirectory() { look_.directory = true; }

  Result result(const Observations& seen) {
    lookAtNames(names_, look_);
    const bool sound =
        anySelected_ && !look_.passwordProtected && !look_.iwork09 && !seen.limitPassed;
    if (sound) return {};
    Result result =
        diagnose(seen.notAContainer ? kGaveUp : kNothingRecognised, seen, [this] { return look_; });
    result.moduleResult.reset();  // no module was asked
    return result;
  }

 private:
  std::vector<std::string> names_;
  PackageLook look_;
  bool anySelected_ = false;
};

}  // namespace

PackageOutcome visitPackage(const fs::path& path, const fs::path& moduleFolder,
                            const VisitMember& visit, const PackageIsOpen& isOpen) {
  PackageOutcome outcome;
  const CopyLimits limits{kInputMemory, Limits{}.input};
  OpenInput input = OpenInput::open(
      path == "-" ? Input::descriptor(STDIN_FILENO) : Input::path(path), limits, outcome.result);
  TimeBudget noLimit{std::chrono::milliseconds(0)};  // the inspector as a whole has one
  const TimeBudget::Running running(noLimit);
  if (!input || !input.readToEnd(noLimit, outcome.result)) return outcome;
  Observations seen;
  HostServices::Settings settings;
  settings.moduleFolder = moduleFolder;
  settings.scratchMemory = kScratchMemory;
  HostServices services(std::move(settings), seen);
  Look look;
  const VisitMember both = [&](const PackageMember& member, ByteStore* contents) {
    look.add(member);
    visit(member, contents);
  };
  ZipWalk zip({services, seen, both});  // loads the container module
  isOpen(input.directory().get());
  outcome.directory = static_cast<bool>(input.directory());
  try {
    if (outcome.directory) {
      look.setDirectory();
      FolderWalk({services, seen, both})
          .walk("/proc/self/fd/" + std::to_string(input.directory().get()), "", true);
    } else {
      IoObject io(input.takeStore(), {}, seen);
      look.addStart(io.store());
      if (const auto container = zip.open(io)) zip.walk(container.get(), "", true);
    }
  } catch (const LimitPassed&) {
    // What has been visited stands; the result says which limit ended the walk.
  }
  outcome.result = look.result(seen);
  return outcome;
}

std::string unsoundMember(const std::string& name, const std::string& reason) {
  Observations seen;
  seen.unsound.push_back({name, reason});
  return sentence(seen);
}

}  // namespace dorvex::cli
