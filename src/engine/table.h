// A table section: a block of consecutive input lines, found between a top and a bottom key text
// (each moved by a signed line offset), copied one line per row into sheet 1 (or one CSV row per
// line), each line cut into fields by its column fields. Process moves sheet 1's write pointer
// below the rows written and records the first and last row for consolidation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/column.h"
#include "util/private_profile.h"
#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;
class SectionMap;

// Empty rows a table writes past the end of its report before it stops: a block that runs far
// beyond the report is an offset typed wrong, and its empty rows would only fill a disk.
inline constexpr std::int64_t kMaxRowsPastEnd = 65536;

class clsTable {
 public:
  int Number = 0;  // the section number it was read as ("Table n")
  int FirstRowWritten = 0;
  int LastRowWritten = 0;
  std::string ReadStartLine;
  int ReadStartLineOffset = 0;
  std::string ReadEndLine;
  int ReadEndLineOffset = 0;
  int TotalColumns = 0;
  std::vector<clsColumn> Columns;

  // Optional keys, after the fixed ones (empty / unset: not in the recipe). Row filters: which
  // lines of the block become rows. Pattern keys: the first line matching the pattern is the key
  // line, in place of the key text. Totals: lines that print the totals of the rows above them.
  std::optional<bool> SkipBlankLines;
  std::string SkipLinesMatching;
  std::string KeepLinesMatching;
  std::string ReadStartPattern;
  std::string ReadEndPattern;
  std::string TotalLinesMatching;

  // Opens the file, reads section "Table n" and its columns, closes it. False after a message.
  bool ReadFromFile(UiPort& ui, const std::string& path, int number);
  // `keys` holds every key of the file by section (for the optional keys); null reads none.
  bool ReadFromFileSequentially(UiPort& ui, TextFile& file, int number,
                                const SectionMap* keys = nullptr);
  void WriteToFile(PrivateProfile& file, int number) const;
  std::string PropertyPrint() const;

  // Runs the section: rows go to sheet 1 when ctx.sink holds cells, otherwise as CSV rows.
  void Process(Context& ctx);
};

}  // namespace kroveld
