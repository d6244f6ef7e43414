// The printed form: protobuf's own text parser must read it back, and escapes
// must be undone by protobuf's own decoder.
//
// Input: one byte, whose registry; one word, the type id; the payload, which
// also stands for a value.
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/strutil.h>
#include <google/protobuf/text_format.h>

#include <algorithm>
#include <memory>
#include <string>

#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/printed_form.h"
#include "Tools/formats/vniwork13/registry.h"
#include "fuzz_input.h"

namespace dorvex::fuzz {
namespace {

using google::protobuf::Message;
using google::protobuf::TextFormat;
using vn::iwork13::MessageFactory;

constexpr MessageFactory kFactories[] = {
    vn::iwork13::getPagesMessage, vn::iwork13::getKeynoteMessage, vn::iwork13::getNumbersMessage};

// The parser would write its errors to the log.
struct Silence : google::protobuf::io::ErrorCollector {
  void AddError(int, google::protobuf::io::ColumnNumber, const std::string&) override {}
};

void checkEscapes(const std::string& value) {
  std::string escaped;
  vn::iwork13::appendEscaped(value, escaped);
  require(std::ranges::none_of(escaped, [](char c) { return (c >= 0 && c < 0x20) || c == 0x7F; }),
          "a printed value has no control bytes");
  require(google::protobuf::UnescapeCEscapeString(escaped) == value, "escapes can be undone");
}

void checkMessage(Message& message, std::string_view payload) {
  google::protobuf::io::CodedInputStream input(
      reinterpret_cast<const unsigned char*>(payload.data()), static_cast<int>(payload.size()));
  vn::iwork13::parseMessage(message, input);  // what was read before a failure counts too
  const std::string whole = vn::iwork13::printMessage(message);
  require(whole.empty() || whole.back() == '\n', "a printed message ends in a line feed");

  // The text parser knows no numbers in place of names.
  message.DiscardUnknownFields();
  const std::string printed = vn::iwork13::printMessage(message);
  Silence silence;
  TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  parser.RecordErrorsTo(&silence);
  const std::unique_ptr<Message> readBack(message.New());
  require(parser.ParseFromString(printed, readBack.get()), "a printed message can be read back");
  require(vn::iwork13::printMessage(*readBack) == printed, "a message read back prints alike");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const auto factory = kFactories[input.byte() % std::size(kFactories)];
  const std::unique_ptr<Message> message(factory(input.word()));
  const std::string_view payload = input.rest();
  checkEscapes(std::string(payload));
  if (message != nullptr) checkMessage(*message, payload);
  return 0;
}
