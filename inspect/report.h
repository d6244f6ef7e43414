// The inspector's output.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "inspect/listing.h"

namespace dorvex::cli {

// The whole listing for people: a line about the document, a table of members
// and one of objects.
std::string printListing(const Listing& listing);
// The same as one JSON object on one line.
std::string printListingAsJson(const Listing& listing);

// The messages of one object in text form, each below a line that starts with
// '#'; nothing when there is no such object.
std::optional<std::string> printObject(const Listing& listing, std::uint64_t identifier);
// The same as one JSON object on one line.
std::optional<std::string> printObjectAsJson(const Listing& listing, std::uint64_t identifier);

}  // namespace dorvex::cli
