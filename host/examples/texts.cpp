// Prints the texts of one document: texts MODULE DOCUMENT

#include <cstdlib>
#include <iostream>

#include "dorvex/host.h"

int main(int count, char** arguments) {
  if (count != 3) {
    std::cerr << "usage: " << arguments[0] << " MODULE DOCUMENT\n";
    return 2;
  }
  dorvex::HostOptions options;
  options.module = arguments[1];
  const dorvex::Host host(options);

  dorvex::Document document = host.open(dorvex::Input::path(arguments[2]));
  for (const std::string& text : document.texts()) std::cout << text << '\n';

  const dorvex::Result& result = document.result();
  if (result.status == dorvex::Status::kOk) return EXIT_SUCCESS;
  std::cerr << arguments[2] << ": " << describe(result) << '\n';
  return EXIT_FAILURE;
}
