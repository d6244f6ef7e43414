// What the scanner says of a payload against what parsing, printing and scraping
// it gives.
#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <optional>

#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/message_scanner.h"
#include "Tools/formats/vniwork13/printed_form.h"
#include "Tools/formats/vniwork13/registered_class.h"
#include "Tools/formats/vniwork13/registry.h"
#include "random_message.h"

namespace dorvex::testing {
namespace {

using google::protobuf::Message;
using google::protobuf::io::CodedInputStream;
using vn::iwork13::RegisteredClass;
using vn::iwork13::RegistryView;
using vn::iwork13::SweptValue;
using Values = std::list<std::string>;

constexpr int kHighestTypeId = 12100;

std::optional<Values> scan(const RegisteredClass& messageClass, const std::string& payload) {
  std::vector<SweptValue> found;
  if (!vn::iwork13::scanPayload(messageClass.layout(), payload, found)) return std::nullopt;
  Values values;
  for (const SweptValue& value : found) {
    std::string text;
    vn::iwork13::appendEscaped(std::string_view(payload).substr(value.offset, value.length), text);
    convertAllOctalCodesToAscii(text);
    replaceAllLFsAndTabs(text);
    removeFirstCharOfPattern(text, "\\'");
    removeFirstCharOfPattern(text, "\\\"");
    values.push_back(text);
  }
  return values;
}

// Null unless the payload parses to its exact end, by the rules alone.
std::optional<Values> print(const RegisteredClass& messageClass, const std::string& payload) {
  const std::unique_ptr<Message> message(messageClass.create());
  CodedInputStream input(reinterpret_cast<const unsigned char*>(payload.data()),
                         static_cast<int>(payload.size()));
  if (!vn::iwork13::parseMessage(*message, input) ||
      input.CurrentPosition() != static_cast<int>(payload.size()))
    return std::nullopt;
  const std::string printed = vn::iwork13::printMessage(*message);
  Values values;
  extractFields(values, printed, "text");
  extractFields(values, printed, "string");
  return values;
}

struct Counts {
  int payloads = 0;
  int certain = 0;
  int withValues = 0;
};

void compare(const RegisteredClass& messageClass, const std::string& payload, Counts& counts) {
  ++counts.payloads;
  const auto scanned = scan(messageClass, payload);
  if (!scanned) return;  // it would be parsed and printed
  ++counts.certain;
  counts.withValues += scanned->empty() ? 0 : 1;
  EXPECT_EQ(print(messageClass, payload), scanned) << "layout " << messageClass.layoutIndex;
}

template <typename MakePayload>
Counts compareAllTypes(int rounds, MakePayload makePayload) {
  Counts counts;
  for (int type = 0; type < kHighestTypeId; ++type) {
    for (const auto factory : {vn::iwork13::getPagesMessage, vn::iwork13::getKeynoteMessage,
                               vn::iwork13::getNumbersMessage}) {
      const RegisteredClass* messageClass = RegistryView(factory).find(type);
      if (messageClass == nullptr) break;
      const std::unique_ptr<Message> prototype(messageClass->create());
      for (int round = 0; round < rounds; ++round)
        compare(*messageClass, makePayload(*prototype), counts);
    }
  }
  return counts;
}

TEST(ScanAgainstPrint, AgreesOnGeneratedMessagesOfEveryRegisteredType) {
  RandomMessages random(13);
  const Counts counts = compareAllTypes(
      200, [&random](const Message& prototype) { return random.payload(prototype); });
  // The comparison means something only if the scanner is often certain.
  EXPECT_GT(counts.certain, counts.payloads / 8);
  EXPECT_GT(counts.withValues, 100);
}

TEST(ScanAgainstPrint, AgreesOnDamagedMessagesOfEveryRegisteredType) {
  RandomMessages random(2013);
  const Counts counts = compareAllTypes(
      200, [&random](const Message& prototype) { return random.damagedPayload(prototype); });
  EXPECT_GT(counts.certain, counts.payloads / 16);
  EXPECT_LT(counts.certain, counts.payloads);
}

TEST(ScanAgainstPrint, AgreesOnMessagesThatHoldText) {
  RandomMessages random(7);
  Counts counts;
  for (const int type :
       {2001, 3056, 6005, 2101, 2107, 2116, 2118, 2119, 2206, 2207, 10110, 10113}) {
    const RegisteredClass& messageClass = *RegistryView(vn::iwork13::getPagesMessage).find(type);
    const std::unique_ptr<Message> prototype(messageClass.create());
    for (int round = 0; round < 5000; ++round)
      compare(messageClass, random.payload(*prototype), counts);
  }
  EXPECT_GT(counts.withValues, 500);
}

}  // namespace
}  // namespace dorvex::testing
