#include "text/attribute_runs.h"

#include "TSPMessages.h"

namespace dorvex::content {

ObjectRuns objectRuns(Reading& reading, const Message<TSWP::ObjectAttributeTable>& table,
                      WithoutObject meaning) {
  using Attribute = TSWP::ObjectAttributeTable_ObjectAttribute;
  std::vector<ObjectRuns::Entry> entries;
  for (const auto& entry : table.all(TSWP::ObjectAttributeTable::entries)) {
    const Object* object = reading.follow(entry.get(Attribute::object));
    if (object != nullptr || meaning == WithoutObject::kEnds)
      entries.push_back({entry.get(Attribute::character_index), object});
  }
  return ObjectRuns(std::move(entries));
}

NumberRuns numberRuns(const Message<TSWP::ParaDataAttributeTable>& table) {
  using Attribute = TSWP::ParaDataAttributeTable_ParaDataAttribute;
  std::vector<NumberRuns::Entry> entries;
  for (const auto& entry : table.all(TSWP::ParaDataAttributeTable::entries))
    entries.push_back({entry.get(Attribute::character_index), entry.get(Attribute::first)});
  return NumberRuns(std::move(entries));
}

}  // namespace dorvex::content
