// Stands before a writer and remembers what the host is told of a document.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dorvex/content.h"

namespace dorvex::content {

class Watch final : public Sink {
 public:
  // damaged is what is known to be damaged before the document is read.
  Watch(Sink& writer, std::vector<DamagedMember> damaged)
      : writer_(writer), damaged_(std::move(damaged)) {}

  void document(Application application, const Metadata& metadata) override;
  void slide(const Slide& slide) override;
  void sheet(const Sheet& sheet) override;
  void body(const Block& block) override;
  void beginSection(const Section& section) override;
  void section(const Section& section) override { writer_.section(section); }
  void floating(const FloatingPage& page) override;
  void footnote(const Footnote& footnote) override { writer_.footnote(footnote); }
  void end(const Summary& summary) override;

  std::optional<Application> application() const { return application_; }
  // Whether there is anything to see in the document.
  bool showsAnything() const { return showsAnything_; }
  const std::vector<DamagedMember>& damaged() const { return damaged_; }
  const std::vector<std::shared_ptr<const MediaFile>>& media() const { return media_; }

 private:
  void look(const std::vector<Block>& blocks);

  Sink& writer_;
  std::optional<Application> application_;
  bool showsAnything_ = false;
  std::vector<DamagedMember> damaged_;
  std::vector<std::shared_ptr<const MediaFile>> media_;
};

}  // namespace dorvex::content
