#include "package/metadata.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "KNArchives.h"
#include "TNArchives.h"
#include "TPArchives.h"
#include "TSAArchives.h"
#include "TSKArchives.h"
#include "TSPMessages.h"
#include "graph/message.h"
#include "graph/plain_text.h"
#include "package/authors.h"
#include "package/message_at.h"
#include "package/property_list.h"

namespace dorvex::content {
namespace {

using PageSize = std::optional<std::pair<double, double>>;
using Shared = TSA::DocumentArchive;

std::string readMember(Package& package, std::string_view name) {
  const auto& members = package.members();
  const auto member = std::ranges::find(members, name, &Package::Member::name);
  if (member == members.end()) return {};
  return package.read(static_cast<std::size_t>(member - members.begin())).value_or("");
}

PageSize sizeOf(double width, double height) {
  const bool isSize = std::isfinite(width) && std::isfinite(height) && width > 0 && height > 0;
  return isSize ? PageSize({width, height}) : std::nullopt;
}

PageSize sizeOf(const Message<TSP::Size>& size) {
  return sizeOf(static_cast<double>(size.get(TSP::Size::width)),
                static_cast<double>(size.get(TSP::Size::height)));
}

// What the applications share of a document.
void readShared(const Message<Shared>& shared, Metadata& metadata) {
  using Kernel = TSK::DocumentArchive;
  metadata.language = plainText(shared.get(Shared::document_language));
  metadata.templateName = plainText(shared.get(Shared::template_identifier));
  metadata.locale = plainText(shared.get(Shared::super).get(Kernel::locale_identifier));
}

void readKeynoteDocument(const Graph& graph, std::string_view payload, Metadata& metadata) {
  using Document = KN::DocumentArchive;
  const Message<Document> document(payload);
  readShared(document.get(Document::super), metadata);
  const auto show = messageAt<KN::ShowArchive>(graph, document.get(Document::show));
  metadata.pageSize = sizeOf(show.get(KN::ShowArchive::size));
}

void readPagesDocument(const Graph& graph, std::string_view payload, Metadata& metadata) {
  using Document = TP::DocumentArchive;
  using Settings = TP::SettingsArchive;
  const Message<Document> document(payload);
  readShared(document.get(Document::super), metadata);
  const auto settings = messageAt<Settings>(graph, document.get(Document::settings));
  metadata.created = plainText(settings.get(Settings::creation_date));
  if (metadata.language.empty()) metadata.language = plainText(settings.get(Settings::language));
  if (metadata.templateName.empty())
    metadata.templateName = plainText(settings.get(Settings::orig_template));
  metadata.pageSize = sizeOf(static_cast<double>(document.get(Document::page_width)),
                             static_cast<double>(document.get(Document::page_height)));
}

void readNumbersDocument(std::string_view payload, Metadata& metadata) {
  using Document = TN::DocumentArchive;
  const Message<Document> document(payload);
  readShared(document.get(Document::super), metadata);
  metadata.pageSize = sizeOf(document.get(Document::page_size));
}

void readDocument(const Graph& graph, Application application, Metadata& metadata) {
  const std::string_view payload = graph.document().payload;
  switch (application) {
    case Application::kKeynote:
      return readKeynoteDocument(graph, payload, metadata);
    case Application::kPages:
      return readPagesDocument(graph, payload, metadata);
    case Application::kNumbers:
      return readNumbersDocument(payload, metadata);
  }
}

void readFiles(Package& package, Metadata& metadata) {
  metadata.documentId = plainText(readMember(package, "Metadata/DocumentIdentifier"));
  metadata.applicationBuilds =
      readPropertyList(readMember(package, "Metadata/BuildVersionHistory.plist")).strings;
  if (!metadata.documentId.empty() && !metadata.locale.empty()) return;
  // Documents of some years have one of the two here only.
  const auto properties = readPropertyList(readMember(package, "Metadata/Properties.plist"));
  if (metadata.documentId.empty()) metadata.documentId = properties.at("documentUUID");
  if (metadata.locale.empty()) metadata.locale = properties.at("locale");
}

}  // namespace

Metadata readMetadata(Package& package, const Graph& graph, Application application) {
  Metadata metadata;
  readDocument(graph, application, metadata);
  readFiles(package, metadata);
  metadata.authors = readAuthors(graph);
  return metadata;
}

}  // namespace dorvex::content
