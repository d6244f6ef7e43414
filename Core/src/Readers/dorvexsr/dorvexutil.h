// What stands behind the entry points: module start and stop, package
// discovery, the text sweep and the writer of tokens.
#pragma once

#include <dirent.h>

#include <cstddef>
#include <list>
#include <string>
#include <string_view>

#include "Readers/dorvexsr/dorvexglobals.h"
#include "Readers/hostapi/reader_exports.h"

// Bytes of the path buffer of package discovery; longer paths are cut.
inline constexpr std::size_t kPathBufferSize = 1024;

// Reads the whole package into the context's message map: a zip, or a directory
// package when the path of the I/O object names one of its marker files.
// Throws vn::except classes and whatever a bad stream of a directory raises.
void populateMessageMap(TAG_VNDORVEXGlobals* context);

// The length of the package root in a path that names "Document.iwa" or
// "BuildVersionHistory.plist", and std::string::npos for any other path. All
// tests are for substrings of the whole path, the first occurrence counting.
std::size_t findVirtualDirectoryEnd(const std::string& path);

// What package discovery does with an entry of a folder.
enum class EntryAction { kIgnore, kReadZipAndStop, kEnterAndStop, kReadFile, kEnter };

// The action for an entry, by its name alone.
EntryAction actionFor(const std::string& name);

// Reads the streams of one folder, in the order in which the system lists them.
// pathBuffer has kPathBufferSize bytes. Throws; stops at the first bad stream.
void getMessagesFromFolder(TAG_VNDORVEXGlobals* context, std::string dir, dirent entry,
                           char* pathBuffer);

// Reads one .iwa file. Throws.
void getMessagesFromFile(TAG_VNDORVEXGlobals* context, const char* path);

// Writes the texts of every message to the output, in ascending order of the
// object identifiers. Throws what writeToOutput throws.
void getAllText(TAG_VNDORVEXGlobals* context, const vn::iwork13::MessageMap& map);

// Appends the value of each field of that name in a printed message, empty
// values too.
void extractFields(std::list<std::string>& values, const std::string& printed,
                   const std::string& name);

// The normalised value that starts at an index of a printed message.
std::string getFieldContents(const std::string& printed, int start);

// Erases the first character of each occurrence of a pattern.
void removeFirstCharOfPattern(std::string& value, const std::string& pattern);

// Whether printing a value and normalising what was printed certainly give the value
// back, as is so for most texts.
bool comesOutAsItIs(std::string_view value);

// Replaces and deletes the printed escapes of a fixed table, in its order. Not
// a decoder: what the table does not name stays as it was printed.
void convertAllOctalCodesToAscii(std::string& value);

// Turns backslash, n into a line feed and backslash, t into a tab.
void replaceAllLFsAndTabs(std::string& value);

// Replaces every occurrence in one pass and in place. Throws std::runtime_error
// for a replacement that is longer than the search text, which must not be empty.
void replaceInplace(std::string& value, const std::string& search, const std::string& replacement);

// Writes a text as TOKEN_TEXT pieces and one TOKEN_BREAK; an empty text gives no
// token at all. Throws vn::except::general_error.
void writeToOutput(TAG_VNDORVEXGlobals* context, std::string_view text);

// Writes the constant tokens that every stream begins with, with no test of the
// buffer's size.
void writePrologue(TAG_VNDORVEXGlobals* context);
