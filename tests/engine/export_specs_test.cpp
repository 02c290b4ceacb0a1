// The export specification engine: section counts and sequence, write pointers, reading and
// writing back (renumbered per kind), the pass over titles and consolidations, and bad files.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/context.h"
#include "engine/export_specs.h"
#include "model_test_sink.h"
#include "support/recording_port.h"
#include "support/test_support.h"
#include "util/profile.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::MapSink;
using testing::ReadFile;
using testing::RecordingPort;
using testing::TempDir;

std::string Header() {
  return CrLf({"[Header]", "Product=KRO", "FileType=EXPORT SPEC", "FileFormat=1.1"});
}

std::string TitleSection(int n, int sheet, std::string_view column,
                         std::initializer_list<std::string_view> lines) {
  std::string s =
      CrLf({"[Title " + std::to_string(n) + "]", "WriteSheet=" + std::to_string(sheet),
            "WriteColumn=" + std::string(column), "TotalLines=" + std::to_string(lines.size())});
  int i = 0;
  for (std::string_view line : lines)
    s += std::to_string(++i) + "Text=" + std::string(line) + "\r\n";
  return s;
}

std::string TableSection(int n) {
  const std::string t = "Table " + std::to_string(n);
  return CrLf({"[" + t + "]", "ReadStartLine=TOP" + std::to_string(n), "ReadStartLineOffset=1",
               "ReadEndLine=END", "ReadEndLineOffset=-1", "TotalColumns=2", "[" + t + " Col 1]",
               "ReadColumnStart=1", "ReadColumnEnd=10", "WriteColumn=A",
               "PeriodOperator=", "[" + t + " Col 2]", "ReadColumnStart=11", "ReadColumnEnd=20",
               "WriteColumn=C", "PeriodOperator=sum"});
}

TEST(SectionSequence, FollowsFileOrderAndSkipsColumnHeadings) {
  TempDir dir;
  const std::string path =
      dir.Write("s.krs", Header() + TableSection(1) + TitleSection(1, 1, "A", {"t"}) +
                             CrLf({"[Consolidate 1]", "Table=1"}) + TableSection(2) +
                             TitleSection(2, 2, "B", {"u"}));
  EXPECT_EQ(CountSectionHeadings(path, "[Title ", ""), 2);
  EXPECT_EQ(CountSectionHeadings(path, "[Table ", "Col"), 2);
  EXPECT_EQ(ReadSectionSequence(path, 5),
            (std::vector<std::string>{"Table", "Title", "Consolidate", "Table", "Title"}));
  // Asked for more than the file holds, the sequence ends at the end of the file.
  EXPECT_EQ(ReadSectionSequence(path, 9).size(), 5u);
  EXPECT_TRUE(ReadSectionSequence(dir.File("missing.krs"), 3).empty());
}

TEST(SectionSequence, OnlyColumnHeadingsGiveNoTables) {
  TempDir dir;
  const std::string path =
      dir.Write("s.krs", Header() + CrLf({"[Table 1 Col 1]", "ReadColumnStart=1"}));
  RecordingPort ui;
  clsExportSpecs specs;
  specs.ReadFromFile(ui, path);
  EXPECT_EQ(specs.TableCount, 0);
  EXPECT_TRUE(specs.SectionSequenceCollection.empty());
  EXPECT_TRUE(ui.messages.empty());
}

TEST(WritePointers, OnlySheetsOneAndTwo) {
  RecordingPort ui;
  clsExportSpecs specs;
  specs.setWritePointer(ui, 1, 7);
  specs.setWritePointer(ui, 2, 9);
  EXPECT_EQ(specs.getWritePointer(ui, 1), 7);
  EXPECT_EQ(specs.getWritePointer(ui, 2), 9);
  EXPECT_TRUE(ui.messages.empty());
  for (int sheet : {0, 3, -1}) {
    ui.Clear();
    EXPECT_EQ(specs.getWritePointer(ui, sheet), 0);
    specs.setWritePointer(ui, sheet, 42);
    EXPECT_EQ(ui.Texts(), (std::vector<std::string>{
                              "Invalid sheet number in clsExportSpecs.getWritePointer!",
                              "Invalid sheet number in clsExportSpecs.setWritePointer!"}));
    EXPECT_EQ(ui.messages[0].icon, Icon::Critical);
    EXPECT_EQ(specs.WritePointer1, 7);
    EXPECT_EQ(specs.WritePointer2, 9);
  }
}

