// The host's I/O objects.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Readers/hostapi/host_records.h"
#include "bytes/byte_store.h"
#include "bytes/quota.h"
#include "looking/chunk_stream.h"
#include "looking/observations.h"

namespace dorvex {

// Thrown out of a slot to end the document at once. Neither is derived from
// std::exception on purpose: the reader drops a member for any of those and
// would go on, but ends the document for everything else.
//
// The reader asks again and again behind the end of a stream, or is about to
// walk a stream that it never finds the end of.
struct EndlessRead {};
// The document has passed a limit.
struct LimitPassed {};

// One open stream, ready for use from its birth. Everything that goes wrong is
// noted in the observations; the slots let nothing but EndlessRead escape. A
// write that would pass a limit takes nothing: what writes is the container
// module, which need not be one through which an exception may pass.
class IoObject : public _VPTPIOobj {
 public:
  // What the stream holds decides how it may be read.
  enum class Content {
    kBytes,    // given as asked for
    kChunks,   // a member stream: looked through once, read in step with its chunks
    kUnknown,  // chunks, unless it begins like a zip
  };

  struct Settings {
    Content content = Content::kBytes;
    bool alignReads = true;   // for chunks
    bool lookThrough = true;  // false: the bytes are given as they are, whatever they hold
    std::string name;         // for the observations
    std::string path;         // what pathName shows; empty for none
    Quota* quota = nullptr;   // that writing counts against; must outlive the object
  };

  IoObject(std::unique_ptr<ByteStore> store, Settings settings, Observations& observations);
  IoObject(const IoObject&) = delete;
  IoObject& operator=(const IoObject&) = delete;
  ~IoObject();

  // Names the member that an empty scratch stream is about to receive; the name
  // tells its content.
  void receiveMember(std::string name);

  const std::string& name() const { return settings_.name; }
  std::uint64_t size() const { return store_->size(); }
  ByteStore& store() { return *store_; }

 private:
  static int open(_VPTPIOobj* io);
  static int read(_VPTPIOobj* io, void* buffer, std::uint32_t count);
  static int write(_VPTPIOobj* io, const void* buffer, std::uint32_t count);
  static int seek(_VPTPIOobj* io, std::int64_t offset, int whence);
  static std::int64_t tell(_VPTPIOobj* io);

  void lookThrough();
  void lookThroughChunks();
  std::int64_t readSome(void* buffer, std::uint32_t count);
  void noteEnd(bool atEnd);
  bool mayTake(std::uint32_t count);

  std::unique_ptr<ByteStore> store_;
  Settings settings_;
  Observations& observations_;
  std::optional<ChunkAlignedReader> aligned_;
  std::uint64_t position_ = 0;
  bool lookedThrough_ = false;
  int endsReported_ = 0;
};

// The content that a member or file of this name has.
IoObject::Content contentOf(const std::string& name);

}  // namespace dorvex
