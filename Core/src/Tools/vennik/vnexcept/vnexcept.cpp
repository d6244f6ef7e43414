#include "Tools/vennik/vnexcept/vnexcept.h"

#include <sstream>
#include <utility>

namespace vn::except {
namespace {

std::string describe(int code) {
  std::ostringstream stream;
  // Without this the stream swallows std::bad_alloc and leaves the text cut.
  stream.exceptions(std::ios::badbit);
  stream << "Vennik error " << code;
  return std::move(stream).str();
}

}  // namespace

vennik_error::vennik_error(int code) : message_(describe(code)), code_(code) {}

vennik_error::vennik_error(int code, std::string detail)
    : message_(describe(code) + ": " + detail), code_(code) {}

#define VN_DEFINE_PLAIN_ERROR(number, name) \
  name::name() : vennik_error(number) {}
#define VN_DEFINED_BELOW(number, name)
VN_ERROR_CODES(VN_DEFINE_PLAIN_ERROR, VN_DEFINED_BELOW)
#undef VN_DEFINE_PLAIN_ERROR
#undef VN_DEFINED_BELOW

dll_not_found_error::dll_not_found_error() : vennik_error(1, "dll not found") {}

reader_init_error::reader_init_error() : vennik_error(12) {}

reader_init_error::reader_init_error(const std::string& detail) : vennik_error(12, detail) {}

void throw_on_error(int code) {
  switch (code) {
    case 0:
      return;
#define VN_THROW_BY_NUMBER(number, name) \
  case number:                           \
    throw name();
      VN_ERROR_CODES(VN_THROW_BY_NUMBER, VN_THROW_BY_NUMBER)
#undef VN_THROW_BY_NUMBER
    default:
      throw general_error();
  }
}

}  // namespace vn::except
