// Reading typed fields: numbers by the locale-aware numeric test, dates by the column's layout,
// text trimmed; and the spreadsheet's serial day numbers.
#include "engine/column_type.h"

#include <cmath>

#include "util/numbers.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// Blanks and tabs (a tab stays in a field when tab expansion is off).
std::string_view TrimField(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsDateSeparator(char c) {
  return c == '.' || c == '/' || c == '-' || c == ' ';
}

bool IsLeapYear(int y) {
  return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}
int DaysInMonth(int y, int m) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && IsLeapYear(y) ? 29 : kDays[m - 1];
}

// Days since 1970-01-01 of a proleptic Gregorian date, and back.
long DaysFromCivil(int y, int m, int d) {
  y -= m <= 2 ? 1 : 0;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const long yoe = y - era * 400;
  const long doy = (153L * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}
CivilDate CivilFromDays(long z) {
  z += 719468;
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const long doe = z - era * 146097;
  const long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const long mp = (5 * doy + 2) / 153;
  CivilDate out;
  out.day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  out.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  out.year = static_cast<int>(yoe + era * 400 + (out.month <= 2 ? 1 : 0));
  return out;
}

constexpr long kEpochDays = -25569;  // 1899-12-30 in days since 1970-01-01

// Reads `min`..`max` digits at `pos`.
bool ReadDigits(std::string_view text, std::size_t& pos, int min, int max, int& value) {
  value = 0;
  int n = 0;
  while (n < max && pos < text.size() && IsDigit(text[pos])) {
    value = value * 10 + (text[pos++] - '0');
    ++n;
  }
  return n >= min;
}

}  // namespace

bool ParseColumnType(std::string_view text, ColumnType& out) {
  const std::string upper = UpperAscii(Trim(text));
  if (upper == "NUMBER") {
    out = ColumnType::kNumber;
  } else if (upper == "TEXT") {
    out = ColumnType::kText;
  } else if (upper == "DATE") {
    out = ColumnType::kDate;
  } else {
    return false;
  }
  return true;
}

bool ParseDateLayout(std::string_view text, DateLayout& out) {
  const std::string f = UpperAscii(Trim(text));
  DateLayout layout;
  bool day = false, month = false, year = false;
  std::size_t pos = 0;
  for (int i = 0; i < 3; ++i) {
    const std::string_view rest = std::string_view(f).substr(pos);
    if (rest.starts_with("DD") && !day) {
      layout.fields[i] = DateLayout::kDay;
      day = true;
      pos += 2;
    } else if (rest.starts_with("MM") && !month) {
      layout.fields[i] = DateLayout::kMonth;
      month = true;
      pos += 2;
    } else if (rest.starts_with("YYYY") && !year) {
      layout.fields[i] = DateLayout::kYear4;
      year = true;
      pos += 4;
    } else if (rest.starts_with("YY") && !year) {
      layout.fields[i] = DateLayout::kYear2;
      year = true;
      pos += 2;
    } else {
      return false;
    }
    if (i < 2) {
      layout.separators[i] = '\0';
      if (pos < f.size() && IsDateSeparator(f[pos])) layout.separators[i] = f[pos++];
    }
  }
  if (pos != f.size()) return false;
  out = layout;
  return true;
}

int YearOfTwoDigits(int yy) {
  return yy < 50 ? 2000 + yy : 1900 + yy;
}

bool ReadDate(std::string_view text, const DateLayout& layout, CivilDate& out) {
  std::size_t pos = 0;
  CivilDate date;
  for (int i = 0; i < 3; ++i) {
    // A day or month may drop its leading zero where something marks its end.
    const bool delimited = i == 2 || layout.separators[i] != '\0';
    int value = 0;
    switch (layout.fields[i]) {
      case DateLayout::kDay:
        if (!ReadDigits(text, pos, delimited ? 1 : 2, 2, date.day)) return false;
        break;
      case DateLayout::kMonth:
        if (!ReadDigits(text, pos, delimited ? 1 : 2, 2, date.month)) return false;
        break;
      case DateLayout::kYear2:
        if (!ReadDigits(text, pos, 2, 2, value)) return false;
        date.year = YearOfTwoDigits(value);
        break;
      case DateLayout::kYear4:
        if (!ReadDigits(text, pos, 4, 4, date.year)) return false;
        break;
    }
    if (i < 2 && layout.separators[i] != '\0') {
      if (pos >= text.size() || text[pos] != layout.separators[i]) return false;
      ++pos;
    }
  }
  if (pos != text.size()) return false;
  if (date.year < 1900 || date.month < 1 || date.month > 12 || date.day < 1 ||
      date.day > DaysInMonth(date.year, date.month)) {
    return false;
  }
  out = date;
  return true;
}

