#include "resume.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <system_error>

#include "document_id.h"
#include "exit_status.h"
#include "line_reader.h"
#include "record.h"

namespace dorvex::cli {
namespace {

// How every record begins.
constexpr std::string_view kBeginning = R"({"version":)";

[[noreturn]] void fail(const std::string& file, const std::string& why) {
  throw EnvironmentError(file + ": " + why);
}

[[noreturn]] void failBySystem(const std::string& file) { fail(file, std::strerror(errno)); }

// Closes it unless it is taken.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return fd_; }
  int take() { return std::exchange(fd_, -1); }

 private:
  int fd_;
};

// A few members are wanted of a line that may be large.
class RecordFinder final : public nlohmann::json_sax<nlohmann::json> {
 public:
  std::uint64_t version = 0;
  std::string id;
  std::string status;

  bool key(string_t& name) override {
    member_ = depth_ == 1 ? name : "";
    return true;
  }
  bool string(string_t& value) override {
    if (member_ == "id") id = value;
    if (member_ == "status") status = value;
    return value_();
  }
  bool number_unsigned(number_unsigned_t value) override {
    if (member_ == "version") version = value;
    return value_();
  }
  bool start_object(std::size_t) override { return ++depth_ > 0; }
  bool end_object() override { return --depth_ >= 0; }
  bool start_array(std::size_t) override { return ++depth_ > 0; }
  bool end_array() override { return --depth_ >= 0; }
  bool null() override { return value_(); }
  bool boolean(bool) override { return value_(); }
  bool number_integer(number_integer_t) override { return value_(); }
  bool number_float(number_float_t, const string_t&) override { return value_(); }
  bool binary(binary_t&) override { return value_(); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
    return false;
  }

 private:
  bool value_() {
    member_.clear();
    return true;
  }
  int depth_ = 0;
  std::string member_;
};

struct Found {
  std::string id;
  std::string status;
};

std::optional<Found> recordIn(const std::string& line) {
  RecordFinder finder;
  if (!line.starts_with(kBeginning) || !nlohmann::json::sax_parse(line, &finder)) {
    return std::nullopt;
  }
  const bool isRecord =
      finder.version == kRecordVersion && finder.id.size() == kIdDigits && !finder.status.empty();
  return isRecord ? std::optional(Found{finder.id, finder.status}) : std::nullopt;
}

// What may have become of a record whose writing was interrupted.
bool mayBeCutRecord(std::string_view line) {
  return line.starts_with(kBeginning) || kBeginning.starts_with(line);
}

struct Records {
  Ids done;
  off_t length = 0;  // up to the end of the last line that has one
};

// The first line decides whether this is a file of records; others may be
// damaged.
Records recordsIn(int fd, const std::string& file, const Statuses& again) {
  Records records;
  LineReader lines(fd, '\n');
  for (bool first = true; const auto line = lines.next(); first = false) {
    const auto found = lines.ended() ? recordIn(*line) : std::nullopt;
    if (first && !found && (lines.ended() || !mayBeCutRecord(*line))) {
      fail(file, "no file of records of version " + std::to_string(kRecordVersion) +
                     "; it was left alone");
    }
    if (!lines.ended()) break;
    records.length += static_cast<off_t>(line->size() + 1);
    if (!found) continue;
    if (again.contains(found->status)) {
      records.done.erase(found->id);
    } else {
      records.done.insert(found->id);
    }
  }
  return records;
}

Records readRecords(int fd, const std::string& file, const Statuses& again) {
  try {
    return recordsIn(fd, file, again);
  } catch (const std::system_error& error) {
    fail(file, error.code().message());
  }
}

}  // namespace

Ids doneIn(const std::string& file, const Statuses& again) {
  const Descriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (fd.get() < 0 && errno == ENOENT) return {};
  if (fd.get() < 0) failBySystem(file);
  return readRecords(fd.get(), file, again).done;
}

ResumedFile resumeInto(const std::string& file, const Statuses& again) {
  struct stat status {};
  if (::stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    fail(file, "not a regular file; a run cannot be continued in it");
  }
  Descriptor fd(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  if (fd.get() < 0) failBySystem(file);
  lockOutput(fd.get(), file);
  Records records = readRecords(fd.get(), file, again);
  if (::ftruncate(fd.get(), records.length) != 0 ||
      ::lseek(fd.get(), records.length, SEEK_SET) != records.length) {
    failBySystem(file);
  }
  return {fd.take(), std::move(records.done)};
}

void lockOutput(int fd, const std::string& file) {
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    fail(file, "another run is writing to it");
  }
}

}  // namespace dorvex::cli
