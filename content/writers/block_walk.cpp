#include "writers/block_walk.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "graph/overloads.h"
#include "writers/file_names.h"
#include "writers/plain.h"

namespace dorvex::content {
namespace {

const Box* titleIn(const std::vector<Block>& blocks) {
  for (const Block& block : blocks) {
    const auto* box = std::get_if<Box>(&block.what);
    if (box != nullptr && box->kind == BoxKind::kPlaceholder &&
        box->placeholder == PlaceholderKind::kTitle)
      return box;
  }
  return nullptr;
}

// The only paragraph of a box, or null.
const Paragraph* onlyParagraph(const Box& box) {
  return box.blocks.size() == 1 ? std::get_if<Paragraph>(&box.blocks.front().what) : nullptr;
}

}  // namespace

void BlockWalk::document(Application application, const Metadata& metadata) {
  application_ = application;
  putBeginning(metadata);
}

// A line that runs through the pages stands once: that of the head before the text of
// its section, that of the foot behind it.
void BlockWalk::beginSection(const Section& section) {
  endSection();
  for (const auto& [pages, text] : section.headers) putRunning(Running::kHeader, pages, text);
  for (const auto& [pages, blocks] : section.drawables) visit(blocks);
  footers_ = section.footers;
}

void BlockWalk::endSection() {
  putHeld();
  for (const auto& [pages, text] : std::exchange(footers_, {}))
    putRunning(Running::kFooter, pages, text);
}

void BlockWalk::floating(const FloatingPage& page) {
  endSection();
  visit(page.blocks);
}

void BlockWalk::footnote(const Footnote& footnote) {
  endSection();
  putFootnote(footnote);
}

void BlockWalk::end(const Summary&) {
  endSection();
  if (!forTheEnd_.empty()) putComments(forTheEnd_);
  putEnd();
}

void BlockWalk::slide(const Slide& slide) {
  if (slide.skipped && options_.dropSkipped) return;
  Paragraph made;
  const Paragraph* title = nullptr;
  const Box* box = titleIn(slide.blocks);
  if (slide.title && !slide.title->empty()) {
    title = box != nullptr ? onlyParagraph(*box) : nullptr;
    // A title of several paragraphs is one heading.
    if (title == nullptr) {
      made.text = *slide.title;
      title = &made;
    }
    shownAsTitle_ = box;
  }
  beginSlide(slide, title);
  visit(slide.blocks);
  shownAsTitle_ = nullptr;
  comments(slide.comments);
  if (!slide.notes.empty()) {
    beginNotes();
    visit(slide.notes);
    endNotes();
  }
  endSlide();
}

void BlockWalk::sheet(const Sheet& sheet) {
  if (sheet.hidden && options_.dropSkipped) return;
  beginSheet(sheet);
  visit(sheet.blocks);
  endSheet();
}

void BlockWalk::visit(const std::vector<Block>& blocks) {
  for (const Block& block : blocks) visit(block);
  putHeld();
}

void BlockWalk::paragraph(const Paragraph& paragraph) {
  if (options_.changes == ShownChanges::kFinal) return put(paragraph);
  auto shown = shownParagraphs(paragraph, options_.changes);
  if (held_) {
    shown.front() = joinedOriginal(*std::exchange(held_, std::nullopt), std::move(shown.front()));
  }
  if (paragraph.endInserted && options_.changes == ShownChanges::kOriginal) {
    held_ = std::move(shown.back());
    shown.pop_back();
  }
  for (const Paragraph& each : shown) put(each);
}

void BlockWalk::putHeld() {
  if (held_) put(*std::exchange(held_, std::nullopt));
}

void BlockWalk::visit(const Block& block) {
  if (!std::holds_alternative<Paragraph>(block.what)) putHeld();
  std::visit(Overloads{
                 [&](const Paragraph& each) {
                   paragraph(each);
                   noteComments(each);
                 },
                 [&](const Table& table) { put(table); },
                 [&](const Chart& chart) { put(chart); },
                 [&](const Equation& equation) { put(equation); },
                 [&](const Media& each) { media(each, block.alt); },
                 [&](const Gallery& each) { gallery(each); },
                 [&](const Box& box) {
                   if (&box != shownAsTitle_) visit(box.blocks);
                 },
                 [](Break) {},
             },
             block.what);
  for (const std::string* line : {&block.title, &block.caption})
    if (!line->empty()) putCaption(*line);
  // Links within a document lead to places that renderings do not have.
  const std::string link = safeLink(block.link);
  if (link.find(':') < link.find_first_of("/?#")) putLink(link);
  comments(block.comments);
}

void BlockWalk::media(const Media& media, const std::string& alt) {
  std::string link;
  if (media.file != nullptr && media.index) {
    link = options_.mediaFolder.empty()
               ? urlEncoded(media.file->member)
               : urlEncoded(options_.mediaFolder + "/" + mediaFileName(*media.index, *media.file));
  }
  put(media, alt.empty() ? media.name : alt, link);
}

void BlockWalk::gallery(const Gallery& gallery) {
  for (const GalleryImage& image : gallery.images) {
    media(image.media, image.alt);
    if (!image.caption.empty()) putCaption(image.caption);
  }
}

void BlockWalk::noteComments(const Paragraph& paragraph) {
  if (options_.comments != CommentPlace::kEnd) return;
  for (const Run& run : shownRuns(paragraph, ShownChanges::kAll)) noteComments(run.comments);
}

void BlockWalk::noteComments(const std::vector<Comment>& comments) {
  if (options_.comments == CommentPlace::kEnd)
    forTheEnd_.insert(forTheEnd_.end(), comments.begin(), comments.end());
}

void BlockWalk::comments(const std::vector<Comment>& comments) {
  noteComments(comments);
  if (options_.comments != CommentPlace::kInline) return;
  for (const Comment& comment : comments) put(comment);
}

}  // namespace dorvex::content
