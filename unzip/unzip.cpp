// The module's one export and the functions that it hands out. Exceptions end
// here; what is above are numbers and null pointers.

#include <new>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "Tools/vnexport.h"
#include "zip_container.h"

namespace dorvex::unzip {
namespace {

template <typename Result, typename Function>
Result guarded(Result out_of_memory, Result failure, Function function) noexcept {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    return out_of_memory;
  } catch (...) {
    return failure;
  }
}

template <typename Function>
int guarded_status(Function function) noexcept {
  return guarded<int>(VN_CONTAINER_OUT_OF_MEMORY, VN_CONTAINER_GENERAL_FAILURE, function);
}

void* open_container(_VPTPIOobj* io, tag_TPVAPIServices*, int) {
  return guarded<void*>(nullptr, nullptr, [=] { return ZipContainer::open(io).release(); });
}

int close_container(void* container) {
  return guarded_status([=] {
    delete static_cast<ZipContainer*>(container);
    return VN_CONTAINER_OK;
  });
}

int get_entry_info(void* container, std::int32_t index, ContainerEntryInfo* entry) {
  if (container == nullptr || entry == nullptr) return VN_CONTAINER_INVALID_ARGUMENT;
  return guarded_status(
      [=] { return static_cast<const ZipContainer*>(container)->entry_info(index, *entry); });
}

int extract_entry(void* container, std::int32_t index, _VPTPIOobj* stream) {
  if (container == nullptr) return VN_CONTAINER_INVALID_ARGUMENT;
  return guarded_status(
      [=] { return static_cast<const ZipContainer*>(container)->extract(index, stream); });
}

int get_entry_count(void* container) {
  if (container == nullptr) return 0;
  return guarded<int>(0, 0,
                      [=] { return static_cast<const ZipContainer*>(container)->entry_count(); });
}

}  // namespace
}  // namespace dorvex::unzip

// Fills *interface; the slots that no reader calls are null. Always 1.
extern "C" VN_API int unzipGetContainerReaderInterface(ContainerReaderInterface* interface) {
  using namespace dorvex::unzip;
  *interface = {open_container, close_container, get_entry_info,
                extract_entry,  get_entry_count, {}};
  return 1;
}
