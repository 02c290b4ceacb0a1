// The key lookup of recipe and export-specification files ("[Section]" then "Key=Value" lines),
// with the rules recipe files were always read by: the first match wins, a line holding "[" ends a
// section, ";" after the "=" starts a comment, and keys of a section are read in a fixed forward
// order from an open file. Also the header check and the counting of section headings.
#pragma once

#include <string>
#include <string_view>

#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

// The default text of keys that must be validated: an absent key reads as this text, and as the
// number -999999, so it fails every "> 0" test.
inline constexpr std::string_view kMissing = "-999999";

// Trim modes of GetProfileValue: 1 leading blanks only, 2 trailing blanks only, anything else both.
enum TrimMode { kTrimLeading = 1, kTrimTrailing = 2, kTrimBoth = 3 };

// The name of the section a line heads, as the lookup sees headings: a "[" at p, a "]" at p + 2
// or later, and the text between them trimmed. False when the line is no heading.
bool HeadingName(std::string_view line, std::string_view& name);

// Looks `key` up from the file's current position. With a non-empty section the lines are first
// read up to the heading "[section]" (exact, case-sensitive, trimmed inside the brackets); with an
// empty section the search starts at the current position. A file that is not open gives the
// default.
std::string GetProfileValue(TextFile& file, std::string_view section, std::string_view key,
                            std::string_view def, int trim = kTrimBoth);

// Opens `path`, looks one key up with full trimming, closes it. A missing file gives the default.
std::string GetProfileValueFromFile(const std::string& path, std::string_view section,
                                    std::string_view key, std::string_view def);

// Checks the Header triplet; returns true on FAILURE after showing "Incorrect product code!",
// "Incorrect file type!" or "Incorrect file format!" (critical), false when all three match.
// Values are compared trimmed and without regard to case.
bool CheckFileHeader(UiPort& ui, const std::string& path, std::string_view product,
                     std::string_view fileType, std::string_view fileFormat);

// Number of lines containing `heading` and not containing `exclusion` (when non-empty);
// 0 when the file does not exist.
int CountSectionHeadings(const std::string& path, std::string_view heading,
                         std::string_view exclusion);

// Converts a profile value to a 32-bit integer the way recipes hold them: surrounding blanks
// allowed, optional sign, decimal digits. False for anything else, including values that do not
// fit in 32 bits.
bool ParseLong(std::string_view text, int& value);

}  // namespace kroveld
