// A column field: which character positions of an input line form one value, which spreadsheet
// column it goes to, and how the same field of several input files is combined. Process writes
// the value into sheet 1; GetCsvValue returns it quoted for a CSV row.
#pragma once

#include <string>
#include <string_view>

#include "util/private_profile.h"
#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;

// Multi-file operator codes understood by the line processor.
enum OperatorCodes { kOpLast = 0, kOpFirst = 1, kOpSum = 2, kOpAverage = 3 };

class clsColumn {
 public:
  int ReadColumnStart = 0;
  int ReadColumnEnd = 0;
  std::string WriteColumn;
  std::string PeriodOperator;

  // Reads section "Table t Col c" from the open file (keys in order ReadColumnStart,
  // ReadColumnEnd, WriteColumn, PeriodOperator) and validates; false after a message.
  bool ReadFromFileSequentially(UiPort& ui, TextFile& file, int tableNumber, int columnNumber);
  void WriteToFile(PrivateProfile& file, int tableNumber, int columnNumber) const;
  std::string PropertyPrint() const;

  // Writes the field of the line now in the row buffer to sheet 1 at `row`.
  void Process(Context& ctx, int row);
  // Appends the field, quoted for CSV, to `out` (no allocation in the usual case).
  void AppendCsvValue(Context& ctx, std::string& out);
  std::string GetCsvValue(Context& ctx);

  // Trims and upper-cases the operator in place and maps it: SUM 2, FIRST 1, blank/LAST/AVG 0;
  // anything else shows "Unrecognized operator: ... in clsColumn.OperatorCode!" and gives 0.
  int OperatorCode(UiPort& ui, std::string& op);

 private:
  // The field value for the current row, after the equal-sign warning.
  std::string_view Value(Context& ctx);
  // The field value for the current row (operator worked out, unknown ones reported), no warning.
  std::string_view FieldText(Context& ctx);
  static void WarnEqualSign(UiPort& ui);
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
