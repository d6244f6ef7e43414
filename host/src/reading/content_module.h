// The loaded content module.
#pragma once

#include <filesystem>
#include <memory>

#include "dorvex/content_module.h"

namespace dorvex {

// Stays loaded: whoever renders goes on doing so.
class ContentModule {
 public:
  // The one beside a reader module. Throws ModuleError.
  explicit ContentModule(const std::filesystem::path& readerModule);

  DorvexRenderContentFunction render() const { return render_; }

 private:
  DorvexRenderContentFunction render_ = nullptr;
};

}  // namespace dorvex
