/// @file
/// The registries: which message class a type id of an object stream means.
///
/// The three applications use some of the same ids for different classes, so
/// there is one registry for each and one that they share. A get function can
/// build the class; a has function only answers yes or no, and the two lists
/// differ. All functions may be called from any thread, and those that build or
/// return something may throw std::bad_alloc.
#pragma once

#include <vector>

#include "Tools/vnexport.h"

namespace google::protobuf {
class Message;
}

namespace vn::iwork13 {

/// The four registries. A fixed underlying type: callers may pass any int, and
/// get "no" for it.
enum IWorkRegistryType : int {
  CommonRegistry = 0,   ///< classes of the shared frameworks
  KeynoteRegistry = 1,  ///< Keynote's own classes
  NumbersRegistry = 2,  ///< Numbers' own classes
  PagesRegistry = 3,    ///< Pages' own classes
};

/// Lists the registries.
/// @return All four, in ascending value.
VN_API std::vector<IWorkRegistryType> getAllRegistryTypes();

/// @name One registry's classes
/// @{

/// Builds the class that the common registry has for a type id.
/// @param type Any number.
/// @return A new instance that the caller owns; null for an id that this
///     registry does not build.
VN_API google::protobuf::Message* getCommonRegistryMessage(int type);

/// Builds the class that Keynote's registry has for a type id.
/// @param type Any number.
/// @return A new instance that the caller owns; null for an id that this
///     registry does not build.
VN_API google::protobuf::Message* getKeynoteRegistryMessage(int type);

/// Builds the class that Numbers' registry has for a type id.
/// @param type Any number.
/// @return A new instance that the caller owns; null for an id that this
///     registry does not build.
VN_API google::protobuf::Message* getNumbersRegistryMessage(int type);

/// Builds the class that Pages' registry has for a type id.
/// @param type Any number.
/// @return A new instance that the caller owns; null for an id that this
///     registry does not build.
VN_API google::protobuf::Message* getPagesRegistryMessage(int type);

/// @}

/// @name An application's classes
/// These ask the application's registry first and then the common one. They
/// have the signature of MessageFactory.
/// @{

/// Builds the class that a type id means in a Keynote document.
/// @param type Any number.
/// @return A new instance that the caller owns; null for an id that neither
///     registry builds.
VN_API google::protobuf::Message* getKeynoteMessage(int type);

/// Builds the class that a type id means in a Numbers document.
/// @param type Any number.
/// @return A new instance that the caller owns; null for an id that neither
///     registry builds.
VN_API google::protobuf::Message* getNumbersMessage(int type);

/// Builds the class that a type id means in a Pages document.
/// @param type Any number.
/// @return A new instance that the caller owns; null for an id that neither
///     registry builds.
VN_API google::protobuf::Message* getPagesMessage(int type);

/// @}

/// @name What a registry claims to know
/// Each looks at one registry alone, and allocates nothing.
/// @{

/// Whether the common registry claims a type id. Yes does not promise an
/// instance: ten of its ids are never built.
/// @param type Any number.
/// @return True if it does.
VN_API bool commonRegistryHasMessageType(int type);

/// Whether Keynote's registry claims a type id.
/// @param type Any number.
/// @return True if it does.
VN_API bool keynoteRegistryHasMessageType(int type);

/// Whether Numbers' registry claims a type id.
/// @param type Any number.
/// @return True if it does.
VN_API bool numbersRegistryHasMessageType(int type);

/// Whether Pages' registry claims a type id.
/// @param type Any number.
/// @return True if it does.
VN_API bool pagesRegistryHasMessageType(int type);

/// The same answers, selected by registry.
/// @param registry Any value; one that names no registry gives false.
/// @param type Any number.
/// @return True if that registry claims it.
VN_API bool registryHasMessageType(IWorkRegistryType registry, int type);

/// @}

}  // namespace vn::iwork13
