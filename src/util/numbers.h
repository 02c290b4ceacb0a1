// Numbers as they are read from reports and writes them to cells: a locale-aware numeric
// test, 64-bit fixed point with four decimals (money that does not drift), the shortest plain
// text, and the "#,##0" / "#,##0.00" formats. No heap allocation per call.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kroveld {

// The decimal point, thousands separator and currency symbol of the user's locale
// (LC_NUMERIC, LC_MONETARY). The C/POSIX locale gives '.', ',' and "$".
struct NumberLocale {
  char decimal_point = '.';
  char thousands_sep = ',';
  std::string currency = "$";
  // Reads the process's current locale settings (call after setlocale(LC_ALL, "")).
  static NumberLocale FromEnvironment();
  static const NumberLocale& Current();
};

// A fixed-point value: the number times 10000.
struct Fixed4 {
  std::int64_t raw = 0;
  static constexpr std::int64_t kScale = 10000;
};

enum class NumberParse { kNotNumeric, kOk, kOverflow };

// The numeric test: surrounding blanks; a leading or trailing sign; a negative in parentheses;
// the locale's thousands separators and decimal point; a currency symbol before or after the
// digits; an exponent (E or e). Blank-only text is not numeric. More than four decimals are
// rounded half away from zero. kOverflow when the value does not fit the fixed-point range.
NumberParse ParseFixed(std::string_view text, Fixed4& out,
                       const NumberLocale& loc = NumberLocale::Current());
// True for kOk and kOverflow (the text is a number even if it does not fit).
bool IsNumeric(std::string_view text, const NumberLocale& loc = NumberLocale::Current());
// The same test yielding a double (for cells), false when not numeric.
bool ParseDouble(std::string_view text, double& out,
                 const NumberLocale& loc = NumberLocale::Current());

// a + b; false on overflow (out unchanged).
bool AddFixed(Fixed4 a, Fixed4 b, Fixed4& out);

// Shortest plain text: no thousands separators, no trailing zeros, locale decimal point.
void AppendPlain(std::string& out, Fixed4 v, const NumberLocale& loc = NumberLocale::Current());
// A numeric text in plain form with the decimals it was printed with: a leading minus, no
// padding, no leading zeros, no thousands separators, no currency, `point` as the decimal point
// ("  1,554.70-" -> "-1554.70", "(12.00)" -> "-12.00", "$0.50" -> "0.50", "1.5E3" -> "1500").
// A zero never carries a minus. False (nothing appended) when the text is not numeric, or its
// exponent takes it beyond the range of a spreadsheet number.
bool AppendPlainAsPrinted(std::string& out, std::string_view text, char point = '.',
                          const NumberLocale& loc = NumberLocale::Current());
// A double in the shortest plain form that reads back the same (used for averages).
std::string FormatPlainDouble(double v, const NumberLocale& loc = NumberLocale::Current());

// "#,##0" (decimals 0) and "#,##0.00" (decimals 2): rounded half away from zero, thousands
// separators, a leading minus for negatives.
void AppendGrouped(std::string& out, Fixed4 v, int decimals,
                   const NumberLocale& loc = NumberLocale::Current());
std::string FormatGrouped(Fixed4 v, int decimals,
                          const NumberLocale& loc = NumberLocale::Current());
// A whole count with thousands separators: 1234567 -> "1,234,567".
std::string FormatGroupedCount(std::int64_t n, const NumberLocale& loc = NumberLocale::Current());

}  // namespace kroveld
