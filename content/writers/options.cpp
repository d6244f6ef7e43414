#include "writers/options.h"

#include "writers/json_writer.h"

namespace dorvex::content {

std::unique_ptr<Sink> makeWriter(const WriterOptions& options, const Receiver& receiver) {
  return std::make_unique<JsonWriter>(receiver.output, options.oneLine);
}

}  // namespace dorvex::content
