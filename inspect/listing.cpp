#include "inspect/listing.h"

#include <google/protobuf/message.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/registry.h"
#include "looking/chunk_stream.h"
#include "looking/document_kind.h"

namespace dorvex::cli {
namespace {

struct ApplicationRow {
  Kind kind;
  const char* name;
  const char* extension;
  vn::iwork13::MessageFactory factory;
};

// The first row stands for an unknown application: the reader takes every
// document for a Pages document.
constexpr std::array<ApplicationRow, 4> kApplications = {{
    {Kind::kUnknown, "unknown", nullptr, vn::iwork13::getPagesMessage},
    {Kind::kPages, "pages", ".pages", vn::iwork13::getPagesMessage},
    {Kind::kKeynote, "keynote", ".key", vn::iwork13::getKeynoteMessage},
    {Kind::kNumbers, "numbers", ".numbers", vn::iwork13::getNumbersMessage},
}};

template <typename Predicate>
const ApplicationRow& findRow(Predicate predicate) {
  const auto row = std::find_if(kApplications.begin(), kApplications.end(), predicate);
  return row != kApplications.end() ? *row : kApplications.front();
}

const ApplicationRow& rowOf(Kind kind) {
  return findRow([kind](const auto& row) { return row.kind == kind; });
}

Kind guessKind(const Listing& listing, const KindEvidence& evidence) {
  if (evidence.kind() != Kind::kUnknown) return evidence.kind();
  const std::string extension = std::filesystem::path(listing.path).extension();
  return findRow([&](const auto& row) {
           return row.extension != nullptr && extension == row.extension;
         })
      .kind;
}

// Chunks that are there in full.
std::uint64_t countChunks(ByteStore& store) {
  using namespace vn::iwork13;
  std::uint64_t count = 0;
  std::uint64_t position = 0;
  std::array<unsigned char, kChunkHeaderSize> header{};
  while (store.readAt(position, header.data(), header.size()) == kChunkHeaderSize &&
         header[0] == 0) {
    position += kChunkHeaderSize + getChunkLength(header.data());
    if (position > store.size()) break;
    ++count;
  }
  return count;
}

class Lister {
 public:
  Lister(Listing& listing, std::optional<std::uint64_t> wanted)
      : listing_(listing), objects_(wanted) {}

  void visit(const PackageMember& member, ByteStore* contents) {
    ListedMember& listed = listing_.members.emplace_back(ListedMember{member});
    evidence_.noteName(member.name);
    if (contents != nullptr) visitStream(listed.member, *contents, listed.chunks);
    if (!listed.member.fault.empty()) listing_.faults.push_back(listed.member.fault);
  }

  std::vector<ListedObject> takeObjects() { return objects_.take(); }
  const KindEvidence& evidence() const { return evidence_; }

 private:
  // The reader takes nothing at all from a stream with a bad chunk.
  void visitStream(PackageMember& member, ByteStore& contents, std::uint64_t& chunks) {
    chunks = countChunks(contents);
    ObjectStream stream;
    auto fault = findChunkFault(contents, &stream);
    // As for the host, which sees only what the reader opens.
    if (member.selected) evidence_.noteObjects(member.name, stream.bytes);
    if (!fault && stream.bytes.size() < stream.size) fault = "it holds more than the reader reads";
    const bool read = member.selected && !fault;
    const auto objectFault = objects_.list(stream.bytes, listing_.members.size() - 1, read);
    if (!fault) fault = objectFault;
    if (fault) member.fault = unsoundMember(member.name, *fault);
  }

  Listing& listing_;
  ObjectLister objects_;
  KindEvidence evidence_;
};

}  // namespace

Kind kindNamed(const std::string& name) {
  return findRow([&](const auto& row) { return name == row.name; }).kind;
}

std::string nameOf(Kind kind) { return rowOf(kind).name; }

std::unique_ptr<google::protobuf::Message> newMessage(Kind kind, int type) {
  return std::unique_ptr<google::protobuf::Message>(rowOf(kind).factory(type));
}

Listing listDocument(const std::string& path, const std::filesystem::path& moduleFolder,
                     std::optional<std::uint64_t> wanted, const PackageIsOpen& isOpen) {
  Listing listing;
  listing.path = path;
  Lister lister(listing, wanted);
  const PackageOutcome outcome = visitPackage(
      path, moduleFolder,
      [&](const PackageMember& member, ByteStore* contents) { lister.visit(member, contents); },
      isOpen);
  listing.directory = outcome.directory;
  listing.objects = lister.takeObjects();
  listing.kind = lister.evidence().kind();
  listing.classes = guessKind(listing, lister.evidence());
  if (outcome.result.status != Status::kOk) listing.faults.push_back(outcome.result.message);
  return listing;
}

}  // namespace dorvex::cli
