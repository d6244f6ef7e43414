// The one file of the tool that knows the library for command lines, which
// takes seconds to compile.
#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "batch_command.h"
#include "convert_command.h"
#include "document_id.h"
#include "exit_status.h"
#include "host_options.h"
#include "inspect_command.h"
#include "option_checks.h"
#include "printable.h"
#include "record.h"
#include "text_command.h"

namespace dorvex::cli {
namespace {

constexpr const char kExamples[] =
    "Examples:\n"
    "  dorvex text Letter.pages             the texts, one to a line\n"
    "  dorvex text -0 *.key | xargs -0 -n1  the texts, whatever they hold\n"
    "  dorvex text - < Budget.numbers       from standard input\n"
    "  dorvex text -o texts/ *.pages        a file for each document\n"
    "  dorvex batch ~/Documents -o out.jsonl\n"
    "                                       a folder, a record for each document\n"
    "  dorvex convert Deck.key              what a person reads, as Markdown\n"
    "  dorvex convert --to html -o site/ *.pages\n"
    "                                       a page for each document\n"
    "  dorvex inspect Letter.pages          what a package holds\n"
    "  dorvex tokens Letter.pages           the reader's token stream, readably\n"
    "\n"
    "Exit status: 0 every document was read whole, 1 some were not, 2 bad usage, 3 nothing can be\n"
    "read or written at all, 130 interrupted.";

constexpr const char kTidyHelp[] =
    "Lossy: printed line ends become line feeds, doubled backslashes single; placeholders, empty "
    "texts and exact repeats are left out";

// --- Kinds of values ---

CLI::Option* addPath(CLI::App& app, const char* name, std::string& path, const char* type,
                     const char* help) {
  const auto emptyFault = [](const std::string& value) {
    return value.empty() ? "must not be empty" : "";
  };
  return app.add_option(name, path, help)->check(CLI::Validator(emptyFault, ""))->type_name(type);
}

CLI::Option* addSize(CLI::App& app, const char* name, std::uint64_t& size, const char* help) {
  return app.add_option(name, size, help)
      ->transform(CLI::Validator(sizeFault, ""))
      ->type_name("SIZE")
      ->default_str(sizeText(size));
}

template <typename Value>
using Words = std::vector<std::pair<std::string, Value>>;

// A value for each of some words.
template <typename Value>
CLI::Option* addChoice(CLI::App& app, const char* name, Value& value, const Words<Value>& words,
                       const char* help) {
  std::vector<std::string> allowed;
  for (const auto& [word, meaning] : words) allowed.push_back(word);
  const auto take = [&value, words](const std::string& given) {
    for (const auto& [word, meaning] : words) {
      if (word == given) value = meaning;
    }
  };
  const auto fault = [allowed](const std::string& given) { return wordFault(given, allowed); };
  return app.add_option_function<std::string>(name, take, help)
      ->check(CLI::Validator(fault, ""))
      ->type_name(CLI::detail::join(allowed, "|"));
}

// --- Options that commands share ---

enum class Reads { kInWorkersOrHere, kInWorkers, kInTheInspector };

void addLimitOptions(CLI::App& app, HostArguments& arguments, Reads reads) {
  app.add_option("--timeout", arguments.timeout,
                 "Seconds that one document may take, 0 for no limit")
      ->check(CLI::Validator(secondsFault, ""))
      ->type_name("SECONDS")
      ->capture_default_str();
  addSize(app, "--max-memory", arguments.maxMemory,
          "Memory that one document may take, such as 512MB, 0 for no limit");
  if (reads == Reads::kInTheInspector) return;
  addSize(app, "--max-output", arguments.maxOutput,
          "Bytes of tokens that one document may give, 0 for no limit");
  addSize(app, "--max-input", arguments.maxInput,
          "Bytes that are read from a pipe or a device, 0 for no limit");
}

void addWorkerOptions(CLI::App& app, HostArguments& arguments, Reads reads) {
  if (reads != Reads::kInTheInspector) {
    const auto fault = [](const std::string& value) {
      return numberFault(value, 1, std::numeric_limits<std::uint32_t>::max());
    };
    app.add_option("--recycle", arguments.recycle,
                   "Documents that a worker process reads before it is replaced")
        ->check(CLI::Validator(fault, ""))
        ->type_name("NUMBER")
        ->capture_default_str();
  }
  app.add_flag("--require-sandbox", arguments.requireSandbox,
               "Read nothing where the kernel lacks a part of the sandbox");
  app.add_flag("--no-sandbox", arguments.noSandbox, "Read in workers without a sandbox");
  if (reads == Reads::kInWorkersOrHere) {
    app.add_flag("--in-process", arguments.inProcess,
                 "Read in the tool's own process: a crash ends everything, and nothing limits "
                 "time or memory");
  }
}

void addHostOptions(CLI::App& app, HostArguments& arguments, Reads reads) {
  app.option_defaults()->group("Reading options");
  addPath(app, "--module", arguments.module, "FILE", "The reader module's file")
      ->capture_default_str();
  addLimitOptions(app, arguments, reads);
  addWorkerOptions(app, arguments, reads);
  if (reads != Reads::kInTheInspector) {
    app.add_flag("-v,--verbose", arguments.verbose,
                 "Say with each document that was not read whole what the module returned");
  }
  app.option_defaults()->group("Options");
}

CLI::Option* addInputs(CLI::App& command, InputOptions& options) {
  return command
      .add_option("documents", options.paths,
                  "Files, package directories, folders to go through, or - for standard input")
      ->type_name("PATH");
}

void addAllFiles(CLI::App& command, InputOptions& options) {
  command.add_flag("--all-files", options.allFiles,
                   "In folders, read every file, not only .pages, .key and .numbers");
}

void addNamingOption(CLI::App& command, OutputOptions& options) {
  addChoice<Naming>(
      command, "--name", options.naming,
      {{"file", Naming::kFile}, {"path", Naming::kPath}, {"hash", Naming::kHash}},
      "What files in a directory are called after: the document's file name (file), its whole "
      "path, or the id that records have");
}

void addOutputOptions(CLI::App& command, OutputOptions& options, const char* help) {
  addPath(command, "-o,--output", options.target, "PATH", help);
  addChoice<OnExists>(
      command, "--on-exists", options.onExists,
      {{"skip", OnExists::kSkip}, {"replace", OnExists::kReplace}, {"fail", OnExists::kFail}},
      "What to do where the output exists already (fail)");
}

void addJobsOption(CLI::App& command, unsigned& jobs) {
  const auto fault = [](std::string& value) {
    return numberOrAllFault(value, 1, kMostJobs, defaultJobs());
  };
  command
      .add_option("-j,--jobs", jobs, "Documents to read at a time; all is one for each processor")
      ->transform(CLI::Validator(fault, ""))
      ->type_name("NUMBER")
      ->default_str("all");
}

// --- The commands ---

class CommandLine {
 public:
  CommandLine();
  Action read(int count, char** values);

