#include "content/support/objects.h"

#include <bit>
#include <stdexcept>

#include "TSPMessages.h"
#include "TSWPArchives.h"

namespace dorvex::testing {

namespace TSP = content::schema::TSP;
namespace TSWP = content::schema::TSWP;

namespace {

std::vector<Member> withObjects(std::vector<Member> members, const std::vector<Archive>& archives) {
  members.push_back({"Index/Document.iwa", iwa(archives)});
  return members;
}

}  // namespace

Objects::Objects(const std::vector<Archive>& archives, content::Application application,
                 std::vector<Member> members)
    : package_(withObjects(std::move(members), archives)),
      graph_(package_, leftOut_),
      media_(package_, graph_),
      reading_(graph_, application, leftOut_, &media_) {}

const content::Object& Objects::object(std::uint64_t identifier) const {
  const content::Object* object = graph_.find(identifier);
  if (object == nullptr) throw std::runtime_error("no object " + std::to_string(identifier));
  return *object;
}

Wire reference(std::uint64_t identifier) {
  return Wire().varint(TSP::Reference::identifier.number, identifier);
}

Wire objectTable(const std::vector<std::pair<std::uint32_t, std::uint64_t>>& entries) {
  using Attribute = TSWP::ObjectAttributeTable_ObjectAttribute;
  Wire table;
  for (const auto& [position, object] : entries) {
    Wire entry;
    entry.varint(Attribute::character_index.number, position);
    if (object != 0) entry.message(Attribute::object.number, reference(object));
    table.message(TSWP::ObjectAttributeTable::entries.number, entry);
  }
  return table;
}

Wire numberTable(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& entries) {
  using Attribute = TSWP::ParaDataAttributeTable_ParaDataAttribute;
  Wire table;
  for (const auto& [position, number] : entries) {
    table.message(TSWP::ParaDataAttributeTable::entries.number,
                  Wire()
                      .varint(Attribute::character_index.number, position)
                      .varint(Attribute::first.number, number)
                      .varint(Attribute::second.number, 0));
  }
  return table;
}

std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }
std::uint32_t bitsOfFloat(float value) { return std::bit_cast<std::uint32_t>(value); }

}  // namespace dorvex::testing
