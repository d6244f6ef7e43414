// Where a Document gets its buffers from.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "dorvex/host.h"
#include "reading/open_input.h"
#include "reading/reader_module.h"

namespace dorvex {

class Document::Source {
 public:
  virtual ~Source() = default;
  // The next buffer of whole tokens, valid until the next call; nothing at the
  // end, for whatever reason.
  virtual std::optional<std::span<const unsigned char>> next() = 0;
  // The same of a document that is rendered, a piece at a time.
  virtual std::optional<Piece> nextPiece() { return std::nullopt; }
  virtual bool renders() const { return false; }
  // To be asked once next or nextPiece gave nothing.
  virtual Result result() = 0;
};

// A document of which nothing but the result is known.
std::unique_ptr<Document::Source> makeFailedSource(Result result);

// Reads in this process. The module's path in the options is absolute.
std::unique_ptr<Document::Source> makeSession(const HostOptions& options, OpenInput input,
                                              std::shared_ptr<ReaderModule> module,
                                              OpenScratchFile openScratchFile = openUnnamedFile);

// The result for a module that cannot be used, or not even be loaded.
Result moduleFailure(const std::string& message);
Result unloadable(const std::string& error);

// Bytes that an output buffer must really own for a declared size: the reader's
// last token may pass the declared end by 14 bytes, and one whole token of 4110
// bytes fits any buffer.
std::size_t ownedBufferSize(std::uint32_t declared);

}  // namespace dorvex
