// The optional keys of tables, columns and departments in an export definition: read by name
// after the fixed keys, validated, listed, written back after the fixed keys only when set; and
// definitions without them written back byte for byte.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/export_specs.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;
using testing::RecordingPort;
using testing::TempDir;

std::string Header() {
  return CrLf({"[Header]", "Product=KRO", "FileType=EXPORT SPEC", "FileFormat=1.1"});
}

// Table 1 finds its start by a pattern and has no ReadStartLine: the keys after the missing one
// must still be read. Its column 2 carries the department down.
std::string MiningSpec(std::string_view skip = "^ *-+ *$", std::string_view blank = "TRUE") {
  return Header() + CrLf({"[Table 1]",
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

TEST(RecipeKeys, ReadListedAndWrittenBackAfterTheFixedKeys) {
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

  const std::string listing = specs.PropertyPrintTables();
  for (const char* line : {"ReadStartPattern = ^ACCOUNT +DESC\n", "SkipBlankLines = TRUE\n",
                           "SkipLinesMatching = ^ *-+ *$\n", "KeepLinesMatching = ^[0-9]{4}\n",
                           "TotalLinesMatching = TOTAL\n", "CarryFrom = ^DEPT: [0-9]\n"}) {
    EXPECT_NE(listing.find(line), std::string::npos) << line;
  }
  EXPECT_EQ(listing.find("ReadEndPattern"), std::string::npos);

  const std::string out = dir.File("out.krs");
  ASSERT_TRUE(specs.WriteToFile(ui, out));
  const std::string text = ReadFile(out);
  EXPECT_NE(
      text.find(CrLf({"[Table 1]", "ReadStartLineOffset=1", "ReadEndLine=END",
                      "ReadEndLineOffset=-1", "TotalColumns=2", "ReadStartPattern=^ACCOUNT +DESC",
                      "SkipBlankLines=TRUE", "SkipLinesMatching=^ *-+ *$",
                      "KeepLinesMatching=^[0-9]{4}", "TotalLinesMatching=TOTAL"})),
      std::string::npos)
      << text;
  EXPECT_NE(text.find(CrLf({"WriteColumn=B", "PeriodOperator=", "CarryFrom=^DEPT: [0-9]"})),
            std::string::npos);
  EXPECT_NE(
      text.find(CrLf({"[Con 1 Dept 1]", "ReadStartLineOffset=0", "ReadEndLine=2000",
                      "ReadEndLineOffset=0", "ReadStartPattern=^1", "ReadEndPattern=^2[0-9]+"})),
      std::string::npos)
      << text;

  clsExportSpecs again;
  again.ReadFromFile(ui, out);
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_EQ(again.PropertyPrintTables(), listing);
  EXPECT_EQ(again.PropertyPrintCons(), specs.PropertyPrintCons());
}

TEST(RecipeKeys, BadValuesAreMessagesOfTheirSection) {
  struct Case {
    std::string spec;
    std::string message;  // its beginning
  } cases[] = {
      {MiningSpec("([0-9]"),
       "Error in Table 1 : Invalid SkipLinesMatching pattern: ([0-9] (missing )"},
      {MiningSpec("^ *-+ *$", "maybe"), "Error in Table 1 : SkipBlankLines must be TRUE or FALSE!"},
      {Header() +
           CrLf({"[Table 1]", "ReadStartLineOffset=1", "ReadEndLine=END", "TotalColumns=1",
                 "[Table 1 Col 1]", "ReadColumnStart=1", "ReadColumnEnd=4", "WriteColumn=A"}),
       "Error in Table 1 : Invalid ReadStartLine!"},  // no pattern: the key text is required
      {Header() + CrLf({"[Table 1]", "ReadStartLine=A", "ReadStartLineOffset=0", "ReadEndLine=END",
                        "ReadEndLineOffset=0", "TotalColumns=1", "[Table 1 Col 1]",
                        "ReadColumnStart=1", "ReadColumnEnd=4", "WriteColumn=A", "CarryFrom=a**"}),
       "Error in Table 1 Col 1 : Invalid CarryFrom pattern: a** (bad repetition operator"},
      {Header() + CrLf({"[Table 1]", "ReadStartLine=A", "ReadStartLineOffset=0", "ReadEndLine=END",
                        "ReadEndLineOffset=0", "TotalColumns=1", "[Table 1 Col 1]",
                        "ReadColumnStart=1", "ReadColumnEnd=4", "WriteColumn=A", "[Consolidate 1]",
                        "Table=1", "ReadAccountsColumn=1", "TotalDepartments=1", "[Con 1 Dept 1]",
                        "ReadStartPattern=[", "ReadEndLine=x"}),
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

// The file without the blank lines at its end (the writer never kept those).
std::string WithoutTrailingBlankLines(std::string text) {
  while (text.ends_with("\r\n\r\n")) text.resize(text.size() - 2);
  return text;
}

// Definitions without the new keys list and write themselves exactly as before.
TEST(RecipeKeys, OlderDefinitionsWriteThemselvesBackByteForByte) {
  for (const char* name : {"departments.krs", "trial-balance.krs"}) {
    const std::string original = std::string(KROVELD_SOURCE_DIR) + "/examples/" + name;
    TempDir dir;
    RecordingPort ui;
    clsExportSpecs specs;
    specs.ReadFromFile(ui, original);
    ASSERT_TRUE(ui.messages.empty()) << name;
    const std::string copy = dir.File(name);
    ASSERT_TRUE(specs.WriteToFile(ui, copy));
    EXPECT_EQ(WithoutTrailingBlankLines(ReadFile(copy)),
              WithoutTrailingBlankLines(ReadFile(original)))
        << name;
    for (const char* key : {"Pattern", "Matching", "SkipBlank", "CarryFrom"}) {
      EXPECT_EQ(specs.PropertyPrintTables().find(key), std::string::npos) << key;
      EXPECT_EQ(specs.PropertyPrintCons().find(key), std::string::npos) << key;
    }
  }
}

}  // namespace
}  // namespace kroveld
