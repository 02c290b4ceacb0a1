// Reports printed in UTF-8: decoding, how many columns a character takes on the printed page
// (East Asian wide characters two, combining marks none), and cutting a line by those columns.
// An 8-bit report never comes here: its positions are its bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

// The encoding a run or a recipe names for its reports. kUnset reads them as 8-bit text, as a
// run that names none always has.
enum class InputEncoding { kUnset, kAuto, kUtf8, kCp1252, kLatin1 };

// The names a user may write, for messages.
inline constexpr std::string_view kInputEncodingChoices = "auto, utf-8, cp1252 or latin1";
// "auto", "utf-8", "cp1252", "latin1" in any letter case ("" is kUnset); false for anything else.
bool ParseInputEncoding(std::string_view text, InputEncoding& encoding);

// Whether every byte is below 0x80.
bool IsAscii(std::string_view text);
bool IsValidUtf8(std::string_view text);
// Appends the UTF-8 form of a code point.
void AppendCodePoint(std::uint32_t cp, std::string& out);

// One character decoded at the start of [p, end), p < end. A byte that does not begin a valid
// sequence (stray continuation, overlong form, surrogate, past U+10FFFF, cut short) is one
// character of its own: length 1, valid false, cp U+FFFD.
struct Utf8Char {
  std::uint32_t cp = 0;
  int length = 1;
  bool valid = true;
};
Utf8Char DecodeUtf8(const char* p, const char* end);

// Columns a character takes when printed: 2 for East Asian wide and fullwidth characters, 0 for
// combining marks and zero-width characters, 1 for the rest.
int PrintedColumns(std::uint32_t cp);

// `text` with every invalid byte replaced by U+FFFD, into `out` (cleared first). Returns the
// number of bytes replaced.
std::size_t RepairUtf8(std::string_view text, std::string& out);

// Tab expansion of valid UTF-8 text counting printed columns, with the same stops and the same
// quirk as ExpandTabs on 8-bit text (util/strings.h).
void ExpandTabsByColumns(std::string_view text, int tabSize, std::string& out);

// `text` as the table analyzer sees it: one byte per printed column, ASCII characters as they
// are, every other character as many '#' as it takes columns (none for a combining mark).
std::string ColumnPicture(std::string_view text);

// The printed columns of one line of valid UTF-8 and the bytes where they begin, so that fields
// can be cut by columns as an 8-bit line is cut by bytes. A character belongs to the field of the
// column it starts in: a wide character whose second half lies in the next field stays whole in
// the first one; a combining mark goes with the character before it. The index is reused from
// line to line without allocating once it is large enough.
class LineColumns {
 public:
  void Build(std::string_view line);
  // The characters starting in columns first..first+width-1 (1-based) of `line`, the line Build
  // was given, clipped to it.
  std::string_view Cut(std::string_view line, long long first, long long width) const;
  // Columns the line takes.
  long long Columns() const { return static_cast<long long>(starts_.size()) - 1; }

 private:
  // starts_[k]: the byte offset of the first character that starts in column k + 1 or later;
  // the last entry is the line's length.
  std::vector<std::uint32_t> starts_;
};

// What a whole file holds, for choosing its encoding: only ASCII bytes, valid UTF-8 with at least
// one character beyond ASCII, or anything else (8-bit text). kUnreadable when it cannot be read.
enum class FileText { kAscii, kUtf8, kEightBit, kUnreadable };
FileText ClassifyFileText(const std::string& path);

}  // namespace kroveld
