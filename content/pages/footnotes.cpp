#include "pages/footnotes.h"

#include <utility>

#include "TSWPArchives.h"
#include "graph/plain_text.h"
#include "styles/numerals.h"
#include "text/storage.h"

namespace dorvex::content {
namespace {

using Attachment = TSWP::FootnoteReferenceAttachmentArchive;
using Settings = TP::SettingsArchive;
using FootnoteKind = TP::SettingsArchive_FootnoteKind;
using FootnoteFormat = TP::SettingsArchive_FootnoteFormat;
using Numbering = TP::SettingsArchive_FootnoteNumbering;

Numerals numeralsOf(FootnoteFormat format) {
  switch (format) {
    case FootnoteFormat::kFootnoteFormatRoman:
      return Numerals::kLowerRoman;
    case FootnoteFormat::kFootnoteFormatSymbolic:
      return Numerals::kSymbols;
    case FootnoteFormat::kFootnoteFormatJapaneseIdeographic:
      return Numerals::kJapanese;
    case FootnoteFormat::kFootnoteFormatArabicNumeric:
      return Numerals::kArabic;
    default:
      return Numerals::kDecimal;
  }
}

}  // namespace

Footnotes::Footnotes(Reading& reading, const Message<Settings>& settings)
    : reading_(reading),
      kind_(settings.get(Settings::footnote_kind)),
      format_(settings.get(Settings::footnote_format)),
      numbering_(settings.get(Settings::footnote_numbering)) {}

NoteMark Footnotes::add(const Object& attachment, bool deleted) {
  if (!reading_.claim(attachment)) return {};
  std::string mark =
      plainText(Message<Attachment>(attachment.payload).get(Attachment::custom_mark_string));
  if (mark.empty() && !deleted) mark = nextMark();
  entries_.push_back({&attachment, mark});
  return {std::to_string(entries_.size()), std::move(mark)};
}

// Where each page begins anew, it is the layout that knows the pages, and the numbers
// of the whole document tell at least the order.
std::string Footnotes::nextMark() { return numeral(numeralsOf(format_), ++number_); }

void Footnotes::beginSection() {
  if (numbering_ == Numbering::kFootnoteNumberingRestartEachSection) number_ = 0;
}

void Footnotes::write(Sink& sink) {
  std::size_t id = 0;
  for (Entry& entry : entries_) {
    Footnote footnote;
    footnote.id = std::to_string(++id);
    footnote.mark = std::move(entry.mark);
    footnote.endnote = kind_ != FootnoteKind::kFootnoteKindFootnotes;
    const Message<Attachment> attachment(entry.attachment->payload);
    footnote.blocks = readStorage(reading_, reading_.get<TSWP::StorageArchive>(
                                                attachment.get(Attachment::contained_storage)));
    sink.footnote(footnote);
  }
}

}  // namespace dorvex::content
