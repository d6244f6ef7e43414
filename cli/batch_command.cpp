#include "batch_command.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "document_id.h"
#include "exit_status.h"
#include "jobs.h"
#include "option_checks.h"
#include "ordered_output.h"
#include "output_options.h"
#include "path_list.h"
#include "print_documents.h"
#include "progress.h"
#include "resume.h"

namespace dorvex::cli {
namespace {

constexpr std::uint64_t kRecordsForEachJob = 64;

constexpr int kAttempts = 50;
constexpr std::chrono::milliseconds kBetweenAttempts(100);

// Where the records go: each whole line is written at once.
class RecordOutput {
 public:
  RecordOutput(int fd, bool ordered, std::uint64_t ahead)
      : output_(fd), inOrder_(output_, {.parts = ahead}), ordered_(ordered) {}

  // Does the work on the record of that number.
  template <typename Work>
  void during(std::uint64_t number, Work work) {
    if (!ordered_) return work();
    inOrder_.during([&] {
      inOrder_.begin(number);
      work();
    });
  }

  // Puts the line out whole, or throws and puts out nothing of it.
  void put(std::uint64_t number, Blocks line) {
    if (ordered_) {
      inOrder_.write(number, std::move(line));
      inOrder_.end(number);
      return;
    }
    const std::lock_guard lock(mutex_);
    output_.write(line);
    output_.flush();
  }

  // For the end of the process: no line is cut short by it.
  void seal() { ordered_ ? inOrder_.seal() : mutex_.lock(); }

 private:
  Output output_;
  OrderedOutput inOrder_;
  bool ordered_;
  std::mutex mutex_;
};

// What a run begins with: a descriptor for the records, and what need not be
// read.
class Target {
 public:
  explicit Target(const BatchOptions& options) {
    Statuses again = {"retry"};
    again.merge(Statuses(retriedBy(options)));
    const std::string& file = options.output.target;
    const bool toFile = !isStandardOutput(file);
    if (toFile && isSame(file, options.resume)) {
      ResumedFile resumed = resumeInto(file, again);
      fd_ = resumed.fd;
      done_ = std::move(resumed.done);
      return;
    }
    if (!options.resume.empty()) done_ = doneIn(options.resume, again);
    if (toFile) openNew(file, options.output.onExists == OnExists::kReplace);
  }
  ~Target() {
    if (fd_ != STDOUT_FILENO) ::close(fd_);
  }
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  int fd() const { return fd_; }
  bool isDone(const std::string& id) const { return done_.contains(id); }

 private:
  static Statuses retriedBy(const BatchOptions& options) {
    if (options.retry.empty()) return {};
    const auto words = splitAtCommas(options.retry);
    return {words.begin(), words.end()};
  }

  static bool isSame(const std::string& file, const std::string& other) {
    std::error_code ignored;
    return file == other || std::filesystem::equivalent(file, other, ignored);
  }

  // Another run's file is not emptied before it is known to be another's.
  void openNew(const std::string& file, bool replace) {
    const bool taken = OutputFile::isTaken(file);
    const bool written = !taken && std::filesystem::exists(file);  // a device or a pipe
    const int onto = written ? 0 : O_CREAT | (replace ? 0 : O_EXCL);
    fd_ = ::open(file.c_str(), O_WRONLY | O_CLOEXEC | onto, 0666);
    if (fd_ < 0) throw EnvironmentError(file + ": " + std::strerror(errno));
    if (written) return;
    lockOutput(fd_, file);
    if (replace && ::ftruncate(fd_, 0) != 0) {
      throw EnvironmentError(file + ": " + std::strerror(errno));
    }
  }

  int fd_ = STDOUT_FILENO;
  Ids done_;
};

class BatchRun {
 public:
  BatchRun(const Host& host, const BatchOptions& options)
      : host_(host),
        options_(options),
        shard_(parseShard(options.shard)),
        target_(options),
        records_(target_.fd(), options.ordered, kRecordsForEachJob * options.jobs) {}

  int run() {
    const auto list = documents();
    Progress progress(showsProgress(), showsSummary(), total_);
    const auto next = [&] { return nextOf(*list); };
    const auto work = [&](const Job& job) {
      records_.during(job.number, [&] {
        const Result result = recordOf(job);
        if (result.status != Status::kOk) allRead_ = false;
        progress.count(statusOf(result));
      });
    };
    const bool ended = runJobs(options_.jobs, next, work, [this] {
      records_.seal();
      std::_Exit(kInterrupted);
    });
    if (!ended) return kInterrupted;
    return allRead_ ? kAllRead : kNotAllRead;
  }

 private:
  // A record that does not fit into memory costs the run no other.
  Result recordOf(const Job& job) {
    try {
      Record record = readRecord(host_, job.item, options_.tidy);
      Result result = record.result;
      records_.put(job.number, toLine(std::move(record)));
      return result;
    } catch (const std::bad_alloc&) {
      return recordOfShortage(job);
    }
  }

  static Result shortage() {
    Result result;
    result.status = Status::kFailed;
    result.failure = Failure::kOutOfResources;
    result.message = "there is not enough memory for its record";
    return result;
  }

  // What the other records hold is given back after a while.
  Result recordOfShortage(const Job& job) {
    for (int tried = 1;; ++tried) {
      try {
        Record record;
        record.path = job.item.path;
        record.result = shortage();
        records_.put(job.number, toLine(std::move(record)));
        return shortage();
      } catch (const std::bad_alloc&) {
        if (tried == kAttempts) throw;
        std::this_thread::sleep_for(kBetweenAttempts);
      }
    }
  }

  std::unique_ptr<PathList> documents() {
    if (options_.input.filesFrom.empty() && showsProgress()) total_ = countDocuments();
    return listOf(options_.input);
  }

  std::uint64_t countDocuments() const {
    const auto list = listOf(options_.input);
    std::uint64_t count = 0;
    while (nextOf(*list)) ++count;
    return count;
  }

  std::optional<ListedPath> nextOf(PathList& list) const {
    while (auto document = list.next()) {
      const std::string id = documentId(document->path);
      if (shard_.holds(id) && !target_.isDone(id)) return document;
    }
    return std::nullopt;
  }

  bool showsSummary() const { return !options_.quiet && ::isatty(STDERR_FILENO) == 1; }

  // Not among the records, either.
  bool showsProgress() const {
    const bool recordsAtTerminal = target_.fd() == STDOUT_FILENO && ::isatty(STDOUT_FILENO) == 1;
    return showsSummary() && !recordsAtTerminal;
  }

  const Host& host_;
  const BatchOptions& options_;
  const Shard shard_;
  const Target target_;
  RecordOutput records_;
  std::optional<std::uint64_t> total_;
  std::atomic<bool> allRead_ = true;
};

bool isSkipped(const BatchOptions& options) {
  const OutputOptions& output = options.output;
  return options.resume.empty() && output.onExists == OnExists::kSkip &&
         !isStandardOutput(output.target) && OutputFile::isTaken(output.target);
}

}  // namespace

int runBatch(const HostArguments& host, const BatchOptions& options) {
  if (isSkipped(options)) return kAllRead;
  HostOptions settings = hostOptions(host);
  if (options.content) settings.rendering = Rendering{.format = *options.content, .oneLine = true};
  const Host reader(std::move(settings));
  return BatchRun(reader, options).run();
}

}  // namespace dorvex::cli
