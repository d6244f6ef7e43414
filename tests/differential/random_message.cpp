#include "random_message.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/unknown_field_set.h>

#include <iterator>
#include <vector>

namespace dorvex::testing {

using google::protobuf::DescriptorPool;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::UnknownFieldSet;

std::string RandomMessages::text() {
  static const std::string kTexts[] = {
      "plain",
      "See text: ",
      "See string: ",
      "text: ",
      "string: ",
      " text: ",
      " string: ",
      "context: ",
      "a text: b",
      "\ttext: ",
      "\ntext: ",
      "",
      "it's \"quoted\"",
      "back\\slash",
      "\\001n",
      "C:\\temp\\new",
      "\x01\x02\x07",
      "caf\xC3\xA9",
      "\xEF\xBF\xBC text: ",
      "\xE2\x80\x98q\xE2\x80\x99",
      "line\nfeed",
      "bad \xFF\x80",
      "\\\" text: ",
      "text: \" text: ",
      "nul\0 string: ",
      "\r\v\f\x7F",
      "\xFFtext: ",
      "x text:  string: ",
  };
  return kTexts[random_() % std::size(kTexts)];
}

void RandomMessages::addUnknown(UnknownFieldSet& unknown, int depth) {
  const int number =
      oneIn(4) ? static_cast<int>(random_() % 20 + 1) : static_cast<int>(random_() % 3000 + 4000);
  switch (random_() % 5) {
    case 0:
      unknown.AddVarint(number, random_());
      break;
    case 1:
      unknown.AddFixed32(number, static_cast<std::uint32_t>(random_()));
      break;
    case 2:
      unknown.AddLengthDelimited(number, text());
      break;
    case 3:
      if (depth > 0) {
        UnknownFieldSet nested;
        addUnknown(nested, depth - 1);
        nested.SerializeToString(unknown.AddLengthDelimited(number));
      }
      break;
    default:
      if (depth > 0 && oneIn(3)) addUnknown(*unknown.AddGroup(number), depth - 1);
  }
}

void RandomMessages::setField(Message& message, const FieldDescriptor& field, int depth) {
  const Reflection& reflection = *message.GetReflection();
  const bool repeated = field.is_repeated();
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
      repeated ? reflection.AddString(&message, &field, text())
               : reflection.SetString(&message, &field, text());
      break;
    case FieldDescriptor::CPPTYPE_MESSAGE:
      if (depth > 0)
        fill(repeated ? *reflection.AddMessage(&message, &field)
                      : *reflection.MutableMessage(&message, &field),
             depth - 1);
      break;
    case FieldDescriptor::CPPTYPE_ENUM: {
      const int count = field.enum_type()->value_count();
      const int value =
          field.enum_type()->value(static_cast<int>(random_() % 1000) % count)->number();
      repeated ? reflection.AddEnumValue(&message, &field, value)
               : reflection.SetEnumValue(&message, &field, value);
      break;
    }
    case FieldDescriptor::CPPTYPE_BOOL:
      repeated ? reflection.AddBool(&message, &field, oneIn(2))
               : reflection.SetBool(&message, &field, oneIn(2));
      break;
    case FieldDescriptor::CPPTYPE_UINT32:
      repeated ? reflection.AddUInt32(&message, &field, static_cast<std::uint32_t>(random_()))
               : reflection.SetUInt32(&message, &field, static_cast<std::uint32_t>(random_()));
      break;
    case FieldDescriptor::CPPTYPE_DOUBLE:
      repeated ? reflection.AddDouble(&message, &field, 0.5 * static_cast<double>(random_()))
               : reflection.SetDouble(&message, &field, 0.5 * static_cast<double>(random_()));
      break;
    default:
      break;  // the remaining numbers are the same to the sweep
  }
}

void RandomMessages::fill(Message& message, int depth) {
  const auto* descriptor = message.GetDescriptor();
  std::vector<const FieldDescriptor*> fields;
  DescriptorPool::generated_pool()->FindAllExtensions(descriptor, &fields);
  for (int i = 0; i < descriptor->field_count(); ++i) fields.push_back(descriptor->field(i));
  const unsigned sparseness = static_cast<unsigned>(random_() % 6 + fields.size() / 8 + 1);
  for (const FieldDescriptor* field : fields) {
    if (!oneIn(sparseness)) continue;
    const int times = field->is_repeated() ? static_cast<int>(random_() % 3 + 1) : 1;
    for (int i = 0; i < times; ++i) setField(message, *field, depth);
  }
  if (oneIn(12)) addUnknown(*message.GetReflection()->MutableUnknownFields(&message), 3);
}

std::string RandomMessages::payload(const Message& prototype) {
  std::string bytes;
  do {
    const std::unique_ptr<Message> message(prototype.New());
    fill(*message, 4);
    message->AppendPartialToString(&bytes);
  } while (oneIn(8));
  return bytes;
}

std::string RandomMessages::damagedPayload(const Message& prototype) {
  std::string bytes = payload(prototype);
  for (auto changes = random_() % 3 + 1; changes > 0 && !bytes.empty(); --changes) {
    const std::size_t at = random_() % bytes.size();
    switch (random_() % 4) {
      case 0:
        bytes[at] = static_cast<char>(random_());
        break;
      case 1:
        bytes.resize(at);
        break;
      case 2:
        bytes.erase(at, random_() % 4 + 1);
        break;
      default:
        bytes.insert(at, bytes.substr(at, random_() % 12 + 1));
    }
  }
  return bytes;
}

}  // namespace dorvex::testing
