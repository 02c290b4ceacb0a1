// Workbooks that open well elsewhere and existing workbooks read back whole: column widths and the
// font size as other readers see them, characters XML cannot carry, and the .xls records other
// programs write (RK, MULRK, LABEL, formulas, dates, strings split over CONTINUE records).
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-outfile.h>
#include <gsf/gsf-output-stdio.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
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
      "a\357\277\276b",  // U+FFFE; control characters are checked through the sink
      "\xEF\xBF\xBF",    // U+FFFF
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

// A stop while the parts are packed into the zip keeps the file that was there. The packing runs
// in a child process and the tick is asked meanwhile, so a big workbook's save ends there and then
// with nothing of it left behind, no file and no process; a small one, packed before its next
// turn, is asked once more after the packing.
TEST(ReadableWorkbooks, StopDuringThePackingKeepsThePreviousFile) {
  for (const int rows : {100, 400000}) {
    SCOPED_TRACE(rows);
    TempDir dir;
    const std::string path = dir.File("kept.xlsx");
    testing::WriteFile(path, "the previous output");
    Workbook book;
    for (int r = 1; r <= rows; ++r) {
      book.GetSheet(1).SetText(r, 1, "row " + std::to_string(r));
      book.GetSheet(1).SetNumber(r, 2, r * 1.25);
    }
    const int stopAt = rows > 100 ? 3 : 1;  // packed in place, a big one would be asked only once
    int packingTurns = 0;
    const SaveTick tick = [&](std::int64_t written, std::int64_t held) {
      return written < held || ++packingTurns < stopAt;
    };
    std::string error;
    EXPECT_FALSE(WriteXlsx(book, path, error, tick));
    EXPECT_EQ(packingTurns, stopAt);
    EXPECT_NE(error.find("was stopped; the file there is kept as it was"), std::string::npos);
    EXPECT_TRUE(testing::ReadFile(path) == "the previous output");  // (no dump of a workbook)
    EXPECT_EQ(testing::FileNames(dir.path()), std::vector<std::string>{"kept.xlsx"});
    errno = 0;
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);  // no child left, not even a finished one
    EXPECT_EQ(errno, ECHILD);
  }
}

TEST(XlsxReader, HostileWorkbooksAreRefusedWithoutTheirMemory) {
  // Needs independent readers (a failure, not a skip, when CI is set).
  if (!testing::HavePythonModules("openpyxl")) GTEST_SKIP() << "python3-openpyxl missing";
  // Cells in columns A and XFD on 20,000 rows: stored densely they would take 5 GB. The same
  // rows with their cells close together (A and AN) read back, but not from a copy whose zip
  // directory claims 4 GB for the sheet.
  TempDir dir;
  ASSERT_TRUE(
      testing::RunPython("import sys, struct, openpyxl\n"
                         "for name, far in (('wide', 16384), ('dense', 40)):\n"
                         "    b = openpyxl.Workbook()\n"
                         "    for r in range(1, 20001):\n"
                         "        b.active.cell(r, 1, r)\n"
                         "        b.active.cell(r, far, r)\n"
                         "    b.save(sys.argv[1] + '/' + name + '.xlsx')\n"
                         "d = bytearray(open(sys.argv[1] + '/dense.xlsx', 'rb').read())\n"
                         "at = d.find(b'PK\\x01\\x02')\n"
                         "while at >= 0:\n"
                         "    n = struct.unpack_from('<H', d, at + 28)[0]\n"
                         "    if d[at + 46:at + 46 + n].endswith(b'sheet1.xml'):\n"
                         "        struct.pack_into('<I', d, at + 24, 0xFFFFFFF0)\n"
                         "    at = d.find(b'PK\\x01\\x02', at + 4)\n"
                         "open(sys.argv[1] + '/claims.xlsx', 'wb').write(d)\n",
                         dir.path()));
  for (const std::string& path : {dir.File("wide.xlsx"), dir.File("claims.xlsx")}) {
    Workbook book;
    std::string error;
    EXPECT_FALSE(ReadXlsx(path, book, error)) << path;
    EXPECT_EQ(error.rfind(path + ": ", 0), 0u) << error;
  }
  Workbook book;
  std::string error;
  ASSERT_TRUE(ReadXlsx(dir.File("dense.xlsx"), book, error)) << error;
  EXPECT_EQ(book.GetSheet(1).Get(20000, 40).number, 20000);
}

