#include "documents.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <system_error>

#include "token_printer.h"

namespace dorvex::cli {
namespace {

constexpr const char kStandardInput[] = "/dev/stdin";

std::size_t readStandardInput(void* buffer, std::size_t count) {
  ssize_t got = 0;
  do {
    got = ::read(STDIN_FILENO, buffer, count);
  } while (got < 0 && errno == EINTR);
  if (got < 0) throw std::system_error(errno, std::generic_category());
  return static_cast<std::size_t>(got);
}

// A file or a directory is opened anew and read in place; a pipe, a terminal or
// a socket, which cannot be opened, is read as it stands.
Input standardInput() {
  struct stat status {};
  const bool known = ::fstat(STDIN_FILENO, &status) == 0;
  if (known && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))) {
    return Input::path(kStandardInput);
  }
  return Input::callback(readStandardInput);
}

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
  Document document = host.open(path == "-" ? standardInput() : Input::path(path));
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
