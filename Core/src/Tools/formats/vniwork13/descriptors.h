// The descriptors of the schema, which protobuf builds on demand.
//
// The reader's own flows do without them. What works on instances of the message
// classes needs them: parsing one, printing one, anything through reflection.
#pragma once

namespace vn::iwork13 {

// Builds the descriptors of every message of the schema and all that hangs from
// them, at once, when they are first needed. protobuf would build them piece by
// piece and does not survive to run out of memory in the middle; a piece that is
// missing would be dereferenced. So it is all or nothing: once it has failed, this
// throws std::bad_alloc for the rest of the process, and nobody may touch them.
void requireDescriptors();

}  // namespace vn::iwork13
