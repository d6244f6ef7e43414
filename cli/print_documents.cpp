#include "print_documents.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include "exit_status.h"
#include "printable.h"
#include "tidy.h"
#include "token_printer.h"

namespace dorvex::cli {
namespace {

using Clock = std::chrono::steady_clock;

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

Document open(const Host& host, const std::string& path) {
  return host.open(path == "-" ? standardInput() : Input::path(path));
}

// The next document would fare no better.
const Result& checked(const Result& result) {
  if (result.failure == Failure::kModuleMissing || result.failure == Failure::kNotConfined) {
    throw EnvironmentError(describe(result));
  }
  return result;
}

template <typename Take>
const Result& readTexts(Document& document, bool tidy, Take take) {
  Tidier tidier;
  while (auto text = document.nextText()) {
    if (!tidy || tidier.take(*text)) take(std::move(*text));
  }
  return checked(document.result());
}

}  // namespace

PrintDocument printTexts(std::string separator, bool tidy) {
  return [separator = std::move(separator), tidy](const Host& host, const std::string& path,
                                                  const Write& write) -> Result {
    Document document = open(host, path);
    return readTexts(document, tidy, [&](std::string text) {
      text += separator;
      write(text);
    });
  };
}

// The buffers have been checked, so reading them again cannot fail.
PrintDocument printTokens() {
  return [](const Host& host, const std::string& path, const Write& write) -> Result {
    Document document = open(host, path);
    TokenStreamReader reader;
    while (const auto buffer = document.nextBuffer()) {
      reader.start(*buffer);
      while (const auto token = reader.next()) write(print(*token));
    }
    return checked(document.result());
  };
}

PrintDocument printRawTokens() {
  return [](const Host& host, const std::string& path, const Write& write) -> Result {
    Document document = open(host, path);
    while (const auto buffer = document.nextBuffer()) {
      write({reinterpret_cast<const char*>(buffer->data()), buffer->size()});
    }
    return checked(document.result());
  };
}

PrintDocument printRecord(bool tidy) {
  return [tidy](const Host& host, const std::string& path, const Write& write) -> Result {
    const Record record = readRecord(host, path, tidy);
    write(toLine(record));
    return record.result;
  };
}

Record readRecord(const Host& host, const std::string& path, bool tidy) {
  Record record;
  record.path = path;
  const auto start = Clock::now();
  Document document = open(host, path);
  record.result =
      readTexts(document, tidy, [&](std::string text) { record.texts.push_back(std::move(text)); });
  record.milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  record.bytesIn = sizeOnDisk(path == "-" ? kStandardInput : path);
  return record;
}

std::string complaint(const std::string& path, const Result& result) {
  return printable("dorvex: " + (path == "-" ? "standard input" : path) + ": " + describe(result));
}

}  // namespace dorvex::cli