TEST(ExportSpecsRead, BadHeaderReadsNothing) {
  TempDir dir;
  const std::string path =
      dir.Write("s.krs", CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1"}) +
                             TitleSection(1, 1, "A", {"t"}));
  RecordingPort ui;
  clsExportSpecs specs;
  specs.ReadFromFile(ui, path);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"Incorrect file type!"});
  EXPECT_EQ(specs.TitleCount, 0);
  EXPECT_TRUE(specs.Titles.empty());
}

TEST(ExportSpecsRead, GapInNumberingReadsTheMissingNumberAsMissing) {
  TempDir dir;
  const std::string path =
      dir.Write("s.krs", Header() + TitleSection(1, 1, "A", {"one"}) +
                             TitleSection(2, 1, "A", {"two"}) + TitleSection(4, 1, "A", {"four"}));
  RecordingPort ui;
  clsExportSpecs specs;
  specs.ReadFromFile(ui, path);
  EXPECT_EQ(specs.TitleCount, 3);
  ASSERT_EQ(specs.Titles.size(), 3u);
  EXPECT_EQ(specs.Titles[1].Lines, std::vector<std::string>{"two"});
  EXPECT_EQ(specs.Titles[2].WriteSheet, -999999);
  EXPECT_EQ(ui.Texts(),
            std::vector<std::string>{"Error in Title 3 : Write sheet number must be > 0!"});
}

TEST(ExportSpecsRead, SectionsOutOfNumberOrderAreFoundByName) {
  TempDir dir;
  const std::string path = dir.Write("s.krs", Header() + TitleSection(2, 2, "B", {"second"}) +
                                                  TitleSection(1, 1, "A", {"first"}) +
                                                  TableSection(2) + TableSection(1));
  RecordingPort ui;
  clsExportSpecs specs;
  specs.ReadFromFile(ui, path);
  EXPECT_TRUE(ui.messages.empty());
  ASSERT_EQ(specs.Titles.size(), 2u);
  EXPECT_EQ(specs.Titles[0].Lines, std::vector<std::string>{"first"});
  EXPECT_EQ(specs.Titles[1].Lines, std::vector<std::string>{"second"});
  ASSERT_EQ(specs.Tables.size(), 2u);
  EXPECT_EQ(specs.Tables[0].ReadStartLine, "TOP1");
  EXPECT_EQ(specs.Tables[1].ReadStartLine, "TOP2");
  EXPECT_EQ(specs.Tables[1].Columns.at(1).PeriodOperator, "sum");
}

