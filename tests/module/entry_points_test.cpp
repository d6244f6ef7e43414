// The exports of the built module that a host calls by name, and the slots that
// may be null.
#include <gtest/gtest.h>

#include <cstring>

#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing::entry_points_test {
namespace {

using Texts = std::vector<std::string>;

std::string smallDocument() { return zip({{"Index/Document.iwa", iwa({storage(1, {"small"})})}}); }

TEST(EntryPoints, FillExactlyFiveSlotsOfTheTable) {
  void* slots[13];
  std::memset(slots, 0xA5, sizeof slots);
  theReader().symbol<GetReaderInterfaceFunction>("dorvexGetReaderInterface")(
      reinterpret_cast<ReaderInterface*>(slots));
  for (int i = 0; i < 13; ++i) EXPECT_EQ(slots[i] != nullptr, i < 4 || i == 9) << i;
}

TEST(EntryPoints, WriteNothingBehindTheTable) {
  void* slots[14];
  std::memset(slots, 0xA5, sizeof slots);
  void* const untouched = slots[13];
  theReader().symbol<GetReaderInterfaceFunction>("dorvexGetReaderInterface")(
      reinterpret_cast<ReaderInterface*>(slots));
  EXPECT_EQ(slots[13], untouched);
}

TEST(EntryPoints, ReachTheAllocationByNameAndThroughTheTable) {
  EXPECT_EQ(reinterpret_cast<void*>(theReader().interface().AllocateContext),
            theReader().symbol<void*>("dorvexAllocateContext"));
}

TEST(EntryPoints, ReachTheOtherSlotsThroughTheTableAlone) {
  for (const char* name :
       {"dorvexFreeContext", "dorvexInitDoc", "dorvexFillBuffer", "dorvexGetCharSet"})
    EXPECT_THROW(theReader().symbol<void*>(name), std::runtime_error) << name;
}

TEST(EntryPoints, StartTheModule) {
  EXPECT_TRUE(theReader().symbol<DllInitFunction>("vnDllInit")());
}

TEST(EntryPoints, NumberUtf8WithoutAContext) {
  EXPECT_EQ(theReader().interface().GetCharSet(nullptr, nullptr), 53);
}

TEST(EntryPoints, FreeNull) { EXPECT_EQ(theReader().interface().FreeContext(nullptr), 0); }

TEST(EntryPoints, TakeANullDescription) {
  BareHost host;
  std::uint32_t result = 77;
  const ReaderInterface& reader = theReader().interface();
  void* context = reader.AllocateContext(nullptr, nullptr, &result, host.services(), 0);
  EXPECT_EQ(result, 1U);
  EXPECT_EQ(reader.InitDoc(context, nullptr, 5, &host.addDocument("")), 0);
  EXPECT_EQ(reader.FreeContext(context), 0);
  EXPECT_EQ(host.liveBlocks(), 0U);
}

TEST(EntryPoints, TouchNoServiceButTheListedOnes) {
  // Everything without a name in the host's table is dirt here, and ConvertText
  // is null: a whole document passes.
  BareHost host;
  EXPECT_EQ(
      textsOf(pump(theReader().interface(), host, &host.addDocument(smallDocument())).stream()),
      Texts{"small"});
}

// Null slots of the document's own object: none of them is called for a zip.
TEST(NullSlots, OfTheDocumentMakeNoDifference) {
  BareHost host;
  Stream& document = host.addDocument(smallDocument());
  document.pathName = nullptr;
  document.Open = nullptr;
  document.Seek = nullptr;
  document.Tell = nullptr;
  document.Close = nullptr;
  EXPECT_EQ(textsOf(pump(theReader().interface(), host, &document).stream()), Texts{"small"});
}

Pumped pumpWith(const std::function<void(Stream&)>& change) {
  BareHost host;
  host.onOpenFile = change;
  return pump(theReader().interface(), host, &host.addDocument(smallDocument()));
}

TEST(NullSlots, OfAScratchStreamAreSkippedButForOpen) {
  EXPECT_EQ(textsOf(pumpWith([](Stream& stream) { stream.Seek = nullptr; }).stream()),
            Texts{"small"});
  EXPECT_EQ(textsOf(pumpWith([](Stream& stream) { stream.Tell = nullptr; }).stream()),
            Texts{"small"});
  EXPECT_EQ(textsOf(pumpWith([](Stream& stream) { stream.Close = nullptr; }).stream()),
            Texts{"small"});
  EXPECT_EQ(pumpWith([](Stream& stream) { stream.Open = nullptr; }).result(), 4);
}

}  // namespace
}  // namespace dorvex::testing::entry_points_test
