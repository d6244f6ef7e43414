// Writes message_layouts.inc from the compiled descriptors of the schema.
//
//   layout_generator OUTPUT SCHEMA-FILE...
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <span>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::FieldDescriptor;
using google::protobuf::MessageFactory;

// Message classes by type name: their index is their place in this order.
using Classes = std::map<std::string, const Descriptor*>;

void addClass(const Descriptor* descriptor, Classes& classes) {
  const auto* prototype = MessageFactory::generated_factory()->GetPrototype(descriptor);
  classes.emplace(typeid(*prototype).name(), descriptor);
  for (int i = 0; i < descriptor->nested_type_count(); ++i)
    addClass(descriptor->nested_type(i), classes);
}

Classes collectClasses(std::span<char*> schemaFiles) {
  Classes classes;
  for (const char* name : schemaFiles) {
    const auto* file = DescriptorPool::generated_pool()->FindFileByName(name);
    for (int i = 0; i < file->message_type_count(); ++i) addClass(file->message_type(i), classes);
  }
  return classes;
}

std::vector<const FieldDescriptor*> fieldsOf(const Descriptor* descriptor) {
  std::vector<const FieldDescriptor*> fields;
  DescriptorPool::generated_pool()->FindAllExtensions(descriptor, &fields);
  for (int i = 0; i < descriptor->field_count(); ++i) fields.push_back(descriptor->field(i));
  std::ranges::sort(fields, {}, [](const FieldDescriptor* field) { return field->number(); });
  return fields;
}

bool isString(const FieldDescriptor* field) {
  return field->cpp_type() == FieldDescriptor::CPPTYPE_STRING;
}

// An extension's name is printed in brackets, which the sweep does not match.
const char* sweptName(const FieldDescriptor* field) {
  if (!isString(field) || field->is_extension()) return "kNone";
  if (field->name() == "text") return "kText";
  if (field->name() == "string") return "kString";
  return "kNone";
}

const char* packedKind(const FieldDescriptor* field) {
  switch (field->type()) {
    case FieldDescriptor::TYPE_FIXED32:
    case FieldDescriptor::TYPE_SFIXED32:
    case FieldDescriptor::TYPE_FLOAT:
      return "kPackedFixed32";
    case FieldDescriptor::TYPE_FIXED64:
    case FieldDescriptor::TYPE_SFIXED64:
    case FieldDescriptor::TYPE_DOUBLE:
      return "kPackedFixed64";
    default:
      return "kPackedVarint";
  }
}

const char* kindOf(const FieldDescriptor* field) {
  if (isString(field)) return "kString";
  if (field->message_type() != nullptr) return "kMessage";
  return field->is_packable() ? packedKind(field) : "kScalar";
}

// The messages in which a swept field can be set, at any depth.
std::set<const Descriptor*> messagesThatReachSwept(const Classes& classes) {
  std::set<const Descriptor*> reaching;
  const auto reaches = [&reaching](const FieldDescriptor* field) {
    return std::string(sweptName(field)) != "kNone" ||
           (field->message_type() != nullptr && reaching.contains(field->message_type()));
  };
  bool changed = true;
  while (changed) {
    changed = false;
    for (const auto& [typeName, descriptor] : classes) {
      const auto fields = fieldsOf(descriptor);
      if (std::ranges::any_of(fields, reaches)) changed |= reaching.insert(descriptor).second;
    }
  }
  return reaching;
}

void writeLayouts(const Classes& classes, std::ostream& out) {
  const auto reaching = messagesThatReachSwept(classes);
  std::map<const Descriptor*, std::size_t> indices;
  for (const auto& [typeName, descriptor] : classes) indices.emplace(descriptor, indices.size());

  std::vector<std::pair<std::size_t, std::size_t>> ranges;  // first field, count
  std::size_t first = 0;
  out << "constexpr FieldLayout kFields[] = {\n";
  for (const auto& [typeName, descriptor] : classes) {
    const auto fields = fieldsOf(descriptor);
    out << "    // " << descriptor->full_name() << "\n";
    for (const FieldDescriptor* field : fields) {
      const Descriptor* embedded = field->message_type();
      out << "    {" << field->number() << ", " << (embedded != nullptr ? indices.at(embedded) : 0)
          << ", FieldKind::" << kindOf(field) << ", SweptName::" << sweptName(field) << ", "
          << (field->is_repeated() ? "true" : "false") << ", "
          << (reaching.contains(embedded) ? "true" : "false") << "},\n";
    }
    ranges.emplace_back(first, fields.size());
    first += fields.size();
  }
  out << "};\n\nconstexpr MessageClass kClasses[] = {\n";
  std::size_t index = 0;
  for (const auto& [typeName, descriptor] : classes) {
    const auto& [begin, count] = ranges[index++];
    out << "    {\"" << typeName << "\", {kFields + " << begin << ", " << count << "}},\n";
  }
  out << "};\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: layout_generator OUTPUT SCHEMA-FILE...\n";
    return EXIT_FAILURE;
  }
  const std::span arguments(argv, static_cast<std::size_t>(argc));
  std::ofstream out(arguments[1]);
  writeLayouts(collectClasses(arguments.subspan(2)), out);
  out.close();
  return out ? EXIT_SUCCESS : EXIT_FAILURE;
}
