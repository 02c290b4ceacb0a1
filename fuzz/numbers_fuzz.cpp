// Fuzzes the numeric test and the number formats: any text is either refused or read, and a value
// that was read writes out in plain form as text that reads back to the same value; the grouped
// forms read back too, rounded to their decimals.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "util/numbers.h"

using namespace kroveld;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  static const NumberLocale c;  // '.', ',', "$"
  static const NumberLocale european = [] {
    NumberLocale l;
    l.decimal_point = ',';
    l.thousands_sep = '.';
    l.currency = "EUR";
    return l;
  }();
  for (const NumberLocale* loc : {&c, &european}) {
    Fixed4 v;
    const NumberParse parsed = ParseFixed(text, v, *loc);
    double d = 0;
    const bool numeric = ParseDouble(text, d, *loc);
    if (numeric != (parsed != NumberParse::kNotNumeric)) abort();
    if (IsNumeric(text, *loc) != numeric) abort();
    if (parsed != NumberParse::kOk) continue;

    std::string plain;
    AppendPlain(plain, v, *loc);
    Fixed4 back;
    if (ParseFixed(plain, back, *loc) != NumberParse::kOk || back.raw != v.raw) abort();

    for (int decimals : {0, 2}) {
      std::string grouped;
      AppendGrouped(grouped, v, decimals, *loc);
      Fixed4 g;
      if (ParseFixed(grouped, g, *loc) != NumberParse::kOk) abort();
      const std::int64_t step = decimals == 0 ? Fixed4::kScale : Fixed4::kScale / 100;
      if (g.raw % step != 0) abort();
      const std::int64_t diff = g.raw > v.raw ? g.raw - v.raw : v.raw - g.raw;
      if (diff > step / 2) abort();
    }
  }
  return 0;
}
