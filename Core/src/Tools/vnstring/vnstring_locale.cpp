// What depends on the C locale of the process.
#include <array>
#include <climits>
#include <clocale>
#include <cstddef>
#include <cwchar>
#include <memory>
#include <utility>

#include "Tools/vennik/vnexcept/vnexcept.h"
#include "Tools/vnstring/vnstring.h"

namespace vn::string {
namespace {

using LocaleChange = std::unique_ptr<TemporaryCLocaleChange>;

// The change that a conversion asks for; none for an empty name.
LocaleChange changeEncoding(const std::string& locale) {
  if (locale.empty()) return nullptr;
  LocaleChange change(TemporaryCLocaleChange::getTemporaryCLocaleChange(LC_CTYPE, locale));
  if (!change) throw except::general_error();
  return change;
}

}  // namespace

TemporaryCLocaleChange* TemporaryCLocaleChange::getTemporaryCLocaleChange(int category,
                                                                          std::string locale) {
  const char* const current = std::setlocale(category, nullptr);
  if (current == nullptr) return nullptr;
  // The object comes first: were memory to run out behind the change, nothing
  // would put the locale back.
  LocaleChange change(new TemporaryCLocaleChange(category, current));
  if (locale == change->savedLocale_) {
    change->savedLocale_.clear();
  } else if (std::setlocale(category, locale.c_str()) == nullptr) {
    change->savedLocale_.clear();  // refused: there is nothing to put back
    return nullptr;
  }
  return change.release();
}

TemporaryCLocaleChange::TemporaryCLocaleChange(int category, std::string savedLocale)
    : category_(category), savedLocale_(std::move(savedLocale)) {}

TemporaryCLocaleChange::~TemporaryCLocaleChange() {
  if (!savedLocale_.empty()) std::setlocale(category_, savedLocale_.c_str());
}

std::string tcharStringToString(const std::string& text, std::string /*locale*/) { return text; }

std::string tcharStringToString(const std::wstring& text, std::string locale) {
  return wstringToString(text, std::move(locale));
}

std::string wstringToString(const std::wstring& text, std::string locale) {
  if (text.empty()) return {};
  const LocaleChange change = changeEncoding(locale);
  std::string result;
  std::mbstate_t state{};
  for (const wchar_t unit : text) {
    std::array<char, MB_LEN_MAX> bytes{};
    const auto count = static_cast<int>(std::wcrtomb(bytes.data(), unit, &state));
    if (count < 0) {
      // UTF-8 also when the encoding is another one; callers look for it.
      result += REPLACEMENT_CHARACTER_UTF8;
    } else {
      result.append(bytes.data(), static_cast<std::size_t>(count));
    }
  }
  return result;
}

std::wstring stringToWString(const std::string& text, std::string locale) {
  if (text.empty()) return {};
  const LocaleChange change = changeEncoding(locale);
  std::wstring result;
  std::mbstate_t state{};
  const char* position = text.c_str();
  const char* const end = position + text.size();
  while (position < end) {
    wchar_t unit = 0;
    // The difference is the wrong way round on purpose: taken without its sign
    // it sets no limit, so a sequence that is cut off runs into the terminating
    // NUL and is an error there. With a limit it would be incomplete (-2), and
    // the state would carry it into what follows.
    const auto noLimit = static_cast<std::size_t>(position - end);
    const auto count = static_cast<int>(std::mbrtowc(&unit, position, noLimit, &state));
    if (count < 0) {
      result += L'\xFFFD';
      ++position;
    } else {
      result += unit;
      position += count == 0 ? 1 : count;
    }
  }
  return result;
}

}  // namespace vn::string
