/// @file
/// Status numbers of a container module: the part of the error numbering shared
/// by host and modules that GetEntryInfo and ExtractEntry give.
#pragma once

extern "C" {

/// What GetEntryInfo and ExtractEntry return.
enum VNContainerStatus : int {
  VN_CONTAINER_OK = 0,                          ///< success
  VN_CONTAINER_OUT_OF_MEMORY = 2,               ///< no memory
  VN_CONTAINER_GENERAL_FAILURE = 6,             ///< anything else
  VN_CONTAINER_WRITE_FAILURE = 16,              ///< the stream took less than it was given
  VN_CONTAINER_DAMAGED = 21,                    ///< the container's data is not sound
  VN_CONTAINER_ENCRYPTED = 33,                  ///< the member needs a password
  VN_CONTAINER_INVALID_ARGUMENT = 34,           ///< null, or an index that is not there
  VN_CONTAINER_COMPRESSION_NOT_SUPPORTED = 43,  ///< a method that zip readers seldom know
};

}  // extern "C"