double SpreadsheetSerial(const CivilDate& date) {
  long serial = DaysFromCivil(date.year, date.month, date.day) - kEpochDays;
  if (serial < 61) --serial;  // before March 1900 the count lacks the day that never was
  return static_cast<double>(serial);
}

bool DateOfSerial(double serial, CivilDate& out) {
  if (!(serial >= 1) || serial > 2958465) return false;  // 9999-12-31
  long days = static_cast<long>(std::floor(serial));
  if (days == 60) {
    out = CivilDate{1900, 2, 29};  // shown by spreadsheets, though it never was
    return true;
  }
  if (days < 60) ++days;
  out = CivilFromDays(days + kEpochDays);
  return true;
}

void AppendIsoDate(std::string& out, const CivilDate& date) {
  char buf[16];
  int y = date.year;
  for (int i = 3; i >= 0; --i, y /= 10) buf[i] = static_cast<char>('0' + y % 10);
  buf[4] = '-';
  buf[5] = static_cast<char>('0' + date.month / 10);
  buf[6] = static_cast<char>('0' + date.month % 10);
  buf[7] = '-';
  buf[8] = static_cast<char>('0' + date.day / 10);
  buf[9] = static_cast<char>('0' + date.day % 10);
  out.append(buf, 10);
}

TypedField ColumnConverter::Convert(std::string_view raw, bool forCell) {
  TypedField field;
  const std::string_view text = TrimField(raw);
  if (text.empty()) return field;  // blanks only: an empty cell
  field.cell.kind = CellValue::Kind::kText;
  field.cell.text = text;
  field.csv = text;
  switch (type_) {
    case ColumnType::kNone:
    case ColumnType::kText:
      return field;
    case ColumnType::kNumber: {
      csv_.clear();
      double value = 0;
      // The plain form exists only for numbers a spreadsheet can hold, so a CSV row needs no
      // double.
      if (!AppendPlainAsPrinted(csv_, text) ||
          (forCell && (!ParseDouble(text, value) || !std::isfinite(value)))) {
        csv_.clear();
        field.keptAsText = true;
        return field;
      }
      field.cell.kind = CellValue::Kind::kNumber;
      field.cell.number = value == 0 ? 0.0 : value;  // no "-0"
      field.csv = csv_;
      return field;
    }
    case ColumnType::kDate: {
      CivilDate date;
      if (!ReadDate(text, layout_, date)) {
        field.keptAsText = true;
        return field;
      }
      iso_.clear();
      AppendIsoDate(iso_, date);
      field.cell.kind = CellValue::Kind::kDate;
      field.cell.number = SpreadsheetSerial(date);
      field.cell.text = iso_;
      field.csv = iso_;
      return field;
    }
  }
  return field;
}

std::string KeptAsTextNote(std::string_view section, ColumnType type, std::string_view dateFormat,
                           const KeptAsTextTally& tally) {
  std::string text(section);
  text += " : \"";
  text += tally.firstValue;
  text += "\" on line ";
  AppendInt(text, tally.firstLine);
  if (type == ColumnType::kDate) {
    text += " is not a date of the form ";
    text += dateFormat;
  } else {
    text += " is not a number";
  }
  text += " and is kept as text";
  if (tally.count == 2) {
    text += ", as is 1 more value of this column";
  } else if (tally.count > 2) {
    text += ", as are ";
    AppendInt(text, static_cast<long long>(tally.count - 1));
    text += " more values of this column";
  }
  return text;
}

}  // namespace kroveld
