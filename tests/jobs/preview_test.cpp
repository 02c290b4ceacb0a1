// The preview of a recipe: the same cells as a real conversion, the blocks and spans the tables
// found, messages filed under their section with the recipe line to show, and nothing written.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "engine/context.h"
#include "jobs/conversion_job.h"
#include "jobs/preview/cell_text.h"
#include "jobs/preview/message_sections.h"
#include "jobs/preview/preview_run.h"
#include "jobs/preview/preview_text.h"
#include "jobs/workbook/xlsx_reader.h"
#include "support/job_support.h"
#include "support/recording_port.h"
#include "util/strings.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;
using testing::SpecHeader;
using testing::SpecTable;
using testing::TempDir;

const std::string kExamples = std::string(KROVELD_SOURCE_DIR) + "/examples/";

PreviewRequest ExampleRequest() {
  PreviewRequest request;
  request.recipePath = kExamples + "trial-balance.rcp";
  request.recipeText = ReadFile(request.recipePath);
  request.reportPath = kExamples + "trial-balance.txt";
  return request;
}

// A short recipe of one table between "ITEMS" and "END" of SmallReport, two fields from B.
std::string ShortRecipe(std::string_view topKey = "ITEMS") {
  return CrLf({"[Header]", "Product=KRO-B", "FileType=RECIPE", "FileFormat=1.0", "", "[Table 1]",
               "ReadStartLine=" + std::string(topKey), "ReadStartLineOffset=1", "ReadEndLine=END",
               "ReadEndLineOffset=-1", "Parsing=xxxxx xxxxxxx", "WriteColumn=B"});
}

// Points the system's temporary folder at `dir` for the length of a test.
class TmpDirScope {
 public:
  explicit TmpDirScope(const std::string& dir) {
    if (const char* old = std::getenv("TMPDIR")) saved_ = old;
    ::setenv("TMPDIR", dir.c_str(), 1);
  }
  ~TmpDirScope() { saved_ ? ::setenv("TMPDIR", saved_->c_str(), 1) : ::unsetenv("TMPDIR"); }

 private:
  std::optional<std::string> saved_;
};

TEST(Preview, ExampleGivesTheCellsARealConversionWrites) {
  const PreviewResult result = RunPreview(ExampleRequest());
  EXPECT_FALSE(result.HasMessages());
  EXPECT_FALSE(result.truncated);
  EXPECT_EQ(result.linesPreviewed, 28);

  // The blocks, spans and rows found are checked on the printed preview of the binary.
  ASSERT_EQ(result.tables.size(), 2u);

  // The same recipe converted for real into a workbook: every cell of both sheets equal.
  TempDir dir;
  testing::RecordingPort port;
  Context ctx(port, dir.path());
  testing::RecordingHost host;
  host.warned = true;
  ctx.options.bUseRecipe = true;
  ctx.options.sRecipeFile = host.recipeBoxText = kExamples + "trial-balance.rcp";
  ctx.options.sInputFile = kExamples + "trial-balance.txt";
  ctx.options.sOutputFile = dir.File("real.xlsx");
  RunRecipe(ctx, host);
  ASSERT_TRUE(port.messages.empty());
  Workbook real;
  std::string error;
  ASSERT_TRUE(ReadXlsx(dir.File("real.xlsx"), real, error)) << error;
  for (int s = 1; s <= 2; ++s) {
    const Sheet& mine = result.workbook.GetSheet(s);
    const Sheet& theirs = real.GetSheet(s);
    ASSERT_EQ(mine.MaxRow(), theirs.MaxRow());
    ASSERT_EQ(mine.MaxColumn(), theirs.MaxColumn());
    for (int r = 1; r <= mine.MaxRow(); ++r) {
      for (int c = 1; c <= mine.MaxColumn(); ++c) {
        const CellView a = mine.Get(r, c);
        const CellView b = theirs.Get(r, c);
        EXPECT_EQ(a.type, b.type) << "sheet " << s << " row " << r << " column " << c;
        EXPECT_EQ(a.format, b.format) << "sheet " << s << " row " << r << " column " << c;
        EXPECT_EQ(CellDisplayText(a), CellDisplayText(b));
      }
    }
  }
}

TEST(Preview, WritesNothingButItsOwnTemporaryFolderAndRemovesIt) {
  TempDir tmp;
  TempDir work;
  const std::string report = work.Write("in.txt", testing::SmallReport());
  const std::string recipePath = work.File("unsaved.rcp");  // not on disk: the text is as typed
  PreviewResult result;
  {
    TmpDirScope scope(tmp.path());
    result = RunPreview({ShortRecipe(), recipePath, report, 8, kPreviewMaxLines});
  }
  EXPECT_FALSE(result.HasMessages());
  EXPECT_EQ(result.tables.size(), 1u);
  // The work folder is checked through the binary; the temporary folder only here.
  EXPECT_TRUE(std::filesystem::is_empty(tmp.path()));
}

