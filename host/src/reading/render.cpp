#include "reading/render.h"

#include <fcntl.h>

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "looking/diagnosis.h"
#include "looking/package.h"
#include "reading/document_source.h"
#include "reading/io_object.h"
#include "reading/services.h"

namespace dorvex {
namespace {

// What a reader that gives up returns; diagnose chooses its words by it.
constexpr int kGaveUp = 6;

// Whether a text is more than blanks and places where a drawable or a field stands: that is
// all that the texts of empty slides are.
bool saysAnything(std::string_view text) {
  constexpr std::string_view kAttachment = "\uFFFC";
  while (!text.empty()) {
    const bool attachment = text.starts_with(kAttachment);
    if (!attachment && static_cast<unsigned char>(text.front()) > ' ') return true;
    text.remove_prefix(attachment ? kAttachment.size() : 1);
  }
  return false;
}

DorvexContentOptions contentOptions(const Rendering& rendering) {
  DorvexContentOptions options{};
  options.size = sizeof options;
  options.format = static_cast<DorvexContentFormat>(rendering.format);
  options.comments = static_cast<DorvexContentComments>(rendering.comments);
  options.changes = static_cast<DorvexContentChanges>(rendering.changes);
  options.values = static_cast<DorvexContentValues>(rendering.values);
  options.delimiter = static_cast<unsigned char>(rendering.delimiter);
  const auto set = [&options](bool wanted, DorvexContentFlags flag) {
    if (wanted) options.flags |= flag;
  };
  set(rendering.dropSkipped, DORVEX_CONTENT_DROP_SKIPPED);
  set(rendering.htmlTables, DORVEX_CONTENT_HTML_TABLES);
  set(rendering.frontMatter, DORVEX_CONTENT_FRONT_MATTER);
  set(rendering.pandoc, DORVEX_CONTENT_PANDOC);
  set(rendering.oneLine, DORVEX_CONTENT_ONE_LINE);
  set(rendering.media, DORVEX_CONTENT_MEDIA);
  set(rendering.eachTable, DORVEX_CONTENT_EACH_TABLE);
  set(rendering.listTables, DORVEX_CONTENT_LIST_TABLES);
  set(!rendering.header, DORVEX_CONTENT_NO_HEADER);
  set(rendering.fillMerged, DORVEX_CONTENT_FILL_MERGED);
  set(rendering.guard, DORVEX_CONTENT_GUARD);
  const auto orNull = [](const std::string& text) { return text.empty() ? nullptr : text.c_str(); };
  options.sheet = orNull(rendering.sheet);
  options.table = orNull(rendering.table);
  options.mediaFolder = orNull(rendering.mediaFolder);
  return options;
}

// Both sides number their choices alike.
static_assert(static_cast<int>(RenderFormat::kJson) == DORVEX_CONTENT_JSON);
static_assert(static_cast<int>(RenderFormat::kMarkdown) == DORVEX_CONTENT_MARKDOWN);
static_assert(static_cast<int>(RenderFormat::kHtml) == DORVEX_CONTENT_HTML);
static_assert(static_cast<int>(RenderFormat::kText) == DORVEX_CONTENT_TEXT);
static_assert(static_cast<int>(RenderFormat::kCsv) == DORVEX_CONTENT_CSV);
static_assert(static_cast<int>(RenderComments::kInline) == DORVEX_CONTENT_COMMENTS_INLINE);
static_assert(static_cast<int>(RenderChanges::kAll) == DORVEX_CONTENT_CHANGES_ALL);
static_assert(static_cast<int>(RenderValues::kFormula) == DORVEX_CONTENT_VALUES_FORMULA);
static_assert(static_cast<int>(PieceType::kOutput) == DORVEX_CONTENT_OUTPUT);
static_assert(static_cast<int>(PieceType::kFileName) == DORVEX_CONTENT_FILE_NAME);
static_assert(static_cast<int>(PieceType::kFileBytes) == DORVEX_CONTENT_FILE_BYTES);

Kind kindOf(DorvexContentApplication application) {
  switch (application) {
    case DORVEX_CONTENT_KEYNOTE:
      return Kind::kKeynote;
    case DORVEX_CONTENT_PAGES:
      return Kind::kPages;
    case DORVEX_CONTENT_NUMBERS:
      return Kind::kNumbers;
    case DORVEX_CONTENT_UNKNOWN:
      break;
  }
  return Kind::kUnknown;
}

std::string pathOf(const UniqueFd& directory) {
  return directory ? "/proc/self/fd/" + std::to_string(directory.get()) : "";
}

// One document on its way through the content module.
class Rendition {
 public:
  Rendition(const HostOptions& options, OpenInput input, const OpenScratchFile& openScratchFile,
            const TakePiece& take)
      : options_(options),
        openScratchFile_(openScratchFile),
        take_(take),
        input_(std::move(input)),
        store_(storeOf(input_)),
        root_(pathOf(input_.directory())),
        services_({.moduleFolder = options.module.parent_path(),
                   .scratchMemory = options.scratchMemory,
                   .alignReads = false,
                   .lookThrough = false,
                   .containers = options.limits.container,
                   .scratchBytes = options.limits.scratch,
                   .root = root_,
                   .openScratchFile = openScratchFile},
                  seen_),
        io_(makeBorrowedStore(*store_), {}, seen_) {}

