// Documents for the fake reader, which are its scripts.
#pragma once

#include <string>

#include "dorvex/host.h"
#include "support/unconfined.h"

namespace dorvex::testing {

inline Input script(const std::string& commands) {
  return Input::memory({reinterpret_cast<const unsigned char*>(commands.data()), commands.size()});
}

inline HostOptions fakeReader(Isolation isolation) {
  HostOptions options;
  options.module = FAKE_READER_MODULE;
  options.isolation = isolation;
  if (unconfined()) options.sandbox = Sandbox::kOff;
  return options;
}

struct Reading {
  std::vector<std::string> texts;
  Result result;
};

inline Reading readTexts(const Host& host, const Input& input) {
  Reading reading;
  reading.result =
      host.forEachText(input, [&](std::string_view text) { reading.texts.emplace_back(text); });
  return reading;
}

}  // namespace dorvex::testing
