// The functions of textsweep.cpp.
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <list>
#include <string>
#include <utility>

#include "Readers/dorvexsr/dorvexsr.h"
#include "Readers/dorvexsr/dorvexutil.h"
#include "TSWPCommandArchives.pb.h"
#include "Tools/formats/vniwork13/registry.h"
#include "Tools/vennik/vnexcept/vnexcept.h"
#include "support/bare_host.h"
#include "support/guarded_buffer.h"
#include "support/package_writer.h"
#include "support/token_decoder.h"

namespace {

using namespace dorvex::testing;
using std::string_literals::operator""s;
using Values = std::list<std::string>;
using Texts = std::vector<std::string>;

Values extract(const std::string& printed, const std::string& name = "text") {
  Values values;
  extractFields(values, printed, name);
  return values;
}

// ---------------------------------------------------------------------------

TEST(ExtractFields, FindsAFieldAtTheVeryStartBehindALineFeedAndBehindBlanks) {
  EXPECT_EQ(extract("text: \"one\"\ntext: \"two\"\n  text: \"three\"\n"),
            (Values{"one", "two", "three"}));
}

TEST(ExtractFields, AcceptsEveryWhiteSpaceByteOfTheCLocaleAndNoOther) {
  for (int byte = 1; byte < 256; ++byte) {
    const std::string before(1, static_cast<char>(byte));
    const bool isSpace = std::string(" \t\n\v\f\r").find(before) != std::string::npos;
    EXPECT_EQ(extract(before + "text: \"x\"\n").size(), isSpace ? 1U : 0U) << byte;
  }
}

TEST(ExtractFields, RefusesLongerNamesAndExtensions) {
  EXPECT_EQ(extract("ruby_text: \"x\"\nbase_text: \"x\"\n[TSX.text]: \"x\"\ncontext: \"x\"\n"),
            Values{});
  EXPECT_EQ(extract("custom_mark_string: \"x\"\nstring_value: \"x\"\nstrings: \"x\"\n", "string"),
            Values{});
}

TEST(ExtractFields, RefusesAMessageAndOtherValues) {
  EXPECT_EQ(extract("text {\n  a: 1\n}\ntext: 5\ntext:\"x\"\nText: \"x\"\n"), Values{});
}

TEST(ExtractFields, AppendsEmptyValuesToo) { EXPECT_EQ(extract("text: \"\"\n"), Values{""}); }

TEST(ExtractFields, AppendsToWhatIsThere) {
  Values values = {"before"};
  extractFields(values, "text: \"x\"\n", "text");
  EXPECT_EQ(values, (Values{"before", "x"}));
}

TEST(ExtractFields, TakesTheRemainderBehindAValueThatEndsInThePattern) {
  EXPECT_EQ(extract("text: \"See text: \"\n"), (Values{"See text: ", "\n"}));
  EXPECT_EQ(extract("text: \"See text: \"\nkind: BODY\n"),
            (Values{"See text: ", "\nkind: BODY\n"}));
}

TEST(ExtractFields, TakesTheRemainderBehindAnyQuotedField) {
  EXPECT_EQ(extract("name: \"a string: \"\n  string: \"own\"\n", "string"),
            (Values{"\n  string: \"own\"\n", "own"}));
}

TEST(ExtractFields, TakesNothingMoreForThePatternAloneOrInsideAValue) {
  EXPECT_EQ(extract("text: \"text: \"\n"), Values{"text: "});
  EXPECT_EQ(extract("text: \"a text: b\"\n"), Values{"a text: b"});
  EXPECT_EQ(extract("text: \"a text: \\\"b\"\n"), Values{"a text: \"b"});
}

TEST(GetFieldContents, EndsAtTheFirstLineFeedBehindAQuote) {
  EXPECT_EQ(getFieldContents("text: \"a\\\"b\"\nmore: \"c\"\n", 7), "a\"b");
}

TEST(GetFieldContents, CountsThePatternsOwnQuote) {
  EXPECT_EQ(getFieldContents("text: \"\nrest", 7), "\nrest");
}

TEST(GetFieldContents, ReadsFromTheVeryStart) {
  EXPECT_EQ(getFieldContents("value\"\nrest", 0), "value");
}

TEST(GetFieldContents, GivesNothingWhereThereIsNoValue) {
  EXPECT_EQ(getFieldContents("text: \"", 7), "");
  EXPECT_EQ(getFieldContents("text: \"", 100), "");
  EXPECT_EQ(getFieldContents("text: \"no end", 7), "");
  EXPECT_EQ(getFieldContents("text: \"no quote\n", 7), "");
}

// ---------------------------------------------------------------------------

// A context whose map holds some objects, as the pump has it.
class GetAllText : public ::testing::Test {
 protected:
  GetAllText() {
    std::uint32_t result = 0;
    context_ = static_cast<TAG_VNDORVEXGlobals*>(
        dorvexAllocateContext(nullptr, nullptr, &result, host_.services(), 0));
    context_->tokenBufSize = kSize;
    context_->tokenBufStart = context_->tokenCursor = buffer_.data();
  }
  ~GetAllText() override {
    delete context_->messageMap;
    dorvexFreeContext(context_);
  }

