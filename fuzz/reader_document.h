// One document in the reader as it is linked into a fuzz target. The reader keeps
// the messages of a document allocated by rule; here they are taken down all the
// same, so that a leak of anything else shows.
#pragma once

#include "Readers/dorvexsr/dorvexglobals.h"
#include "Readers/hostapi/reader_interface.h"

namespace dorvex::fuzz {

class ReaderDocument {
 public:
  // Both must outlive the object.
  ReaderDocument(tag_TPVAPIServices* services, _VPTPIOobj* document);
  ReaderDocument(const ReaderDocument&) = delete;
  ReaderDocument& operator=(const ReaderDocument&) = delete;
  ~ReaderDocument();

  const ReaderInterface& interface() const { return interface_; }
  TAG_VNDORVEXGlobals* context() const { return context_; }

 private:
  ReaderInterface interface_{};
  TAG_VNDORVEXGlobals* context_;
};

}  // namespace dorvex::fuzz
