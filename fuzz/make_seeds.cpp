// Writes the first inputs of every target, from the samples' descriptions, from
// random messages of every type, and by hand where a case is known to matter; and
// the dictionaries that follow from the schema.
//
//   make_seeds FOLDER DESCRIPTION...
//
// The seeds of a layer go to FOLDER/LAYER, its dictionary to FOLDER/LAYER.dict.
#include <google/protobuf/message.h>

#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "TSTArchives.pb.h"
#include "Tools/formats/vniwork13/registry.h"
#include "Tools/formats/vniwork13/snappy_utils.h"
#include "differential/random_message.h"
#include "document_parts.h"
#include "isolation/worker_protocol.h"
#include "samples/sample_writer.h"
#include "support/package_writer.h"
#include "support/self_containing_zip.h"
#include "support/token_decoder.h"
#include "support/zip_bytes.h"

namespace dorvex::fuzz {
namespace {

namespace fs = std::filesystem;
using google::protobuf::Message;
using testing::Member;
using testing::Wire;

constexpr int kHighestType = 12100;
constexpr std::size_t kLargestSeed = 32768;

class Seeds {
 public:
  explicit Seeds(fs::path folder) : folder_(std::move(folder)) {}

  void add(const std::string& layer, const std::string& input) {
    if (input.size() > kLargestSeed) return;
    fs::create_directories(folder_ / layer);
    testing::writeFile(folder_ / layer / ("seed-" + std::to_string(++count_)), input);
  }

  void addDictionary(const std::string& layer, const std::vector<std::string>& words) {
    std::string lines;
    for (const std::string& word : words) lines += '"' + inHex(word) + "\"\n";
    testing::writeFile(folder_ / (layer + ".dict"), lines);
  }

