// The names with C linkage that a host finds by symbol; those that stop the
// module are called by main, after everything else.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Readers/hostapi/reader_exports.h"
#include "documents.h"
#include "host.h"

namespace dorvex::consumer {
namespace {

TEST(EntryPoints, StartTheModule) {
  EXPECT_TRUE(vnDllInit());
  init();
}

TEST(EntryPoints, ReadADocument) {
  ReaderInterface reader;
  dorvexGetReaderInterface(&reader);
  ASSERT_NE(reader.FillBuffer, nullptr);
  EXPECT_EQ(reader.GetCharSet(nullptr, nullptr), VN_CHARSET_UTF8);

  Host host;
  Stream document(readFile(documents.package));
  std::uint32_t created = 0;
  void* context = dorvexAllocateContext(nullptr, nullptr, &created, &host, 0);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(created, 1U);
  ASSERT_EQ(reader.InitDoc(context, nullptr, 0, &document), 0);

  constexpr unsigned kSize = 65536;
  std::vector<unsigned char> buffer(kSize + 14);
  std::string stream;
  for (int percent = 0; percent < 100;) {
    unsigned length = 0;
    ASSERT_EQ(reader.FillBuffer(context, buffer.data(), &length, &percent, kSize), 0);
    stream.append(buffer.begin(), buffer.begin() + length);
  }
  EXPECT_NE(stream.find("Hello"), std::string::npos);
  EXPECT_NE(stream.find("world"), std::string::npos);

  EXPECT_EQ(reader.FreeContext(context), 0);
  EXPECT_EQ(host.liveBlocks, 0);
}

}  // namespace
}  // namespace dorvex::consumer
