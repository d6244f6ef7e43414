#include "samples/sample_writer.h"

#include <google/protobuf/message.h>
#include <google/protobuf/util/json_util.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "TSKArchives.pb.h"
#include "TSTArchives.pb.h"
#include "Tools/formats/vniwork13/registry.h"
#include "samples/cell_buffer.h"
#include "samples/raw_fields.h"

namespace dorvex::samples {
namespace {

using google::protobuf::Message;
using nlohmann::json;
using testing::Archive;
using testing::Member;

using MessageFunction = Message* (*)(int);

MessageFunction messagesOf(const std::string& application) {
  if (application == "pages") return vn::iwork13::getPagesMessage;
  if (application == "keynote") return vn::iwork13::getKeynoteMessage;
  if (application == "numbers") return vn::iwork13::getNumbersMessage;
  throw std::runtime_error("unknown application " + application);
}

void parse(const json& description, Message& message) {
  const auto status = google::protobuf::util::JsonStringToMessage(description.dump(), &message);
  if (!status.ok()) throw std::runtime_error(status.ToString() + "\n" + description.dump(1));
}

void addExtension(Message& message, const std::string& name, const json& value) {
  const auto* const field = message.GetReflection()->FindKnownExtensionByName(name);
  if (field == nullptr) throw std::runtime_error("no extension " + name);
  if (field->message_type() != nullptr) {
    parse(value, *message.GetReflection()->MutableMessage(&message, field));
  } else {
    message.GetReflection()->SetString(&message, field, value);
  }
}

// Messages that documents hold and the registries leave out.
std::unique_ptr<Message> unlistedMessage(int type) {
  switch (type) {
    case 222:
      return std::make_unique<TSK::CustomFormatListArchive>();
    case 6267:
      return std::make_unique<TST::ColumnRowUIDMapArchive>();
    default:
      throw std::runtime_error("no message of type " + std::to_string(type));
  }
}

// Sets the rows of a tile.
void addCells(TST::Tile& tile, const json& rows) {
  unsigned index = 0;
  for (const json& row : rows) {
    const RowBuffers buffers = makeRow(row);
    TST::TileRowInfo& info = *tile.add_rowinfos();
    info.set_tile_row_index(index++);
    info.set_cell_count(buffers.count);
    info.set_cell_storage_buffer_pre_bnc(buffers.older ? buffers.cells : "");
    info.set_cell_offsets_pre_bnc(buffers.older ? buffers.offsets : "");
    if (buffers.older) continue;
    info.set_storage_version(5);
    info.set_cell_storage_buffer(buffers.cells);
    info.set_cell_offsets(buffers.offsets);
  }
  tile.set_numrows(index);
}

std::string makeMessage(const json& description, MessageFunction messages) {
  const int type = description.at("type");
  if (description.contains("raw")) return rawMessage(description.at("raw"));
  std::unique_ptr<Message> message(messages(type));
  if (message == nullptr) message = unlistedMessage(type);
  parse(description.at("message"), *message);
  const json extensions = description.value("extensions", json::object());
  for (const auto& [name, value] : extensions.items()) addExtension(*message, name, value);
  if (description.contains("cells"))
    addCells(dynamic_cast<TST::Tile&>(*message), description.at("cells"));
  addRawFields(*message, description.value("newer", json::object()));
  if (!message->IsInitialized())
    throw std::runtime_error(message->InitializationErrorString() + " missing in " +
                             description.dump(1));
  return message->SerializeAsString();
}

Archive makeObject(const json& description, MessageFunction messages) {
  return testing::object(description.at("identifier"), description.at("type"),
                         makeMessage(description, messages));
}

Member makeMember(const json& description, MessageFunction messages) {
  Member member{description.at("name"), "", description.value("deflated", false)};
  if (description.contains("text")) {
    member.contents = description.at("text");
    return member;
  }
  std::vector<Archive> archives;
  for (const json& object : description.at("objects"))
    archives.push_back(makeObject(object, messages));
  member.contents = testing::iwa(archives);
  return member;
}

}  // namespace

Sample makeSample(std::string_view description) {
  const json root = json::parse(description);
  const MessageFunction messages = messagesOf(root.at("application"));
  Sample sample{root.at("file"), {}};
  for (const json& member : root.at("members"))
    sample.members.push_back(makeMember(member, messages));
  return sample;
}

}  // namespace dorvex::samples
