// Tells a test's own host from the module that it drives.
#pragma once

namespace dorvex::testing {

// Lives while a slot of the host runs. What fails on purpose within the module,
// such as operator new, leaves the host alone.
class HostCode {
 public:
  HostCode() { ++depth(); }
  HostCode(const HostCode&) = delete;
  HostCode& operator=(const HostCode&) = delete;
  ~HostCode() { --depth(); }

  static bool isRunning() { return depth() > 0; }

 private:
  static int& depth() {
    thread_local int depth = 0;
    return depth;
  }
};

}  // namespace dorvex::testing
