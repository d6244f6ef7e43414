#include "pages/floating.h"

#include <gtest/gtest.h>

#include <string>

#include "TSWPArchives.h"
#include "content/support/objects.h"
#include "content/support/recorder.h"
#include "drawables/box_text.h"

namespace dorvex::content::floating_test {
namespace {

using Archive = TP::FloatingDrawablesArchive;
using Group = TP::FloatingDrawablesArchive_PageGroup;
using ZOrder = TP::DrawablesZOrderArchive;
using testing::object;
using testing::Objects;
using testing::Recorder;
using testing::reference;
using testing::Wire;

testing::Archive box(std::uint64_t identifier, std::uint64_t storage) {
  return object(identifier, 2011,
                Wire().message(TSWP::ShapeInfoArchive::owned_storage.number, reference(storage)));
}

Wire group(std::uint32_t page) { return Wire().varint(Group::page_index.number, page); }

Wire entry(std::uint64_t drawable) {
  using Entry = TP::FloatingDrawablesArchive_DrawableEntry;
  return Wire().message(Entry::drawable.number, reference(drawable));
}

class Floating : public ::testing::Test {
 protected:
  // The pages with their texts, in short.
  std::string read(const Wire& floating, const Wire& order = {}) {
    Recorder recorder;
    readFloating(objects_.reading(), Message<Archive>(floating.str()), Message<ZOrder>(order.str()),
                 recorder);
    std::string pages;
    for (const FloatingPage& page : recorder.floatingPages) {
      pages += std::to_string(page.page) + ':';
      for (const Block& block : page.blocks) pages += textOf({block}) + ' ';
    }
    return pages;
  }

  Objects objects_{{box(10, 20), box(11, 21), box(12, 22), testing::storage(20, {"a"}),
                    testing::storage(21, {"b"}), testing::storage(22, {"c"})}};
};

TEST_F(Floating, CountsPagesFrom1AndSortsThem) {
  EXPECT_EQ(read(Wire()
                     .message(Archive::page_groups.number,
                              group(4).message(Group::drawables.number, entry(10)))
                     .message(Archive::page_groups.number,
                              group(0).message(Group::drawables.number, entry(11)))),
            "1:b 5:a ");
}

TEST_F(Floating, DrawsFromBackToFront) {
  EXPECT_EQ(read(Wire().message(Archive::page_groups.number,
                                group(0)
                                    .message(Group::foreground_drawables.number, entry(10))
                                    .message(Group::drawables.number, entry(11))
                                    .message(Group::background_drawables.number, entry(12)))),
            "1:c b a ");
}

TEST_F(Floating, KeepsToTheOrderOfDrawingWhereTheDocumentHasOne) {
  const Wire floating =
      Wire().message(Archive::page_groups.number, group(0)
                                                      .message(Group::drawables.number, entry(10))
                                                      .message(Group::drawables.number, entry(11))
                                                      .message(Group::drawables.number, entry(12)));
  // 1 is the text of the pages, which has a layer like any drawable; 10 has none.
  const Wire order = Wire()
                         .message(ZOrder::drawables.number, reference(1))
                         .message(ZOrder::drawables.number, reference(12))
                         .message(ZOrder::drawables.number, reference(11));
  EXPECT_EQ(read(floating, order), "1:c b a ");
}

TEST_F(Floating, LeavesEmptyPagesOut) {
  EXPECT_EQ(read(Wire().message(Archive::page_groups.number,
                                group(0).message(Group::drawables.number, entry(99)))),
            "");
}

TEST_F(Floating, ShowsTheTextOfLinkedBoxesOnce) {
  using Flow = TSWP::FlowInfoArchive;
  const auto linked = [](std::uint64_t identifier) {
    return object(identifier, 2011,
                  Wire().message(TSWP::ShapeInfoArchive::text_flow.number, reference(30)));
  };
  Objects objects({linked(10), linked(11),
                   object(30, 2410, Wire().message(Flow::text_storage.number, reference(20))),
                   testing::storage(20, {"flows"})});
  const Wire floating =
      Wire().message(Archive::page_groups.number, group(0)
                                                      .message(Group::drawables.number, entry(10))
                                                      .message(Group::drawables.number, entry(11)));
  Recorder recorder;
  readFloating(objects.reading(), Message<Archive>(floating.str()), {}, recorder);
  ASSERT_EQ(recorder.floatingPages.size(), 1U);
  EXPECT_EQ(textOf(recorder.floatingPages[0].blocks), "flows");
}

}  // namespace
}  // namespace dorvex::content::floating_test
