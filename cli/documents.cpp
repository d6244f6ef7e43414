#include "documents.h"

#include <algorithm>
#include <iostream>

#include "token_printer.h"

namespace dorvex::cli {
namespace {

constexpr const char kStandardInput[] = "/dev/stdin";

// The message stays on its line whatever a member or a file is called.
std::string on_one_line(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; },
      '?');
  return text;
}

Result print_texts(Document& document, Output& output, char end) {
  while (auto text = document.next_text()) {
    text->push_back(end);
    output.write(*text);
  }
  return document.result();
}

bool print_document(const Host& host, const std::string& path, PrintDocument print,
                    Output& output) {
  Document document = host.open(Input::path(path == "-" ? kStandardInput : path));
  const Result result = print(document, output);
  // Before the line on standard error, so that the two appear in their order.
  output.flush();
  if (result.status == Status::ok) return true;
  const std::string name = path == "-" ? "standard input" : path;
  std::cerr << on_one_line("dorvex: " + name + ": " + describe(result)) << std::endl;
  return false;
}

}  // namespace

Result print_texts_by_line(Document& document, Output& output) {
  return print_texts(document, output, '\n');
}

Result print_texts_by_nul(Document& document, Output& output) {
  return print_texts(document, output, '\0');
}

// The buffers have been checked, so reading them again cannot fail.
Result print_tokens(Document& document, Output& output) {
  TokenStreamReader reader;
  while (const auto buffer = document.next_buffer()) {
    reader.start(*buffer);
    while (const auto token = reader.next()) output.write(print(*token));
  }
  return document.result();
}

Result print_raw_tokens(Document& document, Output& output) {
  while (const auto buffer = document.next_buffer()) {
    output.write({reinterpret_cast<const char*>(buffer->data()), buffer->size()});
  }
  return document.result();
}

int print_documents(const Host& host, const std::vector<std::string>& paths, PrintDocument print) {
  Output output;
  bool all_read = true;
  for (const std::string& path : paths) all_read &= print_document(host, path, print, output);
  return all_read ? 0 : 1;
}

}  // namespace dorvex::cli
