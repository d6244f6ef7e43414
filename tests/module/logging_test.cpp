// The module is silent.
#include <gtest/gtest.h>

#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing::logging_test {
namespace {

TEST(Logging, SaysNothingOfInvalidUtf8) {
  BareHost host;
  const std::string invalid = "bad \xFF\xC0\x80\xED\xA0\x80 end";
  const std::string bytes =
      zip({{"Index/Document.iwa",
            iwa({storage(1, {invalid}), comment(2, invalid),
                 // A string field that is built and printed, not scanned.
                 object(3, kStorageType, Wire().bytes(3, invalid).bytes(3, "a text: "))})}});
  ::testing::internal::CaptureStderr();
  ::testing::internal::CaptureStdout();
  const Pumped pumped = pump(theReader().interface(), host, &host.addDocument(bytes));
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  ASSERT_EQ(pumped.result(), 0);
  EXPECT_EQ(textsOf(pumped.stream())[0], invalid);  // bytes go out as they are
}

TEST(Logging, SaysNothingOfDamage) {
  BareHost host;
  const std::string bytes =
      zip({{"Index/Document.iwa", damagedChunk()},
           {"Index/Slide.iwa", iwa({object(1, kStorageType, "\x36\x1A\xFF"), storage(2, {"x"})})}});
  ::testing::internal::CaptureStderr();
  pump(theReader().interface(), host, &host.addDocument(bytes));
  pump(theReader().interface(), host, &host.addDocument("no zip"));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace dorvex::testing::logging_test
