// Workbooks that open well elsewhere and existing workbooks read back whole: column widths and the
// font size as other readers see them, characters XML cannot carry, and the .xls records other
// programs write (RK, MULRK, LABEL, formulas, dates, strings split over CONTINUE records).
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-outfile.h>
#include <gsf/gsf-output-stdio.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "jobs/workbook/workbook_sink.h"
#include "jobs/workbook/xls_reader.h"
#include "jobs/workbook/xls_writer.h"
#include "jobs/workbook/xlsx_reader.h"
#include "jobs/workbook/xlsx_writer.h"
#include "support/test_support.h"
#include "support/workbook_readers.h"

namespace kroveld {
namespace {

using testing::TempDir;

// Column widths of sheet 1 (A..E) and the default font size, as openpyxl or xlrd read them.
std::string WidthsAndFontSize(const std::string& path) {
  const bool xls = path.ends_with(".xls");
  const std::string code =
      xls ? "import sys, xlrd\n"
            "b = xlrd.open_workbook(sys.argv[1], formatting_info=True)\n"
            "s = b.sheet_by_index(0)\n"
            "w = [s.colinfo_map[c].width / 256 if c in s.colinfo_map else 0 for c in range(5)]\n"
            "print(' '.join('%.2f' % x for x in w), b.font_list[0].height / 20)\n"
          : "import sys, openpyxl\n"
            "b = openpyxl.load_workbook(sys.argv[1])\n"
            "s = b.worksheets[0]\n"
            "d = s.column_dimensions\n"
            "w = [d[c].width if c in d and d[c].width else 0 for c in 'ABCDE']\n"
            "print(' '.join('%.2f' % x for x in w), b._fonts[0].sz)\n";
  int status = 0;
  const std::string out =
      testing::RunCapture("/usr/bin/python3 -c \"" + code + "\" '" + path + "' 2>&1", &status);
  EXPECT_EQ(status, 0) << out;
  return out;
}

TEST(ReadableWorkbooks, ColumnsAreAsWideAsTheirValuesAndTheFontSizeIsOne) {
  // Needs independent readers (a failure, not a skip, when CI is set).
  if (!testing::HavePythonModules("xlrd, openpyxl"))
    GTEST_SKIP() << "python3-xlrd or python3-openpyxl missing";
  for (const char* name : {"w.xlsx", "w.xls"}) {
    SCOPED_TRACE(name);
    TempDir dir;
    const std::string path = dir.File(name);
    {
      WorkbookSink sink;
      sink.Open(path, false);
      sink.SetCell(1, 1, 1, "Cash at bank and in hand");  // 24 characters
      sink.SetCell(1, 2, 1, "Cash");
      sink.SetCell(1, 1, 2, "12,450.00");  // a number shown as #,##0.00: 9 characters
      sink.SetCell(1, 2, 2, "-1,234,567.25");
      sink.SetCell(1, 1, 3, "x");                    // narrower than the default: the default stays
      sink.SetCell(1, 1, 4, std::string(300, 'w'));  // capped
      ASSERT_TRUE(sink.Save()) << sink.Error();
    }
    // Widths as files store them (characters + 0.71 of padding); column E holds nothing and keeps
    // the default width.
    EXPECT_EQ(WidthsAndFontSize(path), "25.71 14.71 9.14 60.71 0.00 10.0\n");
  }
}

TEST(ReadableWorkbooks, AnExistingWorkbooksWidthsAreKeptUnlessSheetOneIsCleared) {
  // Needs independent readers (a failure, not a skip, when CI is set).
  if (!testing::HavePythonModules("openpyxl")) GTEST_SKIP() << "python3-openpyxl missing";
  TempDir dir;
  const std::string path = dir.File("kept.xlsx");
  ASSERT_TRUE(
      testing::RunPython("import sys, openpyxl\n"
                         "b = openpyxl.Workbook()\n"
                         "s = b.active\n"
                         "s['A1'] = 'old'\n"
                         "s.column_dimensions['A'].width = 33\n"
                         "b.create_sheet('Sheet2')\n"
                         "b.save(sys.argv[1])\n",
                         path));
  {
    WorkbookSink sink;
    sink.Open(path, false);  // keep what the file holds
    sink.SetCell(1, 1, 2, "a value longer than the column was before");
    ASSERT_TRUE(sink.Save()) << sink.Error();
  }
  EXPECT_EQ(WidthsAndFontSize(path).substr(0, 11), "33.00 42.71");
  {
    WorkbookSink sink;
    sink.Open(path, false);
    sink.ClearOutput();  // sheet 1 cleared: its widths go with its cells
    sink.SetCell(1, 1, 1, "short");
    ASSERT_TRUE(sink.Save()) << sink.Error();
  }
  EXPECT_EQ(WidthsAndFontSize(path).substr(0, 10), "9.14 0.00 ");
}

TEST(ReadableWorkbooks, CharactersXmlCannotCarryReadBackUnchanged) {
  TempDir dir;
  const std::string path = dir.File("x.xlsx");
  const std::vector<std::string> texts = {
      "a\xEF\xBF\xBE"
      "b",                  // U+FFFE
      "\xEF\xBF\xBF",       // U+FFFF
      "bell\x07 and \x01",  // control characters
      "literal _x0041_ escape-like text",
      "tab\tand line\nend",
  };
  Workbook book;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    book.GetSheet(1).SetText(static_cast<int>(i) + 1, 1, texts[i]);
  }
  std::string error;
  ASSERT_TRUE(WriteXlsx(book, path, error)) << error;
  Workbook back;
  ASSERT_TRUE(ReadXlsx(path, back, error)) << error;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(back.GetSheet(1).Get(static_cast<int>(i) + 1, 1).text, texts[i]) << i;
  }
  if (!testing::HavePythonModules("openpyxl")) return;
  // openpyxl, which refused the raw characters as not well-formed, opens the file; it shows the
  // escapes as they stand where spreadsheet programs turn them back into the characters.
  const testing::DumpedBook dumped = testing::ReadWithPython(path);
  ASSERT_FALSE(dumped.sheets.empty());
  EXPECT_EQ(dumped.sheets[0].cells.size(), texts.size());
  EXPECT_EQ(dumped.sheets[0].cells.at({1, 1}).value, "a_xFFFE_b");
}

