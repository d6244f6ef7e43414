#include "looking/document_kind.h"

#include <gtest/gtest.h>

#include "looking/object_stream.h"

namespace dorvex::document_kind_test {
namespace {

// An object stream with one object, all of it small numbers and no payload.
std::string objectStream(char identifier, const std::string& type) {
  const std::string entry = "\x08" + type;
  const std::string header =
      std::string{'\x08', identifier, '\x12', static_cast<char>(entry.size())} + entry;
  return std::string(1, static_cast<char>(header.size())) + header;
}

const std::string kType1 = "\x01";
const std::string kType10000 = "\x90\x4E";

Kind kindOf(const std::string& name, const std::string& objects) {
  KindEvidence evidence;
  evidence.noteObjects(name, objects);
  return evidence.kind();
}

TEST(DocumentKind, IsTheTypeOfTheDocumentObject) {
  EXPECT_EQ(kindOf("Index/Document.iwa", objectStream(1, kType10000)), Kind::kPages);
  EXPECT_EQ(kindOf("Index/Document.iwa", objectStream(1, kType1)), Kind::kNumbers);
  EXPECT_EQ(kindOf("Index.zip/Document.iwa", objectStream(1, kType10000)), Kind::kPages);
}

TEST(DocumentKind, IsKeynoteWhereThereAreSlides) {
  for (const char* slide : {"Index/Slide.iwa", "Slide-12.iwa", "Index/MasterSlide-1.iwa",
                            "Index/TemplateSlide-3.iwa"}) {
    KindEvidence evidence;
    evidence.noteObjects("Index/Document.iwa", objectStream(1, kType1));
    evidence.noteName(slide);
    EXPECT_EQ(evidence.kind(), Kind::kKeynote) << slide;
  }
}

TEST(DocumentKind, IsUnknownWithoutEvidence) {
  EXPECT_EQ(kindOf("Index/Tables.iwa", objectStream(1, kType10000)), Kind::kUnknown);
  EXPECT_EQ(kindOf("Index/Document.iwa", objectStream(2, kType10000)), Kind::kUnknown);
  EXPECT_EQ(kindOf("Index/Document.iwa", "\xFF\xFF"), Kind::kUnknown);
  EXPECT_EQ(kindOf("Slide.png", ""), Kind::kUnknown);
}

TEST(FindRootType, LooksForTheDocumentBehindOtherObjects) {
  EXPECT_EQ(findRootType(objectStream(7, kType1) + objectStream(1, kType10000)), 10000u);
  EXPECT_EQ(findRootType(objectStream(7, kType1)), std::nullopt);
  EXPECT_EQ(findRootType(""), std::nullopt);
}

}  // namespace
}  // namespace dorvex::document_kind_test
