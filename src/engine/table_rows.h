// Writes the rows of a table's block: each line of the block becomes one row of sheet 1 or one
// CSV row, cut into fields by the table's columns. Between rows the user interface gets its turn
// (status text, progress, the stop question); at the end sheet 1's write pointer moves below the
// rows and the table records its first and last row.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/context.h"
#include "engine/fast_csv_rows.h"

namespace kroveld {

class clsTable;
class RowRules;

class TableRowWriter {
 public:
  // The block runs from startLine to endLine (both at least 1). `rules`, when given, decides
  // which lines become rows and gives the carried columns their lines; it outlives the writer.
  TableRowWriter(Context& ctx, clsTable& table, std::int64_t startLine, std::int64_t endLine,
                 RowRules* rules = nullptr);

  // What the table does after a line.
  enum class Next {
    Row,   // go on with the next line
    Stop,  // the output is full: end the table keeping its rows
    Fail,  // the table failed (shown): end it without moving the write pointer
  };

  // The user interface's turn before line `lineNumber` is read. False when the user chose to
  // stop: the table ends keeping its rows. Most rows have nothing to show: that test is inline.
  bool Turn(std::int64_t lineNumber) {
    due_ = ctx_.ui.Due();
    if (!due_ && !ctx_.run.stopRequested.load(std::memory_order_relaxed)) return true;
    return TakeTurn(lineNumber);
  }
  // Line `lineNumber` of the block (empty past the end of the report) becomes a row, unless the
  // table's rules pass it over.
  Next Write(std::int64_t lineNumber, std::string_view line);
  // Before a message of the caller: slot 1 gets the line it is owed.
  void Settle();
  // Moves the write pointer below the rows, counts them and tells the observer.
  void Finish();

 private:
  bool TakeTurn(std::int64_t lineNumber);
  Next WriteThroughColumns(std::int64_t lineNumber, std::string_view line);

  Context& ctx_;
  clsTable& table_;
  const std::int64_t start_;
  const std::int64_t total_;
  const bool csv_;
  const int baseRow_;
  int rowIndex_ = 0;
  std::int64_t filtered_ = 0;  // lines of the block the row filters passed over
  bool due_ = false;           // this row shows a status text
  std::string csvLine_;
  std::string status_;
  FastCsvRows fast_;
  RowRules* rules_;
};

}  // namespace kroveld