TEST(ExportSpecsWrite, RoundTripRenumbersPerKindInSequenceOrder) {
  TempDir dir;
  const std::string source = dir.Write(
      "in.krs", Header() + CrLf({"[General]", "Name=Monthly"}) +
                    TitleSection(1, 1, "A", {"ACME", "", "Balance"}) + TableSection(1) +
                    CrLf({"[Consolidate 1]", "Table=1", "ReadAccountsColumn=1",
                          "TotalDepartments=1", "[Con 1 Dept 1]", "ReadStartLine=D1",
                          "ReadStartLineOffset=1", "ReadEndLine=T1", "ReadEndLineOffset=-1"}) +
                    TitleSection(2, 2, "C", {"Summary"}));
  RecordingPort ui;
  clsExportSpecs first;
  first.ReadFromFile(ui, source);
  ASSERT_TRUE(ui.messages.empty()) << ui.messages[0].text;

  const std::string copy = dir.File("out.krs");
  ASSERT_TRUE(first.WriteToFile(ui, copy));
  clsExportSpecs second;
  second.ReadFromFile(ui, copy);
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_EQ(second.Name, "Monthly");
  EXPECT_EQ(second.SectionSequenceCollection, first.SectionSequenceCollection);
  EXPECT_EQ(second.PropertyPrintTables(), first.PropertyPrintTables());
  EXPECT_EQ(second.PropertyPrintCons(), first.PropertyPrintCons());
  ASSERT_EQ(second.Titles.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(second.Titles[i].PropertyPrint(), first.Titles[i].PropertyPrint());
  }

  // Moving a title to the front renumbers: the k-th title of the sequence becomes "Title k".
  second.SectionSequenceCollection = {"Title", "Title", "Table", "Consolidate"};
  std::swap(second.Titles[0], second.Titles[1]);
  const std::string moved = dir.File("moved.krs");
  ASSERT_TRUE(second.WriteToFile(ui, moved));
  const std::string text = ReadFile(moved);
  EXPECT_LT(text.find("[Title 1]\r\nWriteSheet=2"), text.find("[Title 2]\r\nWriteSheet=1"));
  EXPECT_LT(text.find("[Title 2]"), text.find("[Table 1]"));
  clsExportSpecs third;
  third.ReadFromFile(ui, moved);
  EXPECT_EQ(third.Titles.at(0).Lines, std::vector<std::string>{"Summary"});
  EXPECT_EQ(third.SectionSequenceCollection,
            (std::vector<std::string>{"Title", "Title", "Table", "Consolidate"}));
  EXPECT_TRUE(ui.messages.empty());
}

TEST(ExportSpecsWrite, UnknownSequenceEntryIsReported) {
  TempDir dir;
  RecordingPort ui;
  clsExportSpecs specs;
  specs.SectionSequenceCollection = {"Chart"};
  EXPECT_TRUE(specs.WriteToFile(ui, dir.File("x.krs")));
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"Invalid item in SectionSequenceCollection!"});
}

TEST(ExportSpecsWrite, UnwritableFolderIsReported) {
  TempDir dir;
  RecordingPort ui;
  clsExportSpecs specs;
  EXPECT_FALSE(specs.WriteToFile(ui, dir.File("no/such/folder/x.krs")));
  ASSERT_EQ(ui.messages.size(), 1u);
  EXPECT_NE(ui.messages[0].text.find("no/such/folder/x.krs"), std::string::npos);
}

class ExportSpecsProcess : public ::testing::Test {
 protected:
  ExportSpecsProcess() : ctx(ui, dir.path()) { ctx.sink = &sink; }

  void Load(const std::string& body) {
    ctx.recipe.ExportSpecs.ReadFromFile(ui, dir.Write("p.krs", Header() + body));
  }

  TempDir dir;
  RecordingPort ui;
  MapSink sink;
  Context ctx;
};

TEST_F(ExportSpecsProcess, TitlesStackAndStatusIsShown) {
  Load(TitleSection(1, 1, "A", {"Report", "May"}) + TitleSection(2, 2, "B", {"Totals"}) +
       TitleSection(3, 1, "A", {"Notes"}));
  ctx.recipe.Sheet1Name = "  Detail ";
  ctx.periodLabel = "1-3";
  ctx.recipe.ExportSpecs.WritePointer1 = 40;  // reset by the pass
  ctx.recipe.ExportSpecs.Process(ctx, 0);
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_EQ(sink.Cell(1, 1, 1), "Report");
  EXPECT_EQ(sink.Cell(1, 2, 1), "May");
  EXPECT_EQ(sink.Cell(1, 3, 1), "Notes");
  EXPECT_EQ(sink.Cell(2, 1, 2), "Totals");
  EXPECT_EQ(ctx.recipe.ExportSpecs.WritePointer1, 4);
  EXPECT_EQ(ctx.recipe.ExportSpecs.WritePointer2, 2);
  EXPECT_EQ(sink.renames, (std::vector<std::pair<int, std::string>>{{1, "Detail (P1-3)"}}));
  EXPECT_EQ(sink.fonts, std::vector<std::string>{"Courier New"});
  EXPECT_FALSE(ctx.run.running);
  EXPECT_EQ(ui.events, 3);
  std::vector<std::string> panel1;
  int panel2 = 0;
  for (const auto& [panel, text] : ui.statuses) {
    if (panel == 1) panel1.push_back(text);
    if (panel == 2) ++panel2;
  }
  EXPECT_EQ(panel1, (std::vector<std::string>{"Writing Title 1  Please wait...",
                                              "Writing Title 2  Please wait...",
                                              "Writing Title 3  Please wait..."}));
  EXPECT_EQ(panel2, 3);
}

