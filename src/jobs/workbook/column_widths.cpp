#include "jobs/workbook/column_widths.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kroveld {
namespace {

// Characters a number takes when shown in its format.
int ShownLength(double v, NumberFormat format) {
  char text[64];
  int n = 0;
  switch (format) {
    case NumberFormat::kInteger:
    case NumberFormat::kGroupedInteger:
      n = std::snprintf(text, sizeof text, "%.0f", v);
      break;
    case NumberFormat::kDecimal2:
    case NumberFormat::kGroupedDecimal2:
      n = std::snprintf(text, sizeof text, "%.2f", v);
      break;
    case NumberFormat::kDate:
      return 10;  // yyyy-mm-dd
    case NumberFormat::kGeneral:
      // General shows at most about eleven characters and switches to exponents beyond.
      n = std::min(11, std::snprintf(text, sizeof text, "%.10g", v));
      break;
  }
  if (n < 0 || n >= static_cast<int>(sizeof text)) return 11;
  if (format == NumberFormat::kGroupedInteger || format == NumberFormat::kGroupedDecimal2) {
    int digits = 0;
    for (int i = 0; i < n && text[i] != '.'; ++i) digits += text[i] >= '0' && text[i] <= '9';
    n += digits > 0 ? (digits - 1) / 3 : 0;
  }
  return n;
}

// Characters of UTF-8 text (code points; a line break ends what the cell shows on one line).
int ShownLength(std::string_view text) {
  int longest = 0, line = 0;
  for (const char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    if (c == '\n') {
      longest = std::max(longest, line);
      line = 0;
    } else if ((c & 0xC0) != 0x80) {
      ++line;
    }
  }
  return std::max(longest, line);
}

}  // namespace

std::vector<double> ColumnWidths(const Sheet& sheet) {
  std::vector<int> longest(static_cast<std::size_t>(sheet.MaxColumn()), -1);
  for (int r = 1; r <= sheet.MaxRow(); ++r) {
    const int length = sheet.RowLength(r);
    for (int c = 1; c <= length; ++c) {
      const CellView cell = sheet.Get(r, c);
      int shown = -1;
      if (cell.type == CellType::kNumber) shown = ShownLength(cell.number, cell.format);
      if (cell.type == CellType::kText) shown = ShownLength(cell.text);
      longest[c - 1] = std::max(longest[c - 1], shown);
    }
  }
  std::vector<double> widths(longest.size(), 0);
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const double kept = sheet.KeptWidth(static_cast<int>(i) + 1);
    if (kept > 0) {
      widths[i] = kept;
    } else if (longest[i] >= 0) {
      // One character of margin, so a value never touches the next column.
      widths[i] =
          std::clamp(static_cast<double>(longest[i] + 1), kDefaultColumnWidth, kMaxColumnWidth);
    }
  }
  return widths;
}

}  // namespace kroveld
