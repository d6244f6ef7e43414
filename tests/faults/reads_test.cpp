// Reads that come short, and streams that end too early.
#include <gtest/gtest.h>
#include <snappy.h>

#include <algorithm>

#include "faults/packages.h"
#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/temporary_directory.h"
#include "support/token_decoder.h"

namespace dorvex::testing {
namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t kLargestRead = 4096;

// What a member stream comes to when reads are no longer than a number of bytes:
// the rules of the chunk loop once more. A header is taken within one read or
// not at all, up to three bytes at the end of a read are not counted, and a
// header that ends a read is forgotten.
struct Decoded {
  enum Outcome { kWhole, kDamaged, kEndless } outcome;
  std::string objects;
};

class ChunkLoop {
 public:
  ChunkLoop(const std::string& stream, std::size_t longestRead)
      : stream_(stream), longestRead_(std::min(longestRead, kLargestRead)) {}

  Decoded run() {
    while (counted_ < stream_.size()) {
      const std::string_view read = std::string_view(stream_).substr(position_, longestRead_);
      if (read.empty()) return {Decoded::kEndless, {}};
      position_ += read.size();
      if (!take(read)) return {Decoded::kDamaged, {}};
    }
    return {Decoded::kWhole, objects_};
  }

 private:
  // One read. False for a bad header or body.
  bool take(std::string_view read) {
    counted_ += read.size();
    while (!read.empty()) {
      if (pending_.empty()) {
        if (read.size() < 4) {
          counted_ -= read.size();
          return true;
        }
        if (read[0] != 0) return false;
        missing_ = byteAt(read, 1) | byteAt(read, 2) << 8 | byteAt(read, 3) << 16;
        read.remove_prefix(4);
      }
      const std::string_view part = read.substr(0, missing_);
      pending_ += part;
      missing_ -= part.size();
      read.remove_prefix(part.size());
      if (missing_ > 0) return true;
      std::string block;
      if (!snappy::Uncompress(pending_.data(), pending_.size(), &block)) return false;
      objects_ += block;
      pending_.clear();
    }
    return true;
  }

  static std::size_t byteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
  }

  const std::string& stream_;
  std::size_t longestRead_;
  std::size_t position_ = 0;
  std::size_t counted_ = 0;
  std::string pending_;
  std::size_t missing_ = 0;
  std::string objects_;
};

// Chunks of many sizes, the longest beyond one read.
std::string objects() {
  std::vector<Archive> archives;
  for (std::uint64_t identifier = 1; identifier <= 40; ++identifier)
    archives.push_back(storage(identifier, {"text " + std::to_string(identifier)}));
  archives.push_back(storage(41, {std::string(6000, 'x')}));
  return objectStream(archives);
}

std::string memberOf(const std::string& stream) {
  std::string member;
  std::size_t at = 0;
  for (const std::size_t size : {5u, 100u, 1u, 300u, 70u, 5000u, 100000u}) {
    member += chunk(literalBlock(stream.substr(at, size)));
    at += size;
  }
  return member;
}

class Reads : public ::testing::Test {
 protected:
  Reads() {
    host.onOpenFile = [this](Stream& stream) {
      stream.maxRead = longestRead;
      stream.onRead = readToTheEndOnce;
    };
  }

  void expectNothingOpen() {
    EXPECT_EQ(host.openStreams(), 0U);
    EXPECT_EQ(host.openContainers(), 0);
    EXPECT_EQ(host.loadedModules(), 0);
  }

  const std::string stream = objects();
  const std::string member = memberOf(stream);
  std::uint32_t longestRead = kLargestRead;
  BareHost host;
  TemporaryDirectory folder;
};

Texts textsOfObjects() {
  Texts texts;
  for (int i = 1; i <= 40; ++i) texts.push_back("text " + std::to_string(i));
  texts.emplace_back(6000, 'x');
  return texts;
}

