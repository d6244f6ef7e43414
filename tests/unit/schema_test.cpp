#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/descriptor_database.h>
#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <string>

#include "KNCommandArchives.pb.h"
#include "TNCommandArchives.pb.h"
#include "TPCommandArchives.pb.h"
#include "TSCHArchives.pb.h"
#include "late_registration.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::DescriptorPool;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;

// Not by the pool, which remembers what it did not find.
bool isRegistered(const std::string& name) {
  google::protobuf::FileDescriptorProto file;
  return DescriptorPool::internal_generated_database()->FindFileByName(name, &file);
}

const bool isRegisteredByLoading = isRegistered("TSPMessages.proto");

// What a schema file holds, nested declarations included; extension fields count
// among the fields too.
struct Counts {
  int messages = 0;
  int enums = 0;
  int extensions = 0;
  int fields = 0;
};

struct SchemaFile {
  const char* name;
  Counts counts;
};

// clang-format off
constexpr SchemaFile kFiles[] = {
    {"TSPMessages.proto", 46, 3, 0, 111},
    {"TSPArchiveMessages.proto", 24, 5, 0, 100},
    {"TSKArchives.proto", 67, 3, 12, 266},
    {"TSSArchives.proto", 16, 2, 1, 72},
    {"TSSArchives.sos.proto", 10, 0, 0, 15},
    {"TSDArchives.proto", 77, 14, 5, 330},
    {"TSDArchives.sos.proto", 12, 0, 0, 50},
    {"TSWPArchives.proto", 88, 27, 6, 410},
    {"TSWPArchives.sos.proto", 40, 0, 0, 285},
    {"TSDCommandArchives.proto", 58, 4, 0, 235},
    {"TSWPCommandArchives.proto", 45, 4, 0, 196},
    {"TSCEArchives.proto", 120, 14, 0, 492},
    {"TSTStylePropertyArchiving.proto", 9, 0, 1, 104},
    {"TSTArchives.proto", 133, 21, 5, 656},
    {"TSTArchives.sos.proto", 4, 0, 0, 117},
    {"TSTCommandArchives.proto", 98, 3, 0, 465},
    {"TSAArchives.proto", 26, 4, 1, 106},
    {"TSCHArchives.Common.proto", 16, 7, 0, 24},
    {"TSCH3DArchives.proto", 22, 7, 1, 70},
    {"TSCHArchives.GEN.proto", 15, 0, 10, 508},
    {"TSCHPreUFFArchives.proto", 14, 0, 0, 363},
    {"TSCHArchives.proto", 34, 0, 26, 140},
    {"TSCHCommandArchives.proto", 54, 3, 0, 237},
    {"TPArchives.proto", 27, 6, 0, 201},
    {"TPCommandArchives.proto", 35, 4, 0, 135},
    {"KNArchives.proto", 45, 19, 0, 327},
    {"KNCommandArchives.proto", 59, 2, 0, 330},
    {"TNArchives.proto", 16, 3, 0, 104},
    {"TNCommandArchives.proto", 33, 0, 0, 135},
};
// clang-format on

void add(const Descriptor& message, Counts& counts) {
  ++counts.messages;
  counts.enums += message.enum_type_count();
  counts.extensions += message.extension_count();
  counts.fields += message.field_count() + message.extension_count();
  for (int i = 0; i < message.nested_type_count(); ++i) add(*message.nested_type(i), counts);
}

Counts countsOf(const FileDescriptor& file) {
  Counts counts{0, file.enum_type_count(), file.extension_count(), file.extension_count()};
  for (int i = 0; i < file.message_type_count(); ++i) add(*file.message_type(i), counts);
  return counts;
}

const DescriptorPool* pool() {
  vn::iwork13::registerSchema();
  return DescriptorPool::generated_pool();
}

const FileDescriptor* findFile(const std::string& name) { return pool()->FindFileByName(name); }

TEST(Schema, IsRegisteredAsAWholeByTheFirstNeedOfADescriptorAndNotByLoading) {
  EXPECT_FALSE(isRegisteredByLoading);
  EXPECT_EQ(TSCH::ChartArchive::descriptor()->file()->name(), "TSCHArchives.proto");
  for (const auto& [name, expected] : kFiles) EXPECT_TRUE(isRegistered(name)) << name;
}

TEST(Schema, HoldsTheMessagesEnumsExtensionsAndFieldsOfEachFile) {
  for (const auto& [name, expected] : kFiles) {
    const FileDescriptor* file = findFile(name);
    ASSERT_NE(file, nullptr) << name;
    const Counts counts = countsOf(*file);
    EXPECT_EQ(counts.messages, expected.messages) << name;
    EXPECT_EQ(counts.enums, expected.enums) << name;
    EXPECT_EQ(counts.extensions, expected.extensions) << name;
    EXPECT_EQ(counts.fields, expected.fields) << name;
  }
}

