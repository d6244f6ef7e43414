// Writes two files from the compiled descriptors of the schema: the layouts of all
// messages, and which of them each class of C++ has.
//
//   layout_generator LAYOUTS CLASSES SCHEMA-FILE...
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "late_registration.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;

// Messages by full name: their index is their place in this order.
using Classes = std::map<std::string, const Descriptor*>;

void addClass(const Descriptor* descriptor, Classes& classes) {
  classes.emplace(descriptor->full_name(), descriptor);
  for (int i = 0; i < descriptor->nested_type_count(); ++i)
    addClass(descriptor->nested_type(i), classes);
}

Classes collectClasses(std::span<char*> schemaFiles) {
  Classes classes;
  vn::iwork13::registerSchema();
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

// All names, one behind the other, each once.
class NamePool {
 public:
  std::size_t offsetOf(const std::string& name) {
    const auto [entry, isNew] = offsets_.emplace(name, size_);
    if (isNew) {
      names_.push_back(name);
      size_ += name.size() + 1;
    }
    return entry->second;
  }

  // By numbers: a string literal may not be as long in every compiler.
  void write(std::ostream& out) const {
    out << "constexpr char kNames[] = {\n";
    for (const std::string& name : names_) {
      out << "    ";
      for (const char letter : name) out << static_cast<int>(letter) << ", ";
      out << "0,  // " << name << "\n";
    }
    out << "};\n\n";
  }

 private:
  std::map<std::string, std::size_t> offsets_;
  std::vector<std::string> names_;
  std::size_t size_ = 0;
};

// Enums by full name: their index is their place in this order.
using Enums = std::map<std::string, const EnumDescriptor*>;

Enums collectEnums(const Classes& classes) {
  Enums enums;
  for (const auto& [name, descriptor] : classes) {
    for (const FieldDescriptor* field : fieldsOf(descriptor))
      if (field->enum_type() != nullptr)
        enums.emplace(field->enum_type()->full_name(), field->enum_type());
  }
  return enums;
}

// A place in each table: its first entry, and how many there are.
using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;

void addRange(std::size_t count, Ranges& ranges) {
  const std::size_t first = ranges.empty() ? 0 : ranges.back().first + ranges.back().second;
  ranges.emplace_back(first, count);
}

void writeRanges(const char* type, const char* name, const char* table, const Ranges& ranges,
                 std::ostream& out) {
  out << "constexpr " << type << " " << name << "[] = {\n";
  for (const auto& [first, count] : ranges)
    out << "    {" << table << " + " << first << ", " << count << "},\n";
  out << "};\n\n";
}

// The values of each enum in ascending number. Of several names for one number
// the first is the one that is printed.
void writeEnums(const Enums& enums, NamePool& names, std::ostream& out) {
  Ranges ranges;
  out << "constexpr EnumValue kEnumValues[] = {\n";
  for (const auto& [fullName, descriptor] : enums) {
    std::map<int, const std::string*> values;
    for (int i = 0; i < descriptor->value_count(); ++i)
      values.emplace(descriptor->value(i)->number(), &descriptor->value(i)->name());
    for (const auto& [number, name] : values)
      out << "    {" << number << ", " << names.offsetOf(*name) << "},\n";
    addRange(values.size(), ranges);
  }
  out << "};\n\n";
  writeRanges("EnumLayout", "kEnums", "kEnumValues", ranges, out);
}

std::string printedName(const FieldDescriptor* field) {
  return field->is_extension() ? "[" + field->full_name() + "]" : field->name();
}

template <typename Entries>
std::size_t indexOf(const Entries& entries, const std::string& fullName) {
  return static_cast<std::size_t>(std::distance(entries.begin(), entries.find(fullName)));
}

void writeFields(const Classes& classes, const Enums& enums, NamePool& names, std::ostream& out) {
  const auto reaching = messagesThatReachSwept(classes);
  const auto typeIndex = [&](const FieldDescriptor* field) {
    if (field->message_type() != nullptr)
      return indexOf(classes, field->message_type()->full_name());
    return field->enum_type() != nullptr ? indexOf(enums, field->enum_type()->full_name()) : 0;
  };
  Ranges ranges;
  std::vector<std::size_t> nameOffsets;
  out << "constexpr FieldLayout kFields[] = {\n";
  for (const auto& [fullName, descriptor] : classes) {
    const auto fields = fieldsOf(descriptor);
    out << "    // " << fullName << "\n";
    for (const FieldDescriptor* field : fields) {
      out << "    {" << field->number() << ", " << typeIndex(field)
          << ", FieldKind::" << kindOf(field) << ", SweptName::" << sweptName(field) << ", "
          << (field->is_repeated() ? "true" : "false") << ", "
          << (reaching.contains(field->message_type()) ? "true" : "false") << ", FieldType{"
          << static_cast<int>(field->type()) << "}},\n";
      nameOffsets.push_back(names.offsetOf(printedName(field)));
    }
    addRange(fields.size(), ranges);
  }
  out << "};\n\nconstexpr std::uint32_t kFieldNames[] = {\n";
  for (const std::size_t offset : nameOffsets) out << "    " << offset << ",\n";
  out << "};\n\n";
  writeRanges("MessageLayout", "kLayouts", "kFields", ranges, out);
}

void writeLayouts(const Classes& classes, std::ostream& out) {
  const Enums enums = collectEnums(classes);
  NamePool names;
  writeEnums(enums, names, out);
  writeFields(classes, enums, names, out);
  names.write(out);
}

// The namespace and the name of a class: names of nesting are joined by underscores.
std::pair<std::string, std::string> className(const Descriptor* descriptor) {
  std::string space = descriptor->file()->package();
  std::string name = descriptor->full_name().substr(space.empty() ? 0 : space.size() + 1);
  std::ranges::replace(name, '.', '_');
  for (std::size_t dot = space.find('.'); dot != std::string::npos; dot = space.find('.', dot))
    space.replace(dot, 1, "::");
  return {space, name};
}

void writeClasses(const Classes& classes, std::ostream& out) {
  for (const auto& [fullName, descriptor] : classes) {
    const auto [space, name] = className(descriptor);
    out << "namespace " << space << " {\nclass " << name << ";\n}\n";
  }
  out << "\nnamespace vn::iwork13 {\n";
  for (const auto& [fullName, descriptor] : classes) {
    const auto [space, name] = className(descriptor);
    out << "template <>\ninline constexpr std::uint16_t kLayoutIndex<::" << space << "::" << name
        << "> = " << indexOf(classes, fullName) << ";\n";
  }
  out << "}  // namespace vn::iwork13\n";
}

bool writeFile(const char* path, const Classes& classes,
               void (*write)(const Classes&, std::ostream&)) {
  std::ofstream out(path);
  write(classes, out);
  out.close();
  return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::cerr << "usage: layout_generator LAYOUTS CLASSES SCHEMA-FILE...\n";
    return EXIT_FAILURE;
  }
  const std::span arguments(argv, static_cast<std::size_t>(argc));
  const Classes classes = collectClasses(arguments.subspan(3));
  return writeFile(arguments[1], classes, writeLayouts) &&
                 writeFile(arguments[2], classes, writeClasses)
             ? EXIT_SUCCESS
             : EXIT_FAILURE;
}