  void add(const std::vector<Archive>& archives) {
    const std::string stream = objectStream(archives);
    context_->messageMap->populate(std::vector<unsigned char>(stream.begin(), stream.end()),
                                   vn::iwork13::getPagesMessage);
  }

  std::string tokens() const {
    return {reinterpret_cast<const char*>(context_->tokenBufStart),
            reinterpret_cast<const char*>(context_->tokenCursor)};
  }

  Texts sweep() {
    getAllText(context_, *context_->messageMap);
    return textsOf(tokens());
  }

  Texts sweep(const std::vector<Archive>& archives) {
    add(archives);
    return sweep();
  }

  static constexpr unsigned kSize = 1 << 20;
  std::uint64_t nextIdentifier_ = 1;
  BareHost host_;
  GuardedBuffer buffer_{kSize + 4096};
  TAG_VNDORVEXGlobals* context_;
};

Archive list(std::uint64_t identifier, const std::vector<Wire>& entries) {
  Wire message = Wire().varint(1, 1).varint(2, 1);
  for (const Wire& entry : entries) message.message(3, entry);
  return object(identifier, kTableDataListType, message);
}

Wire entry(unsigned key, unsigned refcount) { return Wire().varint(1, key).varint(2, refcount); }

TEST_F(GetAllText, WritesNothingForAnEmptyMap) { EXPECT_EQ(sweep(), Texts{}); }

TEST_F(GetAllText, WritesNoTokenForAnEmptyValue) {
  EXPECT_EQ(sweep({storage(1, {""})}), Texts{});
  EXPECT_EQ(tokens(), "");
}

TEST_F(GetAllText, WritesTheElementsOfAStorageInTheirOrder) {
  EXPECT_EQ(sweep({storage(1, {"one", "two", "three"})}), (Texts{"one", "two", "three"}));
}

TEST_F(GetAllText, WritesAComment) { EXPECT_EQ(sweep({comment(1, "a note")}), Texts{"a note"}); }

TEST_F(GetAllText, WritesStorageOfEveryKindInDocumentOrNot) {
  std::vector<Archive> archives;
  Texts expected;
  for (unsigned kind = 0; kind < 8; ++kind) {
    const std::string text = "kind " + std::to_string(kind);
    archives.push_back(
        object(kind + 1, kStorageType, Wire().varint(1, kind).bytes(3, text).varint(10, kind % 2)));
    expected.push_back(text);
  }
  EXPECT_EQ(sweep(archives), expected);
}

TEST_F(GetAllText, WritesTheStringsOfATableListInTheirOrderUsedOrNot) {
  EXPECT_EQ(sweep({list(1, {entry(1, 1).bytes(3, "first"), entry(2, 0).bytes(3, "unused"),
                            entry(3, 7).bytes(3, "third")})}),
            (Texts{"first", "unused", "third"}));
}

TEST_F(GetAllText, WritesNothingOfAnEntryWithoutString) {
  EXPECT_EQ(sweep({list(1, {entry(1, 1).message(4, Wire().varint(1, 5)),
                            entry(2, 1).message(6, Wire().varint(1, 5))})}),
            Texts{});
}

TEST_F(GetAllText, WritesTheStringsOfUndoTransactionsWhereverTheyAreNested) {
  TSWP::TextCommandArchive command;
  TSWP::UndoTransaction& undo = *command.mutable_undo_transaction();
  undo.add_entries()->mutable_insert_attribute()->set_string("inserted");
  undo.mutable_entries(0)->mutable_attribute_index()->set_string("indexed");
  undo.mutable_entries(0)->mutable_text()->set_string_to_delete("never");
  undo.add_group_entries()->add_forward_actions()->set_string("forward");
  undo.mutable_group_entries(0)->add_inverse_forward_actions()->set_string("inverse");
  undo.mutable_group_entries(0)->add_inverse_detail_actions()->set_string("detail");
  EXPECT_EQ(sweep({object(1, 2101, command.SerializePartialAsString())}),
            (Texts{"indexed", "inserted", "forward", "inverse", "detail"}));
}

TEST_F(GetAllText, WritesObjectsInAscendingOrderOfTheirIdentifiers) {
  add({storage(30, {"third"}), comment(4, "second")});
  add({storage(1, {"first"}), storage(0xFFFFFFFFFF, {"last"})});
  EXPECT_EQ(sweep(), (Texts{"first", "second", "third", "last"}));
}

TEST_F(GetAllText, WritesTheSameTextAsOftenAsItStandsThere) {
  EXPECT_EQ(sweep({storage(1, {"twice", "twice"}), storage(2, {"twice"})}),
            (Texts{"twice", "twice", "twice"}));
}

TEST_F(GetAllText, WritesNoNameUrlOrRubyText) {
  const std::vector<Archive> objects = {
      object(1, 400, Wire().bytes(1, "style")),   // TSS.StyleArchive
      object(2, 2008, Wire().bytes(3, "mark")),   // TSWP.FootnoteReferenceAttachmentArchive
      object(3, 2032, Wire().bytes(2, "link")),   // TSWP.HyperlinkFieldArchive
      object(4, 2042, Wire().bytes(2, "ruby")),   // TSWP.RubyFieldArchive
      object(5, 6001, Wire().bytes(8, "table")),  // TST.TableModelArchive
  };
  EXPECT_EQ(sweep(objects), Texts{});
  EXPECT_EQ(context_->messageMap->size(), objects.size());
}

TEST_F(GetAllText, WritesATextThatHoldsThePatternOnce) {
  const Texts texts = {"text: ", "a text: b", "a text: \"b"};
  EXPECT_EQ(sweep({storage(1, texts)}), texts);
}

TEST_F(GetAllText, WritesTheSameForAnObjectThatHasBeenLookedUp) {
  add({storage(1, {"it's", "C:\\temp"}), list(2, {entry(1, 1).bytes(3, "See string: ")})});
  const Texts texts = sweep();
  EXPECT_EQ(texts, (Texts{"it's", "C:\\\temp", "See string: ", "\n}\n"}));
  context_->tokenCursor = context_->tokenBufStart;
  for (const unsigned long long identifier : {1, 2})
    ASSERT_NE(context_->messageMap->lookup(identifier), nullptr);
  EXPECT_EQ(sweep(), texts);
}

TEST_F(GetAllText, WritesALongTextAsOneText) {
  const std::string text(100000, 'x');
  EXPECT_EQ(sweep({storage(1, {text})}), Texts{text});
}

TEST_F(GetAllText, WritesTheRemainderOfAMessageBehindAClosingQuoteThatMatches) {
  EXPECT_EQ(sweep({object(1, kStorageType, Wire().bytes(3, "See text: ").varint(10, 1))}),
            (Texts{"See text: ", "\nin_document: true\n"}));
  EXPECT_EQ(sweep({}).size(), 4U);  // swept again, written again
}

TEST_F(GetAllText, WritesALoneLineFeedWhereTheMatchWasTheLastLine) {
  EXPECT_EQ(sweep({comment(1, "See text: ")}), (Texts{"See text: ", "\n"}));
}

TEST_F(GetAllText, WritesTheRemainderOfTheStringPassForAFieldOfAnyName) {
  // TSP.PackageMetadata has bytes and string fields of other names; an unknown one will do as well.
  EXPECT_EQ(sweep({object(1, kStorageType, Wire().bytes(3, "own").bytes(100, "\xFF string: "))}),
            (Texts{"own", "\n"}));
}

TEST_F(GetAllText, AppliesTheOctalRowsToAnUnknownFieldInARemainder) {
  EXPECT_EQ(sweep({object(
                1, kStorageType,
                Wire().bytes(3, "a text: ").bytes(100, "\xE2\x80\x99\xE2\x80\xA6\xEF\xBF\xBC"))}),
            (Texts{"a text: ", "\n100: \"'...\"\n"}));
}

std::string fromHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
  return bytes;
}

