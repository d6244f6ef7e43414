// Links the reader module with nothing but what pkg-config says.

#include <cstdlib>
#include <iostream>

#include "Tools/vennik/vnexcept/vnexcept.h"
#include "Tools/vnstring/vnstring.h"

int main() {
  try {
    vn::except::throw_on_error(4);
  } catch (const vn::except::bad_input_stream_error& error) {
    std::cout << vn::string::asciiStrToUpper(error.what()) << '\n';
    return EXIT_SUCCESS;
  }
  return EXIT_FAILURE;
}