 private:
  static std::string inHex(const std::string& bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    for (const char c : bytes) {
      const auto byte = static_cast<unsigned char>(c);
      hex += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return hex;
  }

  fs::path folder_;
  int count_ = 0;
};

// The beginnings of inputs, as the targets take them apart.

std::string word(std::size_t value) { return testing::encodeLittleEndian(value, 2); }

// Reads of everything asked for, of single bytes, and of mixed lengths.
std::vector<std::string> readLengths() {
  return {std::string(12, '\0'), std::string(12, '\1'),
          std::string("\0\7\x64\0\xFF\5\0\0\x40\3\x10\xC8", 12)};
}

void addMember(Seeds& seeds, const std::string& member) {
  for (const std::string& lengths : readLengths())
    seeds.add("chunk", word(4095) + lengths + member);
}

void addStream(Seeds& seeds, const std::string& stream) {
  for (int registry = 0; registry < 3; ++registry)
    seeds.add("object_walk", static_cast<char>(registry) + stream);
  seeds.add("inspect", '\1' + stream);
  for (const std::size_t bufferSize : {0U, 300U, 8191U})
    seeds.add("sweep", word(bufferSize) + stream);
}

void addPackage(Seeds& seeds, const std::string& package) {
  seeds.add("host", word(2000) + package);
  for (const std::string& lengths : readLengths())
    seeds.add("reader", word(2000) + lengths + package);
  for (const char behaviour : {'\0', '\3', '\4'})
    seeds.add("unzip", behaviour + readLengths().back() + package);
}

// Packages, with all that is in them.

void addPayloads(Seeds& seeds, const std::string& stream) {
  for (const ArchiveParts& archive : StreamParts::decode(stream).archives) {
    auto payload = archive.payloads.begin();
    for (const Field& info : archive.header) {
      if (info.number != ArchiveParts::kMessageInfos) continue;
      for (const Field& field : decodeFields(info.bytes).value_or(Fields()))
        if (field.number == ArchiveParts::kInfoType)
          seeds.add("printed_form", '\0' + word(field.value) + *payload);
      ++payload;
    }
  }
}

std::string streamOf(const Member& member) {
  const std::vector<char> stream = vn::iwork13::uncompressIwaBuffer(
      member.contents.data(), static_cast<std::uint32_t>(member.contents.size()));
  return {stream.begin(), stream.end()};
}

// All objects of a document, of which a walk takes what it needs.
void addContent(Seeds& seeds, const std::vector<Member>& members) {
  std::string stream;
  for (const Member& member : members)
    if (member.name.ends_with(".iwa")) stream += streamOf(member);
  seeds.add("content_walk", '\1' + stream);
}

void addAllOf(Seeds& seeds, const std::vector<Member>& members) {
  addPackage(seeds, testing::zip(members));
  addContent(seeds, members);
  for (const Member& member : members) {
    if (!member.name.ends_with(".iwa")) continue;
    addMember(seeds, member.contents);
    const std::string stream = streamOf(member);
    addStream(seeds, stream);
    addPayloads(seeds, stream);
  }
}

// Messages of every type that a registry builds.
void addRandomMessages(Seeds& seeds) {
  testing::RandomMessages random(13);
  std::string stream;
  std::uint64_t identifier = 0;
  for (int type = 0; type < kHighestType; ++type) {
    const std::unique_ptr<Message> prototype(vn::iwork13::getKeynoteMessage(type));
    if (prototype == nullptr) continue;
    const std::string payload = random.payload(*prototype);
    if (payload.size() > 2048) continue;
    seeds.add("printed_form", '\1' + word(static_cast<std::size_t>(type)) + payload);
    stream += testing::encodeArchive(testing::object(++identifier, type, payload));
    if (stream.size() < 1024) continue;
    addStream(seeds, stream);
    stream.clear();
  }
}

// What is known to matter, layer by layer.

void addChunkCases(Seeds& seeds) {
  const std::string block = testing::chunk(testing::literalBlock(std::string(5000, 'x')));
  addMember(seeds, "");
  addMember(seeds, block);
  addMember(seeds, testing::chunk("") + block);
  addMember(seeds, block + std::string(3, '\0'));
  addMember(seeds, block + testing::damagedChunk() + block);
  addMember(seeds, testing::chunk(testing::compressedBlock("short"), 100));
  addMember(seeds, testing::chunk(testing::literalBlock(std::string(4084, 'y'))) + block);
}

void addStreamCases(Seeds& seeds) {
  using testing::encodeArchive;
  using testing::object;
  using testing::storage;
  const std::string plain = encodeArchive(storage(1, {"text: ", "See string: ", "it's \\ \"q\""}));
  Wire deep;
  for (int level = 0; level < 110; ++level) deep = Wire().message(1, deep);
  addStream(seeds, plain);
  addStream(seeds, plain + encodeArchive(storage(1, {"second"})) + plain);
  addStream(seeds, encodeArchive(object(2, testing::kStorageType, deep)) + plain);
  addStream(seeds, encodeArchive(object(3, testing::kUnknownType, "unknown")) + plain);
  addStream(seeds, encodeArchive({4, {{testing::kStorageType, "\x1A\x7F", 200}}}) + plain);
  addStream(seeds, encodeArchive({5, {{testing::kStorageType, "", 1ULL << 31}}}) + plain);
  addStream(seeds, plain + std::string(10, '\xFF'));
  addStream(seeds, encodeArchive(object(6, 2001, Wire().bytes(9999, "See text: "))));
}

void addTileCases(Seeds& seeds) {
  const auto cell = [](unsigned type, std::uint32_t flags, std::size_t offset,
                       const std::string& value) {
    std::string record = std::string("\4\0", 2) + static_cast<char>(type) + '\0' +
                         testing::encodeLittleEndian(flags, 4);
    record.resize(offset);
    return record + value;
  };
  const std::string text = cell(3, 0x14, 16, testing::encodeLittleEndian(7, 4));
  const std::string number = cell(2, 0x24, 16, testing::encodeLittleEndian(0x400921FB54442D18, 8));
  std::string offsets(510, '\xFF');
  offsets.replace(0, 4, word(0) + word(text.size()));
  TST::Tile tile;
  tile.set_maxcolumn(3);
  for (const std::string& storage : {text + number, number, std::string()}) {
    TST::TileRowInfo* row = tile.add_rowinfos();
    row->set_cell_storage_buffer_pre_bnc(storage);
    row->set_cell_offsets_pre_bnc(offsets);
  }
  TST::TableDataList list;
  for (const char* string : {"plain", "a\\\\b\\101\\n\\t!"}) {
    auto* entry = list.add_entries();
    entry->set_key(7);
    entry->set_string(string);
  }
  const std::string bytes = tile.SerializePartialAsString();
  seeds.add("tile", word(bytes.size()) + bytes + list.SerializePartialAsString());
  seeds.add("tile", word(0) + text);
  seeds.add("tile", word(0) + number);
}

// A row with a text, a number and a formula, and the lists that they refer to, in both
// generations; see table_cells_fuzzer.cpp.
void addTableCells(Seeds& seeds) {
  using testing::encodeLittleEndian;
  const auto key = encodeLittleEndian(7, 4);
  const auto current = [&](char type, std::uint32_t mask, const std::string& fields) {
    return std::string{5, type} + std::string(6, '\0') + encodeLittleEndian(mask, 4) + fields;
  };
  const std::string text = current(3, 0x8, key);
  const std::string number =
      current(2, 0x3201,
              encodeLittleEndian(12345, 8) + encodeLittleEndian(0x303C000000000000, 8) + key +
                  encodeLittleEndian(1, 4) + key);
  const std::string older =
      std::string("\4\3\0\0", 4) + encodeLittleEndian(0x10, 4) + std::string(4, '\0') + key;
  TSCE::FormulaArchive formula;
  auto& nodes = *formula.mutable_ast_node_array();
  nodes.add_ast_node()->set_ast_node_type(TSCE::ASTNodeArrayArchive::NUMBER_NODE);
  nodes.mutable_ast_node(0)->set_ast_number_node_number(2);
  auto* sum = nodes.add_ast_node();
  sum->set_ast_node_type(TSCE::ASTNodeArrayArchive::FUNCTION_NODE);
  sum->set_ast_function_node_index(168);
  sum->set_ast_function_node_numargs(1);
  TST::TableDataList list;
  auto* entry = list.add_entries();
  entry->set_key(7);
  entry->set_string("text");
  *entry->mutable_formula() = formula;
  entry->mutable_format()->set_format_type(256);
  entry->mutable_format()->set_decimal_places(2);
  for (const bool isOlder : {false, true}) {
    TST::TileRowInfo row;
    if (isOlder) {
      row.set_cell_storage_buffer_pre_bnc(older);
      row.set_cell_offsets_pre_bnc(word(0));
    } else {
      row.set_cell_storage_buffer(text + number);
      row.set_cell_offsets(word(0) + word(text.size()));
    }
    const std::string bytes = row.SerializePartialAsString();
    seeds.add("table_cells", word(bytes.size()) + bytes + list.SerializePartialAsString());
  }
  const std::string half = encodeLittleEndian(0x3FE0000000000000, 8);
  for (const std::uint32_t type : {256U, 257U, 258U, 259U, 261U, 262U, 267U, 268U, 269U}) {
    TSK::FormatStructArchive format;
    format.set_format_type(type);
    format.set_decimal_places(253);
    format.set_date_time_format("EEEE, d MMMM y 'at' h:mm a");
    format.set_base(16);
    const std::string bytes = format.SerializePartialAsString();
    seeds.add("table_formats",
              half + word(bytes.size()) + bytes + formula.SerializePartialAsString());
  }
  TSK::CustomFormatArchive custom;
  custom.mutable_default_format()->set_custom_format_string("'a'#,##0.00##%");
  const std::string bytes = custom.SerializePartialAsString();
  seeds.add("table_formats", half + word(bytes.size()) + bytes);
}

void addStringCases(Seeds& seeds) {
  const std::string codePoint = testing::encodeLittleEndian(0x1F600, 4);
  for (const std::string text :
       {"plain", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80",
        "\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80", "\x80\x81\x93\x9D\xFE", "http://host/path",
        "  name: a/b*c?.txt", "\xEF\xBB\xBFmark", "1,2,,3\r\n"})
    seeds.add("string", std::string(1, '\1') + codePoint + "," + text);
}

void addZipCases(Seeds& seeds) {
  const std::string iwa = testing::iwa({testing::storage(1, {"text"})});
  const std::string nested = testing::zip({{"Document.iwa", iwa, true}});
  addPackage(seeds, testing::zip({}));
  addPackage(seeds, testing::zip({{"Index.zip", nested}, {"Index/", ""}}));
  addPackage(seeds, testing::selfContainingZip());
  addPackage(seeds, testing::zip({{"Index/Index.zip", testing::zip({{"Index.zip", nested}})}}));
  testing::RawMember described{.name = "Index/Document.iwa", .contents = iwa, .flags = 8};
  described.behind = testing::descriptor(iwa);
  described.inLocal = [](testing::RawMember& local) { local.crc = local.size = 0; };
  addPackage(seeds, testing::rawZip({described}));
  addPackage(seeds, testing::rawZip64({{.name = "Document.iwa", .contents = iwa}}));
  addPackage(seeds, testing::rawZip({{.name = "a", .contents = "x", .flags = 1},
                                     {.name = "b", .contents = "y", .method = 99},
                                     {.name = std::string("n\0l", 3), .contents = "z"}}));
  addPackage(seeds, "prefix" + testing::rawZip({{.name = "Document.iwa", .contents = iwa}}, {}, 6));
}

void addDirectoryCases(Seeds& seeds) {
  // Instructions and names of discovery_fuzzer.cpp.
  constexpr char kFile = 0;
  constexpr char kEnter = 3;
  constexpr char kLeave = 5;
  constexpr char kLink = 7;
  enum Name : char { kIndex, kTables, kIndexZip, kDocument, kSlide };
  const std::string program =
      std::string({kEnter, kIndex, kFile, kDocument, 0, kFile, kSlide, 1, kEnter, kTables, kFile,
                   kDocument, 1, kLeave, kLeave, kFile, kIndexZip, 6});
  for (const std::string& lengths : readLengths())
    for (const char marker : {'\0', '\1'}) seeds.add("discovery", marker + lengths + program);
  seeds.add("discovery", '\0' + readLengths().front() + std::string({kLink, 0, kTables}));
}

void addMessageCases(Seeds& seeds) {
  Result result;
  result.status = Status::kPartial;
  result.failure = Failure::kDamaged;
  result.kind = Kind::kPages;
  result.message = "partial text";
  result.moduleResult = 6;
  result.skipped = {{"Index/Document.iwa", "why"}, {"", ""}};
  for (const Result& sent : {result, Result{}}) {
    const std::vector<unsigned char> payload = encodeResult(sent);
    seeds.add("messages", word(4110) + std::string(payload.begin(), payload.end()));
  }
  for (const FrameType type : {FrameType::kTaken, FrameType::kTokens, FrameType::kResult}) {
    const auto header = encodeHeader({type, 51});
    seeds.add("messages", word(4110) + std::string(header.begin(), header.end()));
  }
  seeds.add("messages", word(4110) + testing::prologue() + testing::textTokens("text") +
                            testing::textTokens(std::string(5000, 'x')));
}

std::vector<std::string> typeWords() {
  std::vector<std::string> words;
  for (int type = 0; type < kHighestType; ++type) {
    const std::unique_ptr<Message> message(vn::iwork13::getKeynoteMessage(type));
    if (message != nullptr) words.push_back(word(static_cast<std::size_t>(type)));
  }
  return words;
}

// Choices for documents of the content view, from few to many.
void addDocuments(Seeds& seeds) {
  std::mt19937 random(16);
  for (const char* writer :
       {"csv_writer", "html_writer", "json_writer", "markdown_writer", "text_writer"}) {
    for (const std::size_t size : {0U, 20U, 200U, 1000U, 4000U}) {
      std::string choices;
      while (choices.size() < size) choices += static_cast<char>(random());
      seeds.add(writer, choices);
    }
  }
}

void makeSeeds(const fs::path& folder, const std::vector<fs::path>& descriptions) {
  fs::remove_all(folder);
  fs::create_directories(folder);
  Seeds seeds(folder);
  for (const fs::path& description : descriptions)
    addAllOf(seeds, samples::makeSample(testing::readFile(description)).members);
  addRandomMessages(seeds);
  addChunkCases(seeds);
  addStreamCases(seeds);
  addTileCases(seeds);
  addTableCells(seeds);
  addStringCases(seeds);
  addZipCases(seeds);
  addDirectoryCases(seeds);
  addMessageCases(seeds);
  addDocuments(seeds);
  seeds.addDictionary("printed_form", typeWords());
}

}  // namespace
}  // namespace dorvex::fuzz

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: make_seeds FOLDER DESCRIPTION...\n";
    return 2;
  }
  try {
    dorvex::fuzz::makeSeeds(argv[1], {argv + 2, argv + argc});
  } catch (const std::exception& error) {
    std::cerr << "make_seeds: " << error.what() << '\n';
    return 1;
  }
}
