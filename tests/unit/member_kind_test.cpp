#include "Tools/formats/vniwork13/member_kind.h"

#include <gtest/gtest.h>

namespace vn::iwork13 {
namespace {

TEST(ClassifyMember, SelectsTheStreamsOfDocumentsSlidesCalculationsAndTables) {
  for (const char* name :
       {"Index/Document.iwa", "Index/DocumentStylesheet.iwa", "Index/CalculationEngine-7.iwa",
        "Index/Slide-1.iwa", "Index/Tables/Tile.iwa"})
    EXPECT_EQ(classifyMember(name), MemberKind::kObjectStream) << name;
}

TEST(ClassifyMember, SelectsTheShortFormsOfANestedContainer) {
  for (const char* name : {"Document.iwa", "CalculationEngine.iwa", "Slide.iwa", "Tables/Tile.iwa"})
    EXPECT_EQ(classifyMember(name), MemberKind::kObjectStream) << name;
}

TEST(ClassifyMember, IgnoresEveryOtherStream) {
  for (const char* name : {"Index/ViewState.iwa", "Index/MasterSlide.iwa", "Index/Metadata.iwa",
                           "Other/Index/Document.iwa", "Index/Tables", "Index/Document.iwa.bak"})
    EXPECT_EQ(classifyMember(name), MemberKind::kIgnored) << name;
}

TEST(ClassifyMember, TakesAnyNameThatEndsInIndexZipForAContainer) {
  for (const char* name : {"Index.zip", "a/b/Index.zip", "MyIndex.zip"})
    EXPECT_EQ(classifyMember(name), MemberKind::kNestedContainer) << name;
}

}  // namespace
}  // namespace vn::iwork13
