// Typed columns: a column may declare what its field holds (Type Number, Text or Date, the last
// with a DateFormat such as MM/DD/YYYY) and then hands clean values to the output: a real number
// or date in a workbook, a plain number or an ISO 8601 date in CSV, trimmed text, and an empty
// cell for a field of blanks. A value that does not read as its type is kept as trimmed text; the
// column counts such values and remembers the first, for one note per column and table.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/output_sink.h"

namespace kroveld {

enum class ColumnType : std::uint8_t { kNone, kNumber, kText, kDate };

// "Number", "Text" or "Date" in any case; false for anything else.
bool ParseColumnType(std::string_view text, ColumnType& out);

// The order and the separators of a date's fields: DD, MM and YY or YYYY, each once, with at most
// one separator (". / -" or a blank) between two of them, in any case ("dd.mm.yy").
struct DateLayout {
  enum Field : std::uint8_t { kDay, kMonth, kYear2, kYear4 };
  Field fields[3] = {kMonth, kDay, kYear4};
  char separators[2] = {'/', '/'};  // after fields 0 and 1; '\0' when none
};
bool ParseDateLayout(std::string_view text, DateLayout& out);

struct CivilDate {
  int year = 0;
  int month = 0;
  int day = 0;
};
// Two-digit years 00-49 are 2000-2049, 50-99 are 1950-1999.
int YearOfTwoDigits(int yy);
// The date `text` (already trimmed) in `layout`: days and months of one or two digits where a
// separator or the end follows, exactly two otherwise; the date must exist and lie in the years
// 1900 to 9999 (the dates a spreadsheet can hold).
bool ReadDate(std::string_view text, const DateLayout& layout, CivilDate& out);
// The spreadsheet's serial number of a date: days since 1899-12-30, counting the 29 February 1900
// that spreadsheets count (so 1900-01-01 is 1 and 1900-03-01 is 61).
double SpreadsheetSerial(const CivilDate& date);
// The inverse, for whole serials from 1; false below.
bool DateOfSerial(double serial, CivilDate& out);
// "YYYY-MM-DD".
void AppendIsoDate(std::string& out, const CivilDate& date);

// The longest CSV text a typed field gives beyond the field's own length: a number's plain form
// holds at most 309 digits before the point and 330 after it.
inline constexpr std::size_t kLongestTypedCsv = 1 + 309 + 1 + 330;

// One typed value: what goes to a cell, and the text of the same value for a CSV row.
struct TypedField {
  CellValue cell;
  std::string_view csv;     // unquoted
  bool keptAsText = false;  // the field did not read as the column's type
};

// Converts the fields of one column; the views it returns stay valid until its next call.
class ColumnConverter {
 public:
  void Configure(ColumnType type, const DateLayout& layout) {
    type_ = type;
    layout_ = layout;
  }
  ColumnType Type() const { return type_; }
  // `forCell` false (a CSV row) leaves the cell's number unset for numbers.
  TypedField Convert(std::string_view raw, bool forCell = true);

 private:
  ColumnType type_ = ColumnType::kNone;
  DateLayout layout_;
  std::string csv_;
  std::string iso_;
};

// Values of one column that were kept as text during a table: how many, and the first with its
// report line.
struct KeptAsTextTally {
  std::uint64_t count = 0;
  std::int64_t firstLine = 0;
  std::string firstValue;
  void Note(std::string_view value, std::int64_t line) {
    if (count++ == 0) {
      firstLine = line;
      firstValue.assign(value);
    }
  }
};

// "Table 1 Col 3 : 2 values are not numbers and are kept as text, the first on line 57: "n/a""
std::string KeptAsTextNote(std::string_view section, ColumnType type, std::string_view dateFormat,
                           const KeptAsTextTally& tally);

}  // namespace kroveld
