// How a worker process is confined while it reads a document.
#pragma once

#include <string>
#include <vector>

namespace dorvex {

// A worker that reads a file holds that file and may open nothing: system calls
// are filtered by a list of those that reading needs. A worker that reads a
// package directory may open files in that directory, for reading only. Neither
// may use a network, start a process or a program, gain privileges or leave a
// core dump.
enum class Sandbox {
  kOff,
  kWherePossible,  // what the kernel has
  kRequired,       // a document is not read at all where something is lacking
};

// What this kernel or this build lacks for that, a phrase for each; empty where
// everything is there. Changes nothing in the calling process.
std::vector<std::string> missingConfinement();

}  // namespace dorvex
