#include "Tools/formats/vniwork13/registry.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "Tools/formats/vniwork13/layout_index.h"
#include "Tools/formats/vniwork13/registered_class.h"
#include "new_message.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::Message;

// Get rows: what each registry can build, in ascending order of the id.

template <IWorkRegistryType registry, int type, typename MessageClass>
constexpr RegistryRow kRow = {
    type, {newMessage<registry, type, MessageClass>, kLayoutIndex<MessageClass>}};

#define REGISTRY_ROW(type, messageClass) kRow<CommonRegistry, type, messageClass>,
constexpr RegistryRow kCommonRows[] = {
#include "Tools/formats/vniwork13/registry_rows/common.inc"
};
#undef REGISTRY_ROW

#define REGISTRY_ROW(type, messageClass) kRow<KeynoteRegistry, type, messageClass>,
constexpr RegistryRow kKeynoteRows[] = {
#include "Tools/formats/vniwork13/registry_rows/keynote.inc"
};
#undef REGISTRY_ROW

#define REGISTRY_ROW(type, messageClass) kRow<NumbersRegistry, type, messageClass>,
constexpr RegistryRow kNumbersRows[] = {
#include "Tools/formats/vniwork13/registry_rows/numbers.inc"
};
#undef REGISTRY_ROW

#define REGISTRY_ROW(type, messageClass) kRow<PagesRegistry, type, messageClass>,
constexpr RegistryRow kPagesRows[] = {
#include "Tools/formats/vniwork13/registry_rows/pages.inc"
};
#undef REGISTRY_ROW

template <std::size_t N>
constexpr bool isAscending(const RegistryRow (&rows)[N]) {
  return std::ranges::adjacent_find(rows, std::ranges::greater_equal{}, &RegistryRow::type) ==
         std::end(rows);
}
static_assert(isAscending(kCommonRows) && std::size(kCommonRows) == 262);
static_assert(isAscending(kKeynoteRows) && std::size(kKeynoteRows) == 61);
static_assert(isAscending(kNumbersRows) && std::size(kNumbersRows) == 24);
static_assert(isAscending(kPagesRows) && std::size(kPagesRows) == 36);

template <std::size_t N>
constexpr bool haveLayouts(const RegistryRow (&rows)[N]) {
  return std::ranges::none_of(
      rows, [](const RegistryRow& row) { return row.messageClass.layoutIndex == kNoLayout; });
}
static_assert(haveLayouts(kCommonRows) && haveLayouts(kKeynoteRows) && haveLayouts(kNumbersRows) &&
              haveLayouts(kPagesRows));

const RegisteredClass* find(std::span<const RegistryRow> rows, int type) {
  const auto row = std::ranges::lower_bound(rows, type, {}, &RegistryRow::type);
  return row != rows.end() && row->type == type ? &row->messageClass : nullptr;
}

Message* build(std::span<const RegistryRow> rows, int type) {
  const RegisteredClass* found = find(rows, type);
  return found != nullptr ? found->create() : nullptr;
}

// The application wins over the common registry.
Message* layered(Message* own, int type) {
  return own != nullptr ? own : getCommonRegistryMessage(type);
}

}  // namespace

std::vector<IWorkRegistryType> getAllRegistryTypes() {
  return {CommonRegistry, KeynoteRegistry, NumbersRegistry, PagesRegistry};
}

Message* getCommonRegistryMessage(int type) { return build(kCommonRows, type); }
Message* getKeynoteRegistryMessage(int type) { return build(kKeynoteRows, type); }
Message* getNumbersRegistryMessage(int type) { return build(kNumbersRows, type); }
Message* getPagesRegistryMessage(int type) { return build(kPagesRows, type); }

Message* getKeynoteMessage(int type) { return layered(getKeynoteRegistryMessage(type), type); }
Message* getNumbersMessage(int type) { return layered(getNumbersRegistryMessage(type), type); }
Message* getPagesMessage(int type) { return layered(getPagesRegistryMessage(type), type); }

RegistryView::RegistryView(MessageFactory factory) {
  struct Factory {
    MessageFactory function;
    std::span<const RegistryRow> rows;
    std::span<const RegistryRow> commonRows;
  };
  static constexpr Factory kFactories[] = {
      {getPagesMessage, kPagesRows, kCommonRows},
      {getKeynoteMessage, kKeynoteRows, kCommonRows},
      {getNumbersMessage, kNumbersRows, kCommonRows},
      {getCommonRegistryMessage, kCommonRows, {}},
      {getKeynoteRegistryMessage, kKeynoteRows, {}},
      {getNumbersRegistryMessage, kNumbersRows, {}},
      {getPagesRegistryMessage, kPagesRows, {}},
  };
  const auto* known = std::ranges::find(kFactories, factory, &Factory::function);
  if (known == std::end(kFactories)) return;
  rows_ = known->rows;
  commonRows_ = known->commonRows;
}

const RegisteredClass* RegistryView::find(int type) const {
  const RegisteredClass* own = iwork13::find(rows_, type);
  return own != nullptr ? own : iwork13::find(commonRows_, type);
}

}  // namespace vn::iwork13
