// Writing a column field: its value for the current row into sheet 1, or quoted into a CSV row.
// The operator code and the column number are cached per column so that a row costs no string
// work beyond the field itself.
#include <bit>
#include <cstdint>
#include <cstring>

#include "engine/column.h"
#include "engine/context.h"
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

// Field scans run for every field of every row, so they look at eight bytes at a time.
constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
constexpr std::uint64_t kHighs = 0x8080808080808080ULL;

inline std::uint64_t Load8(const char* p) {
  std::uint64_t v;
  std::memcpy(&v, p, 8);
  return v;
}
// Non-zero when some byte of v is zero.
inline std::uint64_t HasZeroByte(std::uint64_t v) {
  return (v - kOnes) & ~v & kHighs;
}

// True when the field holds a double quote or a comma.
bool NeedsQuotes(std::string_view value) {
  const char* p = value.data();
  std::size_t n = value.size();
  for (; n >= 8; p += 8, n -= 8) {
    const std::uint64_t v = Load8(p);
    if (HasZeroByte(v ^ (kOnes * '"')) | HasZeroByte(v ^ (kOnes * ','))) return true;
  }
  for (; n > 0; ++p, --n) {
    if (*p == '"' || *p == ',') return true;
  }
  return false;
}

// The first character that is not a blank, or 0 when there is none.
char FirstNonBlank(std::string_view value) {
  const char* p = value.data();
  std::size_t n = value.size();
  for (; n >= 8; p += 8, n -= 8) {
    const std::uint64_t other = Load8(p) ^ (kOnes * ' ');
    if (other != 0) {
      if constexpr (std::endian::native == std::endian::little) {
        return p[std::countr_zero(other) / 8];
      }
      break;
    }
  }
  for (; n > 0; ++p, --n) {
    if (*p != ' ') return *p;
  }
  return 0;
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

std::string_view clsColumn::Value(Context& ctx) {
  UiPort& ui = ctx.ui;
  if (!operator_cached_ || PeriodOperator != cached_operator_) {
    operator_code_ = OperatorCode(ui, PeriodOperator);
    operator_unknown_ = !IsKnownOperator(PeriodOperator);
    cached_operator_ = PeriodOperator;
    operator_cached_ = true;
  } else if (operator_unknown_) {
    ReportUnknownOperator(ui, PeriodOperator);  // reported for every field, as when worked out
  }

  const std::string_view value =
      ctx.lineProcessor.ProcessField(operator_code_, ReadColumnStart, ReadColumnEnd);
  if (FirstNonBlank(value) == '=') {
    ui.Beep();
    ui.Message("Error: Source Data field begin with Equal Sign! This may not be accepted by Excel!",
               Icon::Critical);
  }
  return value;
}

void clsColumn::Process(Context& ctx, int row) {
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
  ctx.sink->SetCell(1, row, write_column_number_, value);
}

void clsColumn::AppendCsvValue(Context& ctx, std::string& out) {
  const std::string_view value = Value(ctx);
  if (!NeedsQuotes(value)) {
    out.append(value);
    return;
  }
  out.push_back('"');
  std::string_view rest = value;
  for (std::size_t quote; (quote = rest.find('"')) != std::string_view::npos;) {
    out.append(rest.substr(0, quote + 1));
    out.push_back('"');
    rest.remove_prefix(quote + 1);
  }
  out.append(rest);
  out.push_back('"');
}

std::string clsColumn::GetCsvValue(Context& ctx) {
  std::string out;
  AppendCsvValue(ctx, out);
  return out;
}

}  // namespace kroveld
