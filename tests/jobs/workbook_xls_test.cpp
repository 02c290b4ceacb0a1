// The BIFF8 writer at its limits: shared strings over many CONTINUE records, strings split across
// records, texts beyond 8 bits, and the row and column limits of the format.
#include <gtest/gtest.h>

#include "jobs/workbook/workbook_sink.h"
#include "jobs/workbook/xls_reader.h"
#include "jobs/workbook/xls_writer.h"
#include "support/test_support.h"
#include "support/workbook_readers.h"

namespace kroveld {
namespace {

using testing::ReadFile;
using testing::TempDir;

TEST(XlsWriter, LargeSharedStringTableReadsBackInXlrdAndOurReader) {
  TempDir dir;
  const std::string path = dir.File("big.xls");
  Workbook book;
  // 70,000 distinct strings fill many CONTINUE records; a few long ones (one with characters
  // beyond 8 bits, the last beyond 16 bits) are split in the middle of their characters.
  const int kRows = 70000 / 2;
  for (int r = 1; r <= kRows && r <= kXlsMaxRows; ++r) {
    book.GetSheet(1).SetText(r, 1, "name " + std::to_string(r));
    book.GetSheet(1).SetText(r, 2, "code-" + std::to_string(r * 7));
  }
  std::string wide;
  for (int i = 0; i < 4000; ++i) wide += "\xE2\x82\xAC";  // euro signs: 8,000 bytes in UTF-16
  wide += "\xF0\x9F\x98\x80";
  const std::string narrow(6000, 'n');
  book.GetSheet(2).SetText(1, 1, wide);
  book.GetSheet(2).SetText(2, 1, narrow);
  book.GetSheet(2).SetNumber(3, 1, 0.1, NumberFormat::kDecimal2);
  book.GetSheet(2).SetName("Zw\xC3\xB6lf");
  std::string error;
  ASSERT_TRUE(WriteXls(book, path, error)) << error;

  // The records as a strict reader walks them: every length within the format's limit, the
  // globals and each sheet ended by EOF, the sheets' offsets pointing at worksheet BOF records.
  std::string stream;
  ASSERT_TRUE(BuildBiff8Stream(book, stream, error)) << error;
  const auto u16 = [&](std::size_t at) {
    return static_cast<unsigned>(static_cast<unsigned char>(stream[at])) |
           static_cast<unsigned>(static_cast<unsigned char>(stream[at + 1])) << 8;
  };
  std::vector<std::size_t> sheet_offsets;
  int bofs = 0;
  int eofs = 0;
  for (std::size_t at = 0; at + 4 <= stream.size(); at += 4 + u16(at + 2)) {
    const unsigned id = u16(at);
    if (id == 0 && u16(at + 2) == 0) break;  // padding after the last record
    ASSERT_LE(u16(at + 2), 8224u);
    ASSERT_LE(at + 4 + u16(at + 2), stream.size());
    bofs += id == 0x0809;
    eofs += id == 0x000A;
    if (id == 0x0085) sheet_offsets.push_back(u16(at + 4) | u16(at + 6) << 16);
  }
  EXPECT_EQ(bofs, 3);
  EXPECT_EQ(eofs, 3);
  ASSERT_EQ(sheet_offsets.size(), 2u);
  for (std::size_t off : sheet_offsets) {
    EXPECT_EQ(u16(off), 0x0809u);
    EXPECT_EQ(u16(off + 6), 0x0010u);  // worksheet
  }

  if (testing::HavePythonModules("xlrd")) {
    int status = 0;
    const std::string out = testing::RunCapture(
        "/usr/bin/python3 -c 'import sys, xlrd\n"
        "b = xlrd.open_workbook(sys.argv[1], formatting_info=True)\n"
        "s = b.sheet_by_index(0)\n"
        "bad = [r for r in range(s.nrows) if s.cell_value(r, 0) != \"name %d\" % (r + 1)"
        " or s.cell_value(r, 1) != \"code-%d\" % ((r + 1) * 7)]\n"
        "t = b.sheet_by_index(1)\n"
        "print(s.nrows, len(bad), t.cell_value(0, 0) == \"\\u20ac\" * 4000 + \"\\U0001f600\","
        " t.cell_value(1, 0) == \"n\" * 6000, t.cell_value(2, 0), t.name == \"Zw\\xf6lf\")' '" +
            path + "' 2>&1",
        &status);
    EXPECT_EQ(status, 0) << out;
    EXPECT_EQ(out, std::to_string(kRows) + " 0 True True 0.1 True\n");
  }

  Workbook back;
  ASSERT_TRUE(ReadXls(path, back, error)) << error;
  ASSERT_EQ(back.SheetCount(), 2);
  EXPECT_EQ(back.GetSheet(1).MaxRow(), kRows);
  for (int r : {1, 2, 1000, 17777, kRows}) {
    EXPECT_EQ(back.GetSheet(1).Get(r, 1).text, "name " + std::to_string(r));
    EXPECT_EQ(back.GetSheet(1).Get(r, 2).text, "code-" + std::to_string(r * 7));
  }
  EXPECT_EQ(back.GetSheet(2).Get(1, 1).text, wide);
  EXPECT_EQ(back.GetSheet(2).Get(2, 1).text, narrow);
  EXPECT_EQ(back.GetSheet(2).Get(3, 1).number, 0.1);
}

TEST(XlsWriter, RefusesSheetsTheFormatCannotHoldAndKeepsTheOldFile) {
  TempDir dir;
  const std::string path = dir.File("old.xls");
  {
    WorkbookSink sink;
    sink.Open(path, false);
    sink.SetCell(1, 1, 1, "old content");
    ASSERT_TRUE(sink.Save()) << sink.Error();
  }
  const std::string before = ReadFile(path);
  struct Case {
    int row, column;
    const char* says;
  } cases[] = {{65537, 1, "65,536 rows"}, {1, 257, "256 columns"}};
  for (const Case& c : cases) {
    WorkbookSink sink;
    sink.Open(path, false);
    sink.SetCell(2, c.row, c.column, "too far");
    EXPECT_FALSE(sink.Save());
    EXPECT_NE(sink.Error().find(path), std::string::npos) << sink.Error();
    EXPECT_NE(sink.Error().find(c.says), std::string::npos) << sink.Error();
    EXPECT_EQ(ReadFile(path), before);
  }
  // The last row and column that fit are written.
  WorkbookSink sink;
  sink.Open(path, false);
  sink.SetCell(2, 65536, 256, "corner");
  ASSERT_TRUE(sink.Save()) << sink.Error();
  WorkbookSink back;
  back.Open(path, false);
  EXPECT_EQ(back.GetCell(2, 65536, 256), "corner");
  EXPECT_EQ(back.GetCell(1, 1, 1), "old content");
}

}  // namespace
}  // namespace kroveld