TEST(Preview, MessagesAreCollectedUnderTheirSectionWithTheRecipeLineToShow) {
  TempDir work;
  const std::string report = work.Write("in.txt", testing::SmallReport());
  struct Case {
    std::string recipe;
    std::string text;
    std::string section;
    int line;
  };
  std::vector<Case> cases = {
      // A key text the report lacks: met while the pass runs Table 1; its key line is line 7.
      {ShortRecipe("NOWHERE"), "Error in Table specs: Can not find ReadStartLine: NOWHERE",
       "Table 1", 7},
      // A validation message names its section itself; line 10 is TotalColumns of Table 1.
      {SpecHeader() + SpecTable(1, "ITEMS", 1, "END", -1, {}),
       "Error in Table 1Number of Columns must be > 0!", "Table 1", 10},
  };
  // A misspelt key reads as missing; the check names no section, the preview finds it.
  std::string misspelt = SpecHeader() + SpecTable(1, "ITEMS", 1, "END", -1, {{1, 5}, {6, 13}});
  misspelt.replace(misspelt.find("ReadColumnStart=6"), 15, "ReadColumStart");
  cases.push_back({misspelt, "Invalid Read Column start position!", "Table 1 Col 2", 16});
  for (const auto& c : cases) {
    const PreviewResult result = RunPreview({c.recipe, work.File("r.rcp"), report, 8, 100});
    ASSERT_FALSE(result.messages.empty()) << c.text;
    const PreviewMessage& m = result.messages.front();
    EXPECT_EQ(m.text, c.text);
    EXPECT_EQ(m.icon, Icon::Critical);
    EXPECT_EQ(m.section, c.section);
    EXPECT_EQ(m.recipeLine, c.line) << c.text;
    EXPECT_TRUE(result.HasMessages());
  }
  // The recipe check's notes on the text as typed follow, each on its line; a note alone is not
  // a message against the run.
  std::string typed = ShortRecipe();
  typed.replace(typed.find("ReadStartLineOffset"), 19, "ReadStartLinOffset");
  const PreviewResult typo = RunPreview({typed, work.File("r.rcp"), report, 8, 100});
  ASSERT_FALSE(typo.messages.empty());
  const PreviewMessage& note = typo.messages.back();
  EXPECT_TRUE(note.note);
  EXPECT_EQ(note.recipeLine, 8);
  EXPECT_EQ(note.section, "Table 1");
  EXPECT_NE(note.text.find("did you mean 'ReadStartLineOffset'?"), std::string::npos) << note.text;
}

TEST(Preview, ExportDefinitionTypedAsItIsAndTheReportLinesItsTitleRepeats) {
  TempDir work;
  const std::string report = work.Write("in.txt", testing::SmallReport());
  const std::string spec = SpecHeader() +
                           CrLf({"[Title 1]", "WriteSheet=2", "WriteColumn=C", "TotalLines=2",
                                 "1Text=  Stock list", "2Text=Other"}) +
                           SpecTable(1, "ITEMS", 1, "END", -1, {{6, 13, "B"}});
  const PreviewResult result = RunPreview({spec, work.File("typed.krs"), report, 8, 100});
  EXPECT_FALSE(result.HasMessages());
  ASSERT_EQ(result.titles.size(), 1u);
  EXPECT_EQ(result.titles[0].sheet, 2);
  EXPECT_EQ(result.titles[0].reportLines, std::vector<std::int64_t>{1});
  EXPECT_EQ(result.workbook.GetSheet(2).Get(1, 3).text, "Stock list");
  ASSERT_EQ(result.tables.size(), 1u);
  EXPECT_EQ(result.tables[0].firstRow, 1);
  EXPECT_EQ(result.tables[0].lastRow, 2);
  EXPECT_EQ(result.workbook.GetSheet(1).Get(2, 2).number, 7);
}

