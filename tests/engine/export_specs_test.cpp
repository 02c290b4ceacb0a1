// The export specification engine: section counts and sequence, write pointers, reading,
// the pass over the sections, and damaged files.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "engine/context.h"
#include "engine/export_specs.h"
#include "support/cell_sink.h"
#include "support/recording_port.h"
#include "support/test_support.h"
#include "util/timing.h"

namespace kroveld {
namespace {

using testing::CellSink;
using testing::CrLf;
using testing::RecordingPort;
using testing::SpecHeader;
using testing::SpecTable;
using testing::TempDir;
using Strings = std::vector<std::string>;

std::string TitleSection(int n, int sheet, std::string_view column,
                         std::initializer_list<std::string> lines) {
  return testing::SpecTitle(n, sheet, column, lines);
}

std::string TableSection(int n) {
  return SpecTable(n, "TOP" + std::to_string(n), 1, "END", -1,
                   {{1, 10, "A"}, {11, 20, "C", "sum"}});
}

TEST(ExportSpecsRead, CountsAndSections) {
  struct Case {
    int titles, tables;
    std::string secondTitle, message, what, body;
  } cases[] = {
      {0, 0, "", "", "only column headings", CrLf({"[Table 1 Col 1]", "ReadColumnStart=1"})},
      {3, 0, "two", "Error in Title 3 : Write sheet number must be > 0!",
       "gap 1, 2, 4: Title 3 reads as missing",
       TitleSection(1, 1, "A", {"one"}) + TitleSection(2, 1, "A", {"two"}) +
           TitleSection(4, 1, "A", {"four"})},
      {2, 0, "", "Error in Title 2 : Write sheet number must be > 0!",
       "heading text inside a value line", TitleSection(1, 1, "A", {"one"}) + "Note=[Title \r\n"},
      {2, 2, "two", "", "out of number order: found by name",
       TitleSection(2, 2, "B", {"two"}) + TitleSection(1, 1, "A", {"one"}) + TableSection(2) +
           TableSection(1)},
  };
  for (const Case& c : cases) {
    TempDir dir;
    RecordingPort ui;
    clsExportSpecs specs;
    specs.ReadFromFile(ui, dir.Write("s.krs", SpecHeader() + c.body));
    EXPECT_EQ(specs.TitleCount, c.titles) << c.what;
    EXPECT_EQ(specs.TableCount, c.tables) << c.what;
    EXPECT_EQ(specs.SectionSequenceCollection.size(), static_cast<std::size_t>(c.titles + c.tables))
        << c.what;
    EXPECT_EQ(ui.Texts(), c.message.empty() ? Strings{} : Strings{c.message}) << c.what;
    if (c.titles > 1) {
      EXPECT_EQ(specs.Titles[1].Lines, c.secondTitle.empty() ? Strings{} : Strings{c.secondTitle})
          << c.what;
    }
    if (c.tables > 1) {
      EXPECT_EQ(specs.Tables[1].ReadStartLine, "TOP2") << c.what;
    }
  }
}

// Every section kind with bad keys: a title, table or consolidation shows its first failed test
// (a table's columns are all checked) as a critical message.
TEST(ExportSpecsRead, ShowsTheSectionMessages) {
  auto title = [](std::initializer_list<std::string_view> keys) {
    return "[Title 1]\r\n" + CrLf(keys);
  };
  auto table = [](std::string_view columns, std::string_view startOffset = "1") {
    return CrLf({"[Table 1]", "ReadStartLine=  Account  ",
                 "ReadStartLineOffset=" + std::string(startOffset), "ReadEndLine=Total",
                 "ReadEndLineOffset=-1", "TotalColumns=" + std::string(columns)});
  };
  auto column = [](int n, std::string_view start, std::string_view end, std::string_view letter,
                   std::string_view op) {
    return CrLf({"[Table 1 Col " + std::to_string(n) + "]", "ReadColumnStart=" + std::string(start),
                 "ReadColumnEnd=" + std::string(end), "WriteColumn=" + std::string(letter),
                 "PeriodOperator=" + std::string(op)});
  };
  const std::string con = TableSection(1) + TableSection(2) + "[Consolidate 1]\r\n";
  auto dept = [](int n, std::initializer_list<std::string_view> keys) {
    return "[Con 1 Dept " + std::to_string(n) + "]\r\n" + CrLf(keys);
  };
  const std::string letter = "Error in Title 1 : Write Column must be (A-Z)!";
  const std::string deptKeys = "Table=1\r\nReadAccountsColumn=1\r\n";
  const struct {
    std::string body;
    Strings messages;
  } cases[] = {
      {title({"WriteSheet=0", "WriteColumn=A", "TotalLines=1"}),
       {"Error in Title 1 : Write sheet number must be > 0!"}},
      {title({"WriteSheet=1", "WriteColumn=1", "TotalLines=1"}), {letter}},
      {title({"WriteColumn=A", "WriteSheet=1", "TotalLines=1"}), {letter}},  // keys out of order
      {title({"WriteSheet=1", "WriteColumn=A", "TotalLines=0"}),
       {"Error in Title 1 : Number of lines must be > 0!"}},
      {title({"WriteSheet=1", "WriteColumn=A", "TotalLines=2000000000"}),
       {"Error in Title 1 : Number of lines must be at most 1048576!"}},
      {CrLf({"[Table 1]", "ReadEndLine=x", "TotalColumns=1"}),
       {"Error in Table 1 : Invalid ReadStartLine!"}},
      {CrLf({"[Table 1]", "ReadStartLine=x", "TotalColumns=1"}),
       {"Error in Table 1 : Invalid ReadEndLine!"}},
      {table("1", "one"), {"Error in Table 1 : ReadStartLineOffset must be a whole number!"}},
      {table("0"), {"Error in Table 1Number of Columns must be > 0!"}},
      {table("703"), {"Error in Table 1 : Number of columns must be at most 702!"}},
      {table("5") + column(1, "0", "5", "A", "") + column(2, "1", "", "B", "") +
           column(3, "1", "5", "ZA", "") + column(4, "1", "5", "AB", "avg") +
           column(5, "1", "5", "C", "first"),
       {"Invalid Read Column start position!", "Invalid Read Column end position!",
        "Error in Table 1 Col 3 : Write Column must be (A-Z)!", "Invalid Multi-file operator!",
        "Invalid Multi-file operator!"}},
      {con + "Table=0\r\nReadAccountsColumn=1\r\n",
       {"Error in Consolidate 1 : Table number must be > 0!"}},
      {con + "Table=3\r\nReadAccountsColumn=1\r\n",
       {"Error in Consolidate 1 : Table number 3 does not exist!"}},
      {con + "Table=2\r\nTotalDepartments=1\r\n",
       {"Error in Consolidate 1 : Accounts Column Number must be > 0!"}},
      {con + deptKeys + "TotalDepartments=2000000000\r\n",
       {"Error in Consolidate 1 : Number of departments must be at most 10000!"}},
      {con + deptKeys + "TotalDepartments=2\r\n" +
           dept(1, {"ReadStartLine=a", "ReadStartLineOffset=0", "ReadEndLine=b",
                    "ReadEndLineOffset=0"}) +
           dept(2, {"ReadEndLine=b"}),
       {"Error in Con 1 Dept 2 : Missing ReadStartLine text!"}},
      {con + deptKeys + "TotalDepartments=1\r\n" +
           dept(1, {"ReadStartLine=a", "ReadStartLineOffset=0"}),
       {"Error in Con 1 Dept 1 : Missing ReadEndLine text!"}},
      {con + deptKeys + "TotalDepartments=1\r\n" +
           dept(1, {"ReadStartLine=a", "ReadStartLineOffset=two", "ReadEndLine=b"}),
       {"Error in Con 1 Dept 1 : ReadStartLineOffset must be a whole number!"}},
  };
  TempDir dir;
  for (const auto& c : cases) {
    RecordingPort ui;
    clsExportSpecs specs;
    specs.ReadFromFile(ui, dir.Write("s.krs", SpecHeader() + c.body));
    EXPECT_EQ(ui.Texts(), c.messages) << c.body;
    for (const auto& m : ui.messages) EXPECT_EQ(m.icon, Icon::Critical) << m.text;
    if (c.body.rfind("[Title", 0) == 0) {
      EXPECT_TRUE(specs.Titles.at(0).Lines.empty()) << c.body;
    }
  }
}

TEST(ExportSpecsRead, BadHeaderReadsNothing) {
  TempDir dir;
  RecordingPort ui;
  clsExportSpecs specs;
  specs.ReadFromFile(
      ui,
      dir.Write("s.krs", CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1"}) +
                             TitleSection(1, 1, "A", {"t"})));
  EXPECT_EQ(ui.Texts(), Strings{"Incorrect file type!"});
  EXPECT_TRUE(specs.Titles.empty());
}

// Values are trimmed, missing title lines and a missing end offset are empty, a later section's
// keys are not read into an earlier one.
TEST(ExportSpecsRead, ValuesOfEverySectionKind) {
  TempDir dir;
  const std::string path = dir.Write(
      "in.krs",
      SpecHeader() +
          CrLf({"[General]", "Name=Monthly", "[Title 1]", "WriteSheet=2", "WriteColumn=b",
                "TotalLines=4", "1Text=   ACME Corp   ", "2Text=", "3Text=Profit; and loss",
                "[Title 2]", "WriteSheet=1", "WriteColumn=A", "TotalLines=1", "1Text=Summary",
                "4Text=not mine"}) +
          CrLf({"[Table 1]", "ReadStartLine=  Account  ", "ReadStartLineOffset=1",
                "ReadEndLine=Total", "ReadEndLineOffset=-1", "TotalColumns=2", "[Table 1 Col 1]",
                "ReadColumnStart=1", "ReadColumnEnd=10", "WriteColumn= b ",
                "PeriodOperator=", "[Table 1 Col 2]", "ReadColumnStart=11", "ReadColumnEnd=30",
                "WriteColumn=AA", "PeriodOperator= sum "}) +
          CrLf({"[Consolidate 1]", "Table=1", "ReadAccountsColumn=2", "TotalDepartments=2",
                "[Con 1 Dept 1]", "ReadStartLine=Dept 1", "ReadStartLineOffset=1",
                "ReadEndLine=Total 1", "ReadEndLineOffset=-1", "[Con 1 Dept 2]",
                "ReadStartLine=Dept 2", "ReadStartLineOffset=+2", "ReadEndLine=Total 2"}) +
          TitleSection(3, 1, "B", {"gone"}));
  RecordingPort ui;
  clsExportSpecs first;
  first.ReadFromFile(ui, path);
  ASSERT_TRUE(ui.messages.empty()) << ui.messages[0].text;
  ASSERT_EQ(first.Titles.size(), 3u);
  EXPECT_EQ(first.Titles[0].WriteColumn, "b");  // lower case passes the text-order test
  EXPECT_EQ(first.Titles[0].Lines, (Strings{"ACME Corp", "", "Profit", ""}));
  EXPECT_EQ(first.Titles[1].Lines, Strings{"Summary"});
  ASSERT_EQ(first.Tables.size(), 1u);
  const clsTable& table = first.Tables[0];
  EXPECT_EQ(table.ReadStartLine, "Account");
  EXPECT_EQ(table.ReadEndLineOffset, -1);
  ASSERT_EQ(table.Columns.size(), 2u);
  EXPECT_EQ(table.Columns[1].PeriodOperator, "sum");
  ASSERT_EQ(first.Consolidates.size(), 1u);
  const clsCon& con = first.Consolidates[0];
  ASSERT_EQ(con.Departments.size(), 2u);
  EXPECT_EQ(con.Departments[1].ReadStartLine, "Dept 2");
  EXPECT_EQ(con.Departments[1].ReadStartLineOffset, 2);
  EXPECT_EQ(con.Departments[1].ReadEndLineOffset, 0);
}

class ExportSpecsProcess : public ::testing::Test {
 protected:
  ExportSpecsProcess() : ctx(ui, dir.path()) { ctx.sink = &sink; }

