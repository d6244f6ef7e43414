// Objects for tests of the content view, and the wire format of what they share.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "content/support/files.h"
#include "dorvex/content.h"
#include "graph/graph.h"
#include "graph/media_files.h"
#include "graph/reading.h"
#include "support/package_writer.h"

namespace dorvex::testing {

// A reading of some objects that stand in a package, beside other members.
class Objects {
 public:
  explicit Objects(const std::vector<Archive>& archives,
                   content::Application application = content::Application::kPages,
                   std::vector<Member> members = {});

  content::Reading& reading() { return reading_; }
  const content::LeftOut& leftOut() const { return leftOut_; }
  const content::MediaFiles& media() const { return media_; }

  // The object of that identifier, which must be there.
  const content::Object& object(std::uint64_t identifier) const;
  template <typename M>
  content::Message<M> message(std::uint64_t identifier) const {
    return content::Message<M>(object(identifier).payload);
  }

 private:
  MemoryPackage package_;
  content::LeftOut leftOut_;
  content::Graph graph_;
  content::MediaFiles media_;
  content::Reading reading_;
};

// A TSP.Reference, or a TSP.DataReference.
Wire reference(std::uint64_t identifier);

// An attribute table: positions, and the objects from there on; 0 for none.
Wire objectTable(const std::vector<std::pair<std::uint32_t, std::uint64_t>>& entries);

// An attribute table of numbers: positions, and the first of the two.
Wire numberTable(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& entries);

// The numbers that a double has in a fixed64 field, and a float in a fixed32 field.
std::uint64_t bitsOf(double value);
std::uint32_t bitsOfFloat(float value);

}  // namespace dorvex::testing