TEST_F(ExportSpecsProcess, CsvOutputKeepsSheetNamesAndFont) {
  Load(TitleSection(1, 1, "A", {"Report"}));
  ctx.recipe.Sheet1Name = "Detail";
  ctx.recipe.Sheet2Name = "Summary";
  ctx.recipe.ExportSpecs.Process(ctx, 1);
  EXPECT_TRUE(sink.renames.empty());
  EXPECT_TRUE(sink.fonts.empty());
  EXPECT_EQ(ctx.recipe.ExportSpecs.WritePointer1, 2);
}

TEST_F(ExportSpecsProcess, BothSheetsRenamedWithPeriodLabel) {
  Load(TitleSection(1, 1, "A", {"Report"}));
  ctx.recipe.Sheet1Name = "Detail";
  ctx.recipe.Sheet2Name = "Summary";
  ctx.periodLabel = "2";
  ctx.recipe.ExportSpecs.Process(ctx, 0);
  EXPECT_EQ(sink.renames,
            (std::vector<std::pair<int, std::string>>{{1, "Detail (P2)"}, {2, "Summary (P2)"}}));
}

TEST_F(ExportSpecsProcess, TitleHeadingWithColMakesTheSectionCountInvalid) {
  Load(TitleSection(1, 1, "A", {"Report"}) +
       CrLf({"[Title 2 Col]", "WriteSheet=1", "WriteColumn=A", "TotalLines=1", "1Text=x"}));
  ui.Clear();
  EXPECT_EQ(ctx.recipe.ExportSpecs.TitleCount, 2);
  EXPECT_EQ(ctx.recipe.ExportSpecs.SectionSequenceCollection.size(), 1u);
  ctx.recipe.Sheet1Name = "Detail";
  ctx.recipe.ExportSpecs.Process(ctx, 0);
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"Error in csExportSpecs: Invalid Section Count!"});
  EXPECT_EQ(ui.messages[0].icon, Icon::Critical);
  EXPECT_EQ(sink.writes, 0);
  EXPECT_TRUE(sink.renames.empty());
}

TEST_F(ExportSpecsProcess, FailedSectionEndsThePass) {
  // The consolidation names a table the file does not have: reported on reading, and again when
  // the pass reaches it, which marks the pass failed so the last title is not written.
  Load(TitleSection(1, 1, "A", {"before"}) +
       CrLf({"[Consolidate 1]", "Table=1", "ReadAccountsColumn=1", "TotalDepartments=0"}) +
       TitleSection(2, 1, "A", {"after"}));
  EXPECT_EQ(ui.Texts(),
            std::vector<std::string>{"Error in Consolidate 1 : Table number 1 does not exist!"});
  ui.Clear();
  ctx.recipe.ExportSpecs.Process(ctx, 0);
  EXPECT_EQ(ui.Texts(),
            std::vector<std::string>{"Can not consolidate table 1. Table does not exist!"});
  EXPECT_TRUE(ctx.recipe.ExportSpecs.Failed);
  EXPECT_EQ(sink.Cell(1, 1, 1), "before");
  EXPECT_EQ(sink.cells.count({1, 2, 1}), 0u);
  EXPECT_EQ(ctx.recipe.ExportSpecs.WritePointer1, 2);
  EXPECT_FALSE(ctx.run.running);

  // The next pass starts afresh: Failed cleared, pointers back to 1.
  ctx.recipe.ExportSpecs.Consolidates.clear();
  ctx.recipe.ExportSpecs.ConsolidateCount = 0;
  ctx.recipe.ExportSpecs.SectionSequenceCollection = {"Title", "Title"};
  ctx.recipe.ExportSpecs.Process(ctx, 0);
  EXPECT_FALSE(ctx.recipe.ExportSpecs.Failed);
  EXPECT_EQ(sink.Cell(1, 2, 1), "after");
  EXPECT_EQ(ctx.recipe.ExportSpecs.WritePointer1, 3);
}