  clsExportSpecs& Load(const std::string& body) {
    specs().ReadFromFile(ui, dir.Write("p.krs", SpecHeader() + body));
    return specs();
  }
  clsExportSpecs& specs() { return ctx.recipe.ExportSpecs; }

  TempDir dir;
  RecordingPort ui;
  CellSink sink;
  Context ctx;
};

TEST_F(ExportSpecsProcess, SectionsInFileOrderWithStatusAndYield) {
  ctx.recipe.InputFileNames[0] = dir.Write("in.txt", CrLf({"TOP1", "alpha", "beta", "END"}));
  Load(TitleSection(1, 1, "A", {"Report", "May"}) + TitleSection(2, 2, "B", {"Totals"}) +
       TableSection(1) + TitleSection(3, 1, "A", {"Notes"}));
  std::vector<std::size_t> yields;  // number of statuses shown when each yield came
  ui.onProcessEvents = [&] { yields.push_back(ui.statuses.size()); };
  ctx.run.jobStartTick = TickCount() - 100000;
  specs().WritePointer1 = 40;  // reset by the pass
  specs().Process(ctx);
  EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;
  EXPECT_EQ(sink.Cell(1, 1, 1), "Report");
  EXPECT_EQ(sink.Cell(1, 5, 1), "Notes");  // below the table's two rows
  EXPECT_EQ(sink.Cell(2, 1, 2), "Totals");
  EXPECT_EQ(specs().WritePointer1, 6);
  EXPECT_EQ(specs().WritePointer2, 2);
  EXPECT_EQ(specs().TablesProcessed, 1);
  EXPECT_FALSE(ctx.run.running);

  Strings sectionTexts;
  int elapsed = 0;
  for (std::size_t i = 0; i < ui.statuses.size(); ++i) {
    const auto& [panel, text] = ui.statuses[i];
    if (panel == 1) {
      sectionTexts.push_back(text);
      // The pass yields right before it shows a section's status text.
      EXPECT_NE(std::find(yields.begin(), yields.end(), i), yields.end()) << text;
    }
    if (panel == 2) {
      ++elapsed;
      EXPECT_GE(std::stod(text), 100.0) << text;
      EXPECT_EQ(text[text.size() - 2], '.') << text;  // "##0.0"
    }
  }
  EXPECT_EQ(sectionTexts,
            (Strings{"Writing Title 1  Please wait...", "Writing Title 2  Please wait...",
                     " Exporting Table 1:", "Writing Title 3  Please wait..."}));
  EXPECT_EQ(elapsed, 4);
}

TEST_F(ExportSpecsProcess, SheetNamesAndFontOnlyForWorkbooks) {
  struct Case {
    bool cells;
    const char *sheet1, *sheet2, *label;
    std::vector<std::pair<int, std::string>> renames;
    std::size_t fonts;
  } cases[] = {
      {true, "   ", " Sum ", "1-3", {{2, "Sum (P1-3)"}}, 1},
      {false, "Detail", "Summary", "2", {}, 0},
  };
  Load(TitleSection(1, 1, "A", {"Report"}));
  for (const Case& c : cases) {
    sink = CellSink();
    sink.holdsCells = c.cells;
    ctx.recipe.Sheet1Name = c.sheet1;
    ctx.recipe.Sheet2Name = c.sheet2;
    ctx.periodLabel = c.label;
    specs().Process(ctx);
    EXPECT_EQ(sink.renames, c.renames) << c.cells;
    EXPECT_EQ(sink.fonts, Strings(c.fonts, "Courier New")) << c.cells;
    EXPECT_EQ(specs().WritePointer1, 2);
  }
}

TEST_F(ExportSpecsProcess, TitleHeadingWithColMakesTheSectionCountInvalid) {
  Load(TitleSection(1, 1, "A", {"Report"}) +
       CrLf({"[Title 2 Col]", "WriteSheet=1", "WriteColumn=A", "TotalLines=1", "1Text=x"}));
  EXPECT_EQ(specs().TitleCount, 2);
  EXPECT_EQ(specs().SectionSequenceCollection.size(), 1u);
  ui.Clear();
  ctx.recipe.Sheet1Name = "Detail";
  specs().Process(ctx);
  EXPECT_EQ(ui.Texts(), Strings{"Error in csExportSpecs: Invalid Section Count!"});
  EXPECT_EQ(ui.messages[0].icon, Icon::Critical);
  EXPECT_EQ(sink.cellWrites, 0);
  EXPECT_TRUE(sink.renames.empty());
}

TEST_F(ExportSpecsProcess, FailedSectionOrUnknownKindEndsThePass) {
  // The consolidation names a table the file does not have: reported on reading, and again when
  // the pass reaches it, which marks the pass failed so the last title is not written.
  Load(TitleSection(1, 1, "A", {"before"}) +
       CrLf({"[Consolidate 1]", "Table=1", "ReadAccountsColumn=1", "TotalDepartments=0"}) +
       TitleSection(2, 1, "A", {"after"}));
  EXPECT_EQ(ui.Texts(), Strings{"Error in Consolidate 1 : Table number 1 does not exist!"});
  ui.Clear();
  specs().Process(ctx);
  EXPECT_EQ(ui.Texts(), Strings{"Can not consolidate table 1. Table does not exist!"});
  EXPECT_TRUE(specs().Failed);
  EXPECT_EQ(sink.Cell(1, 1, 1), "before");
  EXPECT_EQ(sink.cellWrites, 1);
  EXPECT_FALSE(ctx.run.running);

  // The next pass starts afresh (Failed cleared, pointers back to 1) and stops at an unknown kind.
  ui.Clear();
  specs().Consolidates.clear();
  specs().ConsolidateCount = 0;
  specs().SectionSequenceCollection = {"Title", "Chart"};
  specs().Process(ctx);
  EXPECT_FALSE(specs().Failed);
  EXPECT_EQ(specs().WritePointer1, 2);
  EXPECT_EQ(ui.Texts(), Strings{"invalid section type in clsExportSpecs.Process!"});
  EXPECT_EQ(sink.Cell(1, 2, 1), "");
}

TEST_F(ExportSpecsProcess, ConsolidationsContributeNothingToCsv) {
  // The same consolidation that fails on a workbook pass is passed over quietly on a CSV pass,
  // and the sections after it still run.
  Load(CrLf({"[Consolidate 1]", "Table=1", "ReadAccountsColumn=1", "TotalDepartments=0"}) +
       TitleSection(1, 1, "A", {"after"}));
  ui.Clear();
  sink.holdsCells = false;
  specs().Process(ctx);
  EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;
  EXPECT_FALSE(specs().Failed);
  EXPECT_EQ(specs().WritePointer1, 2);
}

// Damaged files: each is read (or refused) without a crash or a hang.
TEST(ExportSpecsBadFiles, NoCrashNoHang) {
  TempDir dir;
  std::filesystem::create_directory(dir.File("folder.krs"));
  std::string binary;
  for (int i = 0; i < 100000; ++i) binary += static_cast<char>((i * 7919) % 256);
  std::string longLine = SpecHeader() + TitleSection(1, 1, "A", {"x"});
  longLine.insert(longLine.size() - 2, std::string(10 * 1024 * 1024, 'x'));
  std::string nul = SpecHeader() + TitleSection(1, 1, "A", {"a"});
  nul.insert(nul.find("1Text=a") + 6, std::string("\0\0b", 3));
  std::string manyHeadings = SpecHeader();
  for (int i = 0; i < 10001; ++i) manyHeadings += "[Title \r\n";

  struct Case {
    std::string name, path;
    Strings firstLines;
  } cases[] = {
      {"folder", dir.File("folder.krs"), {}},
      {"binary", dir.Write("bin.krs", binary), {}},
      {"long line", dir.Write("long.krs", longLine), {"x" + std::string(10 * 1024 * 1024, 'x')}},
      {"nul bytes", dir.Write("nul.krs", nul), {std::string("\0\0ba", 4)}},
      {"duplicated: first wins",
       dir.Write("dup.krs", SpecHeader() + TitleSection(1, 1, "A", {"first"}) +
                                TitleSection(1, 2, "B", {"again"})),
       {"first"}},
      {"too many headings", dir.Write("many.krs", manyHeadings), {}},
  };
  for (const Case& c : cases) {
    RecordingPort ui;
    clsExportSpecs specs;
    specs.ReadFromFile(ui, c.path);
    EXPECT_LE(ui.messages.size(), 2u) << c.name;
    EXPECT_EQ(specs.Titles.empty() ? Strings{} : specs.Titles[0].Lines, c.firstLines) << c.name;
    if (c.name == "too many headings") {
      EXPECT_EQ(ui.Texts(), Strings{"Error in export specification " + c.path +
                                    " : more than 10000 Title sections!"});
    }
  }
}

}  // namespace
}  // namespace kroveld
