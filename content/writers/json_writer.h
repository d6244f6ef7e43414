// A document as one JSON object: docs/content.md tells its keys, docs/content.schema.json
// their types. The same document gives the same bytes.
#pragma once

#include <cstddef>

#include "dorvex/content.h"
#include "writers/json_emitter.h"
#include "writers/output.h"

namespace dorvex::content {

class JsonWriter final : public Sink {
 public:
  // In one line, but for the line feed at the end, or with one for each slide, block and
  // row of cells.
  explicit JsonWriter(Output::Take take, bool oneLine = false)
      : output_(std::move(take)), json_(output_, oneLine) {}

  void document(Application application, const Metadata& metadata) override;
  void slide(const Slide& slide) override;
  void sheet(const Sheet& sheet) override;
  void body(const Block& block) override;
  void section(const Section& section) override;
  void floating(const FloatingPage& page) override;
  void footnote(const Footnote& footnote) override;
  void end(const Summary& summary) override;

 private:
  void enterList(std::size_t list);

  Output output_;
  JsonEmitter json_;
  Application application_ = Application::kKeynote;
  std::size_t list_ = 0;  // of those of the application, the one that is being written
};

}  // namespace dorvex::content
