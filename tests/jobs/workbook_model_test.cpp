// The in-memory workbook, sheet names, text decoding and the typing of cell texts.
#include <gtest/gtest.h>

#include <cmath>

#include "jobs/workbook/cell_typing.h"
#include "jobs/workbook/text_encoding.h"
#include "jobs/workbook/workbook.h"

namespace kroveld {
namespace {

TEST(WorkbookModel, SetGetOverwriteAndClear) {
  Sheet sheet("S");
  EXPECT_EQ(sheet.Get(1, 1).type, CellType::kEmpty);
  sheet.SetText(3, 2, "hello");
  sheet.SetNumber(1, 5, 12.5, NumberFormat::kDecimal2);
  EXPECT_EQ(sheet.MaxRow(), 3);
  EXPECT_EQ(sheet.MaxColumn(), 5);
  EXPECT_EQ(sheet.CellCount(), 2u);
  EXPECT_EQ(sheet.Get(3, 2).text, "hello");
  EXPECT_EQ(sheet.Get(1, 5).number, 12.5);
  EXPECT_EQ(sheet.Get(1, 5).format, NumberFormat::kDecimal2);
  EXPECT_EQ(sheet.Get(2, 2).type, CellType::kEmpty);
  EXPECT_EQ(sheet.Get(9, 9).type, CellType::kEmpty);

  sheet.SetNumber(3, 2, 7);  // text replaced by a number
  EXPECT_EQ(sheet.Get(3, 2).type, CellType::kNumber);
  sheet.SetText(1, 5, "again");  // number replaced by text
  EXPECT_EQ(sheet.Get(1, 5).type, CellType::kText);
  EXPECT_EQ(sheet.Get(1, 5).format, NumberFormat::kGeneral);

  sheet.ClearCell(3, 2);
  EXPECT_EQ(sheet.Get(3, 2).type, CellType::kEmpty);
  EXPECT_EQ(sheet.MaxRow(), 1);  // trailing empty rows go
  sheet.Clear();
  EXPECT_EQ(sheet.MaxRow(), 0);
  EXPECT_EQ(sheet.CellCount(), 0u);
  EXPECT_EQ(sheet.Get(1, 5).type, CellType::kEmpty);
}

TEST(WorkbookModel, RejectsCellsOutsideTheLargestSheet) {
  Sheet sheet("S");
  EXPECT_FALSE(sheet.SetText(0, 1, "x"));
  EXPECT_FALSE(sheet.SetText(1, 0, "x"));
  EXPECT_FALSE(sheet.SetNumber(kMaxSheetRows + 1, 1, 1));
  EXPECT_FALSE(sheet.SetNumber(1, kMaxSheetColumns + 1, 1));
  EXPECT_EQ(sheet.CellCount(), 0u);
}

TEST(WorkbookModel, ManyOverwritesKeepEveryTextIntact) {
  // Overwriting again and again makes the arena compact itself; texts must survive that.
  Sheet sheet("S");
  for (int i = 0; i < 2000; ++i) {
    sheet.SetText(1 + i % 10, 1, "value number " + std::to_string(i));
    sheet.SetText(20, 2, "stays");
  }
  for (int r = 1; r <= 10; ++r) {
    EXPECT_EQ(sheet.Get(r, 1).text, "value number " + std::to_string(1990 + r - 1));
  }
  EXPECT_EQ(sheet.Get(20, 2).text, "stays");
}

TEST(WorkbookModel, SheetNamesAreAlwaysValid) {
  Workbook book;
  struct Case {
    std::string wanted;
    std::string expected;
  } cases[] = {
      {"Sales (P1)", "Sales (P1)"},
      {"a[b]c:d*e?f/g\\h", "a_b_c_d_e_f_g_h"},
      {"1234567890123456789012345678901234567890", "1234567890123456789012345678901"},
      {"'quoted'", "_quoted_"},
      {"", "Sheet1"},
      {"tab\there", "tabhere"},
      {"Sheet2", "Sheet2 (2)"},  // sheet 2 has that name already
      {"SHEET2", "SHEET2 (2)"},  // names compare without case
      {std::string(30, 'x') + "\xC3\xA9\xC3\xA9", std::string(30, 'x') + "\xC3\xA9"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(MakeSheetName(c.wanted, book, 1), c.expected) << c.wanted;
  }
  // Renaming a sheet to its own name is not a clash; a long taken name is cut to fit the suffix.
  EXPECT_EQ(MakeSheetName("Sheet1", book, 1), "Sheet1");
  book.GetSheet(2).SetName(std::string(31, 'y'));
  EXPECT_EQ(MakeSheetName(std::string(40, 'y'), book, 1), std::string(27, 'y') + " (2)");
}

TEST(TextEncoding, Utf8IsKeptOtherBytesAreWindows1252) {
  struct Case {
    std::string in;
    std::string out;
  } cases[] = {
      {"plain", "plain"},
      {"caf\xC3\xA9", "caf\xC3\xA9"},                    // already UTF-8
      {"caf\xE9", "caf\xC3\xA9"},                        // 0xE9 is e acute
      {"\x80 5", "\xE2\x82\xAC 5"},                      // euro sign
      {"\x93q\x94", "\xE2\x80\x9Cq\xE2\x80\x9D"},        // curly quotes
      {"\xC3", "\xC3\x83"},                              // a lone lead byte is not UTF-8
      {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // an encoded surrogate is not UTF-8
      {"\x81", "\xC2\x81"},                              // unassigned: C1 control
  };
  for (const Case& c : cases) EXPECT_EQ(AsUtf8(c.in), c.out) << c.in;
  EXPECT_FALSE(IsValidUtf8("\xC0\x80"));  // overlong
  EXPECT_TRUE(IsValidUtf8("\xF0\x9F\x98\x80"));
}

TEST(CellTyping, TextBecomesNumberOrStaysText) {
  struct Case {
    const char* text;
    CellType type;
    double number;
    NumberFormat format;
  } cases[] = {
      {"1,234.50", CellType::kNumber, 1234.5, NumberFormat::kGroupedDecimal2},
      {"1,234", CellType::kNumber, 1234, NumberFormat::kGroupedInteger},
      {"-1,234,567.89", CellType::kNumber, -1234567.89, NumberFormat::kGroupedDecimal2},
      {"(1,234.50)", CellType::kNumber, -1234.5, NumberFormat::kGroupedDecimal2},
      {"1,234.567", CellType::kNumber, 1234.567, NumberFormat::kGeneral},
      {"12.50", CellType::kNumber, 12.5, NumberFormat::kDecimal2},
      {"12.5", CellType::kNumber, 12.5, NumberFormat::kGeneral},
      {"12", CellType::kNumber, 12, NumberFormat::kGeneral},
      {"(12)", CellType::kNumber, -12, NumberFormat::kGeneral},
      {"12-", CellType::kNumber, -12, NumberFormat::kGeneral},
      {"   42   ", CellType::kNumber, 42, NumberFormat::kGeneral},
      {"0", CellType::kNumber, 0, NumberFormat::kGeneral},
      {"-0", CellType::kNumber, 0, NumberFormat::kGeneral},
      {"0.5", CellType::kNumber, 0.5, NumberFormat::kGeneral},
      {"0.00", CellType::kNumber, 0, NumberFormat::kDecimal2},
      {"          .00", CellType::kNumber, 0, NumberFormat::kDecimal2},
      {".05", CellType::kNumber, 0.05, NumberFormat::kDecimal2},
      {"(.005)", CellType::kNumber, -0.005, NumberFormat::kGeneral},
      {"1.5E3", CellType::kNumber, 1500, NumberFormat::kGeneral},
      {"$12.50", CellType::kNumber, 12.5, NumberFormat::kDecimal2},
      {"00123", CellType::kText, 0, NumberFormat::kGeneral},
      {"-007", CellType::kText, 0, NumberFormat::kGeneral},
      {"0,123", CellType::kText, 0, NumberFormat::kGeneral},
      {"=1+2", CellType::kText, 0, NumberFormat::kGeneral},
      {"=SUM(A1:A2)", CellType::kText, 0, NumberFormat::kGeneral},
      {"   ", CellType::kText, 0, NumberFormat::kGeneral},
      {"ACME Ltd", CellType::kText, 0, NumberFormat::kGeneral},
      {"12 34", CellType::kText, 0, NumberFormat::kGeneral},
      {"", CellType::kEmpty, 0, NumberFormat::kGeneral},
  };
  for (const Case& c : cases) {
    const TypedCell typed = TypeCellText(c.text);
    EXPECT_EQ(typed.type, c.type) << '"' << c.text << '"';
    if (c.type == CellType::kNumber) {
      EXPECT_DOUBLE_EQ(typed.number, c.number) << c.text;
      EXPECT_FALSE(std::signbit(typed.number) && typed.number == 0) << c.text;
      EXPECT_EQ(typed.format, c.format) << c.text;
    }
  }
}

TEST(CellTyping, FollowsTheLocaleSeparators) {
  NumberLocale german;
  german.decimal_point = ',';
  german.thousands_sep = '.';
  german.currency = "EUR";
  const TypedCell grouped = TypeCellText("1.234,50", german);
  EXPECT_EQ(grouped.type, CellType::kNumber);
  EXPECT_DOUBLE_EQ(grouped.number, 1234.5);
  EXPECT_EQ(grouped.format, NumberFormat::kGroupedDecimal2);
  const TypedCell plain = TypeCellText("12,50", german);
  EXPECT_DOUBLE_EQ(plain.number, 12.5);
  EXPECT_EQ(plain.format, NumberFormat::kDecimal2);
}

}  // namespace
}  // namespace kroveld
