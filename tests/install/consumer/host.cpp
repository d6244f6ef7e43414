#include "host.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "Tools/vnose/vnose.h"
#include "documents.h"

namespace dorvex::consumer {
namespace {

Stream& streamOf(_VPTPIOobj* io) { return *static_cast<Stream*>(io); }
Host& hostOf(tag_TPVAPIServices* services) { return *static_cast<Host*>(services); }

// The address of the sub-record is all that Alloc and Free are given.
Host& hostOf(VNAllocator* allocator) {
  char* services = reinterpret_cast<char*>(allocator) - offsetof(tag_TPVAPIServices, allocator);
  return hostOf(reinterpret_cast<tag_TPVAPIServices*>(services));
}

int open(_VPTPIOobj* io) {
  streamOf(io).position = 0;
  return 1;
}

int read(_VPTPIOobj* io, void* buffer, std::uint32_t count) {
  Stream& stream = streamOf(io);
  const std::size_t length = std::min<std::size_t>(count, stream.contents.size() - stream.position);
  std::memcpy(buffer, stream.contents.data() + stream.position, length);
  stream.position += length;
  return static_cast<int>(length);
}

int write(_VPTPIOobj* io, const void* buffer, std::uint32_t count) {
  streamOf(io).contents.append(static_cast<const char*>(buffer), count);
  return static_cast<int>(count);
}

int seek(_VPTPIOobj* io, std::int64_t offset, int whence) {
  Stream& stream = streamOf(io);
  const std::size_t origin = whence == VN_SEEK_END ? stream.contents.size() : 0;
  stream.position = origin + static_cast<std::size_t>(offset);
  return 0;
}

std::int64_t tell(_VPTPIOobj* io) { return static_cast<std::int64_t>(streamOf(io).position); }

int close(_VPTPIOobj* io) {
  delete &streamOf(io);
  return 0;
}

int loadDll(tag_TPVAPIServices*, const char* name, void** handle) {
  *handle = vnos_dlopen((documents.moduleFolder + "/" + name).c_str(), RTLD_NOW);
  return *handle != nullptr;
}

void* getDllSymbol(tag_TPVAPIServices*, void* handle, const char* symbol) {
  return vnos_dlsym(handle, symbol);
}

void freeDll(tag_TPVAPIServices*, void* handle) { vnos_dlclose(handle); }

// Scratch streams are all that a document in memory needs.
_VPTPIOobj* openFile(tag_TPVAPIServices*, const char* path, const char*) {
  return path == nullptr ? new Stream : nullptr;
}

void* alloc(VNAllocator* allocator, std::size_t size) {
  ++hostOf(allocator).liveBlocks;
  return std::malloc(size);
}

void free(VNAllocator* allocator, void* block) {
  if (block != nullptr) --hostOf(allocator).liveBlocks;
  std::free(block);
}

// Knows one conversion: the letters change to lower case.
void convertText(tag_TPVAPIServices* services, tagVNCharSet from, VNTextDescriptor* input,
                 VNTextDescriptor* output, int) {
  Host& host = hostOf(services);
  host.convertedFrom = from;
  host.convertedTo = services->targetCharSet;
  output->length = input->length;
  if (output->data == nullptr) return;
  std::transform(input->data, input->data + input->length, output->data,
                 [](unsigned char byte) { return static_cast<unsigned char>(byte | 0x20); });
}

}  // namespace

Stream::Stream(std::string bytes) : _VPTPIOobj{}, contents(std::move(bytes)) {
  Open = consumer::open;
  Read = consumer::read;
  Write = consumer::write;
  Seek = consumer::seek;
  Tell = consumer::tell;
  Close = consumer::close;
}

Host::Host() : tag_TPVAPIServices{} {
  LoadDll = loadDll;
  GetDllSymbol = getDllSymbol;
  FreeDll = freeDll;
  OpenFile = openFile;
  allocator.Alloc = alloc;
  allocator.Free = free;
  ConvertText = convertText;
}

}  // namespace dorvex::consumer
