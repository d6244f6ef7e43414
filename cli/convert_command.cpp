#include "convert_command.h"

#include <filesystem>

#include "document_run.h"
#include "exit_status.h"
#include "print_documents.h"
#include "side_files.h"

namespace dorvex::cli {
namespace {

namespace fs = std::filesystem;

bool givesEachTable(const ConvertOptions& options) {
  return options.rendering.format == RenderFormat::kCsv && !options.rendering.listTables &&
         namesDirectory(options.output.target);
}

// Links are relative to the file that holds them.
std::string mediaLink(const ConvertOptions& options) {
  const fs::path folder = options.extractMedia;
  const std::string& target = options.output.target;
  if (isStandardOutput(target)) return folder.lexically_normal().string();
  const fs::path from = namesDirectory(target) ? fs::path(target) : fs::path(target).parent_path();
  const fs::path link = fs::absolute(folder).lexically_normal().lexically_relative(
      fs::absolute(from).lexically_normal());
  return link.empty() ? fs::absolute(folder).lexically_normal().string() : link.string();
}

Rendering renderingOf(const ConvertOptions& options) {
  Rendering rendering = options.rendering;
  rendering.eachTable = givesEachTable(options);
  rendering.media = !options.extractMedia.empty();
  if (rendering.media) rendering.mediaFolder = mediaLink(options);
  return rendering;
}

// Tables of several documents have a folder for each of these.
SideFilesOf sideFilesOf(const ConvertOptions& options) {
  const OnExists onExists = options.output.onExists;
  if (!givesEachTable(options)) {
    return [folder = options.extractMedia, onExists](const ListedPath&) {
      return SideFiles(folder, onExists);
    };
  }
  const bool several = mayBeSeveral(options.input);
  return [root = fs::path(options.output.target), several, onExists](const ListedPath& document) {
    const std::string name = nameForPeople(document);
    return SideFiles(several ? root / plainFileName(fs::path(name).filename().string()) : root,
                     onExists);
  };
}

void refuseWhatDoesNotSuit(const ConvertOptions& options) {
  if (!mayBeSeveral(options.input)) return;
  if (!options.extractMedia.empty())
    throw UsageError("--extract-media takes one document at a time");
  if (!namesDirectory(options.output.target))
    throw UsageError("several documents need a directory: -o DIRECTORY/");
}

}  // namespace

const char* endingOf(RenderFormat format) {
  switch (format) {
    case RenderFormat::kJson:
      return ".json";
    case RenderFormat::kMarkdown:
      return ".md";
    case RenderFormat::kHtml:
      return ".html";
    case RenderFormat::kText:
      return ".txt";
    case RenderFormat::kCsv:
      break;
  }
  return ".csv";
}

int runConvert(const HostArguments& host, const ConvertOptions& options) {
  refuseWhatDoesNotSuit(options);
  HostOptions settings = hostOptions(host, !mayBeSeveral(options.input));
  settings.rendering = renderingOf(options);
  const Host renderer(settings);
  DocumentRun run;
  run.input = options.input;
  run.output = options.output;
  // Each table goes to a file beside an output of which there is none.
  if (givesEachTable(options)) run.output.target.clear();
  run.jobs = options.jobs;
  run.print = printRendering(sideFilesOf(options));
  run.ending = endingOf(options.rendering.format);
  run.showsNumbers = host.verbose;
  return printDocuments(renderer, run);
}

}  // namespace dorvex::cli
