#include "reading/reader_module.h"

#include <dlfcn.h>

#include <map>
#include <mutex>
#include <string>

namespace dorvex {
namespace {

std::string lastLoaderError(const std::string& otherwise) {
  const char* error = ::dlerror();
  return error != nullptr ? error : otherwise;
}

template <typename Function>
Function find(void* handle, const char* symbol) {
  return reinterpret_cast<Function>(::dlsym(handle, symbol));
}

bool isComplete(const ReaderInterface& reader) {
  return reader.AllocateContext != nullptr && reader.FreeContext != nullptr &&
         reader.InitDoc != nullptr && reader.FillBuffer != nullptr;
}

}  // namespace

std::shared_ptr<ReaderModule> ReaderModule::load(const std::filesystem::path& file) {
  static std::mutex mutex;
  static std::map<std::filesystem::path, std::weak_ptr<ReaderModule>> loaded;
  std::error_code ignored;
  const auto key = std::filesystem::weakly_canonical(file, ignored);
  const std::lock_guard lock(mutex);
  auto& known = loaded[key];
  auto module = known.lock();
  if (!module) {
    module.reset(new ReaderModule(file));
    known = module;
  }
  return module;
}

ReaderModule::ReaderModule(const std::filesystem::path& file) {
  if (file.empty()) throw ModuleError("no file is named");
  // Without a slash the loader would search its own folders.
  const auto path = std::filesystem::absolute(file);
  handle_ = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) throw ModuleError(lastLoaderError(path.string()));
  shutDown_ = find<DllShutdownFunction>(handle_, "vnDllShutdown");
  const auto fill = find<GetReaderInterfaceFunction>(handle_, "dorvexGetReaderInterface");
  const auto start = find<DllInitFunction>(handle_, "vnDllInit");
  if (fill != nullptr) fill(&reader_);
  if (fill == nullptr || !isComplete(reader_) || (start != nullptr && !start())) {
    ::dlclose(handle_);
    throw ModuleError(path.string() + ": not a reader module");
  }
}

ReaderModule::~ReaderModule() {
  if (shutDown_ != nullptr) shutDown_();
  ::dlclose(handle_);
}

}  // namespace dorvex
