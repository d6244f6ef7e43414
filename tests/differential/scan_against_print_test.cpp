// What the scanner says of a payload against what parsing, printing and scraping
// it gives.
#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>

#include <deque>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <tuple>

#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/message_scanner.h"
#include "Tools/formats/vniwork13/printed_form.h"
#include "Tools/formats/vniwork13/registered_class.h"
#include "Tools/formats/vniwork13/registry.h"
#include "random_message.h"
#include "support/wire_writer.h"

namespace dorvex::testing {
namespace {

using google::protobuf::Message;
using google::protobuf::io::CodedInputStream;
using vn::iwork13::RegisteredClass;
using vn::iwork13::RegistryView;
using vn::iwork13::SweptName;
using vn::iwork13::SweptValue;
using Values = std::list<std::string>;

constexpr int kHighestTypeId = 12100;

std::optional<Values> scan(const RegisteredClass& messageClass, const std::string& payload) {
  std::vector<SweptValue> found;
  vn::iwork13::MessageScanner scanner;
  if (!scanner.scan(messageClass.layout(), payload, found)) return std::nullopt;
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

using Scanned = std::optional<std::vector<std::tuple<std::uint32_t, std::uint32_t, SweptName>>>;

Scanned scanWith(vn::iwork13::MessageScanner& scanner, const RegisteredClass& messageClass,
                 const std::string& payload) {
  std::vector<SweptValue> found;
  if (!scanner.scan(messageClass.layout(), payload, found)) return std::nullopt;
  Scanned scanned(std::in_place);
  for (const auto& [offset, length, name] : found) scanned->emplace_back(offset, length, name);
  return scanned;
}

// Half of them repeat what others have said.
std::deque<std::string> repeatingPayloads(const Message& prototype, RandomMessages& random) {
  std::deque<std::string> payloads;  // they stay where they are
  for (int round = 0; round < 500; ++round) {
    payloads.push_back(random.payload(prototype));
    payloads.push_back(payloads.back() + random.damagedPayload(prototype));
    payloads.push_back(payloads[payloads.size() - 2]);
  }
  return payloads;
}

// A scanner of its own for each payload, and one that has seen all the others, say the
// same.
TEST(MessageScanner, FindsNothingElseInWhatItHasSeenBefore) {
  RandomMessages random(5);
  int certain = 0;
  for (const int type : {401, 2001, 2022, 3016, 5022, 6001, 6002, 6005}) {
    const RegisteredClass& messageClass = *RegistryView(vn::iwork13::getPagesMessage).find(type);
    const std::unique_ptr<Message> prototype(messageClass.create());
    vn::iwork13::MessageScanner experienced;
    const auto payloads = repeatingPayloads(*prototype, random);
    for (const std::string& payload : payloads) {
      vn::iwork13::MessageScanner fresh;
      const Scanned expected = scanWith(fresh, messageClass, payload);
      EXPECT_EQ(scanWith(experienced, messageClass, payload), expected) << type;
      certain += expected ? 1 : 0;
    }
  }
  EXPECT_GT(certain, 500);
}

// A message without swept fields that can lie in itself, with the field that it lies in.
struct Recursive {
  vn::iwork13::MessageLayout layout;
  std::uint32_t field = 0;
};

// Among all messages that lie in those of the registry.
Recursive findRecursive() {
  std::vector<vn::iwork13::MessageLayout> layouts;
  for (int type = 0; type < kHighestTypeId; ++type) {
    const RegisteredClass* found = RegistryView(vn::iwork13::getPagesMessage).find(type);
    if (found != nullptr) layouts.push_back(found->layout());
  }
  std::set<std::uint16_t> seen;
  for (std::size_t next = 0; next < layouts.size(); ++next) {
    const auto layout = layouts[next];
    for (const auto& field : layout) {
      if (field.kind != vn::iwork13::FieldKind::kMessage) continue;
      const auto embedded = vn::iwork13::layoutAt(field.typeIndex);
      if (embedded.data() == layout.data() && !field.leadsToSwept) return {layout, field.number};
      if (seen.insert(field.typeIndex).second) layouts.push_back(embedded);
    }
  }
  return {};
}

std::string nested(std::uint32_t field, int levels) {
  Wire message;
  for (int level = 0; level < levels; ++level) message = Wire().message(field, message);
  return message.str();
}

TEST(MessageScanner, TakesNothingForKnownWhereItLiesTooDeep) {
  const auto [layout, field] = findRecursive();
  ASSERT_NE(field, 0U);
  const std::string shallow = nested(field, 60);
  const std::string deep = nested(field, vn::iwork13::kRecursionLimit);
  const std::string tooDeep = nested(field, vn::iwork13::kRecursionLimit + 1);
  vn::iwork13::MessageScanner scanner;
  std::vector<bool> isCertain;
  std::vector<SweptValue> none;
  for (const std::string* payload : {&shallow, &tooDeep, &shallow, &deep, &tooDeep})
    isCertain.push_back(scanner.scan(layout, *payload, none));
  EXPECT_EQ(isCertain, (std::vector<bool>{true, false, true, true, false}));
}

}  // namespace
}  // namespace dorvex::testing
