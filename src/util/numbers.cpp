// The numeric test and the fixed-point arithmetic and formats of report numbers.
#include "util/numbers.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <limits>

namespace kroveld {

namespace {

constexpr std::int64_t kMaxRaw = std::numeric_limits<std::int64_t>::max();
constexpr int kKeptDigits = 24;  // enough to decide the fixed-point value and its rounding

inline bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
inline bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

// A number as read: its significant digits (without leading zeros) and the position of the
// decimal point relative to the first of them: value = 0.d1d2d3... * 10^point.
struct Scanned {
  bool negative = false;
  bool zero = true;
  char digits[kKeptDigits];
  int count = 0;  // digits kept
  long long point = 0;
  long long printedDecimals = 0;  // digits after the decimal point as printed
  long long exponent = 0;
};

bool StartsWith(std::string_view s, std::string_view p) {
  return !p.empty() && s.size() >= p.size() && s.substr(0, p.size()) == p;
}
bool EndsWith(std::string_view s, std::string_view p) {
  return !p.empty() && s.size() >= p.size() && s.substr(s.size() - p.size()) == p;
}

// The digits part: digits with thousands separators between digits, one decimal point, and an
// optional exponent.
bool ScanBody(std::string_view s, const NumberLocale& loc, Scanned& out) {
  std::size_t i = 0;
  const std::size_t n = s.size();
  long long int_sig = 0;     // significant digits before the point
  long long lead_frac0 = 0;  // zeros after the point before the first significant digit
  bool any_digit = false;
  bool in_frac = false;
  const bool group_ok = loc.thousands_sep != loc.decimal_point;
  for (; i < n; ++i) {
    const char c = s[i];
    if (IsDigit(c)) {
      any_digit = true;
      if (in_frac) ++out.printedDecimals;
      if (out.zero && c == '0') {
        if (in_frac) ++lead_frac0;
        continue;
      }
      out.zero = false;
      if (out.count < kKeptDigits) out.digits[out.count++] = c;
      if (!in_frac) ++int_sig;
      continue;
    }
    if (c == loc.decimal_point && !in_frac) {
      in_frac = true;
      continue;
    }
    if (group_ok && c == loc.thousands_sep && !in_frac) {
      // Only between two digits.
      if (i == 0 || !IsDigit(s[i - 1]) || i + 1 >= n || !IsDigit(s[i + 1])) return false;
      continue;
    }
    break;
  }
  if (!any_digit) return false;
  long long exponent = 0;
  if (i < n) {
    if (s[i] != 'E' && s[i] != 'e') return false;
    ++i;
    bool exp_neg = false;
    if (i < n && (s[i] == '+' || s[i] == '-')) {
      exp_neg = s[i] == '-';
      ++i;
    }
    if (i >= n) return false;
    for (; i < n; ++i) {
      if (!IsDigit(s[i])) return false;
      if (exponent < 100000) exponent = exponent * 10 + (s[i] - '0');
    }
    if (exp_neg) exponent = -exponent;
  }
  out.point = (int_sig > 0 ? int_sig : -lead_frac0) + exponent;
  out.exponent = exponent;
  return true;
}

// The whole numeric test: blanks, sign (leading or trailing), parentheses, currency symbol.
bool Scan(std::string_view text, const NumberLocale& loc, Scanned& out) {
  std::string_view s = TrimBlanks(text);
  if (s.empty()) return false;
  bool paren = false;
  if (s.front() == '(') {
    if (s.size() < 2 || s.back() != ')') return false;
    paren = true;
    s = TrimBlanks(s.substr(1, s.size() - 2));
  }
  bool sign_seen = false;
  bool currency_seen = false;
  const std::string_view cur = loc.currency;
  // Leading sign and currency, in either order.
  for (int round = 0; round < 2; ++round) {
    if (!sign_seen && !s.empty() && (s.front() == '+' || s.front() == '-')) {
      sign_seen = true;
      out.negative = s.front() == '-';
      s = TrimBlanks(s.substr(1));
    } else if (!currency_seen && StartsWith(s, cur)) {
      currency_seen = true;
      s = TrimBlanks(s.substr(cur.size()));
    }
  }
  // Trailing sign and currency, in either order.
  for (int round = 0; round < 2; ++round) {
    if (!sign_seen && !s.empty() && (s.back() == '+' || s.back() == '-')) {
      sign_seen = true;
      out.negative = s.back() == '-';
      s = TrimBlanks(s.substr(0, s.size() - 1));
    } else if (!currency_seen && EndsWith(s, cur)) {
      currency_seen = true;
      s = TrimBlanks(s.substr(0, s.size() - cur.size()));
    }
  }
  if (paren) {
    if (sign_seen) return false;
    out.negative = true;
  }
  if (s.empty()) return false;
  return ScanBody(s, loc, out);
}

// Appends the magnitude with thousands separators every three digits.
void AppendGroupedInt(std::string& out, std::uint64_t v, char sep) {
  char buf[32];
  auto res = std::to_chars(buf, buf + sizeof buf, v);
  const int len = static_cast<int>(res.ptr - buf);
  for (int i = 0; i < len; ++i) {
    if (i > 0 && (len - i) % 3 == 0) out.push_back(sep);
    out.push_back(buf[i]);
  }
}

std::uint64_t Magnitude(std::int64_t raw) {
  return raw < 0 ? static_cast<std::uint64_t>(-(raw + 1)) + 1 : static_cast<std::uint64_t>(raw);
}

}  // namespace

NumberLocale NumberLocale::FromEnvironment() {
  NumberLocale loc;
  const std::lconv* lc = std::localeconv();
  if (lc == nullptr) return loc;
  if (lc->decimal_point != nullptr && lc->decimal_point[0] != '\0' &&
      lc->decimal_point[1] == '\0') {
    loc.decimal_point = lc->decimal_point[0];
  }
  const char* ts = lc->thousands_sep;
  if (ts != nullptr && ts[0] != '\0') {
    // A separator of more than one byte (a narrow no-break space in UTF-8) reads as a blank.
    loc.thousands_sep = ts[1] == '\0' ? ts[0] : ' ';
  } else {
    loc.thousands_sep = loc.decimal_point == ',' ? '.' : ',';
  }
  if (lc->currency_symbol != nullptr && lc->currency_symbol[0] != '\0') {
    loc.currency = lc->currency_symbol;
  }
  return loc;
}

const NumberLocale& NumberLocale::Current() {
  static const NumberLocale loc = FromEnvironment();
  return loc;
}

NumberParse ParseFixed(std::string_view text, Fixed4& out, const NumberLocale& loc) {
  Scanned s;
  if (!Scan(text, loc, s)) return NumberParse::kNotNumeric;
  if (s.zero) {
    out.raw = 0;
    return NumberParse::kOk;
  }
  // The scaled value has point + 4 integer digits.
  const long long int_digits = s.point + 4;
  if (int_digits > 19) return NumberParse::kOverflow;
  if (int_digits < 0) {
    out.raw = 0;
    return NumberParse::kOk;
  }
  unsigned __int128 v = 0;
  for (long long i = 0; i < int_digits; ++i) {
    v = v * 10 + static_cast<unsigned>(i < s.count ? s.digits[i] - '0' : 0);
  }
  // Half away from zero on the magnitude.
  if (int_digits < s.count && s.digits[int_digits] >= '5') v += 1;
  if (v > static_cast<unsigned __int128>(kMaxRaw)) return NumberParse::kOverflow;
  const auto raw = static_cast<std::int64_t>(v);
  out.raw = s.negative ? -raw : raw;
  return NumberParse::kOk;
}

bool IsNumeric(std::string_view text, const NumberLocale& loc) {
  Scanned s;
  return Scan(text, loc, s);
}

bool ParseDouble(std::string_view text, double& out, const NumberLocale& loc) {
  Scanned s;
  if (!Scan(text, loc, s)) return false;
  if (s.zero) {
    out = 0.0;
    return true;
  }
  // "0.<digits>e<point>" on the stack, read back by from_chars.
  char buf[kKeptDigits + 32];
  char* p = buf;
  *p++ = '0';
  *p++ = '.';
  for (int i = 0; i < s.count; ++i) *p++ = s.digits[i];
  *p++ = 'e';
  p = std::to_chars(p, buf + sizeof buf, s.point).ptr;
  double v = 0;
  const auto res = std::from_chars(buf, p, v);
  if (res.ec == std::errc::result_out_of_range) {
    v = s.point > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  } else if (res.ec != std::errc()) {
    return false;
  }
  out = s.negative ? -v : v;
  return true;
}

bool AppendPlainAsPrinted(std::string& out, std::string_view text, char point,
                          const NumberLocale& loc) {
  Scanned s;
  if (!Scan(text, loc, s)) return false;
  // value = 0.d1d2d3... * 10^point; the digit k places after the decimal point is d(point + k).
  const long long decimals = std::max(0LL, s.printedDecimals - s.exponent);
  // Beyond what a spreadsheet number holds ("1E99999"): not a number one can write out.
  if (s.point > 309 || decimals > 330) return false;
  auto digit = [&s](long long i) { return i >= 0 && i < s.count ? s.digits[i] : '0'; };
  if (!s.zero && s.negative) out.push_back('-');
  if (s.zero || s.point <= 0) {
    out.push_back('0');
  } else {
    for (long long i = 0; i < s.point; ++i) out.push_back(digit(i));
  }
  if (decimals > 0) {
    out.push_back(point);
    for (long long k = 1; k <= decimals; ++k) out.push_back(s.zero ? '0' : digit(s.point + k - 1));
  }
  return true;
}

bool AddFixed(Fixed4 a, Fixed4 b, Fixed4& out) {
  std::int64_t r;
  if (__builtin_add_overflow(a.raw, b.raw, &r)) return false;
  if (r == std::numeric_limits<std::int64_t>::min()) return false;
  out.raw = r;
  return true;
}

void AppendPlain(std::string& out, Fixed4 v, const NumberLocale& loc) {
  const std::uint64_t mag = Magnitude(v.raw);
  if (v.raw < 0) out.push_back('-');
  char buf[32];
  auto res = std::to_chars(buf, buf + sizeof buf, mag / Fixed4::kScale);
  out.append(buf, res.ptr);
  std::uint64_t frac = mag % Fixed4::kScale;
  if (frac == 0) return;
  out.push_back(loc.decimal_point);
  char digits[4];
  for (int i = 3; i >= 0; --i) {
    digits[i] = static_cast<char>('0' + frac % 10);
    frac /= 10;
  }
  int len = 4;
  while (len > 0 && digits[len - 1] == '0') --len;
  out.append(digits, static_cast<std::size_t>(len));
}

std::string FormatPlainDouble(double v, const NumberLocale& loc) {
  if (v == 0.0) return "0";  // also for -0
  char buf[1200];
  auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed);
  if (res.ec != std::errc()) res = std::to_chars(buf, buf + sizeof buf, v);
  std::string s(buf, res.ptr);
  for (char& c : s) {
    if (c == '.') c = loc.decimal_point;
  }
  return s;
}

