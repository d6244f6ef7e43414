#include "styles/paragraph_role.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace dorvex::content {
namespace {

// A kind of style by the first word of its name. Level is that of a heading of number
// 1, or without number; of a title it says that it is one without number only.
struct Kind {
  std::string_view name;
  Role role;
  unsigned level = 0;
};

// Of the templates, as identifiers have them.
constexpr Kind kKinds[] = {
    {"Title", Role::kTitle},
    {"Title Alt", Role::kTitle},
    {"Title Small", Role::kTitle},
    {"Masthead", Role::kTitle},
    {"Subtitle", Role::kSubtitle},
    {"Subtitle Alt", Role::kSubtitle},
    {"Heading", Role::kHeading, 1},
    {"Heading Red", Role::kHeading, 1},
    {"Subheading", Role::kHeading, 2},
    {"Chapter", Role::kHeading, 1},
    {"Section", Role::kHeading, 1},
    {"Body", Role::kBody},
    {"Body Small", Role::kBody},
    {"Bullets", Role::kBody},
    {"Bullets Small", Role::kBody},
    {"Introduction", Role::kBody},
    {"Caption", Role::kCaption},
    {"Caption Alt", Role::kCaption},
    {"Caption Bold", Role::kCaption},
    {"Caption Red", Role::kCaption},
    {"Caption Small", Role::kCaption},
    {"Caption Text", Role::kCaption},
    {"Caption Title", Role::kCaption},
    {"Object Caption", Role::kCaption},
    {"Label", Role::kLabel},
    {"Label Alt", Role::kLabel},
    {"Label Dark", Role::kLabel},
    {"Shape Caption", Role::kLabel},
    {"Shape Caption White", Role::kLabel},
    {"Header & Footer", Role::kHeader},
    {"Footnote Text", Role::kFootnote},
    {"Footnote", Role::kFootnote},
    {"TOC Heading", Role::kToc},
};

// As documents from before identifiers, or from other applications, name them.
constexpr Kind kNames[] = {
    // English
    {"Normal", Role::kBody},
    {"Body Text", Role::kBody},
    {"Text", Role::kBody},
    {"Sub-heading", Role::kHeading, 2},
    {"Figure Caption", Role::kCaption},
    {"Table Caption", Role::kCaption},
    {"Chapter Title", Role::kHeading, 1},
    {"TOC", Role::kToc},
    // German
    {"Standard", Role::kBody},
    {"Titel", Role::kTitle},
    {"Untertitel", Role::kSubtitle},
    {"Überschrift", Role::kHeading, 1},
    {"Zwischenüberschrift", Role::kHeading, 2},
    {"Kopf- und Fußzeilen", Role::kHeader},
    {"Fußnote", Role::kFootnote},
    // French
    {"Titre", Role::kTitle, 1},
    {"Sous-titre", Role::kSubtitle},
    {"Corps", Role::kBody},
    {"Légende", Role::kCaption},
    {"En-tête et pied de page", Role::kHeader},
    // Spanish, Portuguese
    {"Título", Role::kTitle, 1},
    {"Subtítulo", Role::kSubtitle},
    {"Cuerpo", Role::kBody},
    {"Corpo", Role::kBody},
    // Italian
    {"Titolo", Role::kTitle, 1},
    {"Sottotitolo", Role::kSubtitle},
    {"Didascalia", Role::kCaption},
    // Dutch
    {"Ondertitel", Role::kSubtitle},
    {"Kop", Role::kHeading, 1},
    // Danish, Norwegian, Swedish
    {"Undertitel", Role::kSubtitle},
    {"Tittel", Role::kTitle},
    {"Undertittel", Role::kSubtitle},
    {"Overskrift", Role::kHeading, 1},
    {"Underrubrik", Role::kHeading, 2},
    {"Rubrik", Role::kHeading, 1},
    {"Brødtekst", Role::kBody},
    {"Brödtext", Role::kBody},
    {"Sidehoved og sidefod", Role::kHeader},
    // Finnish
    {"Otsikko", Role::kTitle, 1},
    {"Alaotsikko", Role::kSubtitle},
    // Russian, Ukrainian
    {"Заголовок", Role::kHeading, 1},
    {"Название", Role::kTitle},
    {"Подзаголовок", Role::kSubtitle},
    {"Обычный", Role::kBody},
    {"Основной текст", Role::kBody},
    // Hungarian, Turkish
    {"Címsor", Role::kHeading, 1},
    {"Cím", Role::kTitle},
    {"Alcím", Role::kSubtitle},
    {"Başlık", Role::kHeading, 1},
    // Czech, Polish
    {"Nadpis", Role::kHeading, 1},
    {"Název", Role::kTitle},
    {"Podtitul", Role::kSubtitle},
    {"Tytuł", Role::kTitle},
    {"Podtytuł", Role::kSubtitle},
    {"Nagłówek", Role::kHeading, 1},
    // Chinese
    {"大标题", Role::kTitle},
    {"副标题", Role::kSubtitle},
    {"小标题", Role::kHeading, 1},
    {"标题", Role::kHeading, 1},
    {"大標題", Role::kTitle},
    {"副標題", Role::kSubtitle},
    {"標題", Role::kHeading, 1},
    {"正文", Role::kBody},
    {"內文", Role::kBody},
    {"标签", Role::kLabel},
    {"页眉与页脚", Role::kHeader},
    // Japanese, Korean
    {"タイトル", Role::kTitle},
    {"サブタイトル", Role::kSubtitle},
    {"見出し", Role::kHeading, 1},
    {"本文", Role::kBody},
    {"제목", Role::kTitle, 1},
    {"부제", Role::kSubtitle},
    {"본문", Role::kBody},
};

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

void dropBlanks(std::string_view& text) {
  while (text.ends_with(' ')) text.remove_suffix(1);
}

// Takes letters that tell copies of a style apart off its name: "Heading 2 A A".
void dropCopyLetters(std::string_view& name) {
  while (name.size() >= 3 && name[name.size() - 2] == ' ' && name.back() >= 'A' &&
         name.back() <= 'Z') {
    name.remove_suffix(2);
    dropBlanks(name);
  }
}

// Takes the number off the end of a name; 0 where there is none.
unsigned takeNumber(std::string_view& name) {
  std::size_t digits = 0;
  while (digits < name.size() && isDigit(name[name.size() - 1 - digits])) ++digits;
  unsigned number = 0;
  std::from_chars(name.data() + name.size() - digits, name.data() + name.size(), number);
  name.remove_suffix(digits);
  dropBlanks(name);
  return number;
}

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool areEqual(std::string_view name, std::string_view other) {
  return std::ranges::equal(name, other, {}, lower, lower);
}

template <std::size_t Size>
std::optional<ParagraphRole> roleIn(const Kind (&kinds)[Size], std::string_view name) {
  constexpr unsigned kDeepestHeading = 9;
  const unsigned number = takeNumber(name);
  for (const Kind& kind : kinds) {
    if (!areEqual(kind.name, name)) continue;
    const bool isHeading = kind.role == Role::kHeading || (kind.level > 0 && number > 0);
    if (!isHeading) return ParagraphRole{kind.role, 0};
    const unsigned below = number > 0 && number <= kDeepestHeading ? number - 1 : 0;
    return ParagraphRole{Role::kHeading, kind.level + below};
  }
  return std::nullopt;
}

}  // namespace

std::optional<ParagraphRole> roleOfIdentifier(std::string_view identifier) {
  constexpr std::string_view kBeforeName = "paragraphstyle-";
  if (identifier == "kSFWPFootnoteTextStyleIdentifier") return ParagraphRole{Role::kFootnote, 0};
  const auto at = identifier.rfind(kBeforeName);
  if (at == std::string_view::npos) return std::nullopt;
  return roleIn(kKinds, identifier.substr(at + kBeforeName.size()));
}

std::optional<ParagraphRole> roleOfName(std::string_view name) {
  dropBlanks(name);
  dropCopyLetters(name);
  const auto role = roleIn(kKinds, name);
  return role ? role : roleIn(kNames, name);
}

}  // namespace dorvex::content
