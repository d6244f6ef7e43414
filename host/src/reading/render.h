// Driving the content module through one document.
#pragma once

#include <functional>
#include <memory>

#include "dorvex/host.h"
#include "reading/content_module.h"
#include "reading/open_input.h"
#include "reading/reader_module.h"

namespace dorvex {

// Renders a document by options.rendering, which is set, and hands the pieces on; false
// from take ends it. A rendering that shows nothing of a document in which the reader
// finds texts is a failure: the reader is run for that alone.
using TakePiece = std::function<bool(const Piece& piece)>;
Result renderDocument(const HostOptions& options, OpenInput input, const ContentModule& content,
                      const std::shared_ptr<ReaderModule>& reader,
                      const OpenScratchFile& openScratchFile, const TakePiece& take);

}  // namespace dorvex
