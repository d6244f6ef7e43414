// The module in a process that uses a protobuf of its own: the system's shared
// library, of the very release that the module holds. Neither notices the other.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/dynamic_message.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "module/module_life.h"

namespace dorvex::testing::beside_protobuf_test {
namespace {

namespace pb = google::protobuf;

// A schema of the program's own, and a message of it that goes to bytes and back.
class OwnSchema {
 public:
  OwnSchema() {
    pb::FileDescriptorProto file;
    file.set_name("own.proto");
    file.set_package("TSP");  // as the module has it
    pb::DescriptorProto& message = *file.add_message_type();
    message.set_name("ArchiveInfo");
    pb::FieldDescriptorProto& field = *message.add_field();
    field.set_name("words");
    field.set_number(1);
    field.set_type(pb::FieldDescriptorProto::TYPE_STRING);
    field.set_label(pb::FieldDescriptorProto::LABEL_REPEATED);
    type_ = pool_.BuildFile(file)->message_type(0);
  }

  bool works() {
    const pb::Message& prototype = *factory_.GetPrototype(type_);
    const std::unique_ptr<pb::Message> message(prototype.New());
    message->GetReflection()->AddString(message.get(), type_->field(0), "own");
    const std::unique_ptr<pb::Message> copy(prototype.New());
    return copy->ParseFromString(message->SerializeAsString()) &&
           copy->ShortDebugString() == "words: \"own\"" &&
           pb::DescriptorPool::generated_pool()->FindFileByName("TSPMessages.proto") == nullptr;
  }

 private:
  pb::DescriptorPool pool_;
  pb::DynamicMessageFactory factory_;
  const pb::Descriptor* type_;
};

TEST(BesideAnotherProtobuf, TheModuleComesAndGoesAnyNumberOfTimes) {
  if (!DORVEX_PROTOBUF_IS_PRIVATE)
    GTEST_SKIP() << "the build fell back to the system's protobuf, which cannot be unloaded";
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        OwnSchema own;
        if (!own.works()) std::_Exit(2);
        liveFlat(reloadRounds(), [&own] { return own.works(); });
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "rounds");
}

TEST(BesideAnotherProtobuf, TheModuleWorksWhileTheProgramUsesItsOwn) {
  OwnSchema own;
  const ModuleLife life;
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(own.works());
    EXPECT_TRUE(life.read());
  }
}

}  // namespace
}  // namespace dorvex::testing::beside_protobuf_test
