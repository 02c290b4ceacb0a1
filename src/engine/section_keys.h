// Helpers shared by the readers of recipe sections: the "Error in <section>" message, integer keys
// that fall back to the missing value, offset keys that must be whole numbers, and the upper
// bounds that keep a damaged file from asking for absurd amounts of memory or time.
#pragma once

#include <string>
#include <string_view>

#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

inline constexpr int kMissingNumber = -999999;
inline constexpr int kMaxTitleLines = 1048576;
inline constexpr int kMaxTableColumns = 702;
inline constexpr int kMaxDepartments = 10000;
// Sections of one kind in an export specification file.
inline constexpr int kMaxSectionsPerKind = 10000;
// The last row a sheet can hold; consolidation never reads or writes past it.
inline constexpr int kMaxSheetRow = 1048576;

// "Error in " + section + text, critical.
void ShowSectionError(UiPort& ui, std::string_view section, std::string_view text);

// The value as a 32-bit integer; anything that is not one (missing, text, too large) gives
// kMissingNumber, so it fails the "> 0" tests with the usual message.
int ValidatedNumber(std::string_view text);

// The write-column test of titles and column fields: missing, or, upper-cased, sorting before "A"
// or after "Z" as text (so "AA" passes and "ZA" does not).
bool BadWriteColumn(std::string_view column);

// Reads an offset key (default "0") from the current position of `file`. A value that is not a
// whole number shows "Error in <section> : <key> must be a whole number!" and gives false.
bool ReadOffsetKey(UiPort& ui, TextFile& file, std::string_view section, std::string_view key,
                   int& out);

}  // namespace kroveld
