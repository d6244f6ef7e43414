#include "text_command.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "exit_status.h"
#include "jobs.h"
#include "ordered_output.h"
#include "output_file.h"
#include "output_options.h"
#include "print_documents.h"
#include "printable.h"

namespace dorvex::cli {
namespace {

// Documents that may be ahead of the one that is being printed.
constexpr std::uint64_t kAheadForEachJob = 8;

// What the files of -o DIRECTORY end in.
const std::map<Format, std::string> kEndings = {
    {Format::kText, ".txt"}, {Format::kJson, ".json"}, {Format::kTokens, ".tokens"}};

PrintDocument printerOf(const TextOptions& options) {
  switch (options.format) {
    case Format::kJson:
      return printRecord(options.tidy);
    case Format::kTokens:
      return options.raw ? printRawTokens() : printTokens();
    case Format::kText:
      break;
  }
  return printTexts(options.nul ? std::string(1, '\0') : options.separator, options.tidy);
}

NextItem eachOf(const std::vector<std::string>& paths) {
  return [&paths, next = std::size_t{0}]() mutable {
    return next < paths.size() ? std::optional(paths[next++]) : std::nullopt;
  };
}

class TextRun {
 public:
  TextRun(const Host& host, const TextOptions& options, unsigned jobs)
      : host_(host), options_(options), jobs_(jobs), print_(printerOf(options)) {}

  int run() {
    const std::string& target = options_.output.target;
    bool ended = false;
    if (target.empty()) {
      Output output;
      ended = printInto(output);
    } else if (namesDirectory(target)) {
      ended = printIntoFilesOf(target);
    } else {
      ended = printIntoFile(target);
    }
    if (!ended) return kInterrupted;
    return allRead_ ? kAllRead : kNotAllRead;
  }

 private:
  bool printInto(Output& output) {
    OrderedOutput ordered(output, kAheadForEachJob * jobs_);
    const auto work = [&](const Job& job) {
      ordered.begin(job.number);
      const Result result = print_(
          host_, job.item, [&](std::string_view bytes) { ordered.write(job.number, bytes); });
      ordered.end(job.number, complaintOf(job.item, result));
    };
    return runJobs(jobs_, eachOf(options_.paths), work, [&] {
      ordered.seal();
      std::_Exit(kInterrupted);
    });
  }

  bool printIntoFile(const std::string& target) {
    if (skips(target)) return true;
    OutputFile file(target);
    const bool ended = printInto(file.output());
    if (ended) file.keep(options_.output.onExists == OnExists::kReplace);
    return ended;
  }

  bool printIntoFilesOf(const std::filesystem::path& directory) {
    std::filesystem::create_directories(directory);
    const auto work = [&](const Job& job) {
      const auto target = directory / fileNameFor(job.item);
      if (!skips(target)) printDocumentIntoFile(job.item, target);
    };
    return runJobs(jobs_, eachOf(options_.paths), work, [] { std::_Exit(kInterrupted); });
  }

  // Nothing of a document that gave nothing; what there is of one that was read
  // in part.
  void printDocumentIntoFile(const std::string& path, const std::filesystem::path& target) {
    try {
      OutputFile file(target);
      const Result result = print_(host_, path, [&](auto bytes) { file.output().write(bytes); });
      if (result.status != Status::kFailed) {
        file.keep(options_.output.onExists == OnExists::kReplace);
      }
      say(complaintOf(path, result));
    } catch (const OutputError& error) {
      if (error.error != EEXIST)
        throw EnvironmentError(target.string() + ": " + std::strerror(error.error));
      allRead_ = false;
      say(printable("dorvex: " + path + ": " + target.string() + " exists already"));
    }
  }

  bool skips(const std::filesystem::path& target) const {
    std::error_code ignored;
    const bool exists = std::filesystem::exists(target, ignored);
    if (exists && options_.output.onExists == OnExists::kFail &&
        !namesDirectory(options_.output.target)) {
      throw EnvironmentError(target.string() + " exists already");
    }
    return exists && options_.output.onExists == OnExists::kSkip;
  }

  std::string fileNameFor(const std::string& path) const {
    auto whole = std::filesystem::path(path);
    if (!whole.has_filename()) whole = whole.parent_path();
    const std::string name = path == "-" ? "standard-input" : whole.filename().string();
    return name + kEndings.at(options_.format);
  }

  std::string complaintOf(const std::string& path, const Result& result) {
    if (result.status == Status::kOk) return "";
    allRead_ = false;
    return complaint(path, result);
  }

  void say(const std::string& line) {
    if (line.empty()) return;
    const std::lock_guard lock(saying_);
    std::cerr << line << std::endl;
  }

  const Host& host_;
  const TextOptions& options_;
  unsigned jobs_;
  PrintDocument print_;
  std::mutex saying_;
  std::atomic<bool> allRead_ = true;
};

}  // namespace

// One process has one reader.
int runText(const HostArguments& host, const TextOptions& options) {
  const Host reader(hostOptions(host));
  return TextRun(reader, options, host.inProcess ? 1 : options.jobs).run();
}

}  // namespace dorvex::cli