// A stop that arrives while the parts are packed (the last, uninterruptible seconds of a big
// save) still keeps the file that was there: the writer asks once more after packing.
TEST(ReadableWorkbooks, StopDuringThePackingKeepsThePreviousFile) {
  TempDir dir;
  const std::string path = dir.File("kept.xlsx");
  testing::WriteFile(path, "the previous output");
  Workbook book;
  for (int r = 1; r <= 100; ++r) book.GetSheet(1).SetText(r, 1, "row");
  std::vector<std::int64_t> asked;
  const SaveTick stopAfterPacking = [&](std::int64_t written, std::int64_t held) {
    asked.push_back(written);
    return written < held;  // rows 64 pass; the call after packing (100 of 100) stops
  };
  std::string error;
  EXPECT_FALSE(WriteXlsx(book, path, error, stopAfterPacking));
  EXPECT_EQ(asked, (std::vector<std::int64_t>{64, 100}));
  EXPECT_NE(error.find("was stopped; the file there is kept as it was"), std::string::npos);
  EXPECT_EQ(testing::ReadFile(path), "the previous output");
}

TEST(XlsxReader, HostileWorkbooksAreRefusedWithoutTheirMemory) {
  // Needs independent readers (a failure, not a skip, when CI is set).
  if (!testing::HavePythonModules("openpyxl")) GTEST_SKIP() << "python3-openpyxl missing";
  TempDir dir;
  // Cells in columns A and XFD on 20,000 rows: stored densely they would take 5 GB.
  const std::string wide = dir.File("wide.xlsx");
  ASSERT_TRUE(
      testing::RunPython("import sys, openpyxl\n"
                         "b = openpyxl.Workbook()\n"
                         "s = b.active\n"
                         "for r in range(1, 20001):\n"
                         "    s.cell(r, 1, r)\n"
                         "    s.cell(r, 16384, r)\n"
                         "b.save(sys.argv[1])\n",
                         wide));
  // A part whose zip directory claims 4 GB.
  const std::string claims = dir.File("claims.xlsx");
  ASSERT_TRUE(
      testing::RunPython("import sys, struct, openpyxl\n"
                         "b = openpyxl.Workbook()\n"
                         "b.active['A1'] = 1\n"
                         "b.save(sys.argv[1])\n"
                         "d = bytearray(open(sys.argv[1], 'rb').read())\n"
                         "at = d.find(b'PK\\x01\\x02' )\n"
                         "while at >= 0:\n"
                         "    n = struct.unpack_from('<H', d, at + 28)[0]\n"
                         "    if d[at + 46:at + 46 + n].endswith(b'sheet1.xml'):\n"
                         "        struct.pack_into('<I', d, at + 24, 0xFFFFFFF0)\n"
                         "    at = d.find(b'PK\\x01\\x02', at + 4)\n"
                         "open(sys.argv[1], 'wb').write(d)\n",
                         claims));
  for (const std::string& path : {wide, claims}) {
    Workbook book;
    std::string error;
    EXPECT_FALSE(ReadXlsx(path, book, error)) << path;
    EXPECT_EQ(error.rfind(path + ": ", 0), 0u) << error;
  }
  // The same cells that are close together read back.
  const std::string dense = dir.File("dense.xlsx");
  ASSERT_TRUE(
      testing::RunPython("import sys, openpyxl\n"
                         "b = openpyxl.Workbook()\n"
                         "s = b.active\n"
                         "for r in range(1, 20001):\n"
                         "    s.cell(r, 1, r)\n"
                         "    s.cell(r, 40, r)\n"
                         "b.save(sys.argv[1])\n",
                         dense));
  Workbook book;
  std::string error;
  ASSERT_TRUE(ReadXlsx(dense, book, error)) << error;
  EXPECT_EQ(book.GetSheet(1).Get(20000, 40).number, 20000);
}

