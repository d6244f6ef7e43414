// Runs the built tool.
#pragma once

#include <string>
#include <vector>

namespace dorvex::testing {

struct Finished {
  int status;  // exit status, or minus the signal
  std::string output;
  std::string errors;
};

// Where the program's standard streams lead. Empty: nothing to read, and what
// is written comes back in the Finished.
struct Streams {
  std::string input = {};   // a file
  std::string output = {};  // a file, such as /dev/full
  bool closedPipe = false;  // standard output is a pipe that nobody reads
  int failingCall = -1;     // a system call that fails as if the kernel refused it
};

// Runs a program with arguments and waits for it.
Finished runProgram(const std::string& program, const std::vector<std::string>& arguments,
                    const Streams& streams = {});

// Runs dorvex.
Finished runTool(const std::vector<std::string>& arguments, const Streams& streams = {});

// Runs dorvex at a terminal: output is what that shows, with line feeds for its
// line ends.
Finished runToolAtTerminal(const std::vector<std::string>& arguments);

}  // namespace dorvex::testing
