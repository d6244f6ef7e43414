#include "resume.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "exit_status.h"

namespace dorvex::cli {
namespace {

[[noreturn]] void fail(const std::string& file) {
  throw EnvironmentError(file + ": " + std::strerror(errno));
}

// Only the id is wanted of a line that may be large.
class IdFinder final : public nlohmann::json_sax<nlohmann::json> {
 public:
  std::string id;

  bool key(string_t& name) override {
    isId_ = depth_ == 1 && name == "id";
    return true;
  }
  bool string(string_t& value) override {
    if (isId_) id = value;
    return value_();
  }
  bool start_object(std::size_t) override { return ++depth_ > 0; }
  bool end_object() override { return --depth_ >= 0; }
  bool start_array(std::size_t) override { return ++depth_ > 0; }
  bool end_array() override { return --depth_ >= 0; }
  bool null() override { return value_(); }
  bool boolean(bool) override { return value_(); }
  bool number_integer(number_integer_t) override { return value_(); }
  bool number_unsigned(number_unsigned_t) override { return value_(); }
  bool number_float(number_float_t, const string_t&) override { return value_(); }
  bool binary(binary_t&) override { return value_(); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
    return false;
  }

 private:
  bool value_() {
    isId_ = false;
    return true;
  }
  int depth_ = 0;
  bool isId_ = false;
};

// The length of the file up to the last line feed.
off_t wholeLines(int fd) {
  std::array<char, 65536> block;
  off_t end = ::lseek(fd, 0, SEEK_END);
  while (end > 0) {
    const off_t start = std::max<off_t>(0, end - static_cast<off_t>(block.size()));
    const ssize_t got = ::pread(fd, block.data(), static_cast<std::size_t>(end - start), start);
    if (got <= 0) return end;
    for (ssize_t i = got; i > 0; --i) {
      if (block[static_cast<std::size_t>(i - 1)] == '\n') return start + i;
    }
    end = start;
  }
  return 0;
}

}  // namespace

std::unordered_set<std::string> idsIn(const std::string& file) {
  std::unordered_set<std::string> ids;
  if (!std::filesystem::exists(file)) return ids;
  std::ifstream lines(file, std::ios::binary);
  if (!lines) fail(file);
  for (std::string line; std::getline(lines, line);) {
    IdFinder finder;
    if (nlohmann::json::sax_parse(line, &finder) && !finder.id.empty()) ids.insert(finder.id);
  }
  return ids;
}

int openForMore(const std::string& file) {
  const int fd = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd < 0) fail(file);
  const off_t end = wholeLines(fd);
  if (::ftruncate(fd, end) != 0 || ::lseek(fd, end, SEEK_SET) != end) fail(file);
  return fd;
}

}  // namespace dorvex::cli
