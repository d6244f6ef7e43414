#include "reading/spooled_source.h"

#include <utility>

namespace dorvex {
namespace {

class SpooledSource final : public Document::Source {
 public:
  SpooledSource(OpenInput input, TimeBudget budget, bool renders, StartReading start)
      : input_(std::move(input)), budget_(budget), renders_(renders), start_(std::move(start)) {}

  std::optional<std::span<const unsigned char>> next() override {
    if (!source_) source_ = readAndStart();
    return source_->next();
  }

  std::optional<Piece> nextPiece() override {
    if (!source_) source_ = readAndStart();
    return source_->nextPiece();
  }

  bool renders() const override { return renders_; }

  Result result() override { return source_->result(); }

 private:
  std::unique_ptr<Document::Source> readAndStart() {
    Result failure;
    if (!readToEnd(failure)) return makeFailedSource(std::move(failure));
    return start_(std::move(input_), budget_);
  }

  bool readToEnd(Result& failure) {
    const TimeBudget::Running running(budget_);
    return input_.readToEnd(budget_, failure);
  }

  OpenInput input_;
  TimeBudget budget_;
  bool renders_;
  StartReading start_;
  std::unique_ptr<Document::Source> source_;
};

}  // namespace

std::unique_ptr<Document::Source> makeSpooledSource(OpenInput input, TimeBudget budget,
                                                    bool renders, StartReading start) {
  return std::make_unique<SpooledSource>(std::move(input), budget, renders, std::move(start));
}

}  // namespace dorvex
