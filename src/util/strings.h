// Small string helpers shared by every layer: tab expansion with the report printers' quirk,
// blank trimming, ASCII case mapping, non-breaking spaces.
#pragma once

#include <string>
#include <string_view>

namespace kroveld {

// Expands tabs into `out` (cleared first). Tab stops at columns 1 + k * tabSize. An empty text or
// a tab size below 1 gives an empty result (not the text). At a tab the stop advances by the tab
// size, and again while the output is at least the stop; then stop - length - 1 blanks are
// appended, so a tab that follows exactly stop - 1 characters adds nothing.
void ExpandTabs(std::string_view text, int tabSize, std::string& out);
std::string ExpandTabs(std::string_view text, int tabSize);

// Every byte 160 (non-breaking space in the ANSI code page) becomes a blank, in place.
// The system's named interface; no caller yet.
void ReplaceNonBreakingSpaces(std::string& text);

// Appends `text` `count` times to `out`. The system's named interface; no caller yet.
void AppendRepeated(std::string& out, std::string_view text, int count);

// Blank trimming (only the character ' ' counts as a blank; tabs are kept).
std::string_view TrimLeft(std::string_view s);
std::string_view TrimRight(std::string_view s);
std::string_view Trim(std::string_view s);

std::string UpperAscii(std::string_view s);
std::string LowerAscii(std::string_view s);
bool EqualsNoCase(std::string_view a, std::string_view b);
// Position of `needle` in `hay` ignoring ASCII case, or npos.
std::size_t FindNoCase(std::string_view hay, std::string_view needle);

// Number of single-character insertions, deletions and substitutions that turn `a` into `b`.
std::size_t EditDistance(std::string_view a, std::string_view b);

// Decimal text of an integer.
std::string ToText(long long value);

// Appends the decimal text of `value` to `out` without any allocation beyond out's growth.
void AppendInt(std::string& out, long long value);

}  // namespace kroveld