TEST(Schema, Has29Files1243Messages155Enums68ExtensionsAnd6584Fields) {
  Counts all;
  for (const auto& [name, expected] : kFiles) {
    const Counts counts = countsOf(*findFile(name));
    all.messages += counts.messages;
    all.enums += counts.enums;
    all.extensions += counts.extensions;
    all.fields += counts.fields;
  }
  EXPECT_EQ(std::size(kFiles), 29U);
  EXPECT_EQ(all.messages, 1243);
  EXPECT_EQ(all.enums, 155);
  EXPECT_EQ(all.extensions, 68);
  EXPECT_EQ(all.fields, 6584);
}

TEST(Schema, IsWrittenInTheOlderSyntax) {
  for (const auto& [name, counts] : kFiles)
    EXPECT_EQ(findFile(name)->syntax(), FileDescriptor::SYNTAX_PROTO2) << name;
}

TEST(Schema, PutsEachFileIntoItsPackageBehindItsImports) {
  const FileDescriptor* charts = findFile("TSCHArchives.GEN.proto");
  EXPECT_EQ(charts->package(), "TSCH.Generated");
  std::set<std::string> imports;
  for (int i = 0; i < charts->dependency_count(); ++i)
    imports.insert(charts->dependency(i)->name());
  EXPECT_EQ(imports, (std::set<std::string>{"TSPMessages.proto", "TSKArchives.proto",
                                            "TSDArchives.proto", "TSSArchives.proto",
                                            "TSCHArchives.Common.proto", "TSCH3DArchives.proto"}));
  EXPECT_EQ(findFile("TSCHPreUFFArchives.proto")->package(), "TSCH.PreUFF");
  EXPECT_EQ(findFile("TSPMessages.proto")->dependency_count(), 0);
}

// A field's declaration as the schema writes it.
std::string declarationOf(const FieldDescriptor* field) {
  if (field == nullptr) return "no such field";
  google::protobuf::FieldDescriptorProto proto;
  field->CopyTo(&proto);
  const char* label = field->is_required()   ? "required"
                      : field->is_repeated() ? "repeated"
                                             : "optional";
  std::string text = std::string(label) + " ";
  if (field->message_type() != nullptr)
    text += field->message_type()->full_name();
  else if (field->enum_type() != nullptr)
    text += field->enum_type()->full_name();
  else
    text += field->type_name();
  text += " " + field->name() + " = " + std::to_string(field->number());
  if (field->has_default_value()) text += " default " + proto.default_value();
  if (field->options().packed()) text += " packed";
  if (field->options().deprecated()) text += " deprecated";
  return text;
}

std::string fieldOf(const std::string& message, int number) {
  const Descriptor* descriptor = pool()->FindMessageTypeByName(message);
  return declarationOf(descriptor != nullptr ? descriptor->FindFieldByNumber(number) : nullptr);
}

TEST(Schema, DeclaresTheTellingFields) {
  EXPECT_EQ(fieldOf("TSP.ArchiveInfo", 1), "optional uint64 identifier = 1");
  EXPECT_EQ(fieldOf("TSP.ArchiveInfo", 2), "repeated TSP.MessageInfo message_infos = 2");
  EXPECT_EQ(fieldOf("TSP.MessageInfo", 1), "required uint32 type = 1");
  EXPECT_EQ(fieldOf("TSP.MessageInfo", 2), "repeated uint32 version = 2 packed");
  EXPECT_EQ(fieldOf("TSP.FieldInfo", 2), "optional TSP.FieldInfo.Type type = 2 default Value");
  EXPECT_EQ(fieldOf("TSP.Color", 6), "optional float a = 6 default 1");
  EXPECT_EQ(fieldOf("TSP.Reference", 1), "required uint64 identifier = 1");
  EXPECT_EQ(fieldOf("KN.BuildArchive", 3), "optional double duration = 3 deprecated");
  EXPECT_EQ(fieldOf("TP.MoveDrawablesPageIndexCommandArchive", 3),
            "repeated TP.MoveDrawablesPageIndexCommandArchive.Drawable drawables = 3 deprecated");
  EXPECT_EQ(fieldOf("KN.MovieSegmentArchive", 2), "optional double start_time = 2 default -1");
  EXPECT_EQ(fieldOf("KN.RecordingEventArchive", 1), "optional double start_time = 1 default -1");
  EXPECT_EQ(fieldOf("KN.DesktopUILayoutArchive", 6),
            "optional bool inspector_pane_visible = 6 default true");
  EXPECT_EQ(fieldOf("TSCE.ASTNodeArrayArchive.ASTColumnCoordinateArchive", 1),
            "required sint32 column = 1");
  EXPECT_EQ(fieldOf("TSCE.CellCoordinateArchive", 1), "optional fixed32 packedData = 1");
  EXPECT_EQ(fieldOf("TSCH.ChartStylePreset", 7), "optional bytes uuid = 7");
}

