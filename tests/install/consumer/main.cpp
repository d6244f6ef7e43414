// consumer DOCUMENT MEMBER MODULE_FOLDER: calls everything that the reader
// module exports and checks what comes back. Then stops the module.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "Readers/hostapi/reader_exports.h"
#include "TSPMessages.pb.h"
#include "documents.h"

namespace {

// The protobuf of this program, which must not notice what the module's does.
bool ownProtobufWorks() {
  TSP::Reference written;
  written.set_identifier(7);
  TSP::Reference read;
  return read.ParseFromString(written.SerializeAsString()) && read.identifier() == 7 &&
         written.ShortDebugString() == "identifier: 7" &&
         TSP::Reference::descriptor()->full_name() == "TSP.Reference";
}

}  // namespace

int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  if (count != 4) {
    std::cerr << "usage: " << arguments[0] << " DOCUMENT MEMBER MODULE_FOLDER\n";
    return 2;
  }
  dorvex::consumer::documents = {arguments[1], arguments[2], arguments[3]};
  if (RUN_ALL_TESTS() != 0 || !ownProtobufWorks()) return EXIT_FAILURE;

  // All of them shut the module's protobuf down; only the first has to. The
  // loader calls fini once more at the end of the process.
  vnDllShutdown();
  vn_iwork13_ShutDownProtobuf();
  fini();
  if (!ownProtobufWorks()) {
    std::cerr << "the module's shutdown reached the protobuf of this program\n";
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
