// A container module, under the name unzip.so, that knows no limits and finds in
// every stream one member: a container again, or as many bytes as the reader
// takes. Which, the first byte of the document says: 'n' for nested, 'b' for
// bytes, 'm' for more members than anybody wants.
#include <cstring>
#include <string>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "Tools/vnexport.h"

namespace {

struct Container {
  char kind;
};

void* openContainer(_VPTPIOobj* io, tag_TPVAPIServices*, int) {
  char kind = 0;
  io->Seek(io, 0, VN_SEEK_START);
  if (io->Read(io, &kind, 1) != 1) return nullptr;
  return new Container{kind};
}

int closeContainer(void* container) {
  delete static_cast<Container*>(container);
  return VN_CONTAINER_OK;
}

int getEntryInfo(void* container, std::int32_t, ContainerEntryInfo* entry) {
  const bool nested = static_cast<Container*>(container)->kind == 'n';
  std::strcpy(entry->name, nested ? "Index.zip" : "Document.iwa");
  entry->size = nested ? 1 : 0x7FFFFFFF;
  return VN_CONTAINER_OK;
}

int extractEntry(void* container, std::int32_t, _VPTPIOobj* stream) {
  if (static_cast<Container*>(container)->kind == 'n') {
    return stream->Write(stream, "n", 1) == 1 ? VN_CONTAINER_OK : VN_CONTAINER_WRITE_FAILURE;
  }
  const std::string block(1 << 16, '\0');
  while (stream->Write(stream, block.data(), static_cast<std::uint32_t>(block.size())) > 0) {
  }
  return VN_CONTAINER_WRITE_FAILURE;
}

int getEntryCount(void* container) {
  return static_cast<Container*>(container)->kind == 'm' ? 0x7FFFFFFF : 1;
}

}  // namespace

extern "C" VN_API int unzipGetContainerReaderInterface(ContainerReaderInterface* interface) {
  *interface = {openContainer, closeContainer, getEntryInfo, extractEntry, getEntryCount, {}};
  return 1;
}