// BIFF8 records written by hand, as other programs write them.
class Biff {
 public:
  Biff& Rec(std::uint16_t id, const std::string& data) {
    U16(out_, id);
    U16(out_, static_cast<std::uint16_t>(data.size()));
    out_ += data;
    return *this;
  }
  static void U16(std::string& s, std::uint16_t v) {
    s += static_cast<char>(v & 0xFF);
    s += static_cast<char>(v >> 8);
  }
  static void U32(std::string& s, std::uint32_t v) {
    U16(s, static_cast<std::uint16_t>(v));
    U16(s, static_cast<std::uint16_t>(v >> 16));
  }
  static void F64(std::string& s, double v) {
    std::uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    U32(s, static_cast<std::uint32_t>(bits));
    U32(s, static_cast<std::uint32_t>(bits >> 32));
  }
  static std::string Cell(int row, int column, int xf) {
    std::string s;
    U16(s, static_cast<std::uint16_t>(row));
    U16(s, static_cast<std::uint16_t>(column));
    U16(s, static_cast<std::uint16_t>(xf));
    return s;
  }
  // An XLUnicodeString of 8-bit characters.
  static std::string Str(const std::string& text) {
    std::string s;
    U16(s, static_cast<std::uint16_t>(text.size()));
    s += '\0';
    return s + text;
  }
  std::string& Bytes() { return out_; }

 private:
  std::string out_;
};

void WriteCompoundFile(const std::string& path, const std::string& stream) {
  GsfOutput* file = gsf_output_stdio_new(path.c_str(), nullptr);
  ASSERT_NE(file, nullptr);
  GsfOutfile* ole = gsf_outfile_msole_new(file);
  GsfOutput* child = gsf_outfile_new_child(ole, "Workbook", FALSE);
  gsf_output_write(child, stream.size(), reinterpret_cast<const guint8*>(stream.data()));
  gsf_output_close(child);
  g_object_unref(child);
  gsf_output_close(GSF_OUTPUT(ole));
  g_object_unref(ole);
  // Closing the compound file closed the file under it.
  if (!gsf_output_is_closed(file)) gsf_output_close(file);
  g_object_unref(file);
}

