#include "faults/packages.h"

#include <set>

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

std::string textOf(std::uint64_t identifier) { return "text " + std::to_string(identifier); }

std::string streamOf(std::uint64_t identifier) {
  return iwa({storage(identifier, {textOf(identifier)})});
}

}  // namespace

std::string nameOf(Shape shape) {
  switch (shape) {
    case Shape::kZip:
      return "Zip";
    case Shape::kNestedZip:
      return "NestedZip";
    case Shape::kDirectory:
      return "Directory";
    case Shape::kDirectoryWithZip:
      return "DirectoryWithZip";
  }
  return {};
}

Package::Package(Shape shape) : shape_(shape) {
  const std::string inner =
      zip({{"Document.iwa", streamOf(1)}, {"ViewState.iwa", "x"}, {"Tables/a.iwa", streamOf(2)}});
  const std::vector<Member> files = {{"Index/Document.iwa", streamOf(1)},
                                     {"Metadata/x.plist", "x"},
                                     {"Index/Slide.iwa", streamOf(2)},
                                     {"Index/Tables/a.iwa", streamOf(3)}};
  switch (shape) {
    case Shape::kZip:
      bytes_ = zip(files);
      objects_ = {{"Index/Document.iwa", 1}, {"Index/Slide.iwa", 2}, {"Index/Tables/a.iwa", 3}};
      break;
    case Shape::kNestedZip:
      bytes_ = zip({{"Index/Slide.iwa", streamOf(5)},
                    {"Index.zip", inner},
                    files[1],
                    {"Slide.iwa", streamOf(6)}});
      objects_ = {{"Index/Slide.iwa", 5},
                  {"Index.zip/Document.iwa", 1},
                  {"Index.zip/Tables/a.iwa", 2},
                  {"Slide.iwa", 6}};
      break;
    case Shape::kDirectory:
      writeDirectory(folder_.path(), files);
      objects_ = {{"Index/Document.iwa", 1}, {"Index/Slide.iwa", 2}, {"Index/Tables/a.iwa", 3}};
      break;
    case Shape::kDirectoryWithZip:
      writeDirectory(folder_.path(), {{"Index.zip", inner}});
      objects_ = {{"Index.zip/Document.iwa", 1}, {"Index.zip/Tables/a.iwa", 2}};
      break;
  }
}

Stream& Package::addTo(BareHost& host) const {
  if (!bytes_.empty()) return host.addDocument(bytes_);
  return host.addDirectoryDocument(folder_.path() / "Index" / "Document.iwa");
}

StatedRun Package::stated(const Faults& faults) const {
  return bytes_.empty() ? statedRunOfDirectory(folder_.path(), faults)
                        : statedRunOfZip(bytes_, faults);
}

std::string Package::pathOf(const std::string& member) const {
  return bytes_.empty() ? (folder_.path() / member).string() : member;
}

std::vector<std::string> Package::textsOf(const std::vector<std::string>& members) const {
  const std::set<std::string> read(members.begin(), members.end());
  std::set<std::uint64_t> identifiers;
  for (const auto& [member, identifier] : objects_) {
    if (read.contains(pathOf(member))) identifiers.insert(identifier);
  }
  std::vector<std::string> texts;
  for (const std::uint64_t identifier : identifiers) texts.push_back(textOf(identifier));
  return texts;
}

std::size_t openDescriptors() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator("/proc/self/fd")) ++count;
  return count;
}

}  // namespace dorvex::testing
