// Writing a column field: its value for the current row into sheet 1, or quoted into a CSV row.
// The operator code and the column number are cached per column so that a row costs no string
// work beyond the field itself.
#include <cstring>

#include "engine/column.h"
#include "engine/context.h"
#include "util/byte_scan.h"
#include "util/column_letters.h"
#include "util/strings.h"

namespace kroveld {

namespace {

void ReportUnknownOperator(UiPort& ui, std::string_view op) {
  std::string text = "Unrecognized operator: ";
  text += op;
  text += " in clsColumn.OperatorCode!";
  ui.Message(text, Icon::Critical);
}

// Writes `value`, followed by one blank when `blankAfter`, at `out` in its CSV form: enclosed in
// double quotes when `field` found one or a comma, its double quotes doubled. `out` has room for
// 2 * (value.size() + 1) + 2 bytes; returns the new end.
[[gnu::always_inline]] inline char* PutQuoted(std::string_view value, const scan::CsvField& field,
                                              bool blankAfter, char* out) {
  if (!field.hasQuote) {
    // The usual field: copied as it stands, enclosed in quotes when it holds a comma.
    if (field.needsQuotes) *out++ = '"';
    out = scan::PutField(out, value.data(), value.size());
    if (blankAfter) *out++ = ' ';
    if (field.needsQuotes) *out++ = '"';
    return out;
  }
  *out++ = '"';
  for (const char c : value) {
    *out++ = c;
    if (c == '"') *out++ = '"';
  }
  if (blankAfter) *out++ = ' ';
  *out++ = '"';
  return out;
}

bool IsKnownOperator(std::string_view op) {
  return op.empty() || op == "SUM" || op == "FIRST" || op == "LAST" || op == "AVG";
}

}  // namespace

int clsColumn::OperatorCode(UiPort& ui, std::string& op) {
  op = UpperAscii(Trim(op));
  if (op == "SUM") return kOpSum;
  if (op == "FIRST") return kOpFirst;
  if (op.empty() || op == "LAST") return kOpLast;
  if (op == "AVG") return kOpLast;  // the average is not reachable through a name
  ReportUnknownOperator(ui, op);
  return kOpLast;
}

std::string_view clsColumn::FieldText(Context& ctx) {
  if (!operator_cached_ || PeriodOperator != cached_operator_) {
    operator_code_ = OperatorCode(ctx.ui, PeriodOperator);
    operator_unknown_ = !IsKnownOperator(PeriodOperator);
    cached_operator_ = PeriodOperator;
    operator_cached_ = true;
  } else if (operator_unknown_) {
    ReportUnknownOperator(ctx.ui, PeriodOperator);  // reported for every field, as when worked out
  }
  return ctx.lineProcessor.ProcessField(operator_code_, ReadColumnStart, ReadColumnEnd);
}

void clsColumn::WarnEqualSign(UiPort& ui) {
  ui.Beep();
  ui.Message("Error: Source Data field begin with Equal Sign! This may not be accepted by Excel!",
             Icon::Critical);
}

std::string_view clsColumn::Value(Context& ctx) {
  const std::string_view value = FieldText(ctx);
  if (scan::ScanCsvField(value).firstNonBlank == '=') WarnEqualSign(ctx.ui);
  return value;
}

void clsColumn::Process(Context& ctx, int row, std::int64_t reportLine) {
  const std::string_view value = Value(ctx);
  if (write_column_number_ == 0 || WriteColumn != cached_write_column_) {
    const int number = AlphaToNum2(ctx.ui, WriteColumn);
    write_column_number_ = number > 0 ? number : -1;
    cached_write_column_ = WriteColumn;
    if (number < 1) return;
  } else if (write_column_number_ < 1) {
    // A letter the helper refuses is refused again for every field, with its message; the
    // cell write to column 0 has nowhere to go.
    AlphaToNum2(ctx.ui, WriteColumn);
    return;
  }
  if (IsTyped()) {
    ctx.sink->SetValue(1, row, write_column_number_, Typed(value, reportLine, true).cell);
    return;
  }
  ctx.sink->SetCell(1, row, write_column_number_, value);
}

void clsColumn::AppendCsvValue(Context& ctx, std::string& out, std::int64_t reportLine) {
  std::string_view value = FieldText(ctx);
  scan::CsvField field = scan::ScanCsvField(value);
  if (field.firstNonBlank == '=') WarnEqualSign(ctx.ui);
  if (IsTyped()) {
    value = Typed(value, reportLine, false).csv;
    field = scan::ScanCsvField(value);
  }
  if (!field.needsQuotes) {
    out.append(value);  // the usual field, as it stands
    return;
  }
  const std::size_t at = out.size();
  out.resize(at + 2 * value.size() + 2);
  const char* const end = PutQuoted(value, field, false, out.data() + at);
  out.resize(static_cast<std::size_t>(end - out.data()));
}

int clsColumn::SingleFileSlot(const Context& ctx) const {
  if (!operator_cached_ || operator_unknown_ || PeriodOperator != cached_operator_) return 0;
  if (operator_code_ == kOpLast) return ctx.recipe.InputFileLast;
  if (operator_code_ == kOpFirst) return ctx.recipe.InputFileFirst;
  return 0;
}

char* clsColumn::PutCsvValue(std::string_view value, bool blankAfter, char* out, bool& equalSign) {
  const scan::CsvField field = scan::ScanCsvField(value);
  equalSign = field.firstNonBlank == '=';
  return PutQuoted(value, field, blankAfter, out);
}

std::string clsColumn::GetCsvValue(Context& ctx) {
  std::string out;
  AppendCsvValue(ctx, out);
  return out;
}

}  // namespace kroveld
