// Writes JSON as it is called: commas, escapes and the shortest numbers that round-trip.
#pragma once

#include <cstdint>
#include <string_view>

#include "writers/output.h"

namespace dorvex::content {

// The caller's calls must nest; keys are text that needs no escapes.
class JsonEmitter {
 public:
  // In one line, line breaks that are asked for are left out.
  explicit JsonEmitter(Output& output, bool oneLine = false) : output_(output), oneLine_(oneLine) {}

  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginArray() { begin('['); }
  void endArray() { end(']'); }
  void key(std::string_view key);

  // Bytes that are not UTF-8 become U+FFFD.
  void string(std::string_view value);
  void number(double value);  // null for what JSON has no number for
  void count(std::uint64_t value);
  void boolean(bool value) { literal(value ? "true" : "false"); }
  void null() { literal("null"); }

  // Lets the next value or key begin on a line of its own.
  void breakLine() { lineBreak_ = !oneLine_; }

 private:
  void begin(char bracket);
  void end(char bracket);
  void literal(std::string_view text);
  void separate();
  void quoted(std::string_view text);

  Output& output_;
  bool oneLine_;
  bool comma_ = false;
  bool lineBreak_ = false;
};

}  // namespace dorvex::content
