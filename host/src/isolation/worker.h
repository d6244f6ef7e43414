// What a worker process does: it reads one document after the other, confined,
// within the limits, and sends what comes out through its channel.
#pragma once

#include <memory>
#include <string>

#include "bytes/unique_fd.h"
#include "dorvex/host.h"
#include "reading/content_module.h"
#include "reading/reader_module.h"

namespace dorvex {

// The modules ready for work, or why they are not.
struct WarmModule {
  std::shared_ptr<ReaderModule> module;
  std::shared_ptr<ContentModule> content;  // where documents are rendered
  std::string error;
  void* container = nullptr;  // null where it cannot be loaded; the reader tells why
  bool triedLibzip = false;
};

// Loads the reader module and the container module for good, and the content module
// where documents are rendered, and runs the
// reader once over a package without members, so that no worker does again what
// is done once in a process.
WarmModule warmUp(const HostOptions& options);

// Loads libzip, too, which few documents need and which takes longer than all the rest.
void warmUpLibzip(WarmModule& warm);

// Serves the channel until its other end is gone.
[[noreturn]] void runWorker(UniqueFd channel, const HostOptions& options, const WarmModule& warm);

}  // namespace dorvex