TEST(XlsReader, ReadsTheRecordsOtherProgramsWrite) {
  using B = Biff;
  std::string bof;
  B::U16(bof, 0x0600);
  B::U16(bof, 0x0005);
  bof += std::string(12, '\0');
  std::string sheet_bof = bof;
  sheet_bof[2] = 0x10;

  Biff g;
  g.Rec(0x0809, bof);
  std::string format;
  B::U16(format, 164);
  g.Rec(0x041E, format + B::Str("dd/mm/yyyy"));
  // XF 0: General, 1: built-in date 14, 2: the custom date, 3: #,##0.00 (built-in 4).
  for (std::uint16_t id : {0, 14, 164, 4}) {
    std::string xf;
    B::U16(xf, 0);
    B::U16(xf, id);
    xf += std::string(16, '\0');
    g.Rec(0x00E0, xf);
  }
  std::string sheet;
  B::U32(sheet, 0);  // patched below
  sheet += '\0';
  sheet += '\0';
  sheet += '\x06';
  sheet += '\0';
  sheet += "Ledger";
  const std::size_t boundsheet_at = g.Bytes().size() + 4;
  g.Rec(0x0085, sheet);
  // Two shared strings; the second starts 8-bit and goes on, after a CONTINUE, in 16-bit
  // characters.
  std::string sst;
  B::U32(sst, 2);
  B::U32(sst, 2);
  sst += B::Str("shared");
  B::U16(sst, 6);
  sst += '\0';
  sst += "abc";
  g.Rec(0x00FC, sst);
  std::string cont = "\x01";
  for (char16_t c : std::u16string(u"\u20ACf\u00E9")) B::U16(cont, static_cast<std::uint16_t>(c));
  g.Rec(0x003C, cont);
  g.Rec(0x000A, "");

  const std::uint32_t sheet_offset = static_cast<std::uint32_t>(g.Bytes().size());
  for (int i = 0; i < 4; ++i) {
    g.Bytes()[boundsheet_at + i] = static_cast<char>(sheet_offset >> (8 * i));
  }
  g.Rec(0x0809, sheet_bof);
  std::string colinfo;
  B::U16(colinfo, 0);
  B::U16(colinfo, 1);
  B::U16(colinfo, 20 * 256);
  colinfo += std::string(6, '\0');
  g.Rec(0x007D, colinfo);
  std::string rk = B::Cell(0, 0, 0);
  B::U32(rk, (5u << 2) | 2u);  // the integer 5
  g.Rec(0x027E, rk);
  std::string mulrk = B::Cell(1, 0, 0).substr(0, 4);
  for (std::uint32_t v : {(123u << 2) | 3u, (7u << 2) | 2u}) {  // 1.23 (integer / 100), 7
    B::U16(mulrk, 3);
    B::U32(mulrk, v);
  }
  B::U16(mulrk, 1);
  g.Rec(0x00BD, mulrk);
  g.Rec(0x0204, B::Cell(2, 0, 0) + B::Str("a label"));
  std::string labelsst = B::Cell(2, 1, 0);
  B::U32(labelsst, 1);
  g.Rec(0x00FD, labelsst);
  std::string date = B::Cell(3, 0, 1);
  B::F64(date, 44197.5);  // 2021-01-01 12:00
  g.Rec(0x0203, date);
  std::string custom_date = B::Cell(3, 1, 2);
  B::F64(custom_date, 44197);
  g.Rec(0x0203, custom_date);
  std::string formula = B::Cell(4, 0, 3);
  B::F64(formula, 2468.5);
  formula += std::string(6, '\0');
  g.Rec(0x0006, formula);
  std::string text_formula = B::Cell(4, 1, 0);
  text_formula += std::string(6, '\0');
  B::U16(text_formula, 0xFFFF);
  text_formula += std::string(6, '\0');
  g.Rec(0x0006, text_formula);
  g.Rec(0x0207, B::Str("from a formula"));
  g.Rec(0x000A, "");

  TempDir dir;
  const std::string path = dir.File("other.xls");
  WriteCompoundFile(path, g.Bytes());
  Workbook book;
  std::string error;
  ASSERT_TRUE(ReadXls(path, book, error)) << error;
  ASSERT_EQ(book.SheetCount(), 1);
  const Sheet& s = book.GetSheet(1);
  EXPECT_EQ(s.Name(), "Ledger");
  EXPECT_EQ(s.Get(1, 1).number, 5);
  EXPECT_DOUBLE_EQ(s.Get(2, 1).number, 1.23);
  EXPECT_EQ(s.Get(2, 2).number, 7);
  EXPECT_EQ(s.Get(3, 1).text, "a label");
  EXPECT_EQ(s.Get(3, 2).text,
            "abc\xE2\x82\xAC"
            "f\xC3\xA9");
  EXPECT_EQ(s.Get(4, 1).text, "2021-01-01 12:00:00");
  EXPECT_EQ(s.Get(4, 2).text, "2021-01-01");
  EXPECT_EQ(s.Get(5, 1).number, 2468.5);
  EXPECT_EQ(s.Get(5, 1).format, NumberFormat::kGroupedDecimal2);
  EXPECT_EQ(s.Get(5, 2).text, "from a formula");
  // 20 characters as stored, padding included.
  EXPECT_NEAR(s.KeptWidth(1), 20 - 5.0 / 7, 1e-9);
  EXPECT_NEAR(s.KeptWidth(2), 20 - 5.0 / 7, 1e-9);
  EXPECT_EQ(s.KeptWidth(3), 0);

  // Cut anywhere, the same stream is refused or read partly, never read out of bounds (the
  // sanitizer build checks the "never").
  for (std::size_t cut = 0; cut < g.Bytes().size(); cut += 7) {
    WriteCompoundFile(path, g.Bytes().substr(0, cut));
    Workbook partial;
    ReadXls(path, partial, error);
  }
}

}  // namespace
}  // namespace kroveld
