// The one door of dorvexcontent.so. Exceptions end here.
#include "dorvex/content_module.h"

#include <algorithm>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "dorvex/content.h"
#include "module/services_package.h"
#include "module/watch.h"
#include "writers/file_names.h"
#include "writers/options.h"

namespace dorvex::content {
namespace {

// The host wants no more.
struct Stopped {};

// The host's Take, in pieces that it takes.
class Taker {
 public:
  explicit Taker(const DorvexContentRequest& request) : request_(request) {}

  void give(DorvexContentPiece piece, std::string_view bytes) const {
    while (!bytes.empty()) {
      const std::string_view next = bytes.substr(0, DORVEX_CONTENT_LARGEST_PIECE);
      if (request_.take(request_.receiver, piece, next.data(), next.size()) == 0) throw Stopped{};
      bytes.remove_prefix(next.size());
    }
  }

 private:
  const DorvexContentRequest& request_;
};

template <typename Enum>
bool isOneOf(Enum value, Enum last) {
  return value >= Enum{} && value <= last;
}

bool known(const DorvexContentOptions& options) {
  return options.size == sizeof(DorvexContentOptions) &&
         isOneOf(options.format, DORVEX_CONTENT_CSV) &&
         isOneOf(options.comments, DORVEX_CONTENT_COMMENTS_INLINE) &&
         isOneOf(options.changes, DORVEX_CONTENT_CHANGES_ALL) &&
         isOneOf(options.values, DORVEX_CONTENT_VALUES_FORMULA) && options.delimiter > 0 &&
         options.delimiter < 0x80;
}

std::string textOf(const char* text) { return text != nullptr ? text : ""; }

// Both sides number their choices alike; the header's numbers are the contract.
static_assert(static_cast<int>(Format::kJson) == DORVEX_CONTENT_JSON);
static_assert(static_cast<int>(Format::kMarkdown) == DORVEX_CONTENT_MARKDOWN);
static_assert(static_cast<int>(Format::kHtml) == DORVEX_CONTENT_HTML);
static_assert(static_cast<int>(Format::kText) == DORVEX_CONTENT_TEXT);
static_assert(static_cast<int>(Format::kCsv) == DORVEX_CONTENT_CSV);
static_assert(static_cast<int>(CommentPlace::kEnd) == DORVEX_CONTENT_COMMENTS_END);
static_assert(static_cast<int>(CommentPlace::kInline) == DORVEX_CONTENT_COMMENTS_INLINE);
static_assert(static_cast<int>(ShownChanges::kOriginal) == DORVEX_CONTENT_CHANGES_ORIGINAL);
static_assert(static_cast<int>(ShownChanges::kAll) == DORVEX_CONTENT_CHANGES_ALL);
static_assert(static_cast<int>(CellValues::kRaw) == DORVEX_CONTENT_VALUES_RAW);
static_assert(static_cast<int>(CellValues::kFormula) == DORVEX_CONTENT_VALUES_FORMULA);

WriterOptions writerOptions(const DorvexContentOptions& from) {
  const auto has = [&from](DorvexContentFlags flag) { return (from.flags & flag) != 0; };
  WriterOptions to;
  to.format = static_cast<Format>(from.format);
  to.comments = static_cast<CommentPlace>(from.comments);
  to.changes = static_cast<ShownChanges>(from.changes);
  to.dropSkipped = has(DORVEX_CONTENT_DROP_SKIPPED);
  to.htmlTables = has(DORVEX_CONTENT_HTML_TABLES);
  to.frontMatter = has(DORVEX_CONTENT_FRONT_MATTER);
  to.pandoc = has(DORVEX_CONTENT_PANDOC);
  to.oneLine = has(DORVEX_CONTENT_ONE_LINE);
  to.mediaFolder = textOf(from.mediaFolder);
  to.csv = {.values = static_cast<CellValues>(from.values),
            .delimiter = static_cast<char>(from.delimiter),
            .header = !has(DORVEX_CONTENT_NO_HEADER),
            .fillMerged = has(DORVEX_CONTENT_FILL_MERGED),
            .guard = has(DORVEX_CONTENT_GUARD),
            .sheet = textOf(from.sheet),
            .table = textOf(from.table),
            .eachTable = has(DORVEX_CONTENT_EACH_TABLE),
            .listTables = has(DORVEX_CONTENT_LIST_TABLES)};
  return to;
}

Receiver receiverOf(const Taker& taker) {
  return {
      .output = [&taker](std::string_view bytes) { taker.give(DORVEX_CONTENT_OUTPUT, bytes); },
      .beginFile = [&taker](std::string_view name) { taker.give(DORVEX_CONTENT_FILE_NAME, name); },
      .fileBytes =
          [&taker](std::string_view bytes) { taker.give(DORVEX_CONTENT_FILE_BYTES, bytes); }};
}

DorvexContentApplication numberOf(const std::optional<Application>& application) {
  if (!application) return DORVEX_CONTENT_UNKNOWN;
  switch (*application) {
    case Application::kKeynote:
      return DORVEX_CONTENT_KEYNOTE;
    case Application::kPages:
      return DORVEX_CONTENT_PAGES;
    case Application::kNumbers:
      return DORVEX_CONTENT_NUMBERS;
  }
  return DORVEX_CONTENT_UNKNOWN;
}

void tellDamage(const DamagedMember& member, const Taker& taker) {
  taker.give(DORVEX_CONTENT_DAMAGED, member.name + '\0' + member.reason);
}

// The media that the rendering refers to, under the names that it uses.
void giveMedia(ServicesPackage& package, const Watch& watch, const Receiver& receiver,
               const Taker& taker) {
  const auto& members = package.members();
  for (std::size_t index = 0; index < watch.media().size(); ++index) {
    const MediaFile& file = *watch.media()[index];
    const auto member = std::ranges::find(members, file.member, &Package::Member::name);
    if (member == members.end()) continue;
    receiver.beginFile(mediaFileName(index, file));
    const auto number = static_cast<std::size_t>(member - members.begin());
    if (!package.copy(number, receiver.fileBytes))
      tellDamage({member->name, "cannot be read"}, taker);
  }
}

bool open(const DorvexContentRequest& request, ServicesPackage& package) {
  return request.root != nullptr ? package.openDirectory(request.root)
                                 : package.openContainer(*request.document);
}

DorvexContentOutcome render(const DorvexContentRequest& request, DorvexContentAnswer& answer) {
  const Taker taker(request);
  const Receiver receiver = receiverOf(taker);
  ServicesPackage package(*request.services);
  if (!open(request, package)) return DORVEX_CONTENT_NO_PACKAGE;
  const auto writer = makeWriter(writerOptions(*request.options), receiver);
  Watch watch(*writer, package.damaged());
  const Outcome outcome = read(package, watch);
  if (outcome == Outcome::kRead && (request.options->flags & DORVEX_CONTENT_MEDIA) != 0)
    giveMedia(package, watch, receiver, taker);
  for (const DamagedMember& member : watch.damaged()) tellDamage(member, taker);
  answer = {numberOf(watch.application()), watch.showsAnything() ? 1 : 0};
  return outcome == Outcome::kRead ? DORVEX_CONTENT_RENDERED : DORVEX_CONTENT_NO_DOCUMENT;
}

DorvexContentOutcome renderGuarded(const DorvexContentRequest& request,
                                   DorvexContentAnswer& answer) {
  try {
    return render(request, answer);
  } catch (const NoSuchTable& error) {
    Taker(request).give(DORVEX_CONTENT_MESSAGE, error.what());
    return DORVEX_CONTENT_NO_TABLE;
  } catch (const std::bad_alloc&) {
    return DORVEX_CONTENT_OUT_OF_MEMORY;
  }
}

}  // namespace
}  // namespace dorvex::content

extern "C" __attribute__((visibility("default"))) DorvexContentOutcome dorvexRenderContent(
    const DorvexContentRequest* request, DorvexContentAnswer* answer) {
  *answer = {DORVEX_CONTENT_UNKNOWN, 0};
  if (request->options == nullptr || !dorvex::content::known(*request->options))
    return DORVEX_CONTENT_BAD_OPTIONS;
  try {
    return dorvex::content::renderGuarded(*request, *answer);
  } catch (...) {
    return DORVEX_CONTENT_STOPPED;
  }
}
