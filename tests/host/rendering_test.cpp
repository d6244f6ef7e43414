// Documents rendered by the real content module, in real workers.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "dorvex/host.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"
#include "support/unconfined.h"

namespace dorvex::rendering_test {
namespace {

using namespace testing;

constexpr int kPagesDocumentType = 10000;

struct Rendered {
  std::string output;
  Result result;
};

HostOptions rendering(Rendering rendering = {.format = RenderFormat::kJson}) {
  HostOptions options;
  options.module = DORVEX_READER_MODULE;
  options.rendering = std::move(rendering);
  if (unconfined()) options.sandbox = Sandbox::kOff;
  return options;
}

Rendered render(const Input& input, const HostOptions& options = rendering()) {
  Rendered rendered;
  const Host host(options);
  Document document = host.open(input);
  while (const auto piece = document.nextPiece()) {
    EXPECT_FALSE(piece->bytes.empty());
    if (piece->type == PieceType::kOutput) rendered.output += piece->bytes;
  }
  rendered.result = document.result();
  return rendered;
}

Rendered render(const std::string& bytes, const HostOptions& options = rendering()) {
  return render(Input::memory({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}),
                options);
}

std::string kindIn(const std::string& json) {
  return nlohmann::json::parse(json).at("kind").get<std::string>();
}

Member emptyDocument(const std::string& name = "Index/Document.iwa") {
  return {name, iwa({object(1, kPagesDocumentType, "")})};
}

TEST(RenderedDocument, GivesThePiecesAndTheKind) {
  const Rendered rendered = render(zip({emptyDocument()}));
  EXPECT_EQ(rendered.result.status, Status::kOk) << rendered.result.message;
  EXPECT_EQ(rendered.result.kind, Kind::kPages);
  EXPECT_EQ(rendered.result.tokenBytes, rendered.output.size());
  EXPECT_EQ(kindIn(rendered.output), "pages");
}

TEST(RenderedDocument, MayLieInANestedZipAndUnderAnOuterFolder) {
  const std::string nested = zip({emptyDocument("Document.iwa")});
  EXPECT_EQ(kindIn(render(zip({{"Index.zip", nested}})).output), "pages");
  EXPECT_EQ(kindIn(render(zip({{"A.pages/Index.zip", nested}})).output), "pages");
  EXPECT_EQ(kindIn(render(zip({emptyDocument("A.pages/Index/Document.iwa")})).output), "pages");
}

TEST(RenderedDocument, MayBeADirectory) {
  const TemporaryDirectory folder;
  writeDirectory(folder.path() / "A.pages", {emptyDocument()});
  writeDirectory(folder.path() / "B.pages", {{"Index.zip", zip({emptyDocument("Document.iwa")})}});
  for (const char* name : {"A.pages", "B.pages"}) {
    const Rendered rendered = render(Input::path(folder.path() / name));
    EXPECT_EQ(rendered.result.status, Status::kOk) << rendered.result.message;
    EXPECT_EQ(kindIn(rendered.output), "pages");
  }
}

TEST(RenderedDocument, IsPartialWhereAMemberIsDamaged) {
  const Rendered rendered =
      render(zip({emptyDocument(), {"Index/Extra.iwa", iwa({comment(5, "kept")}) + "\xFF"}}));
  EXPECT_EQ(rendered.result.status, Status::kPartial);
  EXPECT_EQ(rendered.result.failure, Failure::kDamaged);
  ASSERT_EQ(rendered.result.skipped.size(), 1U);
  EXPECT_EQ(rendered.result.skipped[0].name, "Index/Extra.iwa");
  EXPECT_EQ(kindIn(rendered.output), "pages");
}

TEST(RenderedDocument, IsAFailureWhereItShowsNothingOfTheTexts) {
  const Rendered rendered = render(zip(
      {{"Index/Document.iwa", iwa({object(1, kPagesDocumentType, ""), storage(2, {"lost"})})}}));
  EXPECT_EQ(rendered.result.status, Status::kFailed);
  EXPECT_EQ(rendered.result.failure, Failure::kNothingRecognised);
  EXPECT_NE(rendered.result.message.find("nothing to show"), std::string::npos);
}

TEST(RenderedDocument, IsWholeWhereItsTextsAreBlanksAndPlacesOfDrawables) {
  const Rendered rendered = render(
      zip({{"Index/Document.iwa",
            iwa({object(1, kPagesDocumentType, ""), storage(2, {"\uFFFC", " \n\uFFFC\t", ""})})}}));
  EXPECT_EQ(rendered.result.status, Status::kOk);
  EXPECT_EQ(kindIn(rendered.output), "pages");
}

TEST(RenderedDocument, IsAFailureWithoutTheObjectThatHoldsIt) {
  const Rendered rendered = render(zip({{"Index/Document.iwa", iwa({storage(2, {"lost"})})}}));
  EXPECT_EQ(rendered.result.status, Status::kFailed);
  EXPECT_EQ(rendered.result.failure, Failure::kDamaged);
  EXPECT_EQ(rendered.output, "");
}

TEST(RenderedDocument, IsCalledWhatTheReaderCallsItWhereItIsNone) {
  for (const auto& bytes :
       {std::string("no package"), zip({{"index.xml", "<document/>"}}), zip({{"a.txt", "b"}})}) {
    const Rendered rendered = render(bytes);
    HostOptions reading = rendering();
    reading.rendering.reset();
    const Host host(reading);
    Document document = host.open(
        Input::memory({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}));
    EXPECT_EQ(rendered.result.status, Status::kFailed);
    EXPECT_EQ(rendered.result.failure, document.result().failure);
    EXPECT_EQ(rendered.result.message, document.result().message);
  }
}

TEST(RenderedDocument, KeepsToTheLimits) {
  HostOptions options = rendering();
  options.limits.output = 10;
  EXPECT_EQ(render(zip({emptyDocument()}), options).result.limit, Limit::kOutput);
  options = rendering();
  options.limits.container.members = 1;
  EXPECT_EQ(render(zip({emptyDocument(), {"a", "b"}}), options).result.limit, Limit::kMembers);
  options = rendering();
  options.limits.container.memberBytes = 4;
  EXPECT_EQ(render(zip({emptyDocument()}), options).result.limit, Limit::kMemberBytes);
}

TEST(RenderedDocument, ServesOneDocumentAfterTheOther) {
  const Host host(rendering());
  const std::string bytes = zip({emptyDocument()});
  for (int i = 0; i < 5; ++i) {
    Document document = host.open(
        Input::memory({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}));
    EXPECT_TRUE(document.nextPiece());
    EXPECT_EQ(document.result().status, Status::kOk);
  }
}

TEST(RenderedDocument, NeedsWorkers) {
  HostOptions options = rendering();
  options.isolation = Isolation::kInProcess;
  EXPECT_THROW(Host{options}, std::invalid_argument);
}

TEST(RenderedDocument, NeedsTheContentModule) {
  const TemporaryDirectory folder;
  std::filesystem::copy(DORVEX_READER_MODULE, folder.path() / "dorvexsr.so");
  HostOptions options = rendering();
  options.module = folder.path() / "dorvexsr.so";
  EXPECT_EQ(render(zip({emptyDocument()}), options).result.failure, Failure::kModuleMissing);
}

}  // namespace
}  // namespace dorvex::rendering_test
