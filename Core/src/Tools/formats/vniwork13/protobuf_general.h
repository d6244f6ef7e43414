/// @file
/// The module's only contact with the life cycle of the protobuf library.
#pragma once

#include "Tools/vnexport.h"

/// Shuts the protobuf library down. May be called again; the library returns at
/// once when it has already run. Afterwards no message may be created or used,
/// so no document may be open, in any thread.
extern "C" VN_API void vn_iwork13_ShutDownProtobuf();
