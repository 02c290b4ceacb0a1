// Typed values in workbooks: numbers with the format their look gives, text that stays text,
// dates as serial days shown yyyy-mm-dd; in both formats, as readers we did not write see them
// and as our own readers keep them when the output is converted into again.
#include <gtest/gtest.h>

#include "jobs/workbook/workbook_sink.h"
#include "support/test_support.h"
#include "support/workbook_readers.h"

namespace kroveld {
namespace {

using testing::ReadWithPython;
using testing::TempDir;
using Kind = CellValue::Kind;

void FillTyped(WorkbookSink& sink) {
  sink.SetValue(1, 1, 1, {Kind::kNumber, -1554.73, "1,554.73-"});
  sink.SetValue(1, 1, 2, {Kind::kNumber, 123, "00123"});
  sink.SetValue(1, 1, 3, {Kind::kText, 0, "1234"});
  sink.SetValue(1, 1, 4, {Kind::kDate, 44990, "2023-03-05"});
  sink.SetValue(1, 2, 4, {Kind::kDate, 1, "1900-01-01"});
  sink.SetValue(1, 2, 1, {Kind::kNumber, 5, "5"});
  sink.SetValue(1, 2, 1, {Kind::kEmpty, 0, ""});  // empties the cell
}

void WriteTyped(const std::string& path) {
  WorkbookSink sink;
  sink.Open(path, false);
  FillTyped(sink);
  ASSERT_TRUE(sink.Save()) << sink.Error();
}

class TypedWorkbook : public ::testing::TestWithParam<const char*> {};

TEST_P(TypedWorkbook, OtherReadersSeeNumbersTextAndDates) {
  if (!testing::HavePythonModules("xlrd, openpyxl")) GTEST_SKIP() << "python3 readers missing";
  TempDir dir;
  const std::string path = dir.File(std::string("typed") + GetParam());
  ASSERT_NO_FATAL_FAILURE(WriteTyped(path));
  const testing::DumpedBook book = ReadWithPython(path);
  ASSERT_FALSE(book.sheets.empty());
  testing::ExpectCells(book.sheets[0],
                       {{1, 1, "n [-1554.73] #,##0.00"},
                        {1, 2, "n [123.0] General"},
                        {1, 3, "s [1234] General"},
                        {1, 4, "d [2023-03-05] yyyy-mm-dd"},
                        {2, 4, "d [1900-01-01] yyyy-mm-dd"}},
                       true);
}

TEST_P(TypedWorkbook, DatesStayDatesWhenTheOutputIsReadAgain) {
  TempDir dir;
  const std::string path = dir.File(std::string("typed") + GetParam());
  ASSERT_NO_FATAL_FAILURE(WriteTyped(path));
  WorkbookSink again;
  again.Open(path, false);
  const CellView date = again.Model().GetSheet(1).Get(1, 4);
  EXPECT_EQ(date.type, CellType::kNumber);
  EXPECT_EQ(date.format, NumberFormat::kDate);
  EXPECT_DOUBLE_EQ(date.number, 44990);
  EXPECT_EQ(again.GetCell(1, 1, 4), "2023-03-05");  // what consolidation would read
  EXPECT_EQ(again.GetCell(1, 1, 3), "1234");
  EXPECT_EQ(again.GetCell(1, 1, 1), "-1554.73");
}

INSTANTIATE_TEST_SUITE_P(Both, TypedWorkbook, ::testing::Values(".xlsx", ".xls"));

}  // namespace
}  // namespace kroveld
