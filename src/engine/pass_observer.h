// What a conversion pass can tell a watcher about its work: which section runs, where each table
// found its key texts and its block of lines, and where each title landed. The pass calls it only
// when the context holds an observer (the preview does; a conversion does not), once per section,
// never per row, so a conversion without one runs exactly as before.
#pragma once

#include <cstdint>
#include <string_view>

namespace kroveld {

class clsTable;
class clsTitle;

// Where a table's key texts were found, in lines of the input counted from 1.
struct TableBlock {
  std::int64_t topKeyLine = 0;     // first line holding the top key text; 0 when not found
  std::int64_t bottomKeyLine = 0;  // first line holding the bottom key text; 0 when not found
  // The block after the offsets; both 0 unless both keys were found.
  std::int64_t startLine = 0;
  std::int64_t endLine = 0;
};

class PassObserver {
 public:
  virtual ~PassObserver() = default;

  // The pass is about to run section `number` (from 1) of `kind`: "Title", "Table" or
  // "Consolidate". Everything reported until the next call belongs to that section.
  virtual void SectionStarts(std::string_view kind, int number) = 0;
  // The table searched its key texts (called whether or not they were found).
  virtual void TableKeysSearched(const clsTable& table, const TableBlock& block) = 0;
  // The table wrote its rows: sheet 1 rows firstRow..lastRow (lastRow < firstRow: none).
  virtual void TableRowsWritten(const clsTable& table, int firstRow, int lastRow) = 0;
  // The table's row filters passed over `lines` lines of its block (called after TableRowsWritten,
  // only for a table with row filters).
  virtual void TableLinesFiltered(const clsTable& /*table*/, std::int64_t /*lines*/) {}
  // The title wrote its lines from row `firstRow` of its sheet.
  virtual void TitleWritten(const clsTitle& title, int firstRow) = 0;
};

}  // namespace kroveld
