#include "package/property_list.h"

#include <gtest/gtest.h>

#include "support/wire_writer.h"

namespace dorvex::content::property_list_test {
namespace {

using Strings = std::vector<std::string>;

std::string bigEndian(std::uint64_t value, int count) {
  std::string bytes = testing::encodeLittleEndian(value, count);
  return {bytes.rbegin(), bytes.rend()};
}

std::string ascii(std::string_view text) {
  return static_cast<char>(0x50 | text.size()) + std::string(text);
}

// A binary list of these objects, of which the first is the root.
std::string binary(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += bigEndian(bytes.size(), 2);
    bytes += object;
  }
  const auto table = bytes.size();
  return bytes + offsets + std::string(6, '\0') + '\2' + '\1' + bigEndian(objects.size(), 8) +
         bigEndian(0, 8) + bigEndian(table, 8);
}

TEST(PropertyList, ReadsABinaryListOfStrings) {
  const auto list = readPropertyList(
      binary({"\xA2\1\2", ascii("Template: Tea"), std::string("\x62\0K\xD8\x3C", 5)}));
  EXPECT_EQ(list.strings, (Strings{"Template: Tea", "K\uFFFD"}));
  const auto pot = readPropertyList(binary({"\xA1\1", "\x62\xD8\x3E\xDE\xD6"}));
  EXPECT_EQ(pot.strings, Strings{"\U0001FAD6"});
}

TEST(PropertyList, ReadsTheStringsOfABinaryDictionary) {
  const auto list = readPropertyList(
      binary({"\xD2\1\2\3\4", ascii("documentUUID"), ascii("isMultiPage"), ascii("0815"), "\x09"}));
  EXPECT_EQ(list.at("documentUUID"), "0815");
  EXPECT_EQ(list.at("isMultiPage"), "");
  EXPECT_EQ(list.at("locale"), "");
}

TEST(PropertyList, ReadsCountsThatFollowTheMarker) {
  const std::string text(300, 't');
  const auto list =
      readPropertyList(binary({"\xA1\1", "\x5F\x11" + bigEndian(text.size(), 2) + text}));
  EXPECT_EQ(list.strings, Strings{text});
}

TEST(PropertyList, ReadsXml) {
  const auto list = readPropertyList(
      "<?xml version=\"1.0\"?>\n<plist version=\"1.0\">\n<array>\n\t<string>Template: Tea</string>"
      "\n\t<string>M1 &lt;&#233;&#xE9;&amp;&apos; &tea; &</string>\n</array>\n</plist>\n");
  EXPECT_EQ(list.strings, (Strings{"Template: Tea", "M1 <éé&' &tea; &"}));
}

TEST(PropertyList, ReadsTheStringsOfAnXmlDictionary) {
  const auto list = readPropertyList(
      "<plist><dict><key>pages</key><true/><key>locale</key><string>en_GB</string>"
      "<key>size</key><integer>7</integer></dict></plist>");
  EXPECT_EQ(list.at("locale"), "en_GB");
  EXPECT_EQ(list.entries.size(), 1U);
  EXPECT_TRUE(list.strings.empty());
}

TEST(PropertyList, IsEmptyForWhatIsNone) {
  for (const std::string& bytes : {std::string(), std::string("bplist00"), std::string("<"),
                                   std::string("<string>"), std::string(100, '\xFF')}) {
    EXPECT_LE(readPropertyList(bytes).strings.size(), 1U);
    EXPECT_TRUE(readPropertyList(bytes).entries.empty());
  }
}

TEST(PropertyList, ReadsWhatIsWholeOfADamagedBinaryList) {
  const std::string whole = binary({"\xA2\1\2", ascii("Template: Tea"), ascii("M1")});
  for (std::size_t i = 0; i < whole.size(); ++i) {
    std::string damaged = whole;
    for (const char byte : {'\x00', '\x7F', '\xFF'}) {
      damaged[i] = byte;
      EXPECT_LE(readPropertyList(damaged).strings.size(), 256U);
    }
    EXPECT_LE(readPropertyList(whole.substr(0, i)).strings.size(), 2U);
  }
}

TEST(PropertyList, IsBoundedWhereManyElementsAreOneLongString) {
  const std::string list = "\xAF\x11" + bigEndian(60'000, 2) + std::string(60'000, '\1');
  const std::string text = "\x5F\x12" + bigEndian(60'000, 4) + std::string(60'000, 't');
  std::size_t bytes = 0;
  for (const std::string& string : readPropertyList(binary({list, text})).strings)
    bytes += string.size();
  EXPECT_LE(bytes, 1'000'000U);
}

}  // namespace
}  // namespace dorvex::content::property_list_test
