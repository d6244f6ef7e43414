// The media files of a package, by the identifiers under which objects refer to them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "dorvex/content.h"
#include "graph/graph.h"

namespace dorvex::content {

class MediaFiles {
 public:
  // Both must outlive it.
  MediaFiles(const Package& package, const Graph& graph) : package_(package), graph_(graph) {}

  // What the document knows of a media file: its name, and the file if the package has
  // it, which is numbered with its first use. The kind is for the caller to say.
  Media use(std::uint64_t identifier);

  // The files that were used, in order of their first use.
  const std::vector<std::shared_ptr<const MediaFile>>& used() const { return used_; }

 private:
  struct Entry {
    std::string_view name;      // the person's
    std::string_view fileName;  // below Data/; empty where the package has no file
  };

  void load();
  std::size_t number(std::size_t member, std::string name);

  const Package& package_;
  const Graph& graph_;
  bool loaded_ = false;
  std::unordered_map<std::uint64_t, Entry> entries_;
  std::unordered_map<std::string, std::size_t> members_;  // by composed file name
  std::unordered_map<std::size_t, std::size_t> numbers_;  // in used_, by member
  std::vector<std::shared_ptr<const MediaFile>> used_;
};

}  // namespace dorvex::content
