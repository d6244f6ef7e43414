// Packages for tests of the content view.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "dorvex/content.h"
#include "support/package_writer.h"

namespace dorvex::testing {

// A package over members in memory. Names are what it is told.
class MemoryPackage final : public content::Package {
 public:
  explicit MemoryPackage(const std::vector<testing::Member>& members);

  const std::vector<Member>& members() const override { return members_; }
  std::optional<std::string> read(std::size_t member) override { return contents_.at(member); }

 private:
  std::vector<Member> members_;
  std::vector<std::string> contents_;
};

// The package at a path: a zip or a directory, with the members of nested zips, and
// without the outer folder if there is one. Throws std::runtime_error for what is
// neither.
MemoryPackage packageAt(const std::filesystem::path& path);

}  // namespace dorvex::testing
