// A container module, under the name unzip.so, that tries what a document's code
// would try, had it taken over the inspector. Its one member is named after what
// came of it.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "Tools/vnexport.h"

namespace {

struct Container {
  std::string attempts;
};

std::string outcome(const char* attempt, int result) {
  return std::string(attempt) + (result < 0 ? ": " + std::string(std::strerror(errno)) : ": done");
}

void* openContainer(_VPTPIOobj*, tag_TPVAPIServices*, int) {
  auto* container = new Container;
  container->attempts += outcome("open", ::open("/etc/passwd", O_RDONLY | O_CLOEXEC)) + ", ";
  container->attempts += outcome("connect", ::socket(AF_INET, SOCK_STREAM, 0)) + ", ";
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  container->attempts += outcome("fork", child);
  return container;
}

int closeContainer(void* container) {
  delete static_cast<Container*>(container);
  return VN_CONTAINER_OK;
}

int getEntryInfo(void* container, std::int32_t, ContainerEntryInfo* entry) {
  std::strcpy(entry->name, static_cast<Container*>(container)->attempts.c_str());
  entry->size = 0;
  return VN_CONTAINER_OK;
}

int extractEntry(void*, std::int32_t, _VPTPIOobj*) { return VN_CONTAINER_DAMAGED; }

int getEntryCount(void*) { return 1; }

}  // namespace

extern "C" VN_API int unzipGetContainerReaderInterface(ContainerReaderInterface* interface) {
  *interface = {openContainer, closeContainer, getEntryInfo, extractEntry, getEntryCount, {}};
  return 1;
}
