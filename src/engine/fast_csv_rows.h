// The quick way of writing a table's CSV rows: when every column reads slot 1 with a known
// operator, the fields are cut straight from the line as read (the blank that ReadRowPeriod1Only
// would append supplied on the fly) and written quoted into one reused row buffer, the line looked
// over once for the bytes that need quotes rather than field by field. Slot 1 itself
// is given the line only when something outside the table could look at it: before any call to
// the user interface, and at the end.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/column.h"

namespace kroveld {

class Context;
class RowRules;

class FastCsvRows {
 public:
  FastCsvRows();
  ~FastCsvRows();
  FastCsvRows(const FastCsvRows&) = delete;
  FastCsvRows& operator=(const FastCsvRows&) = delete;

  // Cuts `line` into a CSV row, returned in `row` (valid until the next call). False when the row
  // must go through the line processor instead (a column that needs it, or a tab to expand).
  // `lineNumber` is the report line, for the note on values a typed column keeps as text. With
  // `rules`, the columns that carry are cut from their carried lines.
  bool Cut(Context& ctx, std::vector<clsColumn>& columns, std::string_view line,
           std::int64_t lineNumber, std::string_view& row, const RowRules* rules = nullptr);
  // Gives slot 1 the line it still owes it, and plans the columns again afterwards: to be called
  // before the user interface has its turn and when the table ends.
  void Settle(Context& ctx);
  // The row went through the line processor, which filled slot 1 itself.
  void Drop() { has_pending_ = false; }

 private:
  // Where one column is cut: bytes [from, from + width) of the line as slot 1 would hold it,
  // clipped to it.
  struct ColumnCut {
    long long from = 0;
    long long width = 0;
    clsColumn* typed = nullptr;  // the column, when it has a Type: its value is converted
    bool carried = false;        // cut from the column's carried line, not the current one
  };
  struct LineMarks;  // where a line holds the bytes that matter to its fields
  // A column cut from a carried line, written once per carried line rather than once per row.
  struct CarriedField {
    std::string text;        // the field as the row holds it (without its comma)
    bool equalSign = false;  // its first character that is not a blank is "="
  };
  void CutCarried(const RowRules& rules);
  bool Plan(const Context& ctx, std::vector<clsColumn>& columns, const RowRules* rules);
  std::string_view WriteRow(Context& ctx, std::string_view current, std::int64_t lineNumber,
                            const LineMarks* marks, const RowRules* rules, bool& warned);

  std::vector<ColumnCut> cuts_;
  bool carries_ = false;        // some column is cut from a carried line
  long long widest_ = 0;        // the widths of all cuts together: no row is longer than twice that
  std::size_t typed_room_ = 0;  // row room the converted values may need beyond their fields
  std::unique_ptr<LineMarks> marks_;
  std::vector<CarriedField> carried_;  // per column; used for the untyped carried ones
  std::uint64_t carriedVersion_ = 0;
  bool carriedCut_ = false;  // carried_ holds the fields of the carried lines of that version
  std::string row_;
  bool planned_ = false;  // whether cuts_ and fast_ reflect the columns
  bool fast_ = false;
  std::string_view pending_;  // the line that slot 1 is still to receive
  bool has_pending_ = false;
};

}  // namespace kroveld
