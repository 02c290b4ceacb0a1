// Typing of cell texts: the locale-aware numeric test decides number or text; the look of the text
// (thousands separators, decimals) chooses the number format.
#include "jobs/workbook/cell_typing.h"

#include <cmath>

namespace kroveld {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

TypedCell TypeCellText(std::string_view text, const NumberLocale& loc) {
  TypedCell cell;
  if (text.empty()) return cell;
  cell.type = CellType::kText;
  double value = 0;
  if (!ParseDouble(text, value, loc) || !std::isfinite(value)) return cell;

  const std::size_t first_digit = text.find_first_of("0123456789");
  if (first_digit == std::string_view::npos) return cell;
  const std::size_t point = text.find(loc.decimal_point);
  // Account codes and other zero-padded numbers stay text; "0", "0.5" and ".05" are numbers
  // (zeros after the decimal point pad nothing).
  const bool in_integer_part = point == std::string_view::npos || first_digit < point;
  if (in_integer_part && text[first_digit] == '0' && first_digit + 1 < text.size()) {
    const char next = text[first_digit + 1];
    if (IsDigit(next) || (loc.thousands_sep != '\0' && next == loc.thousands_sep)) return cell;
  }

  cell.type = CellType::kNumber;
  cell.number = value == 0 ? 0.0 : value;  // no "-0"
  cell.format = FormatOfNumberText(text, loc);
  return cell;
}

NumberFormat FormatOfNumberText(std::string_view text, const NumberLocale& loc) {
  const std::size_t point = text.find(loc.decimal_point);
  const bool exponent = text.find_first_of("eE") != std::string_view::npos;
  const bool grouped = loc.thousands_sep != '\0' &&
                       text.substr(0, point).find(loc.thousands_sep) != std::string_view::npos;
  int decimals = 0;
  if (point != std::string_view::npos) {
    for (std::size_t i = point + 1; i < text.size() && IsDigit(text[i]); ++i) ++decimals;
  }
  if (exponent) return NumberFormat::kGeneral;
  if (grouped) {
    return decimals == 0   ? NumberFormat::kGroupedInteger
           : decimals <= 2 ? NumberFormat::kGroupedDecimal2
                           : NumberFormat::kGeneral;
  }
  return decimals == 2 ? NumberFormat::kDecimal2 : NumberFormat::kGeneral;
}

}  // namespace kroveld