TEST_F(Reads, OfEveryLengthGiveWhatTheRulesOfTheChunkLoopSayInAZip) {
  const std::string bytes =
      zip({{"Document.iwa", member}, {"Slide.iwa", iwa({storage(100, {"sound"})})}});
  int outcomes[3] = {};
  for (longestRead = 1; longestRead <= kLargestRead; ++longestRead) {
    SCOPED_TRACE(longestRead);
    const Decoded first = ChunkLoop(member, longestRead).run();
    const Decoded second = ChunkLoop(iwa({storage(100, {"sound"})}), longestRead).run();
    ++outcomes[first.outcome];
    ReaderSession session(theReader().interface(), host, &host.addDocument(bytes));
    const Fill fill = session.fill(kBuffer);
    expectNothingOpen();
    if (first.outcome == Decoded::kEndless || second.outcome == Decoded::kEndless) {
      EXPECT_EQ(fill.result, 6);
      continue;
    }
    Texts expected;
    if (first.outcome == Decoded::kWhole) {
      ASSERT_EQ(first.objects, stream);  // or the model would have to know what it says
      expected = textsOfObjects();
    }
    if (second.outcome == Decoded::kWhole) expected.emplace_back("sound");
    EXPECT_EQ(fill.result, expected.empty() ? 4 : 0);
    if (fill.result == 0) {
      EXPECT_EQ(textsOf(fill.bytes), expected);
    }
  }
  for (const int count : outcomes) EXPECT_GT(count, 0);  // each is met
}

TEST_F(Reads, OfEveryLengthGiveWhatTheRulesOfTheChunkLoopSayInADirectory) {
  writeDirectory(folder.path(), {{"Index/Document.iwa", member}});
  for (longestRead = 1; longestRead <= kLargestRead; ++longestRead) {
    SCOPED_TRACE(longestRead);
    const Decoded decoded = ChunkLoop(member, longestRead).run();
    ReaderSession session(theReader().interface(), host,
                          &host.addDirectoryDocument(folder.path() / "Index" / "Document.iwa"));
    const Fill fill = session.fill(kBuffer);
    expectNothingOpen();
    EXPECT_EQ(fill.result, decoded.outcome == Decoded::kWhole ? 0 : 6);
    if (fill.result == 0) {
      EXPECT_EQ(textsOf(fill.bytes), textsOfObjects());
    }
  }
}

// The container module reads through the same slot, and is not to be put off.
TEST_F(Reads, OfEveryLengthMakeNoDifferenceToTheContainerModule) {
  host.useContainerModule(containerModulePath());
  const std::string bytes = zip({{"Document.iwa", member, true}, {"b", "2"}});
  for (std::uint32_t count = 1; count <= kLargestRead; count += count < 64 ? 1 : 61) {
    Stream& document = host.addDocument(bytes);
    document.maxRead = count;
    ReaderSession session(theReader().interface(), host, &document);
    EXPECT_EQ(textsOf(session.fill(kBuffer).bytes), textsOfObjects()) << count;
    expectNothingOpen();
  }
}

// One answer of 0 is no end: the reader asks again, and gets the rest.
TEST_F(Reads, ThatSayZeroOnceTooEarlyMakeNoDifference) {
  const std::string bytes = zip({{"Document.iwa", member}});
  for (int fault = 1;; ++fault) {
    int reads = 0;
    host.onOpenFile = [&](Stream& opened) {
      opened.onRead = [&](Stream& from, void* buffer, std::uint32_t count) {
        return ++reads == fault ? 0 : readFromMemory(from, buffer, count);
      };
    };
    ReaderSession session(theReader().interface(), host, &host.addDocument(bytes));
    const Fill fill = session.fill(kBuffer);
    EXPECT_EQ(fill.result, 0);
    EXPECT_EQ(textsOf(fill.bytes), textsOfObjects()) << fault;
    if (reads < fault) return;
  }
}

// From some byte on there is nothing more: the member never ends, until the host
// throws. What it throws is not derived from std::exception, so that the reader
// does not take it for a bad member.
TEST_F(Reads, ThatEndTooEarlyNeverEndUntilTheHostThrows) {
  const std::string bytes =
      zip({{"Slide.iwa", iwa({storage(100, {"x"})})}, {"Document.iwa", member}});
  writeDirectory(folder.path(), {{"Index/Document.iwa", member}});
  for (std::size_t end = 0; end < member.size(); end += 7) {
    host.onOpenFile = [&](Stream& opened) {
      opened.onRead = [end](Stream& from, void* buffer, std::uint32_t count) {
        if (from.contents.size() > 1000 && from.position + count > end)
          count = static_cast<std::uint32_t>(end - std::min(from.position, end));
        if (count > 0) return readFromMemory(from, buffer, count);
        if (++from.position > from.contents.size() + 3) throw EndOfDocument{};
        from.position = from.contents.size() + 3;
        return 0;
      };
    };
    for (Stream* document :
         {&host.addDocument(bytes),
          &host.addDirectoryDocument(folder.path() / "Index" / "Document.iwa")}) {
      ReaderSession session(theReader().interface(), host, document);
      EXPECT_EQ(session.fill(kBuffer).result, 6) << end;
      expectNothingOpen();
    }
  }
}

}  // namespace
}  // namespace dorvex::testing
