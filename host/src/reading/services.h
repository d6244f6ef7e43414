// The host's service table, and the tap through which it watches the reader
// walk a container.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/host_records.h"
#include "dorvex/host.h"
#include "dorvex/unzip_limits.h"
#include "looking/observations.h"
#include "reading/io_object.h"

namespace dorvex {

// The module that readers ask for to walk a zip.
constexpr char kContainerModule[] = "unzip.so";

// Serves one document. LoadDll, GetDllSymbol, FreeDll, OpenFile and the
// allocator are filled; ConvertText is null, since no reader calls it.
//
// A reader that asks for the container module's entry point gets the host's
// own functions. They pass every call on, and so the host learns the name of
// each member that goes into a scratch stream, which one the module refused and
// why, without a word more in the records. It keeps the container limits as well,
// those that any module can be held to by itself, and hands all of them to one
// that takes them (dorvex/unzip_limits.h). A limit that is passed is noted, and
// ends the document: LimitPassed leaves the slot.
class HostServices : public tag_TPVAPIServices {
 public:
  struct Settings {
    std::filesystem::path moduleFolder;  // where LoadDll looks
    std::size_t scratchMemory = 0;       // bytes of a scratch stream kept in memory
    bool alignReads = true;              // read member streams in step with their chunks
    bool lookThrough = true;             // look for faults in member streams
    ContainerLimits containers{};        // zero for no limit
    std::uint64_t scratchBytes = 0;      // of scratch streams that are open; zero for no limit
    std::string root;                    // of a package directory; left out of names
    OpenScratchFile openScratchFile = openUnnamedFile;
  };

  HostServices(Settings settings, Observations& observations);
  // Closes what the reader left open.
  ~HostServices();
  HostServices(const HostServices&) = delete;
  HostServices& operator=(const HostServices&) = delete;

  // The names of the members of a zip, through the container module. Nothing
  // when it cannot be loaded or cannot open io. Not noted in the observations.
  std::optional<std::vector<std::string>> listMembers(_VPTPIOobj& io);

  // Looks through every member stream of a zip, those of nested zips included. Gives
  // those that are not sound, and counts the others. Not noted in the observations.
  std::vector<SkippedMember> findUnsoundStreams(_VPTPIOobj& io, std::size_t& sound);

 private:
  struct OwnedObject;
  struct Container;
  class OwnContainerModule;
  class StreamSearch;

  // The container module's functions, as GetDllSymbol found them last.
  struct ContainerModule {
    ContainerReaderInterface interface {};
    UnzipOpenLimitedContainerFunction openLimited = nullptr;  // null for a module without it

    static ContainerModule of(void* handle, void* entryPoint);
    // Tells seen where libzip, which the zip needs, cannot be loaded.
    void* open(_VPTPIOobj* io, HostServices& host, UnzipLimits& limits) const;
  };

  static void* allocate(VNAllocator* allocator, std::size_t size);
  static int loadDll(tag_TPVAPIServices* services, const char* name, void** handle);
  static void* getDllSymbol(tag_TPVAPIServices* services, void* handle, const char* symbol);
  static void freeDll(tag_TPVAPIServices* services, void* handle);
  static _VPTPIOobj* openFile(tag_TPVAPIServices* services, const char* path, const char* mode);
  static int closeObject(_VPTPIOobj* io);

  static int fillTap(ContainerReaderInterface* interface);
  static void* openContainer(_VPTPIOobj* io, tag_TPVAPIServices* services, int option);
  static int closeContainer(void* container);
  static int getEntryInfo(void* container, std::int32_t index, ContainerEntryInfo* entry);
  static int extractEntry(void* container, std::int32_t index, _VPTPIOobj* stream);
  static int getEntryCount(void* container);

  void* load(const std::string& name);
  _VPTPIOobj* openPath(const char* path);
  _VPTPIOobj* openScratch();
  _VPTPIOobj* adopt(std::unique_ptr<ByteStore> store, IoObject::Settings settings);
  OwnedObject* find(_VPTPIOobj* io);
  std::string nameOf(const std::string& path) const;
  [[noreturn]] void stop(Limit limit, std::uint64_t allowed, const std::string& name);
  void stopIfPassed(const std::string& name);

  Settings settings_;
  Observations& observations_;
  Quota quota_;                           // before the objects, which give back to it
  std::map<std::string, void*> modules_;  // held, so that a nested container costs no reload
  std::unordered_map<_VPTPIOobj*, std::unique_ptr<OwnedObject>> objects_;
  ContainerModule containerModule_;
  UnzipLimits unzipLimits_;
};

}  // namespace dorvex
