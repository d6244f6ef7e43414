// Writes the constants of field.h for a set of .proto files:
//
//   field_generator DESCRIPTOR_SET DIRECTORY
//
// DESCRIPTOR_SET is what protoc writes with --descriptor_set_out --include_imports.
// DIRECTORY gets a header for each file, and declarations.h, which names all messages.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using google::protobuf::FileDescriptorSet;

constexpr char kNamespace[] = "dorvex::content::schema";

// Names of the schema that mean something to a compiler.
constexpr std::string_view kTakenNames[] = {
    "DOMAIN", "OVERFLOW", "UNDERFLOW", "auto",   "bool",     "case",     "char",     "class",
    "const",  "default",  "delete",    "double", "enum",     "explicit", "export",   "false",
    "float",  "for",      "friend",    "if",     "inline",   "int",      "long",     "namespace",
    "new",    "operator", "private",   "public", "register", "short",    "signed",   "static",
    "struct", "switch",   "template",  "this",   "true",     "typename", "unsigned", "using",
};

std::string safeName(std::string_view name, std::string_view enclosing = {}) {
  const bool taken =
      name == enclosing || std::ranges::find(kTakenNames, name) != std::end(kTakenNames);
  return std::string(name) + (taken ? "_" : "");
}

// The package, whose names stand in a namespace each.
std::string nameSpace(const FileDescriptor& file) {
  std::string name = file.package();
  for (auto dot = name.find('.'); dot != std::string::npos; dot = name.find('.', dot))
    name.replace(dot, 1, "::");
  return name.empty() ? kNamespace : std::string(kNamespace) + "::" + name;
}

// A nested message's name has those of the messages around it in front.
template <typename Described>
std::string flatName(const Described& described) {
  const Descriptor* outer = described.containing_type();
  return outer == nullptr ? safeName(described.name()) : flatName(*outer) + "_" + described.name();
}

template <typename Described>
std::string fullName(const Described& described) {
  return nameSpace(*described.file()) + "::" + flatName(described);
}

struct Value {
  std::string type;
  std::string encoding;
};

Value valueOf(const FieldDescriptor& field) {
  switch (field.type()) {
    case FieldDescriptor::TYPE_MESSAGE:
    case FieldDescriptor::TYPE_GROUP:
      return {"Message<" + fullName(*field.message_type()) + ">", "kMessage"};
    case FieldDescriptor::TYPE_ENUM:
      return {fullName(*field.enum_type()), "kVarint"};
    case FieldDescriptor::TYPE_STRING:
    case FieldDescriptor::TYPE_BYTES:
      return {"std::string_view", "kBytes"};
    case FieldDescriptor::TYPE_BOOL:
      return {"bool", "kVarint"};
    case FieldDescriptor::TYPE_INT32:
      return {"std::int32_t", "kVarint"};
    case FieldDescriptor::TYPE_INT64:
      return {"std::int64_t", "kVarint"};
    case FieldDescriptor::TYPE_UINT32:
      return {"std::uint32_t", "kVarint"};
    case FieldDescriptor::TYPE_UINT64:
      return {"std::uint64_t", "kVarint"};
    case FieldDescriptor::TYPE_SINT32:
      return {"std::int32_t", "kZigzag"};
    case FieldDescriptor::TYPE_SINT64:
      return {"std::int64_t", "kZigzag"};
    case FieldDescriptor::TYPE_FIXED32:
      return {"std::uint32_t", "kFixed"};
    case FieldDescriptor::TYPE_FIXED64:
      return {"std::uint64_t", "kFixed"};
    case FieldDescriptor::TYPE_SFIXED32:
      return {"std::int32_t", "kFixed"};
    case FieldDescriptor::TYPE_SFIXED64:
      return {"std::int64_t", "kFixed"};
    case FieldDescriptor::TYPE_FLOAT:
      return {"float", "kFixed"};
    case FieldDescriptor::TYPE_DOUBLE:
      return {"double", "kFixed"};
  }
  throw std::runtime_error("unknown type of " + field.full_name());
}

