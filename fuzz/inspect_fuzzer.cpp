// The inspector's listing of an object stream: what it counts against what the
// reader gives, and what it prints.
//
// Input: one byte, whose messages are printed; the object stream, whose first
// bytes are also the name of its member.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "Readers/dorvexsr/dorvexutil.h"
#include "fuzz_input.h"
#include "input_form.h"
#include "inspect/listing.h"
#include "inspect/objects.h"
#include "inspect/report.h"
#include "reader_output.h"
#include "reference_walk.h"
#include "support/token_decoder.h"

namespace dorvex::fuzz {
namespace {

using cli::Listing;

constexpr std::size_t kLongestName = 40;
constexpr std::uint32_t kBufferSize = 1U << 16;

std::size_t countTexts(const Listing& listing) {
  std::size_t texts = 0;
  for (const auto& object : listing.objects)
    for (const auto& message : object.messages) texts += message.texts;
  return texts;
}

bool isDamaged(const Listing& listing) {
  return std::ranges::any_of(listing.objects, [](const auto& object) {
    return std::ranges::any_of(object.messages, &cli::ListedMessage::damaged);
  });
}

Listing list(std::string_view stream, Kind kind) {
  constexpr std::uint64_t kWanted = 1;
  cli::ObjectLister lister(kWanted);
  Listing listing;
  listing.path = stream.substr(0, kLongestName);
  listing.kind = kind;
  auto& member = listing.members.emplace_back().member;
  member.name = listing.path;
  member.selected = true;
  if (const auto fault = lister.list(stream, 0, true)) listing.faults.push_back(*fault);
  listing.objects = lister.take();
  return listing;
}

void checkPrinted(const Listing& listing) {
  const std::string lines = cli::printListing(listing);
  require(std::ranges::none_of(
              lines, [](char c) { return (c >= 0 && c < 0x20 && c != '\n') || c == 0x7F; }),
          "a listing tells a terminal nothing");
  require(nlohmann::json::accept(cli::printListingAsJson(listing)), "a listing is JSON");
  const bool isThere = std::ranges::any_of(
      listing.objects, [](const auto& object) { return object.identifier == 1; });
  require(cli::printObject(listing, 1).has_value() == isThere, "an object is printed");
  const auto json = cli::printObjectAsJson(listing, 1);
  require(json.has_value() == isThere, "an object is printed as JSON");
  if (json) require(nlohmann::json::accept(*json), "a printed object is JSON");
}

}  // namespace

const InputForm kInputForm{1, Level::kObjectStream};

}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const auto kind = static_cast<dorvex::Kind>(input.byte() % 4);
  const std::string_view bytes = input.rest();
  const Listing listing = list(bytes, kind);
  checkPrinted(listing);
  // Where something is damaged the reader goes on from elsewhere.
  if (!listing.faults.empty() || isDamaged(listing)) return 0;
  const std::string stream = sweepTokens({bytes.begin(), bytes.end()}, kBufferSize);
  require(
      dorvex::testing::textsOf(dorvex::testing::prologue() + stream).size() == countTexts(listing),
      "as many texts are counted as the reader gives");
  return 0;
}
