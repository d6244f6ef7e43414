// The message classes that the registries can build, as the reader's own walk needs
// them: with their layouts, and without an instance.
#pragma once

#include <cstdint>
#include <span>

#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/message_layout.h"

namespace vn::iwork13 {

struct RegisteredClass {
  google::protobuf::Message* (*create)();
  std::uint16_t layoutIndex;

  MessageLayout layout() const { return layoutAt(layoutIndex); }
};

struct RegistryRow {
  int type;
  RegisteredClass messageClass;
};

// The rows behind a factory, for one of the get functions of registry.h. Any other
// factory has none, and only calling it tells what it makes.
class RegistryView {
 public:
  explicit RegistryView(MessageFactory factory);

  // Whether the factory is one of those.
  bool isKnown() const { return !rows_.empty(); }

  // The class that the factory builds for a type id, or null.
  const RegisteredClass* find(int type) const;

 private:
  std::span<const RegistryRow> rows_;
  std::span<const RegistryRow> commonRows_;  // asked behind rows_; may be empty
};

}  // namespace vn::iwork13
