// The objects of a package by their identifiers. Object streams are kept as they are
// decompressed, and an object is a range of one: a message is read when it is asked for.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dorvex/content.h"

namespace dorvex::content {

struct Object {
  std::uint64_t identifier = 0;
  std::uint32_t type = 0;
  std::uint32_t member = 0;  // the number of the package's member that it stands in
  std::string_view payload;
};

class Graph {
 public:
  // Reads every object stream of a package, whatever its name. Members that are none,
  // the rest of a stream behind what cannot be read, and objects whose identifier one
  // before them has are counted in leftOut.
  Graph(Package& package, LeftOut& leftOut);

  // Nothing where object 1 is not the document of an application.
  std::optional<Application> application() const;

  // The document's own object; one without fields where there is none.
  Object document() const;

  // The object of that identifier, valid as long as the graph; or null.
  const Object* find(std::uint64_t identifier) const;

  // All objects, ascending by identifier.
  const std::vector<Object>& objects() const { return objects_; }

 private:
  void addStream(std::size_t member, std::string_view name, std::string_view bytes,
                 LeftOut& leftOut);
  bool addArchive(std::size_t member, std::string_view& stream);
  void dropDisplaced(const Package& package, LeftOut& leftOut);
  std::string& streamsWithRoom(std::size_t bytes);

  std::deque<std::string> streams_;  // each of several members; never reallocated
  std::vector<Object> objects_;
};

}  // namespace dorvex::content
