// The tables of functions of a test's host, from a class that has all of them.
#pragma once

#include <cstring>

#include "Readers/hostapi/host_records.h"

namespace dorvex::testing {

// What fills bytes that nobody has set.
inline constexpr int kDirty = 0xA5;

// Sets the services that the reader may use to those of Slots. The bytes between
// them stay dirt, so that whoever uses one of those is found out. Services is a
// tag_TPVAPIServices that knows its host.
template <typename Slots, typename Services, typename Host>
void fillServices(Services& services, Host& host) {
  std::memset(static_cast<tag_TPVAPIServices*>(&services), kDirty, sizeof(tag_TPVAPIServices));
  services.host = &host;
  services.LoadDll = Slots::loadDll;
  services.GetDllSymbol = Slots::getDllSymbol;
  services.FreeDll = Slots::freeDll;
  services.OpenFile = Slots::openFile;
  services.allocator = {&host, Slots::alloc, Slots::release};
  services.ConvertText = nullptr;
  services.targetCharSet = 0;
  services.lastError = 0;
}

// Sets the functions of an I/O object.
template <typename Slots>
void fillObject(_VPTPIOobj& io) {
  io.Open = Slots::open;
  io.Read = Slots::read;
  io.Write = Slots::write;
  io.Seek = Slots::seek;
  io.Tell = Slots::tell;
  io.Close = Slots::close;
}

}  // namespace dorvex::testing
