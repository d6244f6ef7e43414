#include "documents.h"

#include <algorithm>
#include <iostream>

#include "token_printer.h"

namespace dorvex::cli {
namespace {

constexpr const char kStandardInput[] = "/dev/stdin";

// The message stays on its line whatever a member or a file is called.
std::string onOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; },
      '?');
  return text;
}

Result printTexts(Document& document, Output& output, char end) {
  while (auto text = document.nextText()) {
    text->push_back(end);
    output.write(*text);
  }
  return document.result();
}

bool printDocument(const Host& host, const std::string& path, PrintDocument print, Output& output) {
  Document document = host.open(Input::path(path == "-" ? kStandardInput : path));
  const Result result = print(document, output);
  // Before the line on standard error, so that the two appear in their order.
  output.flush();
  if (result.status == Status::kOk) return true;
  const std::string name = path == "-" ? "standard input" : path;
  std::cerr << onOneLine("dorvex: " + name + ": " + describe(result)) << std::endl;
  return false;
}

}  // namespace

Result printTextsByLine(Document& document, Output& output) {
  return printTexts(document, output, '\n');
}

Result printTextsByNul(Document& document, Output& output) {
  return printTexts(document, output, '\0');
}

// The buffers have been checked, so reading them again cannot fail.
Result printTokens(Document& document, Output& output) {
  TokenStreamReader reader;
  while (const auto buffer = document.nextBuffer()) {
    reader.start(*buffer);
    while (const auto token = reader.next()) output.write(print(*token));
  }
  return document.result();
}

Result printRawTokens(Document& document, Output& output) {
  while (const auto buffer = document.nextBuffer()) {
    output.write({reinterpret_cast<const char*>(buffer->data()), buffer->size()});
  }
  return document.result();
}

int printDocuments(const Host& host, const std::vector<std::string>& paths, PrintDocument print) {
  Output output;
  bool allRead = true;
  for (const std::string& path : paths) allRead &= printDocument(host, path, print, output);
  return allRead ? 0 : 1;
}

}  // namespace dorvex::cli
