// The registries: which message class a type id of an object stream means.
//
// The three applications use some of the same ids for different classes, so
// there is one registry for each and one that they share. A get function can
// build the class; a has function only answers yes or no, and the two lists
// differ (see registry.cpp). All functions may be called from any thread.
#pragma once

#include <vector>

#include "Tools/vnexport.h"

namespace google::protobuf {
class Message;
}

namespace vn::iwork13 {

// A fixed underlying type: callers may pass any int, and get "no" for it.
enum IWorkRegistryType : int {
  CommonRegistry = 0,   // classes of the shared frameworks
  KeynoteRegistry = 1,  // Keynote's own classes
  NumbersRegistry = 2,  // Numbers' own classes
  PagesRegistry = 3,    // Pages' own classes
};

// All four registries, in ascending value.
VN_API std::vector<IWorkRegistryType> getAllRegistryTypes();

// A new instance of the class that one registry has for the type id, which the
// caller owns; null for an id that the registry does not build.
VN_API google::protobuf::Message* getCommonRegistryMessage(int type);
VN_API google::protobuf::Message* getKeynoteRegistryMessage(int type);
VN_API google::protobuf::Message* getNumbersRegistryMessage(int type);
VN_API google::protobuf::Message* getPagesRegistryMessage(int type);

// The same, asking the application's registry first and then the common one.
// These have the signature of MessageFactory.
VN_API google::protobuf::Message* getKeynoteMessage(int type);
VN_API google::protobuf::Message* getNumbersMessage(int type);
VN_API google::protobuf::Message* getPagesMessage(int type);

// Whether one registry claims to know the type id. Yes does not promise an
// instance: the common registry claims ten ids that it does not build.
VN_API bool commonRegistryHasMessageType(int type);
VN_API bool keynoteRegistryHasMessageType(int type);
VN_API bool numbersRegistryHasMessageType(int type);
VN_API bool pagesRegistryHasMessageType(int type);

// The same answers, selected by registry; false for any other value of it.
VN_API bool registryHasMessageType(IWorkRegistryType registry, int type);

}  // namespace vn::iwork13
