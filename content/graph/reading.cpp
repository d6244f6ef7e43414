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

void Reading::addProblem(std::string problem) {
  if (leftOut_.problems.size() < kMostProblems) leftOut_.problems.push_back(std::move(problem));
}

}  // namespace dorvex::content
