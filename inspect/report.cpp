#include "inspect/report.h"

#include <google/protobuf/message.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/unknown_field_set.h>

#include <algorithm>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <vector>

#include "Tools/formats/vniwork13/printed_form.h"
#include "printable.h"

namespace dorvex::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kJsonVersion = 1;

// Looks every type id up once.
class TypeNames {
 public:
  explicit TypeNames(Kind kind) : kind_(kind) {}

  const std::optional<std::string>& operator[](int type) {
    const auto [entry, isNew] = names_.try_emplace(type);
    if (!isNew) return entry->second;
    if (const auto message = newMessage(kind_, type)) entry->second = message->GetTypeName();
    return entry->second;
  }

 private:
  Kind kind_;
  std::map<int, std::optional<std::string>> names_;
};

// Rows of a table under their heads; columns are as wide as they have to be.
class Table {
 public:
  using Row = std::vector<std::string>;

  // Of each column whether it stands at the right, as numbers do.
  Table(Row heads, std::vector<bool> right) : right_(std::move(right)) { add(std::move(heads)); }

  void add(Row row) {
    widths_.resize(row.size());
    for (std::size_t column = 0; column < row.size(); ++column)
      widths_[column] = std::max(widths_[column], row[column].size());
    rows_.push_back(std::move(row));
  }

  std::string str() const {
    std::string text;
    for (const Row& row : rows_) text += line(row);
    return text;
  }

 private:
  std::string line(const Row& row) const {
    std::string text;
    for (std::size_t column = 0; column < row.size(); ++column) {
      const std::string blanks(widths_[column] - row[column].size(), ' ');
      const bool last = column + 1 == row.size();
      text += right_[column] ? blanks + row[column] : row[column] + (last ? "" : blanks);
      text += last ? "\n" : "  ";
    }
    return text;
  }

  std::vector<bool> right_;
  std::vector<std::size_t> widths_;
  std::vector<Row> rows_;
};

std::size_t countTexts(const Listing& listing) {
  std::size_t texts = 0;
  for (const ListedObject& object : listing.objects)
    for (const ListedMessage& message : object.messages) texts += message.texts;
  return texts;
}

std::string plural(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string summary(const Listing& listing) {
  return printable(listing.path) + ": " + nameOf(listing.kind) + ", " +
         (listing.directory ? "a package directory" : "a zip") + ", " +
         plural(listing.members.size(), "member") + ", " +
         plural(listing.objects.size(), "object") + ", " + plural(countTexts(listing), "text") +
         (listing.faults.empty() ? "" : ", listing incomplete") + "\n";
}

std::string memberTable(const Listing& listing) {
  Table table({"SIZE", "CHUNKS", "READ", "MEMBER"}, {true, true, false, false});
  for (const ListedMember& listed : listing.members) {
    const PackageMember& member = listed.member;
    table.add({std::to_string(member.size), member.isStream ? std::to_string(listed.chunks) : "-",
               member.selected ? "yes" : "no", printable(member.name)});
  }
  return table.str();
}

std::string typeLabel(const std::optional<std::string>& name, const ListedMessage& message) {
  return name.value_or("(unknown)") + (message.damaged ? " (damaged)" : "");
}

// Only the first message of an object shows its identifier and its member.
std::string objectTable(const Listing& listing) {
  TypeNames names(listing.classes);
  Table table({"OBJECT", "TYPE", "SIZE", "TEXTS", "NAME", "MEMBER"},
              {true, true, true, true, false, false});
  for (const ListedObject& object : listing.objects) {
    std::string identifier = std::to_string(object.identifier);
    std::string member = printable(listing.members[object.member].member.name);
    for (const ListedMessage& message : object.messages) {
      table.add({identifier, std::to_string(message.type), std::to_string(message.size),
                 std::to_string(message.texts), typeLabel(names[message.type], message), member});
      identifier = member = "";
    }
  }
  return table.str();
}

// --- JSON ---

Json nullable(const std::optional<std::string>& value) { return value ? Json(*value) : Json(); }

Json memberJson(const ListedMember& listed) {
  const PackageMember& member = listed.member;
  Json json = {{"name", member.name}, {"size", member.size}, {"read", member.selected}};
  json["chunks"] = member.isStream ? Json(listed.chunks) : Json();
  json["fault"] = member.fault.empty() ? Json() : Json(member.fault);
  return json;
}

Json messageJson(const ListedMessage& message, TypeNames& names) {
  return {{"type", message.type},
          {"name", nullable(names[message.type])},
          {"size", message.size},
          {"texts", message.texts},
          {"damaged", message.damaged}};
}

Json objectJson(const Listing& listing, const ListedObject& object, TypeNames& names) {
  Json messages = Json::array();
  for (const ListedMessage& message : object.messages)
    messages.push_back(messageJson(message, names));
  return {{"id", object.identifier},
          {"member", listing.members[object.member].member.name},
          {"messages", messages}};
}

// Names need not be UTF-8; JSON must be.
std::string dump(const Json& json) {
  return printableJson(json.dump(-1, ' ', false, Json::error_handler_t::replace)) + "\n";
}

// --- One object ---

std::string printUnknown(const std::string& payload) {
  google::protobuf::UnknownFieldSet fields;
  std::string printed;
  if (!fields.ParseFromString(payload)) return "# not a run of fields\n";
  google::protobuf::TextFormat::PrintUnknownFieldsToString(fields, &printed);
  return printed;
}

std::string printPayload(Kind kind, const ListedMessage& message) {
  const auto instance = newMessage(kind, message.type);
  if (instance == nullptr) return printUnknown(message.payload);
  const bool whole = instance->ParsePartialFromString(message.payload);
  return vn::iwork13::printMessage(*instance) +
         (whole ? "" : "# damaged: this is what could be read\n");
}

template <typename Print>
bool forEachMessage(const Listing& listing, std::uint64_t identifier, Print print) {
  bool found = false;
  for (const ListedObject& object : listing.objects) {
    if (object.identifier != identifier) continue;
    found = true;
    for (const ListedMessage& message : object.messages) print(object, message);
  }
  return found;
}

}  // namespace

