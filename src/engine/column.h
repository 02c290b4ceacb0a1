// A column field: which character positions of an input line form one value, which spreadsheet
// column it goes to, and how the same field of several input files is combined. Process writes
// the value into sheet 1; GetCsvValue returns it quoted for a CSV row.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/column_type.h"
#include "util/private_profile.h"
#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;
class SectionMap;

// Multi-file operator codes understood by the line processor.
enum OperatorCodes { kOpLast = 0, kOpFirst = 1, kOpSum = 2, kOpAverage = 3 };

class clsColumn {
 public:
  int ReadColumnStart = 0;
  int ReadColumnEnd = 0;
  std::string WriteColumn;
  std::string PeriodOperator;
  // Optional: a pattern. The column then cuts its positions from the latest line of the block
  // (the current one included) that matched it, not from the current line.
  std::string CarryFrom;
  // Optional: what the field holds ("Number", "Text" or "Date", as written in the recipe) and, for
  // a date, its layout ("MM/DD/YYYY"). Empty when not given: the field is written as it stands.
  std::string Type;
  std::string DateFormat;

  // Reads section "Table t Col c" from the open file (keys in order ReadColumnStart,
  // ReadColumnEnd, WriteColumn, PeriodOperator) and validates; false after a message.
  bool ReadFromFileSequentially(UiPort& ui, TextFile& file, int tableNumber, int columnNumber,
                                const SectionMap* keys = nullptr);
  void WriteToFile(PrivateProfile& file, int tableNumber, int columnNumber) const;
  std::string PropertyPrint() const;

  // Writes the field of the line now in the row buffer to sheet 1 at `row`. `reportLine` is the
  // line of the report it came from (for the note on values of a typed column kept as text).
  void Process(Context& ctx, int row, std::int64_t reportLine = 0);
  // Appends the field, quoted for CSV, to `out` (no allocation in the usual case).
  void AppendCsvValue(Context& ctx, std::string& out, std::int64_t reportLine = 0);
  std::string GetCsvValue(Context& ctx);

  // Trims and upper-cases the operator in place and maps it: SUM 2, FIRST 1, blank/LAST/AVG 0;
  // anything else shows "Unrecognized operator: ... in clsColumn.OperatorCode!" and gives 0.
  int OperatorCode(UiPort& ui, std::string& op);

  // For the table's CSV fast path. When this column's operator has been worked out already, is
  // a known one, and reads a single input file (codes 0 and 1), the number of that file (the
  // recipe's InputFileLast or InputFileFirst); 0 otherwise, and the field must go through
  // AppendCsvValue (which also reports an unknown operator).
  int SingleFileSlot(const Context& ctx) const;
  // Writes `value`, followed by one blank when `blankAfter`, quoted for CSV at `out`, which has
  // room for 2 * (value.size() + 1) + 2 bytes; returns the new end. `equalSign` is set when the
  // first character that is not a blank is "=" (the caller then shows WarnEqualSign).
  static char* PutCsvValue(std::string_view value, bool blankAfter, char* out, bool& equalSign);
  static void WarnEqualSign(UiPort& ui);

  // Whether the column has a Type: its values are converted, and it keeps its place in a CSV row
  // even when empty.
  bool IsTyped() const { return converter_.Type() != ColumnType::kNone; }
  // Before a table's rows: forgets the values kept as text by the last run. After them: one note
  // (exclamation) when some were, naming the first and its line.
  void StartTypedValues() { kept_as_text_ = KeptAsTextTally(); }
  // Gives the column a Type and DateFormat (empty: none) as a recipe would, with the same checks
  // and messages ("Error in <section> : ..."); false, leaving the column as it was, after one.
  bool SetType(UiPort& ui, std::string_view type, std::string_view dateFormat,
               const std::string& section);
  void NoteKeptAsText(UiPort& ui, int tableNumber, int columnNumber) const;
  // For the table's fast CSV path: the CSV text (unquoted; at most the longer of `value` and
  // kLongestTypedCsv) of a typed column's field `value` cut from report line `reportLine`, noted
  // when kept as text; valid until the next call.
  std::string_view TypedCsv(std::string_view value, std::int64_t reportLine) {
    return Typed(value, reportLine, false).csv;
  }

 private:
  // The field value for the current row, after the equal-sign warning.
  std::string_view Value(Context& ctx);
  // The field value for the current row (operator worked out, unknown ones reported), no warning.
  std::string_view FieldText(Context& ctx);
  // Type and DateFormat from the section's optional keys; false after a message.
  bool ReadTypeKeys(UiPort& ui, const SectionMap& keys, const std::string& section);
  void WriteTypeKeys(PrivateProfile& file, const std::string& section) const;
  void PrintTypeKeys(std::string& out) const;
  // The typed value of a field, noting it when kept as text.
  TypedField Typed(std::string_view value, std::int64_t reportLine, bool forCell);
  ColumnConverter converter_;
  KeptAsTextTally kept_as_text_;
  int write_column_number_ = 0;  // cached column number of WriteColumn (0: not yet worked out)
  // The operator code and column number are worked out again only when the texts they came from
  // change; an unknown operator is still reported for every field.
  std::string cached_operator_;
  int operator_code_ = 0;
  bool operator_cached_ = false;
  bool operator_unknown_ = false;
  std::string cached_write_column_;
};

}  // namespace kroveld
