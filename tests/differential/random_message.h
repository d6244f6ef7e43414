// Random payloads of any message class, made to catch the text sweep out.
#pragma once

#include <google/protobuf/message.h>

#include <random>
#include <string>

namespace dorvex::testing {

// Fills messages field by field through reflection. The same seed gives the
// same messages.
class RandomMessages {
 public:
  explicit RandomMessages(std::uint32_t seed) : random_(seed) {}

  // A payload that a class may have: fields set at random, extensions, unknown
  // fields at any depth, now and then a second message merged behind the first.
  // Strings often end like the sweep's pattern.
  std::string payload(const google::protobuf::Message& prototype);

  // The same with a few bytes changed, cut or doubled.
  std::string damagedPayload(const google::protobuf::Message& prototype);

 private:
  bool oneIn(unsigned count) { return random_() % count == 0; }
  std::string text();
  void fill(google::protobuf::Message& message, int depth);
  void setField(google::protobuf::Message& message, const google::protobuf::FieldDescriptor& field,
                int depth);
  void addUnknown(google::protobuf::UnknownFieldSet& unknown, int depth);

  std::mt19937 random_;
};

}  // namespace dorvex::testing
