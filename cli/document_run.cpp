#include "document_run.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <utility>
#include <vector>

#include "exit_status.h"
#include "host_options.h"
#include "jobs.h"
#include "ordered_output.h"
#include "output_file.h"
#include "output_names.h"
#include "printable.h"

namespace dorvex::cli {
namespace {

// Documents that may be ahead of the one that is being printed.
constexpr std::uint64_t kDocumentsForEachJob = 8;

// Files that are under way have no name afterwards.
[[noreturn]] void endAtOnce() {
  OutputFile::abandonAll();
  std::_Exit(kInterrupted);
}

std::vector<ListedPath> allOf(PathList& list) {
  std::vector<ListedPath> all;
  while (auto document = list.next()) all.push_back(std::move(*document));
  return all;
}

class Run {
 public:
  Run(const Host& host, const DocumentRun& options)
      : host_(host), options_(options), mayBeSeveral_(mayBeSeveral(options.input)) {}

  int operator()() {
    const std::string& target = options_.output.target;
    bool ended = false;
    if (isStandardOutput(target)) {
      Output output;
      ended = printInto(output, ::isatty(STDOUT_FILENO) == 1);
    } else if (namesDirectory(target)) {
      ended = printIntoFilesOf(target);
    } else {
      ended = printIntoFile(target);
    }
    if (!ended) return kInterrupted;
    return allRead_ ? kAllRead : kNotAllRead;
  }

 private:
  bool printInto(Output& output, bool isTerminal) {
    const bool headings = options_.headings && isTerminal && mayBeSeveral_;
    OrderedOutput ordered(output, {.parts = kDocumentsForEachJob * options_.jobs});
    const auto list = listOf(options_.input);
    const auto print = [&](const Job& job) {
      ordered.begin(job.number);
      bool begun = !headings;
      const Result result = options_.print(host_, job.item, [&](std::string_view bytes) {
        if (!std::exchange(begun, true)) ordered.write(job.number, heading(job));
        ordered.write(job.number, bytes);
      });
      ordered.end(job.number, wordsOn(job.item, result));
    };
    const auto work = [&](const Job& job) { ordered.during([&] { print(job); }); };
    return runJobs(
        options_.jobs, [&] { return list->next(); }, work,
        [&] {
          ordered.seal();
          endAtOnce();
        });
  }

  static std::string heading(const Job& job) {
    return (job.number > 0 ? "\n" : "") + printable("==> " + nameForPeople(job.item) + " <==") +
           "\n";
  }

  bool printIntoFile(const std::string& target) {
    if (OutputFile::isTaken(target)) {
      if (options_.output.onExists == OnExists::kSkip) return true;
      if (options_.output.onExists == OnExists::kFail) {
        throw EnvironmentError(target + " exists already");
      }
    }
    OutputFile file(target);
    const bool ended = printInto(file.output(), false);
    if (ended) file.keep(options_.output.onExists == OnExists::kReplace);
    return ended;
  }

  // All documents are known before the first is written, and so are their names.
  bool printIntoFilesOf(const std::filesystem::path& directory) {
    std::vector<ListedPath> documents = allOf(*listOf(options_.input));
    const auto names = outputNames(documents, options_.output.naming, options_.ending);
    std::filesystem::create_directories(directory);
    const auto next = [&, number = std::size_t{0}]() mutable {
      return number < documents.size() ? std::optional(documents[number++]) : std::nullopt;
    };
    const auto work = [&](const Job& job) {
      printIntoOneOf(job.item, directory / names[job.number]);
    };
    return runJobs(options_.jobs, next, work, endAtOnce);
  }

  void printIntoOneOf(const ListedPath& document, const std::filesystem::path& target) {
    if (options_.output.onExists == OnExists::kSkip && OutputFile::isTaken(target)) return;
    try {
      printDocumentInto(document, target);
    } catch (const OutputError& error) {
      if (error.error != EEXIST)
        throw EnvironmentError(target.string() + ": " + std::strerror(error.error));
      allRead_ = false;
      say(printable("dorvex: " + document.path + ": " + target.string() + " exists already"));
    }
  }

  // Nothing of a document that gave nothing; what there is of one that was read
  // in part.
  void printDocumentInto(const ListedPath& document, const std::filesystem::path& target) {
    OutputFile file(target);
    const Result result =
        options_.print(host_, document, [&](auto bytes) { file.output().write(bytes); });
    if (result.status != Status::kFailed) {
      file.keep(options_.output.onExists == OnExists::kReplace);
    }
    say(wordsOn(document, result));
  }

  // For standard error. Of several documents the sandbox has been tried ahead.
  std::string wordsOn(const ListedPath& document, const Result& result) {
    std::string words;
    if (!mayBeSeveral_) words = sandboxWarning(result.missingConfinement);
    if (result.status == Status::kOk) return words;
    allRead_ = false;
    if (!words.empty()) words += '\n';
    return words + complaint(document, result, options_.showsNumbers);
  }

  void say(const std::string& line) {
    if (line.empty()) return;
    const std::lock_guard lock(saying_);
    std::cerr << line << std::endl;
  }

  const Host& host_;
  const DocumentRun& options_;
  const bool mayBeSeveral_;
  std::mutex saying_;
  std::atomic<bool> allRead_ = true;
};

}  // namespace

int printDocuments(const Host& host, const DocumentRun& run) { return Run(host, run)(); }

}  // namespace dorvex::cli