TEST(Preview, LinesTheRowFiltersPassOverAreNotCountedAsRows) {
  const PreviewResult result =
      RunPreview({ReadFile(kExamples + "general-ledger.krs"), kExamples + "general-ledger.krs",
                  kExamples + "general-ledger.txt", 8, 100});
  EXPECT_FALSE(result.HasMessages());
  EXPECT_EQ(result.tables.size(), 1u);
  EXPECT_EQ(result.workbook.GetSheet(1).Get(8, 2).text, "ADMINISTRATION");
  // The top key is found by its pattern on line 4; 23 lines in the block, 8 of them rows.
  EXPECT_NE(PreviewText(result, 3).find(
                "lines 5-27 (top key on line 4, bottom key on line 28), sheet 1 rows 1-8, 15 lines "
                "of the block filtered out"),
            std::string::npos)
      << PreviewText(result, 3);
}

TEST(Preview, LongReportIsPreviewedOnItsFirstLinesWithANote) {
  TempDir work;
  std::string report = testing::SmallReport();  // ITEMS on line 2, END on line 5
  const PreviewResult whole = RunPreview({ShortRecipe(), "", work.Write("a.txt", report), 8, 5});
  EXPECT_FALSE(whole.truncated);
  EXPECT_TRUE(whole.notes.empty());
  const PreviewResult cut = RunPreview({ShortRecipe(), "", work.Write("b.txt", report), 8, 4});
  EXPECT_TRUE(cut.truncated);
  EXPECT_EQ(cut.linesPreviewed, 4);
  ASSERT_EQ(cut.notes.size(), 1u);
  EXPECT_NE(cut.notes[0].find("the first 4."), std::string::npos);
  // END lies beyond the lines previewed.
  ASSERT_FALSE(cut.messages.empty());
  EXPECT_EQ(cut.messages.front().text, "Error in Table specs: Can not find ReadEndLine: END");
}

TEST(MessageSections, SectionNamedInTheMessage) {
  const struct {
    const char* message;
    const char* section;
  } cases[] = {
      {"Error in Table 12Number of Columns must be > 0!", "Table 12"},
      {"Error in Table 3 Col 2 : Write Column must be (A-Z)!", "Table 3 Col 2"},
      {"Error in Con 1 Dept 4 : Missing ReadEndLine text!", "Con 1 Dept 4"},
      {"Error in Consolidate 2 : Table number 7 does not exist!", "Consolidate 2"},
      {"Error in Title 1 : Number of lines must be > 0!", "Title 1"},
      {"Table 3 not found!", "Table 3"},
      {"Error in Table specs: Can not find ReadStartLine: X", ""},
      {"Error in csExportSpecs: Invalid Section Count!", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(SectionNamedIn(c.message), c.section) << c.message;
}

TEST(MessageSections, RecipeLineIsTheKeyLineElseTheHeadingElseTheExportDefinitionLine) {
  const std::string shortForm = CrLf({"[Header]", "Product=KRO-B", "[Table 1]", "ReadStartLine=A",
                                      "[Table 2]", "ReadStartLine=B", "ReadEndLine=C"});
  const std::string longForm = CrLf({"[Header]", "Product=KRO", "[Output File]",
                                     "OutputFileName=x.xlsx", "ExportSpecFileName=x.krs"});
  const struct {
    const std::string& text;
    const char* section;
    const char* message;
    int line;
  } cases[] = {
      {shortForm, "Table 2", "Error in Table specs: Can not find ReadEndLine: C", 7},
      {shortForm, "Table 2", "Error in Table 2 : Invalid ReadStartLine!", 6},
      {shortForm, "Table 1", "Error in Table specs: Can not find ReadEndLine: C", 3},
      {shortForm, "Table 3", "Table 3 not found!", 0},
      {longForm, "Table 1", "Error in Table 1 : Invalid ReadEndLine!", 5},
      {longForm, "", "Incorrect product code!", 2},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(RecipeLineFor(c.text, c.section, c.message), c.line) << c.section << c.message;
  }
}

TEST(CellText, NumbersInTheirFormatTextAsItStands) {
  const struct {
    CellView cell;
    const char* shown;
  } cases[] = {
      {{CellType::kNumber, 1234.5, NumberFormat::kGroupedDecimal2, {}}, "1,234.50"},
      {{CellType::kNumber, -1234.5, NumberFormat::kGroupedInteger, {}}, "-1,235"},
      {{CellType::kNumber, 12.5, NumberFormat::kDecimal2, {}}, "12.50"},
      {{CellType::kNumber, 12.5, NumberFormat::kInteger, {}}, "13"},
      {{CellType::kNumber, 152.5, NumberFormat::kGeneral, {}}, "152.5"},
      {{CellType::kText, 0, NumberFormat::kGeneral, "00123"}, "00123"},
      {{CellType::kEmpty, 0, NumberFormat::kGeneral, {}}, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(CellDisplayText(c.cell, NumberLocale{}), c.shown);
}

}  // namespace
}  // namespace kroveld