TEST(Schema, DeclaresTheSixSweptFields) {
  EXPECT_EQ(fieldOf("TSWP.StorageArchive", 3), "repeated string text = 3");
  EXPECT_EQ(fieldOf("TSD.CommentStorageArchive", 1), "optional string text = 1");
  EXPECT_EQ(fieldOf("TST.TableDataList.ListEntry", 3), "optional string string = 3");
  EXPECT_EQ(fieldOf("TSWP.UndoTransaction.StorageAction", 5), "optional string string = 5");
  EXPECT_EQ(fieldOf("TSWP.UndoTransaction.InsertAttributeTransaction", 4),
            "optional string string = 4");
  EXPECT_EQ(fieldOf("TSWP.UndoTransaction.AttributeIndexTransaction", 4),
            "optional string string = 4");
}

void countSwept(const Descriptor& message, int& quoted, int& swept) {
  const auto count = [&](const FieldDescriptor& field) {
    if (field.cpp_type() != FieldDescriptor::CPPTYPE_STRING) return;
    ++quoted;
    if (field.name() == "text" || field.name() == "string") ++swept;
  };
  for (int i = 0; i < message.field_count(); ++i) count(*message.field(i));
  for (int i = 0; i < message.nested_type_count(); ++i)
    countSwept(*message.nested_type(i), quoted, swept);
}

TEST(Schema, HasNoSweptFieldAmongIts360StringAndBytesFieldsButThose) {
  int quoted = 0;
  int swept = 0;
  for (const auto& [name, counts] : kFiles) {
    const FileDescriptor* file = findFile(name);
    for (int i = 0; i < file->message_type_count(); ++i)
      countSwept(*file->message_type(i), quoted, swept);
  }
  EXPECT_EQ(quoted, 360);  // and six extension fields, which are never swept
  EXPECT_EQ(swept, 6);
}

std::string extensionOf(const std::string& message, int number) {
  return declarationOf(
      pool()->FindExtensionByNumber(pool()->FindMessageTypeByName(message), number));
}

TEST(Schema, DeclaresTheTellingExtensions) {
  EXPECT_EQ(extensionOf("TSCH.ChartDrawableArchive", 10000),
            "optional TSCH.ChartArchive unity = 10000");
  EXPECT_EQ(extensionOf("TSCH.ChartArchive", 10001),
            "optional bytes preset_uuid_for_pasteboard = 10001");
  EXPECT_EQ(extensionOf("TSD.FillArchive", 100), "optional TSCH.Chart3DFillArchive fill3d = 100");
  EXPECT_EQ(extensionOf("TSK.Address", 101), "optional TSK.RangeAddress range_address = 101");
}

TEST(Schema, DeclaresTheExtensionRanges) {
  const auto rangesOf = [](const std::string& message) {
    const Descriptor* descriptor = pool()->FindMessageTypeByName(message);
    std::set<std::pair<int, int>> ranges;
    for (int i = 0; i < descriptor->extension_range_count(); ++i)
      ranges.emplace(descriptor->extension_range(i)->start,
                     descriptor->extension_range(i)->end - 1);
    return ranges;
  };
  using Ranges = std::set<std::pair<int, int>>;
  EXPECT_EQ(rangesOf("TSCH.ChartArchive"), (Ranges{{10000, 536870911}}));
  EXPECT_EQ(rangesOf("TSD.FillArchive"), (Ranges{{100, 536870911}}));
  EXPECT_EQ(rangesOf("TSP.Reference"), Ranges{});
}

TEST(Schema, NumbersItsEnumValues) {
  const auto* kinds = pool()->FindEnumTypeByName("TSWP.StorageArchive.KindType");
  ASSERT_NE(kinds, nullptr);
  const std::pair<const char*, int> values[] = {{"BODY", 0},     {"CELL", 5},
                                                {"FOOTNOTE", 2}, {"HEADER", 1},
                                                {"NOTE", 4},     {"TABLEOFCONTENTS", 7},
                                                {"TEXTBOX", 3},  {"UNCLASSIFIED", 6}};
  EXPECT_EQ(kinds->value_count(), static_cast<int>(std::size(values)));
  for (const auto& [name, number] : values) {
    ASSERT_NE(kinds->FindValueByName(name), nullptr) << name;
    EXPECT_EQ(kinds->FindValueByName(name)->number(), number);
  }
  const auto* rules = pool()->FindEnumTypeByName("TSP.FieldInfo.UnknownFieldRule");
  EXPECT_EQ(rules->FindValueByName("NotSupported")->number(), -1);
}

// All message classes are linked in by these four files and their imports.
[[maybe_unused]] const void* const kLinked[] = {
    KN::CommandSlideInsertDrawablesArchive::descriptor(),
    TN::CommandFormChooseTargetTableArchive::descriptor(),
    TP::InsertFootnoteCommandArchive::descriptor(), TSCH::ChartArchive::descriptor()};

}  // namespace
