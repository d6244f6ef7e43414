#include "reading/content_module.h"

#include <dlfcn.h>

#include <string>

#include "reading/reader_module.h"

namespace dorvex {
namespace {

constexpr char kContentModule[] = "dorvexcontent.so";

}  // namespace

ContentModule::ContentModule(const std::filesystem::path& readerModule) {
  const auto path = std::filesystem::absolute(readerModule).parent_path() / kContentModule;
  void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* const error = ::dlerror();
    throw ModuleError(error != nullptr ? error : path.string());
  }
  render_ = reinterpret_cast<DorvexRenderContentFunction>(::dlsym(handle, kDorvexRenderContent));
  if (render_ == nullptr) throw ModuleError(path.string() + ": not a content module");
}

}  // namespace dorvex
