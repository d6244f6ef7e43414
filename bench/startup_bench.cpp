// A process that loads a reader module, reads a document with it if one is given,
// and unloads it:
//
//   startup_bench READER CONTAINER [DOCUMENT]
#include <dlfcn.h>

#include <cstdio>
#include <span>

#include "Readers/hostapi/reader_interface.h"
#include "support/bare_host.h"
#include "support/package_writer.h"
#include "support/reader_session.h"

int main(int argc, char** argv) {
  const std::span arguments(argv, static_cast<std::size_t>(argc));
  if (arguments.size() < 3) {
    static_cast<void>(std::fputs("usage: startup_bench READER CONTAINER [DOCUMENT]\n", stderr));
    return 2;
  }
  void* module = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return 1;
  int result = 0;
  if (arguments.size() > 3) {
    ReaderInterface reader{};
    reinterpret_cast<GetReaderInterfaceFunction>(dlsym(module, "dorvexGetReaderInterface"))(
        &reader);
    dorvex::testing::BareHost host;
    host.useContainerModule(arguments[2]);
    result = dorvex::testing::pump(
                 reader, host, &host.addDocument(dorvex::testing::readFile(arguments[3])), 65536)
                 .result();
  }
  reinterpret_cast<DllShutdownFunction>(dlsym(module, "vnDllShutdown"))();
  dlclose(module);
  return result;
}
