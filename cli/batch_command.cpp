#include "batch_command.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <vector>

#include "document_id.h"
#include "exit_status.h"
#include "jobs.h"
#include "ordered_output.h"
#include "output_options.h"
#include "path_list.h"
#include "print_documents.h"
#include "progress.h"
#include "resume.h"

namespace dorvex::cli {
namespace {

constexpr std::uint64_t kAheadForEachJob = 64;

// Where the records go: each whole line is written at once.
class RecordOutput {
 public:
  RecordOutput(int fd, bool ordered, std::uint64_t window)
      : output_(fd), inOrder_(output_, window), ordered_(ordered) {}

  void begin(std::uint64_t number) {
    if (ordered_) inOrder_.begin(number);
  }

  void put(std::uint64_t number, const std::string& line) {
    if (ordered_) {
      inOrder_.write(number, line);
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

// A descriptor for the records.
class Target {
 public:
  explicit Target(const BatchOptions& options) {
    const std::string& file = options.output.target;
    if (file.empty()) return;
    std::error_code ignored;
    const bool continued =
        !options.resume.empty() &&
        (file == options.resume || std::filesystem::equivalent(file, options.resume, ignored));
    fd_ = continued ? openForMore(file) : openNew(file, options.output.onExists);
  }
  ~Target() {
    if (fd_ != STDOUT_FILENO) ::close(fd_);
  }
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  int fd() const { return fd_; }

 private:
  static int openNew(const std::string& file, OnExists onExists) {
    const int onto = onExists == OnExists::kReplace ? O_TRUNC : O_EXCL;
    const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | onto, 0666);
    if (fd < 0) throw EnvironmentError(file + ": " + std::strerror(errno));
    return fd;
  }

  int fd_ = STDOUT_FILENO;
};

class BatchRun {
 public:
  BatchRun(const Host& host, const BatchOptions& options)
      : host_(host),
        options_(options),
        shard_(parseShard(options.shard)),
        done_(options.resume.empty() ? std::unordered_set<std::string>{} : idsIn(options.resume)),
        target_(options),
        records_(target_.fd(), options.ordered, kAheadForEachJob * options.jobs) {}

  int run() {
    const auto list = documents();
    Progress progress(showsProgress(), total_);
    const auto next = [&] { return nextOf(*list); };
    const auto work = [&](const Job& job) {
      records_.begin(job.number);
      const Record record = readRecord(host_, job.item, options_.tidy);
      records_.put(job.number, toLine(record));
      const bool ok = record.result.status == Status::kOk;
      if (!ok) allRead_ = false;
      progress.count(ok);
    };
    const bool ended = runJobs(options_.jobs, next, work, [this] {
      records_.seal();
      std::_Exit(kInterrupted);
    });
    if (!ended) return kInterrupted;
    return allRead_ ? kAllRead : kNotAllRead;
  }

 private:
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
      if (shard_.holds(id) && !done_.contains(id)) return document;
    }
    return std::nullopt;
  }

  // Not among the records, either.
  bool showsProgress() const {
    const bool recordsAtTerminal = target_.fd() == STDOUT_FILENO && ::isatty(STDOUT_FILENO) == 1;
    return !options_.quiet && ::isatty(STDERR_FILENO) == 1 && !recordsAtTerminal;
  }

  const Host& host_;
  const BatchOptions& options_;
  const Shard shard_;
  const std::unordered_set<std::string> done_;
  const Target target_;
  RecordOutput records_;
  std::optional<std::uint64_t> total_;
  std::atomic<bool> allRead_ = true;
};

}  // namespace

int runBatch(const HostArguments& host, const BatchOptions& options) {
  const Host reader(hostOptions(host));
  return BatchRun(reader, options).run();
}

}  // namespace dorvex::cli
