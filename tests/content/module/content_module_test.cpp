// The door of the module: what it refuses, and how it ends.
#include "dorvex/content_module.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Tools/formats/vniwork13/snappy_utils.h"
#include "support/bare_host.h"
#include "support/package_writer.h"

extern "C" DorvexContentOutcome dorvexRenderContent(const DorvexContentRequest* request,
                                                    DorvexContentAnswer* answer);

namespace dorvex::content::content_module_test {
namespace {

constexpr int kPagesDocument = 10000;

struct Received {
  std::vector<std::string> names;
  std::string output, bytes, damaged, message;
  std::size_t pieces = 0;
  std::size_t stopAt = SIZE_MAX;
  bool throws = false;
};

int take(void* receiver, DorvexContentPiece piece, const char* bytes, std::size_t count) {
  auto& received = *static_cast<Received*>(receiver);
  EXPECT_LE(count, DORVEX_CONTENT_LARGEST_PIECE);
  if (++received.pieces > received.stopAt) {
    if (received.throws) throw std::runtime_error("the host's own");
    return 0;
  }
  const std::string_view text(bytes, count);
  if (piece == DORVEX_CONTENT_OUTPUT) received.output += text;
  if (piece == DORVEX_CONTENT_FILE_NAME) received.names.emplace_back(text);
  if (piece == DORVEX_CONTENT_FILE_BYTES) received.bytes += text;
  if (piece == DORVEX_CONTENT_DAMAGED) received.damaged += text;
  if (piece == DORVEX_CONTENT_MESSAGE) received.message += text;
  return 1;
}

class ContentModule : public ::testing::Test {
 protected:
  ContentModule() {
    host.useContainerModule(DORVEX_CONTAINER_MODULE);
    options.size = sizeof options;
    options.delimiter = ',';
  }

  DorvexContentOutcome render(std::string document) {
    const DorvexContentRequest request{
        &options, host.services(), &host.addDocument(std::move(document)), nullptr,
        take,     &received};
    const DorvexContentOutcome outcome = dorvexRenderContent(&request, &answer);
    EXPECT_EQ(host.openStreams(), 0U);
    EXPECT_EQ(host.openContainers(), 0);
    EXPECT_EQ(host.loadedModules(), 0);
    return outcome;
  }

  static std::string sample(const std::string& name) {
    return testing::readFile(DORVEX_SAMPLES "/" + name);
  }

  // The sample with a name of as many bytes in place of another.
  static std::string renamed(const std::string& sampleName, const std::string& from,
                             const std::string& to) {
    std::vector<testing::Member> members = testing::unzip(sample(sampleName));
    for (testing::Member& member : members) {
      if (member.name != "Index/Metadata.iwa") continue;
      const std::vector<char> bytes = vn::iwork13::uncompressIwaBuffer(
          member.contents.data(), static_cast<std::uint32_t>(member.contents.size()));
      std::string stream(bytes.begin(), bytes.end());
      stream.replace(stream.find(from), from.size(), to);
      member.contents = testing::iwa(stream);
    }
    return testing::zip(members);
  }

  testing::BareHost host;
  DorvexContentOptions options{};
  DorvexContentAnswer answer{};
  Received received;
};

TEST_F(ContentModule, RendersADocumentAndTellsItsApplication) {
  EXPECT_EQ(render(sample("tea-shop.key")), DORVEX_CONTENT_RENDERED);
  EXPECT_EQ(answer.application, DORVEX_CONTENT_KEYNOTE);
  EXPECT_EQ(answer.showsAnything, 1);
  EXPECT_TRUE(received.output.starts_with("{\"version\":1"));
}

TEST_F(ContentModule, RefusesOptionsThatItDoesNotKnow) {
  const DorvexContentOptions sound = options;
  const auto refuses = [&](auto change) {
    options = sound;
    change();
    return render(sample("tea-shop.key")) == DORVEX_CONTENT_BAD_OPTIONS;
  };
  EXPECT_TRUE(refuses([&] { options.size = 8; }));
  EXPECT_TRUE(refuses([&] { options.format = static_cast<DorvexContentFormat>(5); }));
  EXPECT_TRUE(refuses([&] { options.changes = static_cast<DorvexContentChanges>(-1); }));
  EXPECT_TRUE(refuses([&] { options.delimiter = 0; }));
  EXPECT_TRUE(refuses([&] { options.delimiter = 0x80; }));
  EXPECT_EQ(received.pieces, 0U);
}

TEST_F(ContentModule, TellsWhatIsNoPackageAndNoDocument) {
  EXPECT_EQ(render("nothing"), DORVEX_CONTENT_NO_PACKAGE);
  EXPECT_EQ(render(testing::zip({{"a", "b"}})), DORVEX_CONTENT_NO_DOCUMENT);
  EXPECT_EQ(answer.application, DORVEX_CONTENT_UNKNOWN);
}

TEST_F(ContentModule, SaysOfADocumentThatItShowsNothing) {
  const std::string empty = testing::iwa({testing::object(1, kPagesDocument, "")});
  EXPECT_EQ(render(testing::zip({{"Index/Document.iwa", empty}})), DORVEX_CONTENT_RENDERED);
  EXPECT_EQ(answer.showsAnything, 0);
}

TEST_F(ContentModule, EndsWhenTheHostWantsNoMore) {
  received.stopAt = 0;
  EXPECT_EQ(render(sample("tea-shop.key")), DORVEX_CONTENT_STOPPED);
  received.throws = true;
  EXPECT_EQ(render(sample("tea-shop.key")), DORVEX_CONTENT_STOPPED);
}

TEST_F(ContentModule, SaysWhichTableIsMissing) {
  options.format = DORVEX_CONTENT_CSV;
  options.table = "Milk";
  EXPECT_EQ(render(sample("tea-shop.numbers")), DORVEX_CONTENT_NO_TABLE);
  EXPECT_EQ(received.message, "no such table (--list names them)");
}

TEST_F(ContentModule, TellsOfAMemberThatIsDamaged) {
  std::vector<testing::Member> members = testing::unzip(sample("tea-shop.pages"));
  members.push_back(
      {"Index/Extra.iwa", testing::iwa({testing::storage(900, {"a"})}) + testing::damagedChunk()});
  EXPECT_EQ(render(testing::zip(members)), DORVEX_CONTENT_RENDERED);
  EXPECT_EQ(received.damaged, std::string("Index/Extra.iwa\0is damaged", 26));
}

TEST_F(ContentModule, GivesMediaUnderNamesOfTheirOwn) {
  options.flags = DORVEX_CONTENT_MEDIA;
  EXPECT_EQ(render(sample("tea-shop.key")), DORVEX_CONTENT_RENDERED);
  EXPECT_EQ(received.names, (std::vector<std::string>{"1-teapot.svg", "2-kettle.mov",
                                                      "3-tea cup.svg", "4-whistle.m4a"}));
  EXPECT_NE(received.bytes.find("<svg"), std::string::npos);
}

TEST_F(ContentModule, MakesPlainNamesOfThoseThatLeadElsewhere) {
  options.flags = DORVEX_CONTENT_MEDIA;
  EXPECT_EQ(render(renamed("tea-shop.key", "teapot.svg", "../../a\nsv")), DORVEX_CONTENT_RENDERED);
  ASSERT_FALSE(received.names.empty());
  EXPECT_EQ(received.names.front(), "1-a-sv");
}

}  // namespace
}  // namespace dorvex::content::content_module_test
