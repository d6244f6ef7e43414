// From what the module returned and what the host saw to what a person is told.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "dorvex/result.h"
#include "looking/observations.h"
#include "looking/package.h"

namespace dorvex {

// A document that gave nothing, and why.
Result failedResult(Failure failure, std::string message, Limit limit = Limit::kNone);

// Why the container module refused a member, as a phrase for people.
std::string refusalText(int status);

// The result for an error of the operating system at the document itself.
Result systemFailure(int error);

// The result of a document for which the module returned moduleResult. look
// is asked for only when something is wrong. A text of which anything is
// missing is never Status::kOk.
Result diagnose(int moduleResult, const Observations& seen,
                const std::function<PackageLook()>& look);

}  // namespace dorvex