// BIFF8 record bytes written by hand, as other programs write them: 16-bit words, a 64-bit
// float, an 8-bit XLUnicodeString, a record, all little-endian.
std::string W(std::initializer_list<std::uint16_t> words) {
  std::string s;
  for (std::uint16_t w : words) s += {static_cast<char>(w & 0xFF), static_cast<char>(w >> 8)};
  return s;
}
std::string F64(double v) {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  std::string s;
  for (int i = 0; i < 8; ++i) s += static_cast<char>(bits >> (8 * i));
  return s;
}
std::string Str(const std::string& text) {
  return W({static_cast<std::uint16_t>(text.size())}) + '\0' + text;
}
std::string Rec(std::uint16_t id, const std::string& data) {
  return W({id, static_cast<std::uint16_t>(data.size())}) + data;
}

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
  const std::string zeros(16, '\0');
  const std::string bof = W({0x0600, 0x0005}) + zeros.substr(0, 12);
  std::string globals = Rec(0x0809, bof) + Rec(0x041E, W({164}) + Str("dd/mm/yyyy"));
  // XF 0: General, 1: built-in date 14, 2: the custom date, 3: #,##0.00 (built-in 4).
  for (std::uint16_t id : {0, 14, 164, 4}) globals += Rec(0x00E0, W({0, id}) + zeros);
  const std::size_t offset_at = globals.size() + 4;  // the sheet's offset, patched below
  globals += Rec(0x0085, W({0, 0, 0, 6}) + "Ledger");
  // Two shared strings; the second starts 8-bit and goes on, after a CONTINUE, in 16-bit
  // characters.
  globals += Rec(0x00FC, W({2, 0, 2, 0}) + Str("shared") + W({6}) + '\0' + "abc");
  globals += Rec(0x003C, "\x01" + W({0x20AC, 'f', 0xE9})) + Rec(0x000A, "");
  const auto offset = static_cast<std::uint32_t>(globals.size());
  globals.replace(
      offset_at, 4,
      W({static_cast<std::uint16_t>(offset), static_cast<std::uint16_t>(offset >> 16)}));
  const auto cell = [](std::uint16_t row, std::uint16_t column, std::uint16_t xf) {
    return W({row, column, xf});
  };
  const std::string stream =
      globals + Rec(0x0809, W({0x0600, 0x0010}) + zeros.substr(0, 12)) +
      Rec(0x007D, W({0, 1, 20 * 256, 0, 0, 0})) +          // columns A and B 20 characters wide
      Rec(0x027E, cell(0, 0, 0) + W({(5 << 2) | 2, 0})) +  // RK: the integer 5
      // MULRK: 1.23 (the integer 123 / 100) and 7.
      Rec(0x00BD, W({1, 0, 3, (123 << 2) | 3, 0, 3, (7 << 2) | 2, 0, 1})) +
      Rec(0x0204, cell(2, 0, 0) + Str("a label")) + Rec(0x00FD, cell(2, 1, 0) + W({1, 0})) +
      Rec(0x0203, cell(3, 0, 1) + F64(44197.5)) +  // 2021-01-01 12:00
      Rec(0x0203, cell(3, 1, 2) + F64(44197)) +
      Rec(0x0006, cell(4, 0, 3) + F64(2468.5) + zeros.substr(0, 6)) +
      Rec(0x0006, cell(4, 1, 0) + zeros.substr(0, 6) + W({0xFFFF}) + zeros.substr(0, 6)) +
      Rec(0x0207, Str("from a formula")) + Rec(0x000A, "");

  TempDir dir;
  const std::string path = dir.File("other.xls");
  WriteCompoundFile(path, stream);
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
  for (std::size_t cut = 0; cut < stream.size(); cut += 7) {
    WriteCompoundFile(path, stream.substr(0, cut));
    Workbook partial;
    ReadXls(path, partial, error);
  }
}

}  // namespace
}  // namespace kroveld
