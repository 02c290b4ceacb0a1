// Helpers shared by the readers of recipe sections: the "Error in <section>" message, integer keys
// that fall back to the missing value, offset keys that must be whole numbers, and the upper
// bounds that keep a damaged file from asking for absurd amounts of memory or time.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

// After a "Can not find <key>: -999999" message: when the key text is the missing-key value, a
// note says that the section has no such key (the value is a stand-in, not a text to search).
void NoteMissingKey(UiPort& ui, std::string_view section, std::string_view key,
                    std::string_view text);

// "Error in <section> : <key> must be a whole number!", critical.
void ShowOffsetError(UiPort& ui, std::string_view section, std::string_view key);

// Reads an offset key (default "0") from the current position of `file`. A value that is not a
// whole number shows "Error in <section> : <key> must be a whole number!" and gives false.
bool ReadOffsetKey(UiPort& ui, TextFile& file, std::string_view section, std::string_view key,
                   int& out);

// Reads the sub-sections 1..count of a section (columns of a table, departments of a
// consolidation) with read(item, number) from the same open file. An item that fails its checks
// has been reported and is kept; the rest are still read. False when any failed.
template <typename Item, typename Read>
bool ReadSubSections(int count, std::vector<Item>& into, Read read) {
  bool ok = true;
  into.reserve(static_cast<std::size_t>(count));
  for (int n = 1; n <= count; ++n) {
    Item item;
    if (!read(item, n)) ok = false;
    into.push_back(std::move(item));
  }
  return ok;
}

}  // namespace kroveld