void AppendGrouped(std::string& out, Fixed4 v, int decimals, const NumberLocale& loc) {
  if (decimals < 0) decimals = 0;
  if (decimals > 4) decimals = 4;
  std::uint64_t unit = 1;
  for (int i = decimals; i < 4; ++i) unit *= 10;
  const std::uint64_t mag = Magnitude(v.raw);
  const std::uint64_t rounded = mag / unit + (mag % unit >= unit / 2 && unit > 1 ? 1 : 0);
  std::uint64_t scale = 1;
  for (int i = 0; i < decimals; ++i) scale *= 10;
  if (v.raw < 0 && rounded != 0) out.push_back('-');
  AppendGroupedInt(out, rounded / scale, loc.thousands_sep);
  if (decimals > 0) {
    out.push_back(loc.decimal_point);
    std::uint64_t frac = rounded % scale;
    char digits[4];
    for (int i = decimals - 1; i >= 0; --i) {
      digits[i] = static_cast<char>('0' + frac % 10);
      frac /= 10;
    }
    out.append(digits, static_cast<std::size_t>(decimals));
  }
}

std::string FormatGrouped(Fixed4 v, int decimals, const NumberLocale& loc) {
  std::string s;
  AppendGrouped(s, v, decimals, loc);
  return s;
}

std::string FormatGroupedCount(std::int64_t n, const NumberLocale& loc) {
  return FormatGrouped(Fixed4{n * Fixed4::kScale}, 0, loc);
}

}  // namespace kroveld
