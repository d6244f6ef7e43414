// The module's exports and the functions that it hands out. Exceptions end
// here; what is above are numbers and null pointers.

#include <new>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "Tools/vnexport.h"
#include "dorvex/unzip_limits.h"
#include "zip_container.h"

namespace dorvex::unzip {
namespace {

template <typename Result, typename Function>
Result guarded(Result outOfMemory, Result failure, Function function) noexcept {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    return outOfMemory;
  } catch (...) {
    return failure;
  }
}

template <typename Function>
int guardedStatus(Function function) noexcept {
  return guarded<int>(VN_CONTAINER_OUT_OF_MEMORY, VN_CONTAINER_GENERAL_FAILURE, function);
}

void* openContainer(_VPTPIOobj* io, tag_TPVAPIServices*, int) {
  return guarded<void*>(nullptr, nullptr, [=] { return ZipContainer::open(io).release(); });
}

int closeContainer(void* container) {
  return guardedStatus([=] {
    delete static_cast<ZipContainer*>(container);
    return VN_CONTAINER_OK;
  });
}

int getEntryInfo(void* container, std::int32_t index, ContainerEntryInfo* entry) {
  if (container == nullptr || entry == nullptr) return VN_CONTAINER_INVALID_ARGUMENT;
  return guardedStatus(
      [=] { return static_cast<const ZipContainer*>(container)->entryInfo(index, *entry); });
}

int extractEntry(void* container, std::int32_t index, _VPTPIOobj* stream) {
  if (container == nullptr) return VN_CONTAINER_INVALID_ARGUMENT;
  return guardedStatus(
      [=] { return static_cast<ZipContainer*>(container)->extract(index, stream); });
}

int getEntryCount(void* container) {
  if (container == nullptr) return 0;
  return guarded<int>(0, 0,
                      [=] { return static_cast<const ZipContainer*>(container)->entryCount(); });
}

}  // namespace
}  // namespace dorvex::unzip

// Fills *interface; the slots that no reader calls are null. Always 1.
extern "C" VN_API int unzipGetContainerReaderInterface(ContainerReaderInterface* interface) {
  using namespace dorvex::unzip;
  *interface = {openContainer, closeContainer, getEntryInfo, extractEntry, getEntryCount, {}};
  return 1;
}

// See dorvex/unzip_limits.h.
extern "C" VN_API void* unzipOpenLimitedContainer(_VPTPIOobj* io, UnzipLimits* limits) {
  using namespace dorvex::unzip;
  return guarded<void*>(nullptr, nullptr, [=] { return ZipContainer::open(io, limits).release(); });
}

// See dorvex/unzip_limits.h.
extern "C" VN_API int unzipLoadLibzip() {
  using namespace dorvex::unzip;
  return guarded<int>(0, 0, [] { return loadLibzip() ? 1 : 0; });
}
