#include "faults/stated_run.h"

#include <array>

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

// The numbers by which the pump reports; anything else that goes wrong is 6.
enum Number : int { kSuccess = 0, kOutOfMemory = 2, kBadInput = 4, kFailure = 6 };

// An error on its way to the pump, by the number that it becomes there.
struct Raised {
  int number;
};

int numberOf(int status) {
  return status == kOutOfMemory || status == kBadInput ? status : kFailure;
}

bool isSelected(const std::string& name) {
  static const char* const kPrefixes[] = {
      "Index/Document", "Document", "Index/CalculationEngine", "CalculationEngine",
      "Index/Slide",    "Slide",    "Index/Tables/",           "Tables/"};
  if (!name.ends_with(".iwa")) return false;
  for (const char* prefix : kPrefixes) {
    if (name.starts_with(prefix)) return true;
  }
  return false;
}

class Run {
 public:
  explicit Run(const Faults& faults) : faults_(faults) {}

  StatedRun ofZip(const std::string& bytes) {
    return finish([&] { walkZip(bytes, ""); });
  }

  StatedRun ofDirectory(const fs::path& root) {
    return finish([&] { walkFolder(root); });
  }

 private:
  template <typename Walk>
  StatedRun finish(Walk walk) {
    try {
      walk();
      run_.result = run_.members.empty() ? kBadInput : kSuccess;
    } catch (const Raised& raised) {
      run_.result = raised.number;
    }
    return run_;
  }

  void record(const std::string& entry) { run_.log.push_back(entry); }

  // Counts a call, and tells whether it fails.
  bool fails(Slot slot) {
    const int call = ++calls_[static_cast<std::size_t>(slot)];
    const bool now = faults_.fault && faults_.fault->slot == slot && faults_.fault->call == call;
    run_.faultHappened = run_.faultHappened || now;
    return now;
  }

  void requireOk(Slot slot) {
    if (fails(slot)) throw Raised{numberOf(faults_.fault->status)};
  }

  // What runs at the end of a scope, also when an error passes.
  template <typename Function>
  struct AtEnd {
    Function function;
    ~AtEnd() { function(); }
  };
  template <typename Function>
  AtEnd(Function) -> AtEnd<Function>;

  struct OpenStream {
    std::string name;
    bool lacks(NullSlot::Which slot) const { return nullSlot && *nullSlot == slot; }
    std::optional<NullSlot::Which> nullSlot;
  };

  // Null gives 2, for files and scratch streams alike.
  OpenStream openFile(const std::string& name) {
    record("OpenFile " + name);
    if (fails(Slot::kOpenFile)) throw Raised{kOutOfMemory};
    OpenStream stream{name, {}};
    if (faults_.nullSlot && faults_.nullSlot->stream == ++streams_) {
      stream.nullSlot = faults_.nullSlot->which;
      run_.faultHappened = true;
    }
    return stream;
  }

  void close(const OpenStream& stream) {
    if (stream.lacks(NullSlot::kClose))
      ++run_.unclosed;
    else
      record("Close " + stream.name);
  }

  // False for a null slot and for an answer of 0.
  bool open(const OpenStream& stream) {
    if (stream.lacks(NullSlot::kOpen)) return false;
    record("Open " + stream.name);
    return !fails(Slot::kOpen);
  }

  void walkZip(const std::string& bytes, const std::string& path) {
    record("LoadDll unzip.so");
    if (fails(Slot::kLoadDll)) throw Raised{kFailure};
    const AtEnd freeModule{[this] { record("FreeDll"); }};
    record("GetDllSymbol unzipGetContainerReaderInterface");
    if (fails(Slot::kGetDllSymbol)) throw Raised{kFailure};
    record("OpenContainer");
    if (fails(Slot::kOpenContainer)) throw Raised{kFailure};
    const AtEnd closeContainer{[this] { record("CloseContainer"); }};
    const std::vector<Member> members = unzip(bytes);
    for (std::size_t index = 0; index < members.size(); ++index)
      walkMember(members[index], std::to_string(index), path + members[index].name);
  }

  void walkMember(const Member& member, const std::string& index, const std::string& path) {
    record("GetEntryInfo " + index);
    requireOk(Slot::kGetEntryInfo);
    const bool isContainer = member.name.ends_with("Index.zip");
    if (!isContainer && !isSelected(member.name)) return;
    const OpenStream stream = openFile("scratch");
    const AtEnd closeStream{[&] { close(stream); }};
    record("ExtractEntry " + index);
    requireOk(Slot::kExtractEntry);
    if (!open(stream)) throw Raised{kBadInput};
    if (isContainer)
      walkZip(member.contents, path + "/");
    else
      run_.members.push_back(path);  // its size comes from the entry, not from Seek and Tell
  }

  void walkFolder(const fs::path& folder) {
    if (!fs::is_directory(folder)) throw Raised{kFailure};
    for (const auto& entry : fs::directory_iterator(folder)) {
      const std::string name = entry.path().filename();
      if (name == "Index.zip") return walkZipFile(entry.path());
      if (name == "Index") return walkFolder(entry.path());
      if (name.ends_with(".iwa")) walkFile(entry.path());
      if (name == "Tables") walkFolder(entry.path());
    }
  }

  // Its Open slot is not called.
  void walkZipFile(const fs::path& path) {
    const OpenStream stream = openFile(path);
    const AtEnd closeStream{[&] { close(stream); }};
    walkZip(readFile(path), path.string() + "/");
  }

  // What Open answers is ignored; without Seek or Tell the size is 0.
  void walkFile(const fs::path& path) {
    const OpenStream stream = openFile(path);
    const AtEnd closeStream{[&] { close(stream); }};
    open(stream);
    if (!stream.lacks(NullSlot::kSeek) && !stream.lacks(NullSlot::kTell))
      run_.members.push_back(path);
  }

  Faults faults_;
  StatedRun run_;
  std::array<int, static_cast<std::size_t>(Slot::kCount)> calls_{};
  int streams_ = 0;
};

}  // namespace

StatedRun statedRunOfZip(const std::string& bytes, const Faults& faults) {
  return Run(faults).ofZip(bytes);
}

StatedRun statedRunOfDirectory(const fs::path& root, const Faults& faults) {
  return Run(faults).ofDirectory(root);
}

}  // namespace dorvex::testing
