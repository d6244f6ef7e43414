#include "Readers/dorvexsr/dorvexutil.h"

#include <cstdio>
#include <memory>
#include <utility>

#include "Tools/formats/vniwork13/give_back.h"
#include "Tools/formats/vniwork13/protobuf_general.h"
#include "Tools/formats/vniwork13/registry.h"
#include "Tools/vennik/vnexcept/vnexcept.h"
#include "Tools/vnose/vnose.h"
#include "Tools/vnstring/vnstring.h"

bool vnDllInit() { return true; }

void vnDllShutdown() { vn_iwork13_ShutDownProtobuf(); }

void init() {}

void fini() { vn_iwork13_ShutDownProtobuf(); }

namespace {

// Every document is read through the Pages registry and the common one,
// whichever application wrote it: the text lives in the common classes, and the
// document's kind is never determined.
constexpr vn::iwork13::MessageFactory kFactory = vn::iwork13::getPagesMessage;

// A stream that the host opened for us, closed at the end of its scope.
class HostFile {
 public:
  // A null object counts as out of memory: hosts see 2 for a missing member.
  HostFile(tag_TPVAPIServices* services, const char* path)
      : io_(services->OpenFile(services, path, "rb")) {
    if (io_ == nullptr) throw vn::except::out_of_core_error();
  }
  HostFile(const HostFile&) = delete;
  HostFile& operator=(const HostFile&) = delete;
  ~HostFile() noexcept(false) {
    if (io_->Close != nullptr) loan_.giveBack([this] { io_->Close(io_); });
  }

  _VPTPIOobj* io() const { return io_; }

 private:
  vn::iwork13::Loan loan_;
  _VPTPIOobj* io_;
};

struct DirectoryCloser {
  void operator()(DIR* directory) const { vnos_closedir(directory, 0); }
};

// Low 32 bits of the end position; 0 where the host cannot tell.
std::uint32_t measure(_VPTPIOobj* io) {
  if (io->Seek != nullptr) io->Seek(io, 0, VN_SEEK_END);
  const std::int64_t size = io->Tell != nullptr ? io->Tell(io) : 0;
  if (io->Seek != nullptr) io->Seek(io, 0, VN_SEEK_START);
  return static_cast<std::uint32_t>(size);
}

void readZip(TAG_VNDORVEXGlobals* context, _VPTPIOobj* io) {
  vn::iwork13::unzipFile(io, *context->messageMap, context->services, context->scratchBuf,
                         context->scratchBufSize, kFactory);
}

void joinPath(char* pathBuffer, const std::string& dir, const char* name) {
  // A longer path is cut, and then fails to open.
  static_cast<void>(std::snprintf(pathBuffer, kPathBufferSize, "%s/%s", dir.c_str(), name));
}

// Handles one entry; false when the scan of the folder stops with it.
bool readEntry(TAG_VNDORVEXGlobals* context, const std::string& dir, const char* name,
               const dirent& entry, char* pathBuffer) {
  const EntryAction action = actionFor(name);
  switch (action) {
    case EntryAction::kReadZipAndStop: {
      joinPath(pathBuffer, dir, name);
      const HostFile file(context->services, pathBuffer);
      readZip(context, file.io());  // its Open slot is not called here
      return false;
    }
    case EntryAction::kEnterAndStop:
    case EntryAction::kEnter:
      getMessagesFromFolder(context, dir + "/" + name, entry, pathBuffer);
      return action == EntryAction::kEnter;
    case EntryAction::kReadFile:
      joinPath(pathBuffer, dir, name);
      getMessagesFromFile(context, pathBuffer);
      return true;
    case EntryAction::kIgnore:
      return true;
  }
  return true;
}

}  // namespace

EntryAction actionFor(const std::string& name) {
  if (name == "Index.zip") return EntryAction::kReadZipAndStop;
  if (name == "Index") return EntryAction::kEnterAndStop;
  if (vn::string::endsWith(name.c_str(), ".iwa")) return EntryAction::kReadFile;
  if (name == "Tables") return EntryAction::kEnter;
  return EntryAction::kIgnore;
}

void populateMessageMap(TAG_VNDORVEXGlobals* context) {
  const char* pathName = context->ioObj->pathName;
  const std::string path = pathName != nullptr ? pathName : "";
  const dirent entry{};
  char pathBuffer[kPathBufferSize] = {};
  const std::size_t end = findVirtualDirectoryEnd(path);
  if (end == std::string::npos)
    readZip(context, context->ioObj);
  else
    getMessagesFromFolder(context, path.substr(0, end), entry, pathBuffer);
}

std::size_t findVirtualDirectoryEnd(const std::string& path) {
  const char* key = nullptr;
  if (path.find("Document.iwa") != std::string::npos)
    key = "Index";
  else if (path.find("BuildVersionHistory.plist") != std::string::npos)
    key = "Metadata";
  else
    return std::string::npos;
  // The first occurrence in the whole path, also in a parent's name: hosts that
  // pass such a path rely on giving a neutral one.
  const std::size_t position = path.find(key);
  if (position == std::string::npos || position == 0) return position;
  return position - 1;  // the separator goes too
}

void getMessagesFromFolder(TAG_VNDORVEXGlobals* context, std::string dir, dirent entry,
                           char* pathBuffer) {
  const std::unique_ptr<DIR, DirectoryCloser> directory(vnos_opendir(dir.c_str(), 0));
  if (directory == nullptr) throw vn::except::reader_init_error();
  while (const dirent* found = vnos_readdir_r(directory.get(), &entry, 0)) {
    if (!readEntry(context, dir, found->d_name, entry, pathBuffer)) return;
  }
}

void getMessagesFromFile(TAG_VNDORVEXGlobals* context, const char* path) {
  const HostFile file(context->services, path);
  _VPTPIOobj* io = file.io();
  if (io->Open != nullptr) io->Open(io);
  const std::uint32_t size = measure(io);
  context->messageMap->populate(io, size, context->scratchBuf, context->scratchBufSize, kFactory);
}