TEST_F(ExportSpecsProcess, UnknownSectionKindEndsThePass) {
  Load(TitleSection(1, 1, "A", {"x"}));
  ctx.recipe.ExportSpecs.SectionSequenceCollection = {"Chart"};
  ctx.recipe.ExportSpecs.Process(ctx, 0);
  EXPECT_EQ(ui.Texts(),
            std::vector<std::string>{"invalid section type in clsExportSpecs.Process!"});
  EXPECT_EQ(sink.writes, 0);
}

// Damaged files: each must be read (or refused) quickly, without a crash.
TEST(ExportSpecsBadFiles, NoCrashNoHang) {
  TempDir dir;
  std::filesystem::create_directory(dir.File("folder.krs"));
  std::string binary;
  for (int i = 0; i < 100000; ++i) binary += static_cast<char>((i * 7919) % 256);
  std::string longLine =
      Header() + "[Title 1]\r\nWriteSheet=1\r\nWriteColumn=A\r\nTotalLines=1\r\n1Text=";
  longLine += std::string(10 * 1024 * 1024, 'x');
  std::string nul = Header() + TitleSection(1, 1, "A", {"a"});
  nul.insert(nul.find("1Text=a") + 6, std::string("\0\0b", 3));
  std::string crOnly =
      "[Header]\rProduct=KRO\rFileType=EXPORT SPEC\rFileFormat=1.1\r"
      "[Title 1]\rWriteSheet=1\rWriteColumn=A\rTotalLines=2\r1Text=x\r2Text=y\r";
  const std::string duplicated =
      Header() + TitleSection(1, 1, "A", {"first"}) + TitleSection(1, 2, "B", {"again"});
  std::string manyHeadings = Header();
  for (int i = 0; i < 10001; ++i) manyHeadings += "[Title \r\n";

  struct Case {
    std::string name;
    std::string path;
    std::size_t titles;
  } cases[] = {
      {"folder", dir.File("folder.krs"), 0},
      {"binary", dir.Write("bin.krs", binary), 0},
      {"long line", dir.Write("long.krs", longLine), 1},
      {"nul bytes", dir.Write("nul.krs", nul), 1},
      {"cr only", dir.Write("cr.krs", crOnly), 1},
      {"duplicated", dir.Write("dup.krs", duplicated), 2},
      {"huge TotalLines",
       dir.Write("huge.krs", Header() + CrLf({"[Title 1]", "WriteSheet=1", "WriteColumn=A",
                                              "TotalLines=2000000000"})),
       1},
      {"too many headings", dir.Write("many.krs", manyHeadings), 0},
  };
  for (const Case& c : cases) {
    RecordingPort ui;
    clsExportSpecs specs;
    specs.ReadFromFile(ui, c.path);
    EXPECT_EQ(specs.Titles.size(), c.titles) << c.name;
    EXPECT_LE(ui.messages.size(), 2u) << c.name;
  }
  {
    RecordingPort ui;
    clsExportSpecs specs;
    specs.ReadFromFile(ui, dir.File("long.krs"));
    EXPECT_EQ(specs.Titles.at(0).Lines.at(0).size(), 10u * 1024 * 1024);
    specs.ReadFromFile(ui, dir.File("cr.krs"));
    EXPECT_EQ(specs.Titles.at(0).Lines, (std::vector<std::string>{"x", "y"}));
    specs.ReadFromFile(ui, dir.File("dup.krs"));
    EXPECT_EQ(specs.Titles.at(0).Lines, std::vector<std::string>{"first"});
    specs.ReadFromFile(ui, dir.File("many.krs"));
    EXPECT_EQ(ui.messages.back().text, "Error in export specification " + dir.File("many.krs") +
                                           " : more than 10000 Title sections!");
  }
}

}  // namespace
}  // namespace kroveld
