#include "text/toc.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::toc_test {
namespace {

using Entry = TSWP::TOCEntryInstanceArchive;
using Info = TSWP::TOCInfoArchive;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

class TableOfContents : public ::testing::Test {
 protected:
  // The lines of contents with the text of that storage, joined.
  std::string lines(std::uint64_t storage) {
    const Wire shape =
        Wire().message(TSWP::ShapeInfoArchive::owned_storage.number, reference(storage));
    const Wire info = Wire()
                          .message(Info::super.number, shape)
                          .message(Info::toc_entry_data.number, reference(20))
                          .message(Info::toc_entry_data.number, reference(21));
    std::string lines;
    for (const Block& block : readTableOfContents(objects_.reading(), Message<Info>(info.str()))) {
      const auto& paragraph = std::get<Paragraph>(block.what);
      EXPECT_EQ(paragraph.role, Role::kToc);
      lines += paragraph.text + '|';
    }
    return lines;
  }

  Objects objects_{{object(10, testing::kStorageType,
                           Wire()
                               .varint(TSWP::StorageArchive::kind.number, 7)
                               .bytes(TSWP::StorageArchive::text.number, "One\t1\nTwo\t5")),
                    object(11, testing::kStorageType, Wire()),
                    object(20, 2052, Wire().bytes(Entry::heading.number, "One")),
                    object(21, 2052, Wire().bytes(Entry::heading.number, "Two"))}};
};

TEST_F(TableOfContents, HasTheLinesThatWereLaidOut) { EXPECT_EQ(lines(10), "One\t1|Two\t5|"); }

TEST_F(TableOfContents, HasTheHeadingsWhereItWasNotLaidOut) {
  EXPECT_EQ(lines(11), "One|Two|");
  EXPECT_EQ(lines(99), "One|Two|");
}

}  // namespace
}  // namespace dorvex::content::toc_test
