#include "graph/reading.h"

namespace dorvex::content {
namespace {

// A damaged document could have one for each of its cells.
constexpr std::size_t kMostProblems = 100;

}  // namespace

const Object* Reading::follow(const Message<TSP::Reference>& reference) {
  const auto identifier = reference.get(TSP::Reference::identifier);
  if (identifier == 0) return nullptr;
  const Object* object = graph_.find(identifier);
  if (object == nullptr) ++leftOut_.dangling;
  return object;
}

Media Reading::media(const Message<TSP::DataReference>& reference, MediaKind kind) {
  Media media;
  const auto identifier = reference.get(TSP::DataReference::identifier);
  if (media_ != nullptr && identifier != 0) media = media_->use(identifier);
  media.kind = kind;
  return media;
}

void Reading::addProblem(std::string problem) {
  if (wantsProblems()) leftOut_.problems.push_back(std::move(problem));
}

bool Reading::wantsProblems() const { return leftOut_.problems.size() < kMostProblems; }

}  // namespace dorvex::content
