// The boundary's layout as numbers of its own, apart from those that the headers
// hold themselves.
#include "Readers/hostapi/host_records.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "Readers/dorvexsr/dorvexglobals.h"
#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/reader_interface.h"

namespace {

static_assert(sizeof(void*) == 8);

TEST(HostRecords, PutsTheServiceSlotsAtTheirOffsets) {
  EXPECT_EQ(offsetof(tag_TPVAPIServices, LoadDll), 0x18U);
  EXPECT_EQ(offsetof(tag_TPVAPIServices, GetDllSymbol), 0x20U);
  EXPECT_EQ(offsetof(tag_TPVAPIServices, FreeDll), 0x28U);
  EXPECT_EQ(offsetof(tag_TPVAPIServices, OpenFile), 0xC8U);
  EXPECT_EQ(offsetof(tag_TPVAPIServices, allocator), 0x148U);
  EXPECT_EQ(offsetof(tag_TPVAPIServices, ConvertText), 0x320U);
  EXPECT_EQ(offsetof(tag_TPVAPIServices, targetCharSet), 0x378U);
  EXPECT_EQ(offsetof(tag_TPVAPIServices, lastError), 0x8A0U);
}

TEST(HostRecords, PutsTheAllocatorSlotsBehindAnOpaqueWord) {
  EXPECT_EQ(offsetof(VNAllocator, Alloc), 8U);
  EXPECT_EQ(offsetof(VNAllocator, Free), 16U);
}

TEST(HostRecords, PutsTheStreamSlotsAtTheirOffsets) {
  EXPECT_EQ(offsetof(_VPTPIOobj, pathName), 0x20U);
  EXPECT_EQ(offsetof(_VPTPIOobj, Open), 0x38U);
  EXPECT_EQ(offsetof(_VPTPIOobj, Read), 0x40U);
  EXPECT_EQ(offsetof(_VPTPIOobj, Seek), 0x50U);
  EXPECT_EQ(offsetof(_VPTPIOobj, Tell), 0x58U);
  EXPECT_EQ(offsetof(_VPTPIOobj, Close), 0x70U);
}

TEST(HostRecords, LaysOutATextDescriptor) {
  EXPECT_EQ(offsetof(VNTextDescriptor, data), 0U);
  EXPECT_EQ(offsetof(VNTextDescriptor, length), 8U);
}

TEST(HostRecords, LaysOutAnEntryOfAContainer) {
  EXPECT_EQ(offsetof(ContainerEntryInfo, name), 0U);
  EXPECT_EQ(offsetof(ContainerEntryInfo, size), 1048U);
  EXPECT_EQ(sizeof(ContainerEntryInfo), 1072U);
}

TEST(HostRecords, GivesAContainerModuleElevenSlots) {
  EXPECT_EQ(sizeof(ContainerReaderInterface), 88U);
  EXPECT_EQ(offsetof(ContainerReaderInterface, OpenContainer), 0U);
  EXPECT_EQ(offsetof(ContainerReaderInterface, CloseContainer), 8U);
  EXPECT_EQ(offsetof(ContainerReaderInterface, GetEntryInfo), 16U);
  EXPECT_EQ(offsetof(ContainerReaderInterface, ExtractEntry), 24U);
  EXPECT_EQ(offsetof(ContainerReaderInterface, GetEntryCount), 32U);
}

TEST(HostRecords, GivesAReaderThirteenSlots) {
  EXPECT_EQ(sizeof(ReaderInterface), 104U);
  EXPECT_EQ(offsetof(ReaderInterface, AllocateContext), 0U);
  EXPECT_EQ(offsetof(ReaderInterface, FreeContext), 8U);
  EXPECT_EQ(offsetof(ReaderInterface, InitDoc), 16U);
  EXPECT_EQ(offsetof(ReaderInterface, FillBuffer), 24U);
  EXPECT_EQ(offsetof(ReaderInterface, GetCharSet), 72U);
}

TEST(HostRecords, NumbersUtf8As53) { EXPECT_EQ(static_cast<int>(VN_CHARSET_UTF8), 53); }

TEST(HostRecords, AreRecordsWithoutBehaviour) {
  static_assert(std::is_standard_layout_v<tag_TPVAPIServices> &&
                std::is_trivial_v<tag_TPVAPIServices>);
  static_assert(std::is_standard_layout_v<_VPTPIOobj> && std::is_trivial_v<_VPTPIOobj>);
  static_assert(std::is_standard_layout_v<TAG_VNDORVEXGlobals> &&
                std::is_trivial_v<TAG_VNDORVEXGlobals>);
  static_assert(std::is_standard_layout_v<OverflowNode> && std::is_trivial_v<OverflowNode>);
}

TEST(Globals, KeepsItsFieldsInTheirOrder) {
  const std::size_t offsets[] = {offsetof(TAG_VNDORVEXGlobals, tokenCursor),
                                 offsetof(TAG_VNDORVEXGlobals, tokenBufStart),
                                 offsetof(TAG_VNDORVEXGlobals, tokenBufSize),
                                 offsetof(TAG_VNDORVEXGlobals, docParam),
                                 offsetof(TAG_VNDORVEXGlobals, docInitialised),
                                 offsetof(TAG_VNDORVEXGlobals, stringListA),
                                 offsetof(TAG_VNDORVEXGlobals, stringListB),
                                 offsetof(TAG_VNDORVEXGlobals, overflowTotal),
                                 offsetof(TAG_VNDORVEXGlobals, firstBufferBytes),
                                 offsetof(TAG_VNDORVEXGlobals, overflowHead),
                                 offsetof(TAG_VNDORVEXGlobals, overflowTail),
                                 offsetof(TAG_VNDORVEXGlobals, hostArg1),
                                 offsetof(TAG_VNDORVEXGlobals, hostArg2),
                                 offsetof(TAG_VNDORVEXGlobals, ioObj),
                                 offsetof(TAG_VNDORVEXGlobals, services),
                                 offsetof(TAG_VNDORVEXGlobals, hostArg5),
                                 offsetof(TAG_VNDORVEXGlobals, scratchBuf),
                                 offsetof(TAG_VNDORVEXGlobals, scratchBufSize),
                                 offsetof(TAG_VNDORVEXGlobals, messageMap)};
  EXPECT_TRUE(std::ranges::is_sorted(offsets));
  EXPECT_EQ(sizeof(TAG_VNDORVEXGlobals::scratchBuf), 4096U);
}

}  // namespace
