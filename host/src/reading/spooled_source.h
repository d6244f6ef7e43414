// A document that is read to its end before it is read as one.
#pragma once

#include <functional>
#include <memory>

#include "reading/document_source.h"
#include "reading/time_budget.h"

namespace dorvex {

// Starts on an input that is open and read; the budget is what is left.
using StartReading =
    std::function<std::unique_ptr<Document::Source>(OpenInput input, TimeBudget budget)>;

// Reads an input that is unread to its end, when the first buffer or piece is asked
// for, and goes on with what start makes of it. renders: whether that is pieces.
std::unique_ptr<Document::Source> makeSpooledSource(OpenInput input, TimeBudget budget,
                                                    bool renders, StartReading start);

}  // namespace dorvex
