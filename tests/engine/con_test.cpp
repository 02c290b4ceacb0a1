// Consolidation: finding departments on sheet 1 and merging their accounts into one block on
// sheet 2. Reading and validation are tested through the export definition (export_specs_test).
#include <gtest/gtest.h>

#include "engine/context.h"
#include "support/cell_sink.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CellSink;
using testing::RecordingPort;
using testing::TempDir;

// Sheet 1 holds one written table (columns A: account, B and C: amounts) of two departments.
class Consolidation : public ::testing::Test {
 protected:
  Consolidation() : ctx(ui, dir.path()) {
    ctx.sink = &sink;
    clsTable table;
    table.TotalColumns = 3;
    for (const char* letter : {"A", "B", "C"}) {
      clsColumn column;
      column.WriteColumn = letter;
      table.Columns.push_back(column);
    }
    table.FirstRowWritten = 1;
    table.LastRowWritten = 8;
    specs().Tables.push_back(table);
    const char* rows[][3] = {{"Dept 1", "", ""},     {"A", "10", "1"},        {"B", "20", "2"},
                             {"Total 1", "30", "3"}, {"Dept 2", "", ""},      {"B", "5.5", "3"},
                             {"C", "7", "4"},        {"Total 2", "12.5", "7"}};
    for (int r = 0; r < 8; ++r) {
      for (int c = 0; c < 3; ++c) {
        if (*rows[r][c]) sink.cells[{1, r + 1, c + 1}] = rows[r][c];
      }
    }
    con.Table = 1;
    con.ReadAccountsColumn = 1;
    con.Departments = {Dept("Dept 1", 1, "Total 1", -1), Dept("Dept 2", 1, "Total 2", -1)};
    con.TotalDepartments = 2;
  }

  clsExportSpecs& specs() { return ctx.recipe.ExportSpecs; }

  static clsDepartment Dept(std::string start, int startOffset, std::string end, int endOffset) {
    clsDepartment d;
    d.ReadStartLine = std::move(start);
    d.ReadStartLineOffset = startOffset;
    d.ReadEndLine = std::move(end);
    d.ReadEndLineOffset = endOffset;
    return d;
  }

  std::vector<std::string> Sheet2Row(int row) {
    return {sink.Cell(2, row, 1), sink.Cell(2, row, 2), sink.Cell(2, row, 3)};
  }

  TempDir dir;
  RecordingPort ui;
  CellSink sink;
  Context ctx;
  clsCon con;
};

// Departments found by patterns in place of key texts, and the messages that name a pattern.
TEST_F(Consolidation, DepartmentsFoundByPatterns) {
  con.Departments[0].ReadStartLine.clear();
  con.Departments[0].ReadStartPattern = "^Dept [0-9]$";
  con.Departments[1].ReadStartPattern = "^Dept 2";
  con.Departments[1].ReadEndLine.clear();
  con.Departments[1].ReadEndPattern = "^Total [2-9]";
  con.Process(ctx);
  EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;
  EXPECT_EQ(con.AccNames, (std::vector<std::string>{"A", "B", "C"}));
  EXPECT_EQ(con.DupAccReadRowNumbers, std::vector<int>{6});

  struct Case {
    std::string start, end, message;
  } cases[] = {
      {"^Nothing", "", "Error in Department specs: Can not find ReadStartPattern: ^Nothing"},
      {"", "^Total 9", "Error in Department specs: Can not find ReadEndPattern: ^Total 9"},
      {"^Dept 2", "^Total 1",
       "Error in Table specs: ReadEndPattern [^Total 1] was found before ReadStartPattern "
       "[^Dept 2]"},
  };
  for (const Case& c : cases) {
    ui.messages.clear();
    clsDepartment& dept = con.Departments[1];
    dept.ReadStartLine = "Dept 2";
    dept.ReadEndLine = "Total 2";
    dept.ReadStartPattern = c.start;
    dept.ReadEndPattern = c.end;
    con.Process(ctx);
    ASSERT_FALSE(ui.messages.empty()) << c.message;
    EXPECT_EQ(ui.messages[0].text, c.message);
    EXPECT_TRUE(dept.AccountNames.empty());
  }
}

// The sum is formatted by the recipe's format (the formats themselves are tested with the line
// processor); grouped and bracketed numbers are read, copied rows are not reformatted.
TEST_F(Consolidation, SumsFollowWriteDataFormat) {
  sink.cells[{1, 2, 2}] = "1,234,567.125";
  sink.cells[{1, 6, 2}] = "(0.5)";
  for (const auto& [format, sum] : {std::pair{"NearestCent", "19.50"}, {"NearestDollar", "20"}}) {
    ctx.recipe.WriteDataFormat = format;
    specs().WritePointer2 = 1;
    con.Process(ctx);
    EXPECT_EQ(sink.Cell(2, 1, 2), "1,234,567.125") << format;
    EXPECT_EQ(sink.Cell(2, 2, 2), sum) << format;
  }
}