class Header {
 public:
  explicit Header(const std::filesystem::path& path) : out_(path) {
    if (!out_) throw std::runtime_error("cannot write " + path.string());
    out_ << "// Generated from the archive schema.\n#pragma once\n\n";
  }

  ~Header() { leave(); }

  void include(const std::string& name) { out_ << "#include " << name << '\n'; }

  void enter(const FileDescriptor& file) {
    leave();
    inside_ = nameSpace(file);
    out_ << "\nnamespace " << inside_ << " {\n";
  }

  void declare(const Descriptor& message) {
    out_ << "struct " << flatName(message) << ";\n";
    for (int i = 0; i < message.nested_type_count(); ++i) declare(*message.nested_type(i));
    for (int i = 0; i < message.enum_type_count(); ++i) declare(*message.enum_type(i));
  }

  void declare(const EnumDescriptor& type) {
    out_ << "enum class " << flatName(type) << " : int;\n";
  }

  void define(const EnumDescriptor& type) {
    out_ << "\nenum class " << flatName(type) << " : int {\n";
    for (int i = 0; i < type.value_count(); ++i) {
      out_ << "  " << safeName(type.value(i)->name()) << " = " << type.value(i)->number() << ",\n";
    }
    out_ << "};\n";
  }

  void define(const Descriptor& message) {
    for (int i = 0; i < message.enum_type_count(); ++i) define(*message.enum_type(i));
    for (int i = 0; i < message.nested_type_count(); ++i) define(*message.nested_type(i));
    out_ << "\nstruct " << flatName(message) << " {\n";
    for (int i = 0; i < message.field_count(); ++i) define(*message.field(i), flatName(message));
    for (int i = 0; i < message.extension_count(); ++i)
      define(*message.extension(i), flatName(message));
    out_ << "};\n";
  }

  // An extension is a field of the message that it extends, and stands where the
  // schema declares it.
  void define(const FieldDescriptor& field, const std::string& enclosing) {
    const Value value = valueOf(field);
    out_ << "  static constexpr " << (field.is_repeated() ? "RepeatedField" : "Field") << '<'
         << fullName(*field.containing_type()) << ", " << value.type
         << ", Encoding::" << value.encoding << "> " << safeName(field.name(), enclosing) << '{'
         << field.number() << "};\n";
  }

 private:
  void leave() {
    if (!inside_.empty()) out_ << "\n}  // namespace " << inside_ << '\n';
  }

  std::ofstream out_;
  std::string inside_;
};

std::vector<const FileDescriptor*> load(const char* path, DescriptorPool& pool) {
  std::ifstream in(path, std::ios::binary);
  FileDescriptorSet set;
  if (!set.ParseFromIstream(&in)) throw std::runtime_error(std::string("cannot read ") + path);
  std::vector<const FileDescriptor*> files;
  for (const auto& file : set.file()) files.push_back(pool.BuildFile(file));
  if (std::ranges::find(files, nullptr) != files.end()) throw std::runtime_error("bad descriptors");
  return files;
}

void writeAll(const std::vector<const FileDescriptor*>& files,
              const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  {
    Header header(folder / "declarations.h");
    for (const FileDescriptor* file : files) {
      header.enter(*file);
      for (int i = 0; i < file->message_type_count(); ++i) header.declare(*file->message_type(i));
      for (int i = 0; i < file->enum_type_count(); ++i) header.declare(*file->enum_type(i));
    }
  }
  for (const FileDescriptor* file : files) {
    std::filesystem::path name = file->name();
    Header header(folder / name.replace_extension(".h"));
    header.include("<cstdint>");
    header.include("<string_view>");
    header.include("\"declarations.h\"");
    header.include("\"schema/field.h\"");
    header.enter(*file);
    for (int i = 0; i < file->enum_type_count(); ++i) header.define(*file->enum_type(i));
    for (int i = 0; i < file->message_type_count(); ++i) header.define(*file->message_type(i));
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return EXIT_FAILURE;
  try {
    DescriptorPool pool;
    writeAll(load(arguments[1], pool), arguments[2]);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << "field_generator: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
