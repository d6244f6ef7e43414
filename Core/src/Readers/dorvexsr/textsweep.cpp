// The text sweep of dorvexutil.h: it prints each message and scrapes the printed
// form for the fields `text` and `string`, whatever the message and however deep
// the field. The reader knows nothing else of where a document keeps its text.
#include <string_view>

#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/formats/vniwork13/pending_message.h"
#include "Tools/formats/vniwork13/printed_form.h"

namespace {

// White space in the C locale, whatever the process has set.
constexpr bool isWhiteSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Positions in a printed message are signed 32-bit numbers, -1 for not found.
int find(const std::string& printed, const std::string& what, int from) {
  return static_cast<int>(printed.find(what, static_cast<std::size_t>(from)));
}

void normalise(std::string& value) {
  // All that any of these looks for begins with one.
  if (value.find('\\') == std::string::npos) return;
  convertAllOctalCodesToAscii(value);
  replaceAllLFsAndTabs(value);
  removeFirstCharOfPattern(value, "\\'");
  removeFirstCharOfPattern(value, "\\\"");
}

// The values of a message that was not built: the scanner knows where they are,
// and that printing the message would give no others.
void writeScannedValues(TAG_VNDORVEXGlobals* context, const vn::iwork13::PendingMessage& message) {
  for (const vn::iwork13::SweptValue& found : message.values()) {
    const std::string_view bytes = message.bytesOf(found);
    if (comesOutAsItIs(bytes)) {
      writeToOutput(context, bytes);
      continue;
    }
    std::string value;
    vn::iwork13::appendEscaped(bytes, value);
    normalise(value);
    writeToOutput(context, value);
  }
}

void writePrintedValues(TAG_VNDORVEXGlobals* context, const std::string& printed) {
  std::list<std::string> values;
  extractFields(values, printed, "text");
  extractFields(values, printed, "string");
  for (const std::string& value : values) writeToOutput(context, value);
}

}  // namespace

void getAllText(TAG_VNDORVEXGlobals* context, const vn::iwork13::MessageMap& map) {
  if (map.empty()) return;
  for (const auto& [identifier, message] : vn::iwork13::entriesOf(map)) {
    const vn::iwork13::PendingMessage* pending = vn::iwork13::asPending(message);
    if (pending == nullptr)
      writePrintedValues(context, vn::iwork13::printMessage(*message));
    else if (pending->isScanned())
      writeScannedValues(context, *pending);
    else
      writePrintedValues(context, pending->print());
  }
}

void extractFields(std::list<std::string>& values, const std::string& printed,
                   const std::string& name) {
  const std::string pattern = name + ": \"";
  int position = find(printed, pattern, 0);
  while (position >= 0) {
    const auto index = static_cast<std::size_t>(position);
    if (index == 0 || isWhiteSpace(printed[index - 1]))
      values.push_back(getFieldContents(printed, position + static_cast<int>(pattern.size())));
    // From the next position, not behind the value: a match inside a value's last
    // characters counts.
    position = find(printed, pattern, position + 1);
  }
}

std::string getFieldContents(const std::string& printed, int start) {
  const auto begin = static_cast<std::size_t>(start);
  if (begin >= printed.size()) return {};
  // The closing quote stands before a line feed; the pattern's own quote, before
  // the first byte, counts too.
  const std::size_t quote = printed.find("\"\n", begin > 0 ? begin - 1 : 0);
  if (quote == std::string::npos) return {};
  const int distance = static_cast<int>(quote + 1 - begin);
  // A distance of 0 is a closing quote that completed the pattern. The count is
  // then -1, which the string library takes as everything to the end: the rest of
  // the printed message is the value, and readers of the output have it so.
  std::string value = printed.substr(begin, static_cast<std::size_t>(distance - 1));
  normalise(value);
  return value;
}