TEST_F(Consolidation, AccountNamesMatchTrimmedAndUpperCased) {
  sink.cells[{1, 2, 1}] = " cash";
  sink.cells[{1, 7, 1}] = "CASH ";
  con.Process(ctx);
  EXPECT_EQ(Sheet2Row(1), (std::vector<std::string>{"CASH ", "17", "5"}));
  EXPECT_EQ(Sheet2Row(2), (std::vector<std::string>{"B", "25.5", "5"}));
  EXPECT_EQ(specs().WritePointer2, 3);
}

TEST_F(Consolidation, TextSourceOverwritesAndTextTargetIsReported) {
  specs().WritePointer2 = 4;
  sink.cells[{1, 6, 2}] = "n/a";  // added into row 5, column B
  sink.cells[{1, 3, 3}] = "x";    // copied into row 5, column C; then 3 is added onto it
  con.Process(ctx);
  EXPECT_EQ(ui.Texts(),
            std::vector<std::string>{"Error: Unexpected non-numeric field! (Sheet 2, Row 5)"});
  EXPECT_EQ(ui.messages[0].icon, Icon::Critical);
  EXPECT_EQ(Sheet2Row(5), (std::vector<std::string>{"B", "n/a", "3"}));
  EXPECT_FALSE(specs().Failed);
}

TEST_F(Consolidation, ASumOutOfRangeIsReportedAndTheTargetKeepsItsValue) {
  specs().WritePointer2 = 1;
  sink.cells[{1, 3, 2}] = "900000000000000";  // account B of Dept 1, into row 2
  sink.cells[{1, 6, 2}] = "900000000000000";  // account B of Dept 2, added onto it
  con.Process(ctx);
  EXPECT_EQ(ui.Texts(),
            std::vector<std::string>{"Error: Number too large to add! (Sheet 2, Row 2)"});
  EXPECT_EQ(ui.messages[0].icon, Icon::Critical);
  EXPECT_EQ(Sheet2Row(2), (std::vector<std::string>{"B", "900000000000000", "5"}));
}

TEST_F(Consolidation, DepartmentsThatCannotBeFoundAreSkipped) {
  con.Departments.push_back(Dept("Dept 9", 0, "Total 1", 0));
  con.Departments.push_back(Dept("Dept 1", 0, "Total 9", 0));
  con.Process(ctx);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{
                            "Error in Department specs: Can not find ReadStartLine: Dept 9",
                            "Error in Department specs: Can not find ReadEndLine: Total 9"}));
  for (std::size_t d = 2; d < 4; ++d) EXPECT_TRUE(con.Departments[d].AccountNames.empty());
  EXPECT_EQ(con.AccNames, (std::vector<std::string>{"A", "B", "C"}));
  EXPECT_FALSE(specs().Failed);
}

TEST_F(Consolidation, FoundBeforeComparesTheBottomKeyRowWithoutItsOffset) {
  // Start row 2, bottom key on row 3 moved to row 1: not reported (tables would report it), and
  // the department has no rows.
  con.Departments = {Dept("Dept 1", 1, "B", -2)};
  con.Process(ctx);
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_TRUE(con.Departments[0].AccountNames.empty());
  // Start row 4, bottom key on row 3 moved to row 8: reported. A key below the table's last row
  // is not found.
  sink.cells[{1, 20, 1}] = "Dept 7";
  con.Departments = {Dept("Dept 1", 3, "B", 5), Dept("Dept 7", 0, "Dept 7", 0)};
  con.Process(ctx);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{
                            "Error in Table specs: ReadEndLine key text [B] was found before "
                            "ReadStartLine key text [Dept 1]",
                            "Error in Department specs: Can not find ReadStartLine: Dept 7"}));
}

TEST_F(Consolidation, HugeOffsetsStayWithinTheSheet) {
  clsDepartment dept = Dept("Dept 1", -2000000000, "Total 1", 2000000000);
  dept.Process(ctx, 1, 8, "A");
  EXPECT_TRUE(ui.messages.empty());
  ASSERT_EQ(dept.AccountRows.size(), 1048576u);
  EXPECT_EQ(dept.AccountRows.front(), 1);
  EXPECT_EQ(dept.AccountRows.back(), 1048576);
  EXPECT_EQ(dept.AccountNames[1], "A");
}

TEST_F(Consolidation, ReportsBadTableAndColumnAndMissingDepartments) {
  const struct {
    int table, column;
    bool departments, failed;
    const char* message;
  } cases[] = {
      {1, 4, true, true, "Error in Consolidate: Table 1 does not have 4 columns!"},
      {1, 1, false, false, "No Departments to consolidate in clsCon!"},
  };
  for (const auto& c : cases) {
    ui.Clear();
    specs().Failed = false;
    specs().WritePointer2 = 7;
    con.Table = c.table;
    con.ReadAccountsColumn = c.column;
    if (!c.departments) con.Departments.clear();
    con.Process(ctx);
    EXPECT_EQ(ui.Texts(), std::vector<std::string>{c.message});
    EXPECT_EQ(specs().Failed, c.failed) << c.message;
    EXPECT_EQ(specs().WritePointer2, 7) << c.message;
    EXPECT_EQ(sink.cellWrites, 0) << c.message;
  }
  EXPECT_EQ(con.FirstRowWritten, 7);
}

}  // namespace
}  // namespace kroveld
