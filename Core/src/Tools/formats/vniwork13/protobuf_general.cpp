#include "Tools/formats/vniwork13/protobuf_general.h"

#include <google/protobuf/stubs/common.h>

void vn_iwork13_ShutDownProtobuf() { google::protobuf::ShutdownProtobufLibrary(); }
