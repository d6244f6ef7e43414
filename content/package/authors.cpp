#include "package/authors.h"

#include <cstdint>
#include <unordered_set>
#include <utility>

#include "TSDArchives.h"
#include "TSKArchives.h"
#include "TSPMessages.h"
#include "TSWPArchives.h"
#include "graph/message.h"
#include "graph/plain_text.h"
#include "package/message_at.h"

namespace dorvex::content {
namespace {

using ChangeArchive = TSWP::ChangeArchive;
using CommentStorage = TSD::CommentStorageArchive;
using Session = TSWP::ChangeSessionArchive;

// A reference to the author of an object that only somebody's writing makes; an empty
// one for any other object.
Message<TSP::Reference> authorOf(const Graph& graph, const Object& object) {
  if (Types<CommentStorage>::hold(object.type)) {
    const Message<CommentStorage> comment(object.payload);
    // One without words belongs to a marking.
    if (!comment.get(CommentStorage::text).empty()) return comment.get(CommentStorage::author);
  } else if (Types<ChangeArchive>::hold(object.type)) {
    const auto session = Message<ChangeArchive>(object.payload).get(ChangeArchive::session);
    return messageAt<Session>(graph, session).get(Session::author);
  }
  return {};
}

}  // namespace

std::vector<std::string> readAuthors(const Graph& graph) {
  using Author = TSK::AnnotationAuthorArchive;
  std::vector<std::string> names;
  std::unordered_set<std::uint64_t> seen;
  std::unordered_set<std::string> listed;
  for (const Object& object : graph.objects()) {
    const auto author = authorOf(graph, object);
    if (!seen.insert(author.get(TSP::Reference::identifier)).second) continue;
    std::string name = plainText(messageAt<Author>(graph, author).get(Author::name));
    if (!name.empty() && listed.insert(name).second) names.push_back(std::move(name));
  }
  return names;
}

}  // namespace dorvex::content
