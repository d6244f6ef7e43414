#include "print_documents.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <utility>
#include <variant>

#include "exit_status.h"
#include "printable.h"
#include "tidy.h"
#include "token_printer.h"

namespace dorvex::cli {
namespace {

using Clock = std::chrono::steady_clock;

// The next document would fare no better.
const Result& checked(const Result& result) {
  if (result.failure == Failure::kModuleMissing || result.failure == Failure::kNotConfined) {
    throw EnvironmentError(result.message);
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

// From the tokens, so that no text is in memory for itself. The buffers have been
// checked, so reading them again cannot fail.
const Result& readPieces(Document& document, JsonStrings& texts) {
  TokenStreamReader reader;
  while (const auto buffer = document.nextBuffer()) {
    reader.start(*buffer);
    while (const auto token = reader.next()) {
      if (const auto* text = std::get_if<TextToken>(&*token)) texts.add(text->text);
      if (std::holds_alternative<BreakToken>(*token)) texts.end();
    }
  }
  return checked(document.result());
}

// A printer does not see documents that have a fault.
PrintDocument unlessAtFault(PrintDocument print) {
  return
      [print = std::move(print)](const Host& host, const ListedPath& document, const Write& write) {
        return document.fault ? faultOf(document) : print(host, document, write);
      };
}

std::string prefixFor(const ListedPath& document, const TextForm& form) {
  const std::string name = nameForPeople(document);
  return (form.forTerminal ? printable(name) : name) + ":";
}

std::string beforeEachFurtherLine(const std::string& prefix, std::string text) {
  if (prefix.empty()) return text;
  for (auto feed = text.find('\n'); feed != std::string::npos;
       feed = text.find('\n', feed + 1 + prefix.size())) {
    text.insert(feed + 1, prefix);
  }
  return text;
}

struct Advice {
  Failure failure;
  Limit limit;
  std::string_view text;
};

// What a person can do, where the message does not say so itself.
constexpr std::array<Advice, 11> kAdvice = {{
    {Failure::kTimedOut, Limit::kWallTime, "--timeout gives it more time"},
    {Failure::kOutOfMemory, Limit::kNone, "--max-memory gives it more"},
    {Failure::kOutOfMemory, Limit::kMemory, "--max-memory gives it more"},
    {Failure::kLimitPassed, Limit::kMemory, "--max-memory gives it more"},
    {Failure::kLimitPassed, Limit::kOutput, "--max-output allows more"},
    {Failure::kLimitPassed, Limit::kInput, "--max-input allows more"},
    {Failure::kDamaged, Limit::kNone, "another copy of it may be whole"},
    {Failure::kUnsupportedCompression, Limit::kNone, "save it anew in its application"},
    {Failure::kNothingRecognised, Limit::kNone, "save it anew in its application"},
    {Failure::kChanged, Limit::kNone, "read it again when nothing writes to it"},
    {Failure::kOutOfResources, Limit::kNone, "fewer --jobs need less"},
}};

std::string_view adviceFor(const Result& result) {
  for (const Advice& row : kAdvice) {
    if (row.failure == result.failure && row.limit == result.limit) return row.text;
  }
  return {};
}

}  // namespace

PrintDocument printTexts(TextForm form) {
  return unlessAtFault([form = std::move(form)](const Host& host, const ListedPath& listed,
                                                const Write& write) -> Result {
    const std::string prefix = form.withFilename ? prefixFor(listed, form) : "";
    Document document = host.open(inputOf(listed));
    return readTexts(document, form.tidy, [&](std::string text) {
      if (form.separator == "\n") text = beforeEachFurtherLine(prefix, std::move(text));
      write(prefix + std::move(text) + form.separator);
    });
  });
}

PrintDocument printTokens() {
  return unlessAtFault(
      [](const Host& host, const ListedPath& listed, const Write& write) -> Result {
        Document document = host.open(inputOf(listed));
        TokenStreamReader reader;
        while (const auto buffer = document.nextBuffer()) {
          reader.start(*buffer);
          while (const auto token = reader.next()) write(print(*token));
        }
        return checked(document.result());
      });
}

PrintDocument printRawTokens() {
  return unlessAtFault(
      [](const Host& host, const ListedPath& listed, const Write& write) -> Result {
        Document document = host.open(inputOf(listed));
        while (const auto buffer = document.nextBuffer()) {
          write({reinterpret_cast<const char*>(buffer->data()), buffer->size()});
        }
        return checked(document.result());
      });
}

// A file of which there may be more to come is not whole.
PrintDocument printRendering(SideFilesOf sideFilesOf) {
  return unlessAtFault([sideFilesOf = std::move(sideFilesOf)](const Host& host,
                                                              const ListedPath& listed,
                                                              const Write& write) -> Result {
    SideFiles files = sideFilesOf(listed);
    Document document = host.open(inputOf(listed));
    while (const auto piece = document.nextPiece()) {
      if (piece->type == PieceType::kOutput) {
        write(piece->bytes);
      } else {
        files.take(*piece);
      }
    }
    const Result& result = checked(document.result());
    const bool ended = result.failure == Failure::kNone || result.failure == Failure::kDamaged;
    if (ended) files.finish();
    return result;
  });
}

PrintDocument printRecord(bool tidy) {
  return [tidy](const Host& host, const ListedPath& listed, const Write& write) -> Result {
    Record record = readRecord(host, listed, tidy);
    Result result = record.result;
    const Blocks line = toLine(std::move(record));
    for (const std::string& part : line.parts()) write(part);
    return result;
  };
}

Record readRecord(const Host& host, const ListedPath& listed, bool tidy) {
  Record record;
  record.path = listed.path;
  if (listed.fault) {
    record.result = faultOf(listed);
    return record;
  }
  const auto start = Clock::now();
  Document document = host.open(inputOf(listed));
  if (host.options().rendering) {
    record.content.emplace();
    while (const auto piece = document.nextPiece()) record.content->add(piece->bytes);
    record.content->end();
    record.result = checked(document.result());
  } else if (tidy) {
    record.result = readTexts(document, tidy, [&](const std::string& text) {
      record.texts.add(text);
      record.texts.end();
    });
  } else {
    record.result = readPieces(document, record.texts);
  }
  record.milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  record.bytesIn = record.result.inputBytes;
  return record;
}

Input inputOf(const ListedPath& document) {
  return document.isStandardInput ? Input::descriptor(STDIN_FILENO) : Input::path(document.path);
}

Result faultOf(const ListedPath& document) {
  Result result;
  result.status = Status::kFailed;
  const bool forbidden = document.fault == std::errc::permission_denied ||
                         document.fault == std::errc::operation_not_permitted;
  result.failure = forbidden ? Failure::kPermissionDenied : Failure::kCannotRead;
  result.message = "the folder cannot be gone through: " + document.fault.message();
  return result;
}

std::string nameForPeople(const ListedPath& document) {
  return document.isStandardInput ? "standard input" : document.path;
}

std::string complaint(const ListedPath& document, const Result& result, bool showsNumbers) {
  std::string line = "dorvex: " + nameForPeople(document) + ": ";
  line += showsNumbers ? describe(result) : result.message;
  const auto advice = adviceFor(result);
  if (!advice.empty()) line.append(" (").append(advice).append(")");
  return printable(line);
}

}  // namespace dorvex::cli
