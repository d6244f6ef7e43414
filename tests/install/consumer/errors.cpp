// The error family, thrown by the module and caught here, and the other way round.
#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/vennik/vnexcept/vnexcept.h"

namespace dorvex::consumer {
namespace {

using namespace vn::except;

std::string text(int number) {
  return "Vennik error " + std::to_string(number) + (number == 1 ? ": dll not found" : "");
}

void checkWhatIsCaught(const std::exception& error, int number, const std::type_info& type) {
  EXPECT_EQ(typeid(error), type);
  EXPECT_EQ(error.what(), text(number));
  EXPECT_EQ(dynamic_cast<const vennik_error&>(error).code(), number);
}

// Catches what the module throws as one type of handler.
template <typename Handler>
void expectCaughtAs(int number, const std::type_info& type) {
  try {
    throw_on_error(number);
    ADD_FAILURE() << number << " threw nothing";
  } catch (const Handler& error) {
    checkWhatIsCaught(error, number, type);
  } catch (...) {
    ADD_FAILURE() << number << " passed the handler";
  }
}

template <typename Error>
void expectCaughtInEveryWay(int number) {
  expectCaughtAs<Error>(number, typeid(Error));
  expectCaughtAs<vennik_error>(number, typeid(Error));
  expectCaughtAs<std::exception>(number, typeid(Error));
}

TEST(ErrorFamily, IsCaughtByTypeByItsBaseAndAsStandardException) {
  int classes = 0;
#define EXPECT_CAUGHT(number, name) expectCaughtInEveryWay<name>(number), ++classes;
  VN_ERROR_CODES(EXPECT_CAUGHT, EXPECT_CAUGHT)
#undef EXPECT_CAUGHT
  EXPECT_EQ(classes, 48);
}

TEST(ErrorFamily, IsMadeAndCopiedHere) {
#define EXPECT_MADE(number, name)                  \
  {                                                \
    const name made;                               \
    const name copy(made); /* NOLINT: the copy */  \
    checkWhatIsCaught(copy, number, typeid(name)); \
  }
  VN_ERROR_CODES(EXPECT_MADE, EXPECT_MADE)
#undef EXPECT_MADE
  EXPECT_STREQ(reader_init_error("unzip").what(), "Vennik error 12: unzip");
  EXPECT_STREQ(vennik_error(35).what(), "Vennik error 35");
  EXPECT_STREQ(vennik_error(35, "detail").what(), "Vennik error 35: detail");
}

TEST(ErrorFamily, HasNoClassForOtherNumbers) {
  EXPECT_NO_THROW(throw_on_error(0));
  for (int number = -2; number <= 60; ++number) {
    const bool hasClass = number >= 1 && number <= 49 && number != 35;
    if (number == 0 || hasClass) continue;
    try {
      throw_on_error(number);
      ADD_FAILURE() << number << " threw nothing";
    } catch (const general_error& error) {
      checkWhatIsCaught(error, 6, typeid(general_error));
    }
  }
}

TEST(ErrorFamily, PassesThroughTheModule) {
  const std::vector<unsigned char> archive = {6, 8, 1, 18, 2, 8, 1};
  vn::iwork13::MessageMap map;
  EXPECT_THROW(
      map.populate(archive, [](int) -> google::protobuf::Message* { throw zero_file_error(); }),
      zero_file_error);
}

}  // namespace
}  // namespace dorvex::consumer
