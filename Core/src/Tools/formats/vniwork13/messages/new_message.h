// Makes the instances of the registries' rows from no more than the name of a class. To
// read the headers of all classes takes longer than to compile the whole library, so
// only this folder does.
#pragma once

namespace google::protobuf {
class Message;
}

namespace vn::iwork13 {

// Gives a new instance, which the caller owns. There is one for each row of each registry,
// an IWorkRegistryType; new_message.cc has them.
template <int registry, int type, typename MessageClass>
google::protobuf::Message* newMessage();

}  // namespace vn::iwork13
