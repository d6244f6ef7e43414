#include "documents.h"

#include <algorithm>
#include <filesystem>

#include "Tools/formats/vniwork13/snappy_utils.h"
#include "support/corpus.h"
#include "support/package_writer.h"

namespace dorvex::bench {
namespace {

namespace fs = std::filesystem;
using testing::Member;

}  // namespace

bool isSelected(std::string_view name) {
  static const char* const kPrefixes[] = {
      "Index/Document", "Document", "Index/CalculationEngine", "CalculationEngine",
      "Index/Slide",    "Slide",    "Index/Tables/",           "Tables/"};
  return name.ends_with(".iwa") &&
         std::ranges::any_of(kPrefixes, [&](auto prefix) { return name.starts_with(prefix); });
}

namespace {

void addMembers(const std::string& zip, Document& document) {
  for (Member& member : testing::unzip(zip)) {
    if (member.name.ends_with("Index.zip"))
      addMembers(member.contents, document);
    else if (isSelected(member.name))
      document.members.push_back(std::move(member.contents));
  }
}

void measure(Document& document) {
  for (const auto& stream : objectStreams(document)) document.streamBytes += stream.size();
}

}  // namespace

Document openDocument(const fs::path& path) {
  Document document{path.filename(), {}, {}, {}};
  if (fs::is_directory(path)) {
    document.memberPath = path / "Index" / "Document.iwa";
  } else {
    document.bytes = testing::readFile(path);
  }
  return document;
}

namespace {

Document loadDocument(const fs::path& path) {
  Document document = openDocument(path);
  const fs::path zip = path / "Index.zip";
  if (!document.bytes.empty()) addMembers(document.bytes, document);
  if (fs::exists(zip)) addMembers(testing::readFile(zip), document);
  measure(document);
  return document;
}

// A style that holds no text: a stand-in for most of a real document.
testing::Archive style(std::uint64_t identifier) {
  testing::Wire properties;
  for (unsigned field = 1; field < 30; ++field) properties.fixed32(field, 0x3F800000U + field);
  testing::Wire payload;
  testing::Wire super;
  super.bytes(1, "a style").bytes(2, "style-identifier-" + std::to_string(identifier));
  payload.message(1, super).varint(10, 12).message(11, properties);
  return testing::object(identifier, 2021, payload);  // TSWP.CharacterStyleArchive
}

testing::Archive strings(std::uint64_t identifier, unsigned rows) {
  testing::Wire list;
  list.varint(1, 1).varint(2, rows);
  for (unsigned key = 1; key <= rows; ++key) {
    testing::Wire entry;
    entry.varint(1, key).varint(2, 1).bytes(3, "cell " + std::to_string(identifier * rows + key));
    list.message(3, entry);
  }
  return testing::object(identifier, testing::kTableDataListType, list);
}

testing::Archive sentence(std::uint64_t identifier) {
  return testing::storage(identifier,
                          {"The lamp of lighthouse " + std::to_string(identifier) +
                           " turns once in ten seconds, and nobody is up to see it.\n"});
}

// Mostly styles, as in a real document.
testing::Archive mixed(std::uint64_t identifier) {
  if (identifier % 16 == 0) return sentence(identifier);
  return identifier % 16 == 1 ? strings(identifier, 9) : style(identifier);
}

using MakeArchive = testing::Archive (*)(std::uint64_t identifier);

Document package(const std::string& name, const std::vector<Member>& files) {
  Document document{name, testing::zip(files), {}, {}};
  addMembers(document.bytes, document);
  measure(document);
  return document;
}

Member memberOf(int number, const std::vector<testing::Archive>& archives) {
  return {"Index/Tables/Member-" + std::to_string(number) + ".iwa", testing::iwa(archives)};
}

Document generated(const std::string& name, MakeArchive make, int objects, int members) {
  std::vector<Member> files;
  std::uint64_t identifier = 1;
  for (int member = 0; member < members; ++member) {
    std::vector<testing::Archive> archives;
    for (int i = 0; i < objects / members; ++i) archives.push_back(make(identifier++));
    files.push_back(memberOf(member, archives));
  }
  return package(name, files);
}

Document table(const std::string& name, unsigned rows) {
  return package(name, {memberOf(0, {strings(1, rows)})});
}

Document oneText(const std::string& name, std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += "nobody is up to see it, \"and\" the lamp turns\n";
  return package(name, {memberOf(0, {testing::storage(1, {text})})});
}

}  // namespace

std::vector<std::vector<unsigned char>> objectStreams(const Document& document) {
  std::vector<std::vector<unsigned char>> streams;
  for (const std::string& member : document.members) {
    const auto* cursor = reinterpret_cast<const unsigned char*>(member.data());
    const auto* end = cursor + member.size();
    vn::iwork13::DataDecompresser decompresser{};
    while (cursor != end) {
      const std::uint32_t length = vn::iwork13::getChunkLength(cursor);
      decompresser.decompressChunk(cursor + vn::iwork13::kChunkHeaderSize, length);
      cursor += vn::iwork13::kChunkHeaderSize + length;
    }
    streams.push_back(std::move(decompresser.objectStream));
  }
  return streams;
}

const std::vector<Document>& corpus() {
  static const std::vector<Document> documents = [] {
    std::vector<Document> found;
    for (const std::string& name : testing::corpusDocuments()) {
      try {
        Document document = loadDocument(testing::corpusPath(name));
        if (document.streamBytes > 0) found.push_back(std::move(document));
      } catch (const std::exception&) {
        // The folder holds a few files that are no packages.
      }
    }
    return found;
  }();
  return documents;
}

const std::vector<Document>& generatedDocuments() {
  static const std::vector<Document> documents = {
      generated("objects-3k", mixed, 3'000, 3),
      generated("objects-30k", mixed, 30'000, 3),
      generated("objects-300k", mixed, 300'000, 3),
      table("rows-10k", 10'000),
      table("rows-1000k", 1'000'000),
      generated("storages-4k", sentence, 4'000, 10),
      generated("storages-400k", sentence, 400'000, 10),
      generated("members-30", mixed, 300, 30),
      generated("members-3000", mixed, 30'000, 3'000),
      oneText("text-500k", 500'000),
      oneText("text-50000k", 50'000'000),
  };
  return documents;
}

}  // namespace dorvex::bench
