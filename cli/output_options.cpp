#include "output_options.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>
#include <thread>

namespace dorvex::cli {
namespace {

constexpr unsigned kMostJobs = 1024;

const std::map<std::string, OnExists> kChoices = {
    {"skip", OnExists::kSkip}, {"replace", OnExists::kReplace}, {"fail", OnExists::kFail}};

}  // namespace

void addOutputOptions(CLI::App& command, OutputOptions& options, const char* help) {
  command.add_option("-o,--output", options.target, help)->type_name("PATH");
  command
      .add_option("--on-exists", options.onExists,
                  "What to do where the output exists already (fail)")
      ->transform(CLI::CheckedTransformer(kChoices).description(""))
      ->type_name("skip|replace|fail");
}

void addJobsOption(CLI::App& command, unsigned& jobs) {
  command
      .add_option("-j,--jobs", jobs,
                  "Documents to read at a time, by default one for each processor")
      ->check(CLI::Range(1U, kMostJobs).description(""))
      ->type_name("NUMBER")
      ->default_str("all");
}

unsigned defaultJobs() { return std::max(std::thread::hardware_concurrency(), 1U); }

bool namesDirectory(const std::string& target) {
  std::error_code ignored;
  return target.ends_with('/') || std::filesystem::is_directory(target, ignored);
}

}  // namespace dorvex::cli
