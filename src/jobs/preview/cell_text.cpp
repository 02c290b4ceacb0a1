#include "jobs/preview/cell_text.h"

#include <cmath>
#include <cstdio>

#include "engine/column_type.h"

namespace kroveld {

namespace {

// Without thousands separators, rounded half away from zero, the locale's decimal point.
std::string Fixed(double value, int decimals, const NumberLocale& loc) {
  const double scale = decimals == 2 ? 100.0 : 1.0;
  const double rounded = std::round(value * scale) / scale;
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, rounded == 0 ? 0.0 : rounded);
  std::string text(buffer);
  for (char& c : text) {
    if (c == '.') c = loc.decimal_point;
  }
  return text;
}

std::string Grouped(double value, int decimals, const NumberLocale& loc) {
  if (std::fabs(value) < 9e14) {
    return FormatGrouped(Fixed4{std::llround(value * Fixed4::kScale)}, decimals, loc);
  }
  return Fixed(value, decimals, loc);  // beyond fixed point: shown without separators
}

}  // namespace

std::string CellDisplayText(const CellView& cell, const NumberLocale& loc) {
  switch (cell.type) {
    case CellType::kEmpty:
      return {};
    case CellType::kText:
      return std::string(cell.text);
    case CellType::kNumber:
      break;
  }
  switch (cell.format) {
    case NumberFormat::kInteger:
      return Fixed(cell.number, 0, loc);
    case NumberFormat::kDecimal2:
      return Fixed(cell.number, 2, loc);
    case NumberFormat::kGroupedInteger:
      return Grouped(cell.number, 0, loc);
    case NumberFormat::kGroupedDecimal2:
      return Grouped(cell.number, 2, loc);
    case NumberFormat::kDate: {
      CivilDate date;
      if (!DateOfSerial(cell.number, date)) break;
      std::string text;
      AppendIsoDate(text, date);
      return text;
    }
    case NumberFormat::kGeneral:
      break;
  }
  return FormatPlainDouble(cell.number, loc);
}

}  // namespace kroveld
