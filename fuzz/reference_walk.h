// The walk of an object stream once more, archive by archive, with a parser of
// the caller's choice: the reference for the walk of the reader, and the way to
// know beforehand whether that one would end.
#pragma once

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/message.h>

#include <map>
#include <memory>
#include <vector>

#include "TSPArchiveMessages.pb.h"
#include "Tools/formats/vniwork13/iwa_utils.h"

namespace dorvex::fuzz {

class ReferenceWalk {
 public:
  using Parse = bool (*)(google::protobuf::Message& message,
                         google::protobuf::io::CodedInputStream& input);
  using Objects = std::map<unsigned long long, std::unique_ptr<google::protobuf::Message>>;

  // The stream must outlive the walk.
  ReferenceWalk(const std::vector<unsigned char>& objectStream, vn::iwork13::MessageFactory factory,
                Parse parse);

  enum class Step {
    kArchive,  // one archive was read, well or not
    kEnd,      // there is no more
    kEndless,  // the cursor does not move any more: the reader would go on for ever
  };
  Step step();

  // The first object of each identifier.
  const Objects& objects() const { return objects_; }
  // Where the next archive begins, and the levels that failures have left.
  int position() const { return input_.CurrentPosition(); }
  int levelsLeft() { return input_.RecursionBudget(); }

 private:
  void addPayload(const TSP::MessageInfo& info);

  google::protobuf::io::CodedInputStream input_;
  vn::iwork13::MessageFactory factory_;
  Parse parse_;
  TSP::ArchiveInfo archive_;
  Objects objects_;
};

// Whether the reader's walk of the stream ends.
bool walkEnds(const std::vector<unsigned char>& objectStream, vn::iwork13::MessageFactory factory);

}  // namespace dorvex::fuzz