 private:
  struct Command {
    const char* name;
    const char* help;
    Reads reads;
    void (CommandLine::*addOptions)(CLI::App& command);
  };
  static const std::array<Command, 5> kCommands;

  void addTextOptions(CLI::App& command);
  void addTokensOptions(CLI::App& command);
  void addConvertOptions(CLI::App& command);
  void addBatchOptions(CLI::App& command);
  void addInspectOptions(CLI::App& command);
  std::string_view commandIn(int count, char** values) const;
  void addCommands(std::string_view called);
  void refuseContradictions() const;
  std::vector<std::string> arguments(int count, char** values) const;

  CLI::App app_{"Reads the text of Pages, Keynote and Numbers documents.", "dorvex"};
  std::shared_ptr<HostArguments> host_ = std::make_shared<HostArguments>();
  Action action_;
};

CommandLine::CommandLine() {
  app_.footer(kExamples);
  app_.require_subcommand(1);
  app_.fallthrough();
  addHostOptions(app_, *host_, Reads::kInWorkersOrHere);
  app_.set_version_flag("--version", [host = host_] { return versionText(*host); });
}

const std::array<CommandLine::Command, 5> CommandLine::kCommands = {{
    {"text", "Print the texts of documents as UTF-8", Reads::kInWorkersOrHere,
     &CommandLine::addTextOptions},
    {"tokens", "Print the token stream of one document", Reads::kInWorkersOrHere,
     &CommandLine::addTokensOptions},
    {"convert", "Render what documents say, in reading order", Reads::kInWorkers,
     &CommandLine::addConvertOptions},
    {"batch", "Read many documents: a record for each, a line of JSON, whatever happens to it",
     Reads::kInWorkers, &CommandLine::addBatchOptions},
    {"inspect", "Show the members and objects of a package", Reads::kInTheInspector,
     &CommandLine::addInspectOptions},
}};

// Options cost time: only the command that is called gets its own.
void CommandLine::addCommands(std::string_view called) {
  for (const Command& row : kCommands) {
    CLI::App& command = *app_.add_subcommand(row.name, row.help);
    if (row.name != called) continue;
    addHostOptions(command, *host_, row.reads);
    (this->*row.addOptions)(command);
  }
}

bool takesValue(const CLI::App& app, const std::string& name) {
  const CLI::Option* option = app.get_option_no_throw(name);
  return option != nullptr && option->get_items_expected_max() > 0;
}

// The first word that names a command and is no value of an option before it.
std::string_view CommandLine::commandIn(int count, char** values) const {
  for (int i = 1; i < count; ++i) {
    const std::string_view word = values[i];
    const auto names = [word](const Command& row) { return row.name == word; };
    if (std::ranges::any_of(kCommands, names)) return word;
    if (word.starts_with("--") && takesValue(app_, values[i])) ++i;
  }
  return {};
}

// It has one reading.
void refuseTwiceStandardInput(const InputOptions& input) {
  if (std::count(input.paths.begin(), input.paths.end(), "-") > 1) {
    throw CLI::ValidationError("documents", "standard input can be read once only");
  }
}

void CommandLine::addTextOptions(CLI::App& command) {
  const auto options = std::make_shared<TextOptions>();
  addInputs(command, options->input)->required();
  addAllFiles(command, options->input);
  auto* nul =
      command.add_flag("-0,--null", options->nul, "End each text with NUL instead of a line feed");
  command.add_option("--separator", options->separator, "What stands behind each text")
      ->type_name("TEXT")
      ->excludes(nul);
  addChoice<Format>(
      command, "--format", options->format,
      {{"text", Format::kText}, {"json", Format::kJson}, {"tokens", Format::kTokens}},
      "text: the texts; json: a record for each document, as batch gives it; tokens: the reader's "
      "token stream");
  command.add_flag(
      "-H,--with-filename", options->withFilename,
      "Put the document's name and a colon before each line, or before each text where "
      "something else than a line feed ends them");
  command.add_flag("--tidy", options->tidy, kTidyHelp);
  addJobsOption(command, options->jobs);
  addOutputOptions(command, options->output,
                   "Write to this file, or a file for each document into this directory");
  addNamingOption(command, options->output);
  command.final_callback([this, options] {
    refuseTwiceStandardInput(options->input);
    if (options->withFilename && options->format != Format::kText) {
      throw CLI::ExcludesError("--with-filename", "--format json and tokens");
    }
    action_ = [host = host_, options] { return runText(*host, *options); };
  });
}

void CommandLine::addTokensOptions(CLI::App& command) {
  const auto options = std::make_shared<TextOptions>();
  options->format = Format::kTokens;
  options->jobs = 1;
  options->input.paths.resize(1);
  command
      .add_option("document", options->input.paths.front(),
                  "File, package directory, or - for standard input")
      ->required()
      ->type_name("FILE|DIRECTORY");
  command.add_flag("--raw", options->raw, "Print the stream's bytes as they are");
  addOutputOptions(command, options->output, "Write to this file");
  command.final_callback(
      [this, options] { action_ = [host = host_, options] { return runText(*host, *options); }; });
}

std::string delimiterFault(const std::string& value) {
  const bool one = value == "\\t" || (value.size() == 1 && value[0] > 0 && value[0] != '"' &&
                                      value[0] != '\n' && value[0] != '\r');
  return one ? "" : "must be one ASCII character, or \\t";
}

void addMarkdownOptions(CLI::App& command, Rendering& rendering) {
  addChoice<bool>(command, "--skipped", rendering.dropSkipped, {{"keep", false}, {"drop", true}},
                  "What to do with skipped slides and hidden sheets (keep)");
  addChoice<bool>(command, "--tables", rendering.htmlTables, {{"pipe", false}, {"html", true}},
                  "Markdown: tables with pipes, or as HTML with spans (pipe)");
  addChoice<RenderComments>(command, "--comments", rendering.comments,
                            {{"none", RenderComments::kNone},
                             {"end", RenderComments::kEnd},
                             {"inline", RenderComments::kInline}},
                            "Where comments go (none)");
  addChoice<RenderChanges>(command, "--changes", rendering.changes,
                           {{"final", RenderChanges::kFinal},
                            {"original", RenderChanges::kOriginal},
                            {"all", RenderChanges::kAll}},
                           "Which text of tracked changes is given (final)");
  command.add_flag("--front-matter", rendering.frontMatter,
                   "Markdown: begin with what is known of the document, as YAML");
  addChoice<bool>(command, "--flavor", rendering.pandoc, {{"github", false}, {"pandoc", true}},
                  "Markdown: for whom (github)");
}

void addCsvOptions(CLI::App& command, Rendering& rendering) {
  command.add_option("--sheet", rendering.sheet, "CSV: the sheet, by name or number")
      ->type_name("SHEET");
  command.add_option("--table", rendering.table, "CSV: the table, by name or number in its sheet")
      ->type_name("TABLE");
  command.add_flag("--list", rendering.listTables, "CSV: name the tables instead");
  addChoice<RenderValues>(command, "--values", rendering.values,
                          {{"shown", RenderValues::kShown},
                           {"raw", RenderValues::kRaw},
                           {"formula", RenderValues::kFormula}},
                          "CSV: cells as they are shown, their values, or their formulas (shown)");
  command
      .add_option_function<std::string>(
          "--delimiter",
          [&rendering](const std::string& value) {
            rendering.delimiter = value == "\\t" ? '\t' : value[0];
          },
          "CSV: what stands between cells (,)")
      ->check(CLI::Validator(delimiterFault, ""))
      ->type_name("CHARACTER");
  addChoice<bool>(command, "--header", rendering.header, {{"keep", true}, {"drop", false}},
                  "CSV: what to do with header rows (keep)");
  command.add_flag("--fill-merged", rendering.fillMerged,
                   "CSV: give a merged value in each of its cells");
  command.add_flag("--guard", rendering.guard,
                   "CSV: put an apostrophe before what a spreadsheet would take for a formula");
}

void CommandLine::addConvertOptions(CLI::App& command) {
  const auto options = std::make_shared<ConvertOptions>();
  addInputs(command, options->input)->required();
  addAllFiles(command, options->input);
  addChoice<RenderFormat>(command, "--to", options->rendering.format,
                          {{"json", RenderFormat::kJson},
                           {"markdown", RenderFormat::kMarkdown},
                           {"html", RenderFormat::kHtml},
                           {"text", RenderFormat::kText},
                           {"csv", RenderFormat::kCsv}},
                          "The format (markdown)");
  addMarkdownOptions(command, options->rendering);
  addPath(command, "--extract-media", options->extractMedia, "DIRECTORY",
          "Write the media that the document uses there, and link to them");
  addCsvOptions(command, options->rendering);
  addJobsOption(command, options->jobs);
  addOutputOptions(
      command, options->output,
      "Write to this file, or a file for each document, or table, into this directory");
  addNamingOption(command, options->output);
  command.final_callback([this, options] {
    refuseTwiceStandardInput(options->input);
    if (host_->inProcess) throw CLI::ExcludesError("convert", "--in-process");
    action_ = [host = host_, options] { return runConvert(*host, *options); };
  });
}

std::string shardFault(const std::string& value) {
  try {
    parseShard(value);
    return "";
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

void addListOptions(CLI::App& command, InputOptions& options, CLI::Option* paths) {
  auto* list = addPath(command, "--files-from", options.filesFrom, "FILE",
                       "Read the paths from this file, or - for standard input, as they arrive, "
                       "one to a line")
                   ->excludes(paths);
  command.add_flag("-0,--null", options.nul, "The paths of --files-from end with NUL")->needs(list);
}

void addRecordOptions(CLI::App& command, BatchOptions& options) {
  auto* resume = addPath(
      command, "--resume", options.resume, "FILE",
      "Leave out documents that have a record in this file; given with -o too, go on in it");
  const auto retryFault = [](const std::string& value) {
    return wordsFault(value, failedStatuses());
  };
  command
      .add_option("--retry", options.retry,
                  "With --resume: read documents again whose last record there has one of these "
                  "statuses")
      ->check(CLI::Validator(retryFault, ""))
      ->type_name("STATUS,...")
      ->needs(resume);
  command.add_flag("--ordered", options.ordered, "Give the records in the order of the documents");
  auto* tidy = command.add_flag("--tidy", options.tidy, kTidyHelp);
  static const Words<std::optional<RenderFormat>> kContents = {
      {"markdown", RenderFormat::kMarkdown},
      {"json", RenderFormat::kJson},
      {"text", RenderFormat::kText}};
  addChoice<std::optional<RenderFormat>>(
      command, "--content", options.content, kContents,
      "Give each record what dorvex convert makes of the document, instead of its texts")
      ->excludes(tidy);
  command.add_flag("-q,--quiet", options.quiet, "Show no progress and no summary");
  addOutputOptions(command, options.output, "Write the records to this file");
}

void CommandLine::addBatchOptions(CLI::App& command) {
  const auto options = std::make_shared<BatchOptions>();
  addListOptions(command, options->input, addInputs(command, options->input));
  addAllFiles(command, options->input);
  command.add_option("--shard", options->shard, "Read part I (from 0) of N of the documents only")
      ->check(CLI::Validator(shardFault, ""))
      ->type_name("I/N");
  addJobsOption(command, options->jobs);
  addRecordOptions(command, *options);
  command.final_callback([this, options] {
    if (options->input.paths.empty() && options->input.filesFrom.empty()) {
      throw CLI::RequiredError("documents or --files-from");
    }
    refuseTwiceStandardInput(options->input);
    if (host_->inProcess) throw CLI::ExcludesError("batch", "--in-process");
    action_ = [host = host_, options] { return runBatch(*host, *options); };
  });
}

void CommandLine::addInspectOptions(CLI::App& command) {
  const auto options = std::make_shared<InspectOptions>();
  cli::addInspectOptions(command, *options);
  command.final_callback([this, options] {
    action_ = [host = host_, options] { return runInspect(*host, *options); };
  });
}

// An option may stand before the command or behind it.
void CommandLine::refuseContradictions() const {
  if (host_->requireSandbox && host_->noSandbox) {
    throw CLI::ExcludesError("--require-sandbox", "--no-sandbox");
  }
}

// "--separator=" would swallow the argument behind it: it becomes two
// arguments, the second one empty.
std::vector<std::string> CommandLine::arguments(int count, char** values) const {
  const auto wantsValue = [this](const std::string& name) {
    const auto has = [&](const CLI::App* app) { return takesValue(*app, name); };
    const auto commands = app_.get_subcommands(nullptr);
    return name.starts_with("--") && name.size() > 2 &&
           (has(&app_) || std::any_of(commands.begin(), commands.end(), has));
  };
  std::vector<std::string> all;
  bool isValue = false;
  for (int i = 1; i < count; ++i) {
    const std::string argument = values[i];
    const std::string name =
        argument.substr(0, argument.size() - (argument.ends_with('=') ? 1 : 0));
    if (!isValue && argument == "--") {
      all.insert(all.end(), values + i, values + count);
      break;
    }
    const bool empty = !isValue && argument.ends_with('=') && wantsValue(name);
    all.push_back(empty ? name : argument);
    if (empty) all.emplace_back();
    isValue = !isValue && !empty && wantsValue(argument);
  }
  std::reverse(all.begin(), all.end());
  return all;
}

// What a message repeats may be a foreign name.
int report(CLI::App& app, const CLI::Error& error) {
  std::ostringstream out;
  std::ostringstream errors;
  const int status = app.exit(error, out, errors);
  std::cout << out.str() << std::flush;
  std::istringstream lines(errors.str());
  for (std::string line; std::getline(lines, line);) std::cerr << printable(line) << '\n';
  return status == 0 ? kAllRead : kBadUsage;
}

Action CommandLine::read(int count, char** values) {
  addCommands(commandIn(count, values));
  try {
    app_.parse(arguments(count, values));
    refuseContradictions();
    return action_;
  } catch (const CLI::Error& error) {
    return [status = report(app_, error)] { return status; };
  }
}

}  // namespace

Action readCommandLine(int count, char** values) { return CommandLine().read(count, values); }

}  // namespace dorvex::cli