std::string printListing(const Listing& listing) {
  std::string text = summary(listing);
  if (!listing.members.empty()) text += "\n" + memberTable(listing);
  if (!listing.objects.empty()) text += "\n" + objectTable(listing);
  return text;
}

std::string printListingAsJson(const Listing& listing) {
  Json json = {{"version", kJsonVersion},
               {"path", listing.path},
               {"package", listing.directory ? "directory" : "zip"},
               {"application", nameOf(listing.kind)},
               {"complete", listing.faults.empty()},
               {"faults", listing.faults},
               {"texts", countTexts(listing)},
               {"members", Json::array()},
               {"objects", Json::array()}};
  TypeNames names(listing.classes);
  for (const ListedMember& member : listing.members) json["members"].push_back(memberJson(member));
  for (const ListedObject& object : listing.objects)
    json["objects"].push_back(objectJson(listing, object, names));
  return dump(json);
}

std::optional<std::string> printObject(const Listing& listing, std::uint64_t identifier) {
  std::string text;
  TypeNames names(listing.classes);
  const auto print = [&](const ListedObject& object, const ListedMessage& message) {
    text += "# object " + std::to_string(identifier) + " of " +
            printable(listing.members[object.member].member.name) + ": type " +
            std::to_string(message.type) + " " + typeLabel(names[message.type], message) + ", " +
            plural(message.size, "byte") + "\n" + printPayload(listing.classes, message);
  };
  if (!forEachMessage(listing, identifier, print)) return std::nullopt;
  return text;
}

std::optional<std::string> printObjectAsJson(const Listing& listing, std::uint64_t identifier) {
  Json messages = Json::array();
  TypeNames names(listing.classes);
  const auto print = [&](const ListedObject& object, const ListedMessage& message) {
    Json json = messageJson(message, names);
    json["member"] = listing.members[object.member].member.name;
    json["printed"] = printPayload(listing.classes, message);
    messages.push_back(std::move(json));
  };
  if (!forEachMessage(listing, identifier, print)) return std::nullopt;
  return dump({{"version", kJsonVersion},
               {"path", listing.path},
               {"id", identifier},
               {"messages", messages}});
}

}  // namespace dorvex::cli
