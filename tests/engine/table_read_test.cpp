// Reading and validating table sections and their column fields, and writing them back.
#include <gtest/gtest.h>

#include "engine/table.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::RecordingPort;
using testing::TempDir;

std::string Column(int table, int column, std::string_view start, std::string_view end,
                   std::string_view letter, std::string_view op) {
  return CrLf({"[Table " + std::to_string(table) + " Col " + std::to_string(column) + "]",
               "ReadColumnStart=" + std::string(start), "ReadColumnEnd=" + std::string(end),
               "WriteColumn=" + std::string(letter), "PeriodOperator=" + std::string(op)});
}

std::string Table2(std::string_view columns, std::string_view startOffset = "1") {
  return CrLf({"[Table 2]", "ReadStartLine=  Account  ",
               "ReadStartLineOffset=" + std::string(startOffset), "ReadEndLine=Total",
               "ReadEndLineOffset=-1", "TotalColumns=" + std::string(columns)});
}

TEST(TableRead, ShowsTheSystemMessages) {
  const std::string noColumns = "Error in Table 2Number of Columns must be > 0!";
  const struct {
    std::string text;
    std::vector<std::string> messages;
  } cases[] = {
      {CrLf({"[Table 2]", "ReadEndLine=x", "TotalColumns=1"}),
       {"Error in Table 2 : Invalid ReadStartLine!"}},
      {CrLf({"[Table 2]", "ReadStartLine=x", "TotalColumns=1"}),
       {"Error in Table 2 : Invalid ReadEndLine!"}},
      {Table2("1", "one"), {"Error in Table 2 : ReadStartLineOffset must be a whole number!"}},
      {Table2("0"), {noColumns}},
      {Table2("3x"), {noColumns}},
      {Table2("703"), {"Error in Table 2 : Number of columns must be at most 702!"}},
      {Table2("5") + Column(2, 1, "0", "5", "A", "") + Column(2, 2, "1", "", "B", "") +
           Column(2, 3, "1", "5", "ZA", "") + Column(2, 4, "1", "5", "AB", "avg") +
           Column(2, 5, "1", "5", "C", "first"),
       {"Invalid Read Column start position!", "Invalid Read Column end position!",
        "Error in Table 2 Col 3 : Write Column must be (A-Z)!", "Invalid Multi-file operator!",
        "Invalid Multi-file operator!"}},
  };
  TempDir dir;
  for (const auto& c : cases) {
    RecordingPort ui;
    clsTable table;
    EXPECT_FALSE(table.ReadFromFile(ui, dir.Write("t.krs", c.text), 2));
    EXPECT_EQ(ui.Texts(), c.messages);
    for (const auto& m : ui.messages) EXPECT_EQ(m.icon, Icon::Critical);
  }
}

TEST(TableReadOk, ReadsKeysAndColumns) {
  TempDir dir;
  const std::string path = dir.Write("t.krs", Table2("3") + Column(2, 1, "1", "10", " b ", "") +
                                                  Column(2, 2, "11", "20", "AA", " sum ") +
                                                  Column(2, 3, "21", "30", "Z", "Duplicate"));
  RecordingPort ui;
  clsTable table;
  ASSERT_TRUE(table.ReadFromFile(ui, path, 2));
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_EQ(table.ReadStartLine, "Account");
  EXPECT_EQ(table.ReadStartLineOffset, 1);
  EXPECT_EQ(table.ReadEndLineOffset, -1);
  ASSERT_EQ(table.Columns.size(), 3u);
  EXPECT_EQ(table.Columns[0].WriteColumn, "b");
  EXPECT_EQ(table.Columns[1].PeriodOperator, "sum");
  EXPECT_EQ(table.Columns[2].PeriodOperator, "Duplicate");
  EXPECT_EQ(table.Columns[2].ReadColumnEnd, 30);
}

}  // namespace
}  // namespace kroveld
