/// @file
/// The string library that all readers share: conversions between encodings,
/// the sanitisers, byte-wise helpers, and a scoped change of the C locale.
///
/// Text is bytes unless a function says otherwise, lengths and sizes are in
/// bytes, and pointers may not be null unless a function says so. Results are
/// new strings that the caller owns. Any function may throw std::bad_alloc.
///
/// The conversions are not one family in their treatment of bad input: some
/// are strict and some let nearly everything through. Callers depend on each
/// one's own rule, so they must not be made alike.
#pragma once

#include <string>
#include <vector>

#include "Readers/hostapi/host_records.h"
#include "Tools/vnexport.h"

/// Strings, for all readers.
namespace vn::string {

/// @name Unicode
/// A code point is an int, a UTF-16 string is a
/// std::basic_string<unsigned short>.
/// @{

/// U+FFFD in UTF-8. Every source file has its own copy, made during static
/// initialisation.
const std::string REPLACEMENT_CHARACTER_UTF8 = "\xEF\xBF\xBD";

/// The length of the sequence that a byte leads.
/// @param byte Any byte; overlong and out-of-range leads are not told apart.
/// @return 1 to 4, or 0 for a continuation byte and for 0xF8 and above.
VN_API int UTF8LeadingByteLength(unsigned char byte);

/// Whether a byte is one of 0x80 to 0xBF.
/// @param byte Any byte.
/// @return True for a continuation byte.
VN_API bool isUTF8ContinuationByte(unsigned char byte);

/// Encodes one code point in UTF-8.
/// @param codePoint Any number.
/// @return One to four bytes; those of U+FFFD for a negative number, a
///     surrogate and a number above 0x10FFFF.
VN_API std::string codePointToUTF8(int codePoint);

/// Encodes one code point in UTF-16.
/// @param codePoint Any number.
/// @return One or two units; U+FFFD for a negative number, a surrogate and a
///     number above 0x10FFFF.
VN_API std::basic_string<unsigned short> codePointToUTF16(int codePoint);

/// Converts UCS-2, each unit by itself: surrogates are not paired, and every
/// one of them becomes U+FFFD.
/// @param text Units in the byte order of the machine.
/// @return UTF-8.
VN_API std::string UCS2ToUTF8(const std::basic_string<unsigned short>& text);

/// Converts UTF-16. A surrogate without its partner becomes U+FFFD.
/// @param text Units in the byte order of the machine.
/// @return UTF-8.
VN_API std::string UTF16ToUTF8(const std::basic_string<unsigned short>& text);

/// Converts UTF-8 with the decoding of UTF8ToCodePoint(const char*, unsigned
/// long, unsigned long&), one sequence after the other.
/// @param text UTF-8. The byte 0xFF must not be at the start of a sequence: the
///     call does not return from it.
/// @return UTF-16; each bad sequence is one unit U+FFFD.
VN_API std::basic_string<unsigned short> UTF8ToUTF16(const std::string& text);

/// Decodes the first sequence of a text. Neither refuses overlong forms nor
/// looks whether the following bytes are continuation bytes; a stray
/// continuation byte gives its low six bits.
/// @param text The bytes. The first one must not be 0xFF: the call does not
///     return from it.
/// @param length The number of bytes; may be 0.
/// @param[out] consumed The number of bytes used: 0 for an empty text, 1 for a
///     sequence that is cut off or longer than four bytes.
/// @return The code point, or 0xFFFD for an empty text, a sequence that is cut
///     off or too long, a surrogate and a number above 0x10FFFF.
VN_API int UTF8ToCodePoint(const char* text, unsigned long length, unsigned long& consumed);

/// Decodes the first sequence of a text of unknown length, five- and six-byte
/// forms included. Tests neither the following bytes nor the result.
/// @param text The bytes; the whole sequence that the first one announces is
///     read, also past a NUL byte.
/// @param[out] codePoint The number; 0xFE and 0xFF give themselves.
/// @return The address behind the sequence.
VN_API unsigned char* UTF8ToCodePoint(unsigned char* text, unsigned int* codePoint);

/// Copies as strncpy does, without cutting a sequence: the copy ends before a
/// sequence that would not fit, and the rest of dest is filled with NUL bytes.
/// @param[out] dest Room for size bytes. Left without a terminator when the text
///     fills it exactly.
/// @param src UTF-8, up to its first NUL byte or size bytes.
/// @param size The size of dest.
/// @return dest.
VN_API char* strncpy_utf8(char* dest, const char* src, unsigned long size);

/// Copies a file name and leaves out what Windows does not take in one: leading
/// blanks, bytes below 0x20, and " # * / : < > ? \ |. Trailing blanks and dots
/// and reserved device names are kept. No sequence is cut, and the rest of dest
/// is filled with NUL bytes.
/// @param[out] dest Room for destSize bytes. Left without a terminator when the
///     name fills it exactly.
/// @param src UTF-8, NUL-terminated if it begins with blanks: they are skipped
///     without regard to srcSize.
/// @param srcSize The number of bytes of src at most.
/// @param destSize The size of dest; may be 0.
/// @return destSize + 1, whatever was copied.
VN_API unsigned long strncpy_utf8_windowsfilename(char* dest, const char* src,
                                                  unsigned long srcSize, unsigned long destSize);

/// Recognises the byte order mark of UTF-8 or UTF-16. The marks of UTF-32 are
/// not known: a little-endian one is taken for UTF-16.
/// @param text NUL-terminated; null throws std::logic_error.
/// @param[out] charSet The character set that the mark stands for, 0 for none.
/// @param[out] bigEndian Whether the mark is that of big-endian UTF-16.
/// @return The length of the mark in bytes, 0 for none.
VN_API int identifyBOM(const char* text, tagVNCharSet& charSet, bool& bigEndian);

/// @}

/// @name Conversion by locale or by the host
/// With a locale that is not empty these change LC_CTYPE of the whole process
/// for the length of the call, and nothing guards against other threads.
/// @{

/// A copy of text, for code that is written for either kind of string.
/// @param text Any bytes.
/// @param locale Not looked at.
/// @return The text.
VN_API std::string tcharStringToString(const std::string& text, std::string locale);

/// wstringToString(text, locale), for code that is written for either kind of
/// string.
/// @param text Wide units.
/// @param locale See wstringToString.
/// @return See wstringToString.
VN_API std::string tcharStringToString(const std::wstring& text, std::string locale);

/// Converts a wide string to the encoding of a locale.
/// @param text Wide units; when empty, the locale is not touched.
/// @param locale The name of a locale, or empty for the current one.
/// @return The bytes. A unit that the encoding does not have becomes the UTF-8
///     bytes of U+FFFD, whatever the encoding.
/// @throws vn::except::general_error if the locale cannot be set.
VN_API std::string wstringToString(const std::wstring& text, std::string locale);

/// Converts text in the encoding of a locale to a wide string.
/// @param text The bytes; when empty, the locale is not touched.
/// @param locale The name of a locale, or empty for the current one.
/// @return Wide units, U+FFFD for each byte that the encoding does not have.
/// @throws vn::except::general_error if the locale cannot be set.
VN_API std::wstring stringToWString(const std::string& text, std::string locale);

/// Converts text through the host's ConvertText. The targetCharSet of the
/// service table is changed for the length of the call, and stays changed if
/// the call throws.
/// @param services The host's table, which nobody else may use meanwhile. Its
///     slots ConvertText, Alloc and Free must be set.
/// @param text The bytes.
/// @param length Their number, of which the low 32 bits count.
/// @param from The character set of text.
/// @param to The character set of the result.
/// @return The host's answer; empty when its Alloc gives nothing.
VN_API std::string convertTextEncoding(tag_TPVAPIServices* services, const char* text,
                                       unsigned long length, tagVNCharSet from, tagVNCharSet to);

/// @}

/// @name Sanitisers
/// There is no input that fails, and NUL bytes are bytes like any other.
/// @{

/// Makes valid UTF-8. Valid sequences stay as they are; each byte that is not
/// part of one is an error by itself.
/// @param text Any bytes.
/// @param replacement The code point that is written for each error.
/// @return Valid UTF-8.
VN_API std::string sanitizeUTF8(const std::string& text, int replacement);

/// The same for text that may be windows-1252: each byte in error is decoded as
/// windows-1252.
/// @param text Any bytes.
/// @param replacement The code point for the five bytes without a meaning in
///     windows-1252.
/// @return Valid UTF-8.
VN_API std::string sanitizeUTF8with1252(const std::string& text, int replacement);

/// Replaces every byte that is neither NUL nor printable ASCII.
/// @param text Any bytes.
/// @param replacement 0 or a printable ASCII character; any other number counts
///     as a question mark. 0 removes nothing: it writes NUL bytes.
/// @return As many bytes as text has.
VN_API std::string sanitizeASCIIPrintable(const std::string& text, int replacement);

/// @}

/// @name Search, replacement and splitting
/// @{

/// Replaces each match from the left, without searching replaced text again.
/// @param[in,out] text Changed in place.
/// @param what What to replace; when empty, nothing happens.
/// @param with What to put there.
VN_API void replaceAll(std::string& text, const std::string& what, const std::string& with);

/// Whether text begins with prefix. Compares as C strings do: a NUL byte at the
/// same place in both ends the comparison as a match.
/// @param text Where to look.
/// @param prefix What to look for; every text begins with the empty one.
/// @return True if it does.
VN_API bool startsWith(const std::string& text, const std::string& prefix);

/// startsWith, with upper and lower case alike as the current locale has them.
/// @param text Where to look.
/// @param prefix What to look for; every text begins with the empty one.
/// @return True if it does.
VN_API bool startsWithCaseInsensitive(const std::string& text, const std::string& prefix);

/// Whether text ends with suffix.
/// @param text NUL-terminated.
/// @param suffix NUL-terminated; every text ends with the empty one.
/// @return True if it does.
VN_API bool endsWith(const char* text, const char* suffix);

/// Whether what stands anywhere in text.
/// @param text Where to look.
/// @param what What to look for; every text contains the empty one.
/// @return True if it does.
VN_API bool contains(const std::string& text, const std::string& what);

/// Whether any entry of a list stands anywhere in text.
/// @param text Where to look.
/// @param list NUL-terminated strings, tried in order; a null entry throws
///     std::logic_error when its turn comes.
/// @param count The number of entries; below 1 gives false.
/// @return True at the first hit.
VN_API bool containsAnyOf(const std::string& text, const char** list, int count);

/// Cuts the scheme and the host off a URL, with the slash behind them.
/// @param url Anything; unchanged unless it begins with "http://" or "https://".
/// @return The path without its leading slash; empty when there is none.
VN_API std::string stripDomainFromURL(const std::string& url);

/// Cuts text at each delimiter. Adjacent delimiters give empty parts.
/// @param text What to cut.
/// @param delimiter Where to cut; belongs to no part.
/// @return All parts in order, at least one.
VN_API std::vector<std::string> split(const std::string& text, char delimiter);

/// Cuts all LF and CR off the end of text.
/// @param[in,out] text Changed in place.
VN_API void stripNewLineCharsFromEnd(std::string& text);

/// @}

/// @name Bytes and ASCII
/// @{

/// Fills buffer with the text and then NUL bytes.
/// @param[out] buffer Room for size bytes. Left without a terminator by a text
///     of size bytes or more.
/// @param size The size of buffer; below 1 copies nothing.
/// @param text Any bytes, at most 0x7FFFFFFF.
VN_API void copyStringToBuffer(char* buffer, int size, const std::string& text);

/// Whether the first count bytes are all digits, and count is not beyond limit.
/// @param count The number of bytes; 0 gives true for any text but null.
/// @param text The bytes, which end at the first one that is no digit; may be
///     null, which gives false.
/// @param limit The number of bytes that are looked at, at most.
/// @return True if they are.
VN_API bool isNumericStr(unsigned int count, const char* text, int limit);

/// isNumericStr, with hexadecimal digits of either case.
/// @param count The number of bytes; 0 gives true for any text but null.
/// @param text The bytes, which end at the first one that is no digit; may be
///     null, which gives false.
/// @param limit The number of bytes that are looked at, at most.
/// @return True if they are.
VN_API bool isHexStr(unsigned int count, const char* text, int limit);

/// A to Z in lower case; any other byte unchanged.
/// @param c Any byte.
/// @return The byte.
VN_API char asciiCharToLower(char c);

/// a to z in upper case; any other byte unchanged.
/// @param c Any byte.
/// @return The byte.
VN_API char asciiCharToUpper(char c);

/// asciiCharToLower of every byte.
/// @param text Any bytes.
/// @return As many bytes.
VN_API std::string asciiStrToLower(const std::string& text);

/// asciiCharToUpper of every byte.
/// @param text Any bytes.
/// @return As many bytes.
VN_API std::string asciiStrToUpper(const std::string& text);

/// Whether two strings are equal over their full lengths, with the ASCII letters
/// of either case alike. Gives no order.
/// @param left Any bytes.
/// @param right Any bytes.
/// @return True if they are equal.
VN_API bool asciiCaseInsensitiveCompare(const std::string& left, const std::string& right);

/// Whether a number is an ASCII character.
/// @param value Any number.
/// @return True for 0 to 127.
VN_API bool inAsciiRange(int value);

/// @}

/// One category of the C locale, changed until the object is deleted. The change
/// concerns the whole process, without any lock: two of these on two threads can
/// put the wrong locale back.
class VN_API TemporaryCLocaleChange {
 public:
  /// Sets a category to a locale.
  /// @param category A category of setlocale, such as LC_CTYPE.
  /// @param locale The name of a locale. When the category has exactly that name
  ///     already, nothing is set and nothing put back.
  /// @return An object that the caller owns and deletes; null, and nothing
  ///     changed, if there is no such category or locale.
  static TemporaryCLocaleChange* getTemporaryCLocaleChange(int category, std::string locale);

