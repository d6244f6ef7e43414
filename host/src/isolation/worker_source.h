// A document that a worker process reads.
#pragma once

#include <memory>

#include "isolation/worker_pool.h"
#include "reading/document_source.h"
#include "reading/time_budget.h"

namespace dorvex {

// Has a worker read with a session and hand its buffers over.
std::unique_ptr<Document::Source> makeWorkerSource(const std::shared_ptr<WorkerPool>& pool,
                                                   const HostOptions& options, OpenInput input,
                                                   TimeBudget budget);

}  // namespace dorvex
