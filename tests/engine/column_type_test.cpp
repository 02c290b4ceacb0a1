// Typed fields: what a Number, Text or Date column makes of the text it cuts, the date layouts
// it accepts, the serial days a spreadsheet counts, and the note on values kept as text.
#include <gtest/gtest.h>

#include "engine/column_type.h"

namespace kroveld {
namespace {

using Kind = CellValue::Kind;

DateLayout Layout(std::string_view format) {
  DateLayout layout;
  EXPECT_TRUE(ParseDateLayout(format, layout)) << format;
  return layout;
}

struct Case {
  const char* raw;
  Kind kind;
  double number;    // the number or the serial day (unused for text and empty)
  const char* csv;  // the CSV text (unquoted)
  bool keptAsText;
};

void Check(ColumnConverter& converter, const Case& c) {
  const TypedField f = converter.Convert(c.raw);
  EXPECT_EQ(f.cell.kind, c.kind) << '"' << c.raw << '"';
  EXPECT_EQ(f.csv, c.csv) << '"' << c.raw << '"';
  EXPECT_EQ(f.keptAsText, c.keptAsText) << '"' << c.raw << '"';
  if (c.kind == Kind::kNumber || c.kind == Kind::kDate) {
    EXPECT_DOUBLE_EQ(f.cell.number, c.number) << '"' << c.raw << '"';
  }
}

TEST(ColumnType, Numbers) {
  ColumnConverter converter;
  converter.Configure(ColumnType::kNumber, DateLayout());
  const Case cases[] = {
      {"    1,554.73-", Kind::kNumber, -1554.73, "-1554.73", false},
      {"  1,554.70- ", Kind::kNumber, -1554.7, "-1554.70", false},  // decimals as printed
      {"1,234,567", Kind::kNumber, 1234567, "1234567", false},
      {"(12.00)", Kind::kNumber, -12, "-12.00", false},
      {"-0.00", Kind::kNumber, 0, "0.00", false},  // no negative zero
      {"$0.50", Kind::kNumber, 0.5, "0.50", false},
      {".5", Kind::kNumber, 0.5, "0.5", false},
      {"00123", Kind::kNumber, 123, "123", false},  // a Number column means a number
      {"+7", Kind::kNumber, 7, "7", false},
      {"1.5E3", Kind::kNumber, 1500, "1500", false},
      {"2.5e-2", Kind::kNumber, 0.025, "0.025", false},
      {"       ", Kind::kEmpty, 0, "", false},
      {"", Kind::kEmpty, 0, "", false},
      {"  n/a ", Kind::kText, 0, "n/a", true},
      {"12.3.4", Kind::kText, 0, "12.3.4", true},
      {"1,,2", Kind::kText, 0, "1,,2", true},  // a separator stands between digits
      {"1E99999", Kind::kText, 0, "1E99999", true},
      {"- 5 -", Kind::kText, 0, "- 5 -", true},
  };
  for (const Case& c : cases) Check(converter, c);
}

TEST(ColumnType, TextIsTrimmedAndBlanksAreEmpty) {
  ColumnConverter converter;
  converter.Configure(ColumnType::kText, DateLayout());
  const Case cases[] = {
      {"  Cash at bank   ", Kind::kText, 0, "Cash at bank", false},
      {"1,554.73-", Kind::kText, 0, "1,554.73-", false},  // text even when it looks like a number
      {"    ", Kind::kEmpty, 0, "", false},
      {"\t x\t", Kind::kText, 0, "x", false},
  };
  for (const Case& c : cases) Check(converter, c);
}

TEST(ColumnType, DatesInEachLayout) {
  const struct {
    const char* format;
    Case c;
  } cases[] = {
      {"MM/DD/YYYY", {"03/05/2023", Kind::kDate, 44990, "2023-03-05", false}},
      {"MM/DD/YYYY", {" 3/5/2023 ", Kind::kDate, 44990, "2023-03-05", false}},
      {"MM/DD/YYYY", {"05/03/2023", Kind::kDate, 45049, "2023-05-03", false}},
      {"DD.MM.YY", {"05.03.23", Kind::kDate, 44990, "2023-03-05", false}},
      {"dd.mm.yy", {"31.12.99", Kind::kDate, 36525, "1999-12-31", false}},
      {"DD.MM.YY", {"01.01.49", Kind::kDate, 54424, "2049-01-01", false}},  // 00-49: 2000s
      {"DD.MM.YY", {"01.01.50", Kind::kDate, 18264, "1950-01-01", false}},  // 50-99: 1900s
      {"YYYY-MM-DD", {"2024-02-29", Kind::kDate, 45351, "2024-02-29", false}},
      {"YYYYMMDD", {"20230305", Kind::kDate, 44990, "2023-03-05", false}},
      {"DD MM YYYY", {"05 03 2023", Kind::kDate, 44990, "2023-03-05", false}},
      {"DD-MM-YYYY", {"31-12-9999", Kind::kDate, 2958465, "9999-12-31", false}},
      {"DD.MM.YYYY", {"01.03.1900", Kind::kDate, 61, "1900-03-01", false}},
      {"DD.MM.YYYY", {"01.01.1900", Kind::kDate, 1, "1900-01-01", false}},
      {"DD.MM.YY", {"   ", Kind::kEmpty, 0, "", false}},
      // Dates that do not exist or do not match the layout stay text.
      {"DD.MM.YY", {"31.02.23", Kind::kText, 0, "31.02.23", true}},
      {"DD.MM.YY", {"29.02.23", Kind::kText, 0, "29.02.23", true}},
      {"DD.MM.YYYY", {"29.02.1900", Kind::kText, 0, "29.02.1900", true}},
      {"DD.MM.YY", {"00.01.23", Kind::kText, 0, "00.01.23", true}},
      {"DD.MM.YY", {"01.13.23", Kind::kText, 0, "01.13.23", true}},
      {"DD.MM.YY", {"05/03/23", Kind::kText, 0, "05/03/23", true}},
      {"DD.MM.YY", {"05.03.2023", Kind::kText, 0, "05.03.2023", true}},
      {"DD.MM.YYYY", {"05.03.23", Kind::kText, 0, "05.03.23", true}},
      {"DD.MM.YYYY", {"01.01.1899", Kind::kText, 0, "01.01.1899", true}},
      {"DDMMYYYY", {"5032023", Kind::kText, 0, "5032023", true}},  // no room to drop a zero
      {"MM/DD/YYYY", {"03/05/2023x", Kind::kText, 0, "03/05/2023x", true}},
  };
  for (const auto& [format, c] : cases) {
    ColumnConverter converter;
    converter.Configure(ColumnType::kDate, Layout(format));
    SCOPED_TRACE(format);
    Check(converter, c);
  }
}

TEST(ColumnType, TypeNamesAndDateLayouts) {
  ColumnType type = ColumnType::kNone;
  for (const char* ok : {"Number", "number", " TEXT ", "Date"}) {
    EXPECT_TRUE(ParseColumnType(ok, type)) << ok;
  }
  EXPECT_TRUE(ParseColumnType("date", type));
  EXPECT_EQ(type, ColumnType::kDate);
  for (const char* bad : {"", "Num", "Numeric", "Currency", "Dates"}) {
    EXPECT_FALSE(ParseColumnType(bad, type)) << bad;
  }

  DateLayout layout;
  for (const char* bad : {"", "DD.MM", "DD.MM.YY.", ".DD.MM.YY", "DD..MM.YY", "DD.DD.YY",
                          "DD.MM.YYY", "DD,MM,YY", "D.M.YY", "MM/DD/YYYY/YY", "YYYY-MM-DDT"}) {
    EXPECT_FALSE(ParseDateLayout(bad, layout)) << bad;
  }
}

TEST(ColumnType, SerialDaysReadBack) {
  for (const CivilDate d :
       {CivilDate{1900, 1, 1}, CivilDate{1900, 2, 28}, CivilDate{1900, 3, 1},
        CivilDate{2000, 2, 29}, CivilDate{2023, 3, 5}, CivilDate{9999, 12, 31}}) {
    CivilDate back;
    ASSERT_TRUE(DateOfSerial(SpreadsheetSerial(d), back)) << d.year;
    EXPECT_EQ(back.year * 10000 + back.month * 100 + back.day,
              d.year * 10000 + d.month * 100 + d.day);
  }
  CivilDate leap;
  ASSERT_TRUE(DateOfSerial(60, leap));  // the 29 February 1900 that spreadsheets show
  EXPECT_EQ(leap.month * 100 + leap.day, 229);
  EXPECT_FALSE(DateOfSerial(0, leap));
}

// The note for one value and for two is checked on the binary's output.
TEST(ColumnType, KeptAsTextNoteCountsTheOthers) {
  KeptAsTextTally dates;
  for (int line = 12; line < 15; ++line) dates.Note("31.02.23", line);
  EXPECT_EQ(KeptAsTextNote("Table 2 Col 1", ColumnType::kDate, "DD.MM.YY", dates),
            "Table 2 Col 1 : \"31.02.23\" on line 12 is not a date of the form DD.MM.YY and is "
            "kept as text, as are 2 more values of this column");
}

}  // namespace
}  // namespace kroveld
