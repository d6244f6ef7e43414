#include "reader_document.h"

#include "Readers/hostapi/reader_exports.h"
#include "fuzz_input.h"

namespace dorvex::fuzz {

ReaderDocument::ReaderDocument(tag_TPVAPIServices* services, _VPTPIOobj* document) {
  dorvexGetReaderInterface(&interface_);
  std::uint32_t result = 0;
  context_ = static_cast<TAG_VNDORVEXGlobals*>(
      interface_.AllocateContext(nullptr, nullptr, &result, services, 0));
  require(context_ != nullptr && result == 1, "a context can be had");
  interface_.InitDoc(context_, nullptr, 0, document);
}

ReaderDocument::~ReaderDocument() {
  const vn::iwork13::MessageMap* map = context_->messageMap;
  interface_.FreeContext(context_);
  delete map;
}

}  // namespace dorvex::fuzz
