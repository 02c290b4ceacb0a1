// The optional keys of tables, columns and departments in an export definition: read by name
// after the fixed keys, and validated.
#include <gtest/gtest.h>

#include "engine/export_specs.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::RecordingPort;
using testing::TempDir;

// Table 1 finds its start by a pattern and has no ReadStartLine: the keys after the missing one
// must still be read. Its column 2 carries the department down.
std::string MiningSpec(std::string_view skip = "^ *-+ *$", std::string_view blank = "TRUE") {
  return testing::SpecHeader() + CrLf({"[Table 1]",
                                       "ReadStartLineOffset=1",
                                       "ReadEndLine=END",
                                       "ReadEndLineOffset=-1",
                                       "TotalColumns=2",
                                       "KeepLinesMatching=^[0-9]{4} ",
                                       "ReadStartPattern=^ACCOUNT +DESC",
                                       "SkipLinesMatching=" + std::string(skip),
                                       "SkipBlankLines=" + std::string(blank),
                                       "TotalLinesMatching=TOTAL",
                                       "[Table 1 Col 1]",
                                       "ReadColumnStart=1",
                                       "ReadColumnEnd=4",
                                       "WriteColumn=A",
                                       "PeriodOperator=",
                                       "[Table 1 Col 2]",
                                       "ReadColumnStart=7",
                                       "ReadColumnEnd=9",
                                       "WriteColumn=B",
                                       "CarryFrom=^DEPT: [0-9]",
                                       "[Consolidate 1]",
                                       "Table=1",
                                       "ReadAccountsColumn=1",
                                       "TotalDepartments=1",
                                       "[Con 1 Dept 1]",
                                       "ReadStartLineOffset=0",
                                       "ReadEndLine=2000",
                                       "ReadEndPattern=^2[0-9]+",
                                       "ReadStartPattern=^1"});
}

TEST(RecipeKeys, ReadByNameAfterTheFixedKeys) {
  TempDir dir;
  const std::string path = dir.Write("mining.krs", MiningSpec());
  RecordingPort ui;
  clsExportSpecs specs;
  specs.ReadFromFile(ui, path);
  ASSERT_TRUE(ui.messages.empty()) << ui.messages[0].text;
  ASSERT_EQ(specs.Tables.size(), 1u);
  const clsTable& table = specs.Tables[0];
  EXPECT_EQ(table.ReadStartLine, "");
  EXPECT_EQ(table.ReadStartPattern, "^ACCOUNT +DESC");
  EXPECT_EQ(table.ReadStartLineOffset, 1);
  EXPECT_EQ(table.ReadEndLine, "END");
  EXPECT_EQ(table.ReadEndLineOffset, -1);
  EXPECT_EQ(table.TotalColumns, 2);
  EXPECT_EQ(table.SkipBlankLines, true);
  EXPECT_EQ(table.SkipLinesMatching, "^ *-+ *$");
  EXPECT_EQ(table.KeepLinesMatching, "^[0-9]{4}");  // trimmed, as every value
  EXPECT_EQ(table.TotalLinesMatching, "TOTAL");
  ASSERT_EQ(table.Columns.size(), 2u);
  EXPECT_EQ(table.Columns[0].ReadColumnEnd, 4);
  EXPECT_EQ(table.Columns[1].ReadColumnStart, 7);
  EXPECT_EQ(table.Columns[0].CarryFrom, "");
  EXPECT_EQ(table.Columns[1].CarryFrom, "^DEPT: [0-9]");
  const clsDepartment& dept = specs.Consolidates.at(0).Departments.at(0);
  EXPECT_EQ(dept.ReadStartLine, "");
  EXPECT_EQ(dept.ReadStartPattern, "^1");
  EXPECT_EQ(dept.ReadEndLine, "2000");
  EXPECT_EQ(dept.ReadEndPattern, "^2[0-9]+");
}

TEST(RecipeKeys, BadValuesAreMessagesOfTheirSection) {
  struct Case {
    std::string spec;
    std::string message;  // its beginning
  } cases[] = {
      {MiningSpec("([0-9]"),
       "Error in Table 1 : Invalid SkipLinesMatching pattern: ([0-9] (missing )"},
      {MiningSpec("^ *-+ *$", "maybe"), "Error in Table 1 : SkipBlankLines must be TRUE or FALSE!"},
      {testing::SpecHeader() +
           CrLf({"[Table 1]", "ReadStartLineOffset=1", "ReadEndLine=END", "TotalColumns=1",
                 "[Table 1 Col 1]", "ReadColumnStart=1", "ReadColumnEnd=4", "WriteColumn=A"}),
       "Error in Table 1 : Invalid ReadStartLine!"},  // no pattern: the key text is required
      {testing::SpecHeader() +
           testing::SpecTable(1, "A", 0, "END", 0, {{1, 4, "A", "", "CarryFrom=a**\r\n"}}),
       "Error in Table 1 Col 1 : Invalid CarryFrom pattern: a** (bad repetition operator"},
      {testing::SpecHeader() + testing::SpecTable(1, "A", 0, "END", 0, {{1, 4}}) +
           CrLf({"[Consolidate 1]", "Table=1", "ReadAccountsColumn=1", "TotalDepartments=1",
                 "[Con 1 Dept 1]", "ReadStartPattern=[", "ReadEndLine=x"}),
       "Error in Con 1 Dept 1 : Invalid ReadStartPattern pattern: [ (missing ]"},
  };
  for (const Case& c : cases) {
    TempDir dir;
    RecordingPort ui;
    clsExportSpecs specs;
    specs.ReadFromFile(ui, dir.Write("bad.krs", c.spec));
    ASSERT_FALSE(ui.messages.empty()) << c.message;
    EXPECT_EQ(ui.messages[0].text.rfind(c.message, 0), 0u) << ui.messages[0].text;
    EXPECT_EQ(ui.messages[0].icon, Icon::Critical);
  }
}

}  // namespace
}  // namespace kroveld