// Remainders show what the printed form does with other fields.
TEST_F(GetAllText, WritesARemainderInTheFormOfThe25Line) {
  const auto sweepAlone = [this](int type, std::string_view payload) {
    add({object(nextIdentifier_++, type, fromHex(payload))});
    const Texts texts = sweep();
    context_->tokenCursor = context_->tokenBufStart;
    delete std::exchange(context_->messageMap, new vn::iwork13::MessageMap);
    return texts;
  };
  // Field 0 is one like any other in a value that is taken for a message.
  EXPECT_EQ(sweepAlone(3056, "0a0548656c6c6fa21f10020161120920737472696e673a201801"),
            (Texts{"Hello", "\n  3: 1\n}\n"}));
  // At any depth.
  std::string closed = "\n" + std::string(26, ' ') + "3: 1\n";
  for (std::size_t level = 13; level-- > 0;) closed += std::string(2 * level, ' ') + "}\n";
  EXPECT_EQ(sweepAlone(3056,
                       "0a0548656c6c6fa21f250a230a210a1f0a1d0a1b0a190a170a150a130a110a0f0a0d"
                       "120920737472696e673a201801"),
            (Texts{"Hello", closed}));
  // Eight digits of a float.
  EXPECT_EQ(sweepAlone(3005, "a2060720746578743a20b50692dfa349"),
            Texts{"\n[TSWP.EquationInfoArchive.equation_depth]: 1342450.2\n"});
  // The low 32 bits of a bool.
  EXPECT_EQ(sweepAlone(3056, "0a0720746578743a20220b1880808080808080808001"),
            (Texts{" text: ", "\nreplies {\n  deprecated_is_external: false\n}\n"}));
}

TEST_F(GetAllText, LetsTheFailureOfTheOutputRiseAndKeepsWhatIsStaged) {
  context_->tokenBufSize = 60;
  host_.failAt(Slot::kAlloc, host_.calls(Slot::kAlloc) + 1);
  add({storage(1, {"fits"}), storage(2, {std::string(100, 'x')}), storage(3, {"unswept"})});
  EXPECT_THROW(getAllText(context_, *context_->messageMap), vn::except::general_error);
  EXPECT_EQ(textsOf(tokens()), Texts{"fits"});
}

}  // namespace