  /// Puts the old locale back.
  ~TemporaryCLocaleChange();

  TemporaryCLocaleChange(const TemporaryCLocaleChange&) = delete;
  TemporaryCLocaleChange& operator=(const TemporaryCLocaleChange&) = delete;

 private:
  TemporaryCLocaleChange(int category, std::string savedLocale);

  int category_;
  std::string savedLocale_;  // empty: nothing has to be put back
};

/// Tables and steps of the conversions.
namespace detail {

/// The number of trailing bytes in a sequence, by its first byte. Knows five-
/// and six-byte forms, which nothing in this library writes.
VN_API extern const unsigned char bytesFromUTF8[256];

/// Whether a UTF-16 unit is the first of a surrogate pair.
/// @param unit Any unit.
/// @return True for 0xD800 to 0xDBFF.
VN_API bool isHighSurrogate(unsigned short unit);

/// Whether a UTF-16 unit is the second of a surrogate pair.
/// @param unit Any unit.
/// @return True for 0xDC00 to 0xDFFF.
VN_API bool isLowSurrogate(unsigned short unit);

/// The code point of a surrogate pair. The units are not tested.
/// @param high The first unit.
/// @param low The second unit.
/// @return The code point.
VN_API int getIntFromSurrogatePair(unsigned short high, unsigned short low);

}  // namespace detail

}  // namespace vn::string
