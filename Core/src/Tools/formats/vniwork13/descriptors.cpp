#include "Tools/formats/vniwork13/descriptors.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <new>

#include "late_registration.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using google::protobuf::MessageFactory;

constexpr const char* kSchemaFiles[] = {
#include "schema_files.inc"
};

// The type of a field is looked up when it is first asked for, and with it the
// file that defines the type.
void link(const FieldDescriptor* field) {
  static_cast<void>(field->message_type());
  static_cast<void>(field->enum_type());
}

void link(const Descriptor* message) {
  for (int i = 0; i < message->field_count(); ++i) link(message->field(i));
  for (int i = 0; i < message->extension_count(); ++i) link(message->extension(i));
  for (int i = 0; i < message->nested_type_count(); ++i) link(message->nested_type(i));
}

// Prototypes make their whole file's reflection.
void build(const FileDescriptor* file) {
  if (file->message_type_count() > 0)
    MessageFactory::generated_factory()->GetPrototype(file->message_type(0));
  for (int i = 0; i < file->extension_count(); ++i) link(file->extension(i));
  for (int i = 0; i < file->message_type_count(); ++i) link(file->message_type(i));
}

bool buildAll() {
  try {
    registerSchema();
    for (const char* name : kSchemaFiles)
      build(DescriptorPool::generated_pool()->FindFileByName(name));
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace

void requireDescriptors() {
  static const bool built = buildAll();
  if (!built) throw std::bad_alloc();
}

}  // namespace vn::iwork13
