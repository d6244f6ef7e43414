#include "module/services_package.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Readers/hostapi/container_status.h"
#include "module/outer_folder.h"

namespace dorvex::content {
namespace {

namespace fs = std::filesystem;

constexpr char kContainerModule[] = "unzip.so";
constexpr char kContainerEntryPoint[] = "unzipGetContainerReaderInterface";

// Bounds of the module's own; a host may have tighter ones.
constexpr unsigned kDeepestContainer = 16;
constexpr int kDeepestFolder = 16;
constexpr std::size_t kMostMembers = 200'000;
constexpr std::size_t kMostDamaged = 100;
// A member states its size before a byte of it is there.
constexpr std::uint64_t kReservedAtOnce = std::uint64_t{16} << 20;

bool isNestedContainer(std::string_view name) {
  return name == "Index.zip" || name.ends_with("/Index.zip");
}

}  // namespace

ServicesPackage::ServicesPackage(tag_TPVAPIServices& services) : services_(services) {}

ServicesPackage::~ServicesPackage() {
  // The inner ones lie in streams that the outer ones gave.
  for (auto container = containers_.rbegin(); container != containers_.rend(); ++container)
    module_.CloseContainer(container->handle);
  containers_.clear();
  if (moduleHandle_ != nullptr && services_.FreeDll != nullptr)
    services_.FreeDll(&services_, moduleHandle_);
}

void ServicesPackage::loadContainerModule() {
  if (moduleHandle_ != nullptr) return;
  if (services_.LoadDll(&services_, kContainerModule, &moduleHandle_) == 0) {
    moduleHandle_ = nullptr;
    return;
  }
  void* const fill = services_.GetDllSymbol(&services_, moduleHandle_, kContainerEntryPoint);
  if (fill != nullptr) reinterpret_cast<GetContainerReaderInterfaceFunction>(fill)(&module_);
}

void* ServicesPackage::open(_VPTPIOobj& io) {
  loadContainerModule();
  return module_.OpenContainer != nullptr ? module_.OpenContainer(&io, &services_, 0) : nullptr;
}

bool ServicesPackage::openContainer(_VPTPIOobj& document) {
  void* const handle = open(document);
  if (handle == nullptr) return false;
  containers_.push_back({nullptr, handle});
  addMembersOf(handle, "", 1);
  stripOuterFolder(members_);
  return true;
}

void ServicesPackage::addMembersOf(void* container, const std::string& prefix, unsigned depth) {
  const int count = module_.GetEntryCount(container);
  for (std::int32_t index = 0; index < count; ++index) {
    ContainerEntryInfo entry{};
    if (module_.GetEntryInfo(container, index, &entry) != VN_CONTAINER_OK) {
      addDamaged(prefix + "member number " + std::to_string(index + 1), "cannot be read");
      continue;
    }
    std::string name = prefix + entry.name;
    if (name.ends_with('/')) continue;
    const Place place{container, index, {}};
    if (isNestedContainer(name)) {
      addNested(extract(place), name, depth);
    } else {
      add(std::move(name), entry.size, place);
    }
  }
}

void ServicesPackage::addNested(Stream stream, const std::string& name, unsigned depth) {
  void* const handle = stream != nullptr && depth < kDeepestContainer ? open(*stream) : nullptr;
  if (handle == nullptr) return addDamaged(name, "cannot be read");
  containers_.push_back({std::move(stream), handle});
  addMembersOf(handle, name + "/", depth + 1);
}

// In the order of the names: that of the system is another each time.
bool ServicesPackage::openDirectory(const char* root) {
  std::vector<std::pair<std::string, std::uint64_t>> files;
  std::error_code error;
  fs::recursive_directory_iterator entry(root, error);
  if (error) return false;
  for (const fs::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
    std::error_code unknown;
    if (entry.depth() >= kDeepestFolder) entry.disable_recursion_pending();
    // Links lead out of the package, or in circles.
    if (entry->symlink_status(unknown).type() != fs::file_type::regular) continue;
    if (files.size() >= kMostMembers) break;
    files.emplace_back(entry->path().lexically_relative(root).string(), entry->file_size(unknown));
  }
  if (error) addDamaged("a folder", "cannot be read: " + error.message());
  std::ranges::sort(files);
  const std::string prefix = std::string(root) + "/";
  for (auto& [name, bytes] : files) {
    const Place place{nullptr, 0, prefix + name};
    if (isNestedContainer(name)) {
      addNested(streamOf(place), name, 0);
    } else {
      add(std::move(name), bytes, place);
    }
  }
  stripOuterFolder(members_);
  return true;
}

void ServicesPackage::add(std::string name, std::uint64_t bytes, Place place) {
  if (members_.size() >= kMostMembers) return;
  members_.push_back({std::move(name), bytes});
  places_.push_back(std::move(place));
}

void ServicesPackage::addDamaged(std::string name, std::string reason) {
  if (damaged_.size() < kMostDamaged) damaged_.push_back({std::move(name), std::move(reason)});
}

ServicesPackage::Stream ServicesPackage::extract(const Place& place) {
  Stream stream(services_.OpenFile(&services_, nullptr, "a+"));
  if (stream == nullptr ||
      module_.ExtractEntry(place.container, place.index, stream.get()) != VN_CONTAINER_OK)
    return nullptr;
  return stream->Open != nullptr && stream->Open(stream.get()) == 0 ? nullptr : std::move(stream);
}

ServicesPackage::Stream ServicesPackage::streamOf(const Place& place) {
  if (place.container != nullptr) return extract(place);
  Stream stream(services_.OpenFile(&services_, place.path.c_str(), "rb"));
  if (stream != nullptr && stream->Open != nullptr && stream->Open(stream.get()) == 0)
    return nullptr;
  return stream;
}

bool ServicesPackage::copy(std::size_t member, const Take& take) {
  const Stream stream = streamOf(places_.at(member));
  bool whole = false;
  if (stream != nullptr) {
    std::array<char, 65536> buffer;
    std::uint64_t left = members_[member].bytes;
    while (left > 0) {
      const auto wanted = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, buffer.size()));
      const int got = stream->Read(stream.get(), buffer.data(), wanted);
      if (got <= 0) break;
      take({buffer.data(), static_cast<std::size_t>(got)});
      left -= static_cast<std::uint64_t>(got);
    }
    whole = left == 0;
  }
  return whole;
}

std::optional<std::string> ServicesPackage::read(std::size_t member) {
  std::string contents;
  contents.reserve(std::min(members_[member].bytes, kReservedAtOnce));
  if (!copy(member, [&](std::string_view bytes) { contents.append(bytes); })) return std::nullopt;
  return contents;
}

}  // namespace dorvex::content
