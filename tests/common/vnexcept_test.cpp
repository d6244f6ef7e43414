#include "Tools/vennik/vnexcept/vnexcept.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <type_traits>
#include <typeinfo>

#include "support/failing_allocation.h"

namespace dorvex::testing::vnexcept_test {
namespace {

using namespace vn::except;

// What a class of the family must be, written out by hand: the contract that the
// list in the header is checked against.
struct ClassRow {
  int number;
  const char* name;
  void (*expectThrown)(int number, const std::string& text);
  std::string text;
};

template <typename Error>
void expectThrown(int number, const std::string& text) {
  static_assert(std::is_base_of_v<vennik_error, Error>);
  static_assert(sizeof(Error) == sizeof(vennik_error), "no class adds a field");
  static_assert(std::is_copy_constructible_v<Error> && std::is_copy_assignable_v<Error>);
  static_assert(std::is_default_constructible_v<Error>);
  SCOPED_TRACE(number);

  try {
    throw_on_error(number);
    FAIL() << "returned";
  } catch (const Error& caught) {
    const Error error = caught;  // a copy keeps what it is
    EXPECT_EQ(typeid(error), typeid(Error));
    EXPECT_EQ(error.code(), number);
    EXPECT_EQ(error.what(), text);
  } catch (...) {
    FAIL() << "another class";
  }
  try {
    throw Error();
  } catch (const vennik_error& error) {
    EXPECT_EQ(typeid(error), typeid(Error));
    EXPECT_EQ(error.code(), number);
    EXPECT_EQ(error.what(), text);
  }
  try {
    throw_on_error(number);
  } catch (const std::exception& error) {
    EXPECT_EQ(typeid(error), typeid(Error));
    EXPECT_EQ(error.what(), text);
  }
}

std::string bareText(int number) { return "Vennik error " + std::to_string(number); }

#define ROW(number, name) \
  { number, #name, expectThrown<name>, bareText(number) }

const std::vector<ClassRow>& classRows() {
  static const std::vector<ClassRow> rows{
      {1, "dll_not_found_error", expectThrown<dll_not_found_error>,
       "Vennik error 1: dll not found"},
      ROW(2, out_of_core_error),
      ROW(3, process_cancelled_error),
      ROW(4, bad_input_stream_error),
      ROW(5, bad_output_type_error),
      ROW(6, general_error),
      ROW(7, format_not_supported_error),
      ROW(8, password_protected_error),
      ROW(9, adobe_document_server_not_found_error),
      ROW(10, autodet_fail_error),
      ROW(11, autodet_no_format_error),
      ROW(12, reader_init_error),
      ROW(13, no_reader_error),
      ROW(14, create_output_file_failed_error),
      ROW(15, create_tempfile_error),
      ROW(16, writing_output_file_error),
      ROW(17, create_process_failed_error),
      ROW(18, wait_for_child_error),
      ROW(19, child_timeout_error),
      ROW(20, archive_file_not_found_error),
      ROW(21, archive_fatal_error),
      ROW(22, open_stream_failure_error),
      ROW(23, interface_function_not_found_error),
      ROW(24, input_file_not_found_error),
      ROW(25, open_output_file_failed),
      ROW(26, memory_leak_error),
      ROW(27, memory_overwrite_error),
      ROW(28, general_protection_fault_error),
      ROW(29, oop_core_error),
      ROW(30, vnoop_log_failed_error),
      ROW(31, over_nested_file_limit_error),
      ROW(32, pst_access_failed_error),
      ROW(33, password_required_error),
      ROW(34, invalid_arguments),
      ROW(36, oop_bad_config_error),
      ROW(37, oop_broken_pipe_error),
      ROW(38, oop_pipe_OEF_error),
      ROW(39, IPC_timeout_error),
      ROW(40, invalid_oop_driver_signature_error),
      ROW(41, invalid_oop_service_signature_error),
      ROW(42, zero_file_error),
      ROW(43, compression_not_supported_error),
      ROW(44, no_templates_error),
      ROW(45, no_main_template_error),
      ROW(46, invalid_template_error),
      ROW(47, template_error),
      ROW(48, is_directory_error),
      ROW(49, rms_decryption_failed_error),
  };
  return rows;
}

#undef ROW

TEST(ThrowOnError, ReturnsForSuccess) { EXPECT_NO_THROW(throw_on_error(0)); }

TEST(ThrowOnError, ThrowsTheClassOfEveryNumber) {
  ASSERT_EQ(classRows().size(), 48U);
  for (const ClassRow& row : classRows()) row.expectThrown(row.number, row.text);
}

TEST(ThrowOnError, TurnsEveryOtherNumberIntoGeneralErrorAndKeepsNothingOfIt) {
  std::set<int> known{0};
  for (const ClassRow& row : classRows()) known.insert(row.number);
  std::vector<int> others{-1000000, 51, 60, 255, 256 + 4, 0x7FFFFFFF, -0x7FFFFFFF - 1};
  for (int number = -2; number <= 60; ++number) {
    if (!known.contains(number)) others.push_back(number);
  }
  for (const int number : others) {
    SCOPED_TRACE(number);
    try {
      throw_on_error(number);
      ADD_FAILURE() << "returned";
    } catch (const vennik_error& error) {
      EXPECT_EQ(typeid(error), typeid(general_error));
      EXPECT_EQ(error.code(), 6);
      EXPECT_STREQ(error.what(), "Vennik error 6");
    }
  }
}

TEST(ErrorCodes, ListTheSameNumbersAndNamesAsTheContract) {
  struct Listed {
    int number;
    const char* name;
  };
#define LISTED(number, name) {number, #name},
  const std::vector<Listed> listed{VN_ERROR_CODES(LISTED, LISTED)};
#undef LISTED
  ASSERT_EQ(listed.size(), classRows().size());
  for (std::size_t i = 0; i < listed.size(); ++i) {
    EXPECT_EQ(listed[i].number, classRows()[i].number);
    EXPECT_STREQ(listed[i].name, classRows()[i].name);
  }
}

TEST(VennikError, SaysItsNumberInDecimal) {
  EXPECT_STREQ(vennik_error(4).what(), "Vennik error 4");
  EXPECT_STREQ(vennik_error(0).what(), "Vennik error 0");
  EXPECT_STREQ(vennik_error(-17).what(), "Vennik error -17");
  EXPECT_EQ(vennik_error(-17).code(), -17);
}

TEST(VennikError, AddsTheDetailBehindAColonAndABlank) {
  const vennik_error error(12, "detail");
  EXPECT_STREQ(error.what(), "Vennik error 12: detail");
  EXPECT_EQ(error.code(), 12);
}

TEST(VennikError, HoldsTheTextBeforeTheNumber) {
  static_assert(sizeof(vennik_error) == sizeof(void*) + sizeof(std::string) + 8);
  const vennik_error error(41, "a detail that is too long for the string itself");
  int stored = 0;
  const auto* bytes = reinterpret_cast<const unsigned char*>(&error);
  std::memcpy(&stored, bytes + sizeof(void*) + sizeof(std::string), sizeof stored);
  EXPECT_EQ(stored, 41);
}

TEST(VennikError, OwnsItsTextInEveryCopy) {
  const char* text = nullptr;
  auto copy = vennik_error(1);
  {
    const vennik_error original(7, std::string(100, 'x'));
    text = original.what();
    copy = original;
  }
  EXPECT_NE(copy.what(), text);
  EXPECT_EQ(copy.what(), "Vennik error 7: " + std::string(100, 'x'));
  EXPECT_EQ(copy.code(), 7);
}

TEST(VennikError, LetsAFailedAllocationOutInPlaceOfTheErrorThatWasMeant) {
  const std::string detail = "some detail that does not fit into the string object";
  std::string text;
  text.reserve(100);
  EXPECT_GE(failEachAllocation([&] {
              try {
                throw reader_init_error(detail);
              } catch (const reader_init_error& error) {
                text = error.what();
              }
            }),
            2);
  EXPECT_EQ(text, "Vennik error 12: " + detail);
}

TEST(VennikError, LetsAFailedAllocationOfItsTextOutToo) {
  bool outOfMemory = false;
  try {
    const FailingAllocation failing(0);
    throw vennik_error(-2147483647);  // too long for the string object
  } catch (const std::bad_alloc&) {
    outOfMemory = true;
  } catch (const vennik_error&) {
  }
  EXPECT_TRUE(outOfMemory) << "and not an error with half a text";
}

TEST(ReaderInitError, KeepsColonAndBlankForAnEmptyDetail) {
  EXPECT_STREQ(reader_init_error("").what(), "Vennik error 12: ");
  EXPECT_EQ(reader_init_error("").code(), 12);
}

TEST(ReaderInitError, SaysTheDetailOfItsCaller) {
  EXPECT_STREQ(reader_init_error("no unzip.so").what(), "Vennik error 12: no unzip.so");
}

TEST(ReaderInitError, HasABareFormWithoutColon) {
  EXPECT_STREQ(reader_init_error().what(), "Vennik error 12");
}

TEST(DllNotFoundError, HasNoBareForm) {
  EXPECT_STREQ(dll_not_found_error().what(), "Vennik error 1: dll not found");
}

}  // namespace
}  // namespace dorvex::testing::vnexcept_test
