// A package as the services of a host give it: a container or a directory, with the
// members of nested containers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/host_records.h"
#include "dorvex/content.h"

namespace dorvex::content {

class ServicesPackage final : public Package {
 public:
  // Everything given must outlive the package.
  explicit ServicesPackage(tag_TPVAPIServices& services);
  ~ServicesPackage() override;

  // Opens a container, or the package directory at a path; false where there is none.
  bool openContainer(_VPTPIOobj& document);
  bool openDirectory(const char* root);

  const std::vector<Member>& members() const override { return members_; }
  std::optional<std::string> read(std::size_t member) override;

  // Hands a member on a piece at a time. False where it cannot be read whole.
  using Take = std::function<void(std::string_view bytes)>;
  bool copy(std::size_t member, const Take& take);

  // What was found damaged before a member was asked for.
  const std::vector<DamagedMember>& damaged() const { return damaged_; }

 private:
  struct CloseStream {
    void operator()(_VPTPIOobj* io) const { io->Close(io); }
  };
  using Stream = std::unique_ptr<_VPTPIOobj, CloseStream>;

  // A container that is open, and the stream that it lies in unless it is the document.
  struct Container {
    Stream stream;
    void* handle = nullptr;
  };
  // Where a member lies: in a container, or at a path.
  struct Place {
    void* container = nullptr;
    std::int32_t index = 0;
    std::string path;
  };

  void loadContainerModule();
  void* open(_VPTPIOobj& io);
  void addMembersOf(void* container, const std::string& prefix, unsigned depth);
  void addNested(Stream stream, const std::string& name, unsigned depth);
  void add(std::string name, std::uint64_t bytes, Place place);
  void addDamaged(std::string name, std::string reason);
  Stream extract(const Place& place);
  Stream streamOf(const Place& place);

  tag_TPVAPIServices& services_;
  void* moduleHandle_ = nullptr;
  ContainerReaderInterface module_{};
  std::vector<Container> containers_;
  std::vector<Member> members_;
  std::vector<Place> places_;  // of the members, by the same numbers
  std::vector<DamagedMember> damaged_;
};

}  // namespace dorvex::content
