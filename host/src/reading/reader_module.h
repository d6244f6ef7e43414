// A loaded reader module.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "Readers/hostapi/reader_interface.h"

namespace dorvex {

// The module cannot be loaded, or is no reader. what() says why.
struct ModuleError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class ReaderModule {
 public:
  // Loads the module, or gives the one that is loaded already: the shutdown
  // that precedes an unload would take a second user's messages away. The last
  // user shuts it down and unloads it. Throws ModuleError.
  static std::shared_ptr<ReaderModule> load(const std::filesystem::path& file);

  ~ReaderModule();
  ReaderModule(const ReaderModule&) = delete;
  ReaderModule& operator=(const ReaderModule&) = delete;

  // The reader's functions. AllocateContext, FreeContext, InitDoc and
  // FillBuffer are not null.
  const ReaderInterface& reader() const { return reader_; }

 private:
  explicit ReaderModule(const std::filesystem::path& file);

  void* handle_;
  DllShutdownFunction shutDown_;
  ReaderInterface reader_{};
};

}  // namespace dorvex
