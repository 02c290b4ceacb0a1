// The workbook sink end to end on real files: new and existing outputs of both formats, what
// readers we did not write see in our files, lock files, unreadable outputs kept as NAME.bak.
#include <gtest/gtest.h>

#include <filesystem>

#include "jobs/workbook/workbook_sink.h"
#include "jobs/workbook/xlsx_reader.h"
#include "support/test_support.h"
#include "support/workbook_readers.h"
#include "util/files.h"

namespace kroveld {
namespace {

using testing::DumpedBook;
using testing::ReadFile;
using testing::ReadWithPython;
using testing::TempDir;
using testing::WriteFile;

// What a conversion typically leaves: renamed sheets, the standard font, text and numbers.
void FillLikeAConversion(WorkbookSink& sink) {
  sink.RenameSheet(1, "Detail (P1)");
  sink.RenameSheet(2, "Summary (P1)");
  sink.SetStandardFont("Courier New");
  sink.SetCell(1, 1, 1, "ACME Ltd \xE9t\xE9");  // Windows-1252 bytes
  sink.SetCell(1, 2, 1, "00123");
  sink.SetCell(1, 2, 2, "1,234.50");
  sink.SetCell(1, 2, 3, "1,234");
  sink.SetCell(1, 2, 4, "12.50");
  sink.SetCell(1, 2, 5, "(12)");
  sink.SetCell(1, 3, 1, "=SUM(A1:A2)");
  sink.SetCell(1, 3, 2, "  ");
  sink.SetCell(2, 1, 3, "0.5");
}

void ExpectConversionCells(const DumpedBook& book) {
  ASSERT_EQ(book.sheets.size(), 2u);
  EXPECT_EQ(book.font, "Courier New");
  EXPECT_EQ(book.sheets[0].name, "Detail (P1)");
  EXPECT_EQ(book.sheets[1].name, "Summary (P1)");
  testing::ExpectCells(book.sheets[0],
                       {{1, 1, "s [ACME Ltd \xC3\xA9t\xC3\xA9] General"},
                        {2, 1, "s [00123] General"},
                        {2, 2, "n [1234.5] #,##0.00"},
                        {2, 3, "n [1234.0] #,##0"},
                        {2, 4, "n [12.5] 0.00"},
                        {2, 5, "n [-12.0] General"},
                        {3, 1, "s [=SUM(A1:A2)] General"},
                        {3, 2, "s [  ] General"}},
                       true);
  testing::ExpectCells(book.sheets[1], {{1, 3, "n [0.5] General"}}, true);
}

class WorkbookFormats : public ::testing::TestWithParam<const char*> {};

TEST_P(WorkbookFormats, OurFileReadsBackInOtherReadersCellByCell) {
  if (!testing::HavePythonModules("xlrd, openpyxl")) GTEST_SKIP() << "python3 readers missing";
  TempDir dir;
  const std::string path = dir.File(std::string("out") + GetParam());
  WorkbookSink sink;
  sink.Open(path, false);
  FillLikeAConversion(sink);
  ASSERT_TRUE(sink.Save()) << sink.Error();
  sink.Close();
  ExpectConversionCells(ReadWithPython(path));
}

TEST_P(WorkbookFormats, UnreadableOutputIsKeptAsBak) {
  struct Case {
    const char* name;
    std::string content;
  } cases[] = {
      {"empty", ""},
      {"text", "this is not a workbook\r\n"},
      {"truncated zip", std::string("PK\x03\x04\x14\x00\x00\x00", 8)},
      {"truncated ole", std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1\x00\x00", 10)},
  };
  for (const Case& c : cases) {
    TempDir dir;
    const std::string path = dir.File(std::string("out") + GetParam());
    WriteFile(path, c.content);
    WorkbookSink sink;
    sink.Open(path, false);
    EXPECT_EQ(sink.Model().SheetCount(), 2) << c.name;
    sink.SetCell(1, 1, 1, "fresh");
    ASSERT_TRUE(sink.Save()) << c.name << ": " << sink.Error();
    EXPECT_EQ(ReadFile(path + ".bak"), c.content) << c.name;
    // One note says what could not be read and where it was kept.
    EXPECT_EQ(sink.BackupNote().rfind("The existing output could not be read (" + path, 0), 0u)
        << sink.BackupNote();
    EXPECT_NE(sink.BackupNote().find("it was kept as " + path + ".bak"), std::string::npos);
    WorkbookSink again;
    again.Open(path, false);
    EXPECT_EQ(again.GetCell(1, 1, 1), "fresh") << c.name;
    ASSERT_TRUE(again.Save()) << again.Error();
    EXPECT_EQ(again.BackupNote(), "") << c.name;
  }
}

TEST(WorkbookSink, ATableBeyondTheLastRowIsRefusedBeforeWritingAndKeepsTheOldFile) {
  TempDir dir;
  const std::string path = dir.File("big.xlsx");
  WorkbookSink old;
  old.Open(path, false);
  old.SetCell(1, 1, 1, "old content");
  ASSERT_TRUE(old.Save()) << old.Error();
  const std::string before = ReadFile(path);
  WorkbookSink sink;
  sink.Open(path, false);
  sink.SetCell(1, kMaxSheetRows, 1, "last that fits");
  EXPECT_FALSE(sink.Full());
  sink.SetCell(1, kMaxSheetRows + 1, 1, "one too far");
  EXPECT_TRUE(sink.Full());
  EXPECT_FALSE(sink.Save());
  EXPECT_EQ(sink.Error(), "Cannot write " + path +
                              ": sheet 1 would need row 1,048,577; a .xlsx sheet holds at most "
                              "1,048,576 rows. Nothing was written");
  EXPECT_EQ(ReadFile(path), before);
}

INSTANTIATE_TEST_SUITE_P(Both, WorkbookFormats, ::testing::Values(".xlsx", ".xls", ".XLS"));

TEST(WorkbookSink, LockFilesOfSpreadsheetProgramsAreSeen) {
  // Excel drops the first two letters of the name for its owner file.
  struct Case {
    const char* lock;
    bool open;
  } cases[] = {{nullptr, false},
               {".~lock.report.xls#", true},
               {"~$report.xls", true},
               {"~$port.xls", true},
               {".~lock.other.xls#", false}};
  for (const Case& c : cases) {
    TempDir dir;
    const std::string path = dir.Write("report.xls", "x");
    if (c.lock) dir.Write(c.lock, "owner");
    EXPECT_EQ(WorkbookSink::IsOpenInSpreadsheetApp(path), c.open) << (c.lock ? c.lock : "none");
    // Backslashes are separators too.
    EXPECT_EQ(WorkbookSink::IsOpenInSpreadsheetApp(dir.path() + "\\report.xls"), c.open);
  }
}

TEST(WorkbookSink, GetCellGivesNumbersInPlainFormAndTextAsStored) {
  WorkbookSink sink;
  TempDir dir;
  sink.Open(dir.File("x.xlsx"), false);
  sink.SetCell(1, 1, 2, "(0.25)");
  sink.SetCell(1, 1, 3, " text ");
  sink.SetCell(1, 1, 4, "5");
  sink.SetCell(1, 1, 4, "");  // "" empties the cell
  sink.SetCell(3, 2, 2, "on sheet three");
  EXPECT_EQ(sink.GetCell(1, 1, 2), "-0.25");
  EXPECT_EQ(sink.GetCell(1, 1, 3), " text ");
  EXPECT_EQ(sink.GetCell(1, 1, 4), "");
  EXPECT_EQ(sink.GetCell(3, 2, 2), "on sheet three");
  EXPECT_EQ(sink.GetCell(7, 1, 1), "");
  EXPECT_EQ(sink.Model().SheetCount(), 3);
}

TEST(WorkbookSink, DuplicateAndInvalidSheetNamesAreMadeValid) {
  if (!testing::HavePythonModules("openpyxl")) GTEST_SKIP() << "openpyxl missing";
  TempDir dir;
  const std::string path = dir.File("names.xlsx");
  WorkbookSink sink;
  sink.Open(path, false);
  sink.RenameSheet(1, "Profit/Loss [2024]: all divisions and departments (P1-12)");
  sink.RenameSheet(2, "Profit/Loss [2024]: all divisions and departments (P1-12)");
  ASSERT_TRUE(sink.Save()) << sink.Error();
  const DumpedBook book = ReadWithPython(path);
  ASSERT_EQ(book.sheets.size(), 2u);
  EXPECT_EQ(book.sheets[0].name, "Profit_Loss _2024__ all divisio");
  EXPECT_EQ(book.sheets[1].name, "Profit_Loss _2024__ all div (2)");
}

TEST(WorkbookSink, ControlCharactersDoNotBreakTheXlsx) {
  if (!testing::HavePythonModules("openpyxl")) GTEST_SKIP() << "openpyxl missing";
  TempDir dir;
  const std::string path = dir.File("ctl.xlsx");
  WorkbookSink sink;
  sink.Open(path, false);
  const std::string controls = "a\001b\037c\014";
  sink.SetCell(1, 1, 1, controls);
  ASSERT_TRUE(sink.Save()) << sink.Error();
  // They travel as _xHHHH_ escapes, which openpyxl shows as stored (Excel decodes them).
  EXPECT_EQ(ReadWithPython(path).sheets.at(0).cells.at({1, 1}).value, "a_x0001_b_x001F_c_x000C_");
  WorkbookSink back;
  back.Open(path, false);
  EXPECT_EQ(back.GetCell(1, 1, 1), controls);
}

// Files written by openpyxl: inline strings, no shared strings part, absolute part names.
TEST(XlsxReader, ReadsWorkbooksWrittenByOpenpyxl) {
  if (!testing::HavePythonModules("openpyxl")) GTEST_SKIP() << "openpyxl missing";
  TempDir dir;
  const std::string path = dir.File("py.xlsx");
  ASSERT_TRUE(testing::RunPython(R"(import sys, openpyxl
from openpyxl.styles import Font
wb = openpyxl.Workbook()
ws = wb.active
ws.title = "Ledger"
ws["A1"] = "Account"
ws["B1"] = 1234.5
ws["B1"].number_format = "#,##0.00"
ws["D1"] = 3.25
ws["D1"].number_format = "0.000%"
ws["A3"] = "   "
ws["B3"] = "caf\u00e9"
ws["C3"] = True
ws["E5"] = "=1+2"
wb.create_sheet("Second")["A1"] = "two"
wb.create_sheet("Third")
wb.save(sys.argv[1])
)",
                                 path));
  Workbook book;
  std::string error;
  ASSERT_TRUE(ReadXlsx(path, book, error)) << error;
  ASSERT_EQ(book.SheetCount(), 3);
  EXPECT_EQ(book.GetSheet(1).Name(), "Ledger");
  const Sheet& s = book.GetSheet(1);
  EXPECT_EQ(s.Get(1, 1).text, "Account");
  EXPECT_EQ(s.Get(1, 2).type, CellType::kNumber);
  EXPECT_EQ(s.Get(1, 2).number, 1234.5);
  EXPECT_EQ(s.Get(1, 2).format, NumberFormat::kGroupedDecimal2);
  EXPECT_EQ(s.Get(1, 4).number, 3.25);
  EXPECT_EQ(s.Get(1, 4).format, NumberFormat::kGeneral);  // a format the model does not know
  EXPECT_EQ(s.Get(3, 1).text, "   ");
  EXPECT_EQ(s.Get(3, 2).text, "caf\xC3\xA9");
  EXPECT_EQ(s.Get(3, 3).text, "TRUE");
  EXPECT_EQ(s.Get(5, 5).type, CellType::kEmpty);  // a formula without a computed value
  EXPECT_EQ(book.GetSheet(2).Get(1, 1).text, "two");
  EXPECT_EQ(book.StandardFont(), "Calibri");
}

TEST(XlsxReader, ReadsSharedStringsAndCellsWithoutReferences) {
  // A hand-made package: shared strings with runs, rows and cells without "r", a custom format.
  if (!testing::HavePythonModules("zipfile")) GTEST_SKIP() << "python3 missing";
  TempDir dir;
  const std::string path = dir.File("hand.xlsx");
  ASSERT_TRUE(testing::RunPython(R"(import sys, zipfile
ns = 'xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"'
rel = 'xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships"'
rt = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/"
z = zipfile.ZipFile(sys.argv[1], "w")
z.writestr("[Content_Types].xml", "<Types/>")
z.writestr("_rels/.rels", '<Relationships><Relationship Id="a" Type="' + rt + 'officeDocument" Target="book/wb.xml"/></Relationships>')
z.writestr("book/wb.xml", '<workbook ' + ns + ' ' + rel + '><sheets><sheet name="Only" sheetId="1" r:id="s1"/></sheets></workbook>')
z.writestr("book/_rels/wb.xml.rels", '<Relationships><Relationship Id="s1" Type="' + rt + 'worksheet" Target="sheets/one.xml"/><Relationship Id="t" Type="' + rt + 'sharedStrings" Target="strings.xml"/><Relationship Id="y" Type="' + rt + 'styles" Target="/book/styles.xml"/></Relationships>')
z.writestr("book/strings.xml", '<sst ' + ns + '><si><t xml:space="preserve">  </t></si><si><r><t>Ru</t></r><r><t>ns</t></r></si><si><t>a_x000D_b</t></si></sst>')
z.writestr("book/styles.xml", '<styleSheet ' + ns + '><numFmts count="1"><numFmt numFmtId="170" formatCode="#,##0.00"/></numFmts><fonts><font><name val="Courier New"/></font></fonts><cellXfs><xf numFmtId="0"/><xf numFmtId="170"/><xf numFmtId="3"/></cellXfs></styleSheet>')
z.writestr("book/sheets/one.xml", '<worksheet ' + ns + '><sheetData><row><c t="s"><v>0</v></c><c t="s"><v>1</v></c><c s="1"><v>-5.5</v></c></row><row r="4"><c r="C4" s="2"><v>1000</v></c><c t="s"><v>2</v></c><c t="str"><f>A1</f><v>calc</v></c></row></sheetData></worksheet>')
z.close()
)",
                                 path));
  Workbook book;
  std::string error;
  ASSERT_TRUE(ReadXlsx(path, book, error)) << error;
  ASSERT_EQ(book.SheetCount(), 1);
  const Sheet& s = book.GetSheet(1);
  EXPECT_EQ(book.StandardFont(), "Courier New");
  EXPECT_EQ(s.Get(1, 1).text, "  ");
  EXPECT_EQ(s.Get(1, 2).text, "Runs");
  EXPECT_EQ(s.Get(1, 3).number, -5.5);
  EXPECT_EQ(s.Get(1, 3).format, NumberFormat::kGroupedDecimal2);
  EXPECT_EQ(s.Get(4, 3).number, 1000);
  EXPECT_EQ(s.Get(4, 3).format, NumberFormat::kGroupedInteger);
  EXPECT_EQ(s.Get(4, 4).text, "a\rb");
  EXPECT_EQ(s.Get(4, 5).text, "calc");
}

}  // namespace
}  // namespace kroveld
