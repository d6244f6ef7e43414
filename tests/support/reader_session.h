// Drives a reader through its table, from a context to the end of a document.
#pragma once

#include <string>
#include <vector>

#include "Readers/hostapi/reader_interface.h"
#include "support/bare_host.h"
#include "support/guarded_buffer.h"

namespace dorvex::testing {

// What one call of the pump gave. length and percent keep their old values
// where the call failed.
struct Fill {
  int result;
  unsigned length;
  int percent;
  std::string bytes;
};

// A buffer larger than the stream of any document that tests use.
inline constexpr unsigned kLargeBuffer = 8U << 20;

// A context over one document of a host; frees it at the end.
class ReaderSession {
 public:
  ReaderSession(const ReaderInterface& reader, BareHost& host, _VPTPIOobj* document);
  ReaderSession(const ReaderSession&) = delete;
  ReaderSession& operator=(const ReaderSession&) = delete;
  ~ReaderSession() { free(); }

  // One call of the pump with a declared size, into memory that owns just what
  // the reader may write: the larger of size + 14 and 4110 bytes.
  Fill fill(unsigned size);

  // Frees the context before the end.
  void free();

  void* context() const { return context_; }

  // The host's variables, which the pump writes.
  unsigned length = kUntouched;
  int percent = kUntouched;

  static constexpr int kUntouched = 1234567;

 private:
  const ReaderInterface& reader_;
  void* context_;
};

// All calls of the pump for one document.
struct Pumped {
  std::vector<Fill> fills;

  int result() const { return fills.back().result; }
  // The buffers of the successful calls, one behind the other.
  std::string stream() const;
};

// Pumps a document to its end with host buffers of one size.
Pumped pump(const ReaderInterface& reader, BareHost& host, _VPTPIOobj* document,
            unsigned size = kLargeBuffer);

}  // namespace dorvex::testing