  Result render(const ContentModule& content, const std::shared_ptr<ReaderModule>& reader) {
    const DorvexContentOptions options = contentOptions(*options_.rendering);
    const DorvexContentRequest request{
        &options, &services_, &io_, root_.empty() ? nullptr : root_.c_str(), take, this};
    DorvexContentAnswer answer{};
    const DorvexContentOutcome outcome = content.render()(&request, &answer);
    if (thrown_) std::rethrow_exception(thrown_);
    Result result = resultOf(outcome, answer, reader);
    if (result.kind == Kind::kUnknown) result.kind = kindOf(answer.application);
    return result;
  }

 private:
  static std::unique_ptr<ByteStore> storeOf(OpenInput& input) {
    auto store = input.takeStore();
    return store ? std::move(store) : makeMemoryStore({});
  }

  Result resultOf(DorvexContentOutcome outcome, const DorvexContentAnswer& answer,
                  const std::shared_ptr<ReaderModule>& reader) {
    if (seen_.limitPassed) return diagnosed(kGaveUp);
    switch (outcome) {
      case DORVEX_CONTENT_RENDERED:
        return answer.showsAnything != 0 ? diagnosed(0) : resultOfEmpty(reader);
      case DORVEX_CONTENT_NO_PACKAGE:
      case DORVEX_CONTENT_NO_DOCUMENT:
        return resultOfUnknown(reader);
      case DORVEX_CONTENT_OUT_OF_MEMORY:
        return failedResult(Failure::kOutOfMemory, "memory is out");
      case DORVEX_CONTENT_NO_TABLE:
        return failedResult(Failure::kOther, message_);
      case DORVEX_CONTENT_STOPPED:
        return diagnosed(kGaveUp);
      case DORVEX_CONTENT_BAD_OPTIONS:
        break;
    }
    return failedResult(Failure::kModuleUnusable, "the content module refuses its options");
  }

  Result diagnosed(int moduleResult) {
    Result result = diagnose(moduleResult, seen_, [this] { return look(); });
    result.moduleResult.reset();  // no reader was asked
    return result;
  }

  PackageLook look() {
    PackageLook look;
    look.directory = !root_.empty();
    look.hasStreams = true;
    return look;
  }

  // Nothing is passed off as an empty document that is none.
  Result resultOfEmpty(const std::shared_ptr<ReaderModule>& reader) {
    const auto [result, texts] = read(reader);
    if (texts == 0 && result.status == Status::kOk) return diagnosed(0);
    if (texts == 0) return result;
    return failedResult(Failure::kNothingRecognised,
                        "nothing to show, though there are texts in the document (dorvex text "
                        "prints them)");
  }

  // What it is instead, the reader tells as it always does.
  Result resultOfUnknown(const std::shared_ptr<ReaderModule>& reader) {
    Result result = read(reader).first;
    if (result.status == Status::kFailed) return result;
    const auto skipped = std::move(result.skipped);
    result =
        failedResult(Failure::kDamaged, "damaged: the object that holds the document is missing");
    result.skipped = skipped;
    return result;
  }

  // What becomes of the document in the reader, and how many of its texts say anything.
  std::pair<Result, std::uint64_t> read(const std::shared_ptr<ReaderModule>& reader) {
    OpenInput input =
        root_.empty() ? OpenInput::fromStore(makeBorrowedStore(*store_))
                      : OpenInput::fromDescriptor(
                            UniqueFd(::fcntl(input_.directory().get(), F_DUPFD_CLOEXEC, 0)), true);
    const auto source = makeSession(options_, std::move(input), reader, openScratchFile_);
    std::uint64_t texts = 0;
    TokenStreamReader tokens;
    while (const auto buffer = source->next()) {
      tokens.start(*buffer);
      while (const auto token = tokens.next()) {
        const auto* text = std::get_if<TextToken>(&*token);
        if (text != nullptr && saysAnything(text->text)) ++texts;
      }
    }
    return {source->result(), texts};
  }

  static int take(void* receiver, DorvexContentPiece piece, const char* bytes, std::size_t count) {
    auto& self = *static_cast<Rendition*>(receiver);
    try {
      return self.takePiece(piece, {bytes, count}) ? 1 : 0;
    } catch (...) {
      self.thrown_ = std::current_exception();
      return 0;
    }
  }

  bool takePiece(DorvexContentPiece piece, std::string_view bytes) {
    switch (piece) {
      case DORVEX_CONTENT_OUTPUT:
      case DORVEX_CONTENT_FILE_NAME:
      case DORVEX_CONTENT_FILE_BYTES:
        return take_({static_cast<PieceType>(piece), bytes});
      case DORVEX_CONTENT_DAMAGED:
        noteDamage(bytes);
        return true;
      case DORVEX_CONTENT_MESSAGE:
        message_ = bytes;
        return true;
    }
    return false;
  }

  void noteDamage(std::string_view bytes) {
    const auto end = std::min(bytes.find('\0'), bytes.size());
    const std::string_view reason = end < bytes.size() ? bytes.substr(end + 1) : "";
    seen_.unsound.push_back({std::string(bytes.substr(0, end)), std::string(reason)});
  }

  const HostOptions& options_;
  const OpenScratchFile& openScratchFile_;
  const TakePiece& take_;
  OpenInput input_;
  std::unique_ptr<ByteStore> store_;
  std::string root_;
  Observations seen_;
  HostServices services_;
  IoObject io_;
  std::string message_;
  std::exception_ptr thrown_;
};

}  // namespace

Result renderDocument(const HostOptions& options, OpenInput input, const ContentModule& content,
                      const std::shared_ptr<ReaderModule>& reader,
                      const OpenScratchFile& openScratchFile, const TakePiece& take) {
  return Rendition(options, std::move(input), openScratchFile, take).render(content, reader);
}

}  // namespace dorvex
