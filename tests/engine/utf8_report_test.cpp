// Reports read as UTF-8: a table cut by printed columns (the fast CSV path for its ASCII lines,
// the line processor for the others), sums across periods, and the recipe's InputEncoding key.
#include <gtest/gtest.h>

#include "support/extract_support.h"
#include "engine/recipe.h"

namespace kroveld::testing {
namespace {

TEST(Utf8Report, TableCutByPrintedColumns) {
  const std::string report = CrLf({
      "\xEF\xBB\xBFSTART",  // a byte order mark: no part of the text
      "A004 ÖZTÜRK ÇAĞ  451.25",
      "A005 SMITH JOHN   12.00",  // ASCII: the fast CSV path
      "B002 x山田太郎山田 5.00",  // 山 takes columns 15 and 16: it stays with the name
      "C001 M\xFCLLER     3.00",  // an 8-bit ü: one column, U+FFFD
      "C002 山\xC4R\t9.00",       // the tab stops at column 17 as printed
      "END",
  });
  const std::vector<std::string> rows = {
      "STAR, ,",
      "A004,ÖZTÜRK ÇAĞ,  451.25",
      "A005,SMITH JOHN,   12.00",
      "B002,x山田太郎山,田 5.00",
      "C001,M\uFFFDLLER    , 3.00 ",
      "C002,山\uFFFDR      , 9.00 ",
  };
  ExtractFixture f;
  f.ui.SetAlwaysDue(false);  // lets the ASCII rows take the fast path
  const std::string path = f.UseReport(report);
  f.ctx->lineProcessor.SetUtf8(true);
  clsTable table =
      MakeTable("START", 0, "END", -1,
                {MakeColumn(1, 4, "A"), MakeColumn(6, 15, "B"), MakeColumn(16, 23, "C")});
  f.Run(table, true);
  EXPECT_EQ(f.sink.rows, rows);
  // Two lines hold invalid bytes: one note, naming the report.
  EXPECT_EQ(f.ui.Texts(), std::vector<std::string>{"The report " + path +
                                                   " is not valid UTF-8 throughout: each invalid "
                                                   "byte counts as one character and is written "
                                                   "as U+FFFD"});
}

TEST(Utf8Report, SumsAcrossPeriodsCutEachSlotByColumns) {
  ExtractFixture f;
  clsLineProcessor& lp = f.ctx->lineProcessor;
  lp.SetUtf8(true);
  lp.SetSlot(1, "ÖZTÜRK  10.50");
  lp.SetSlot(2, "山田    2.25");
  f.ctx->recipe.InputFileLast = 2;
  EXPECT_EQ(lp.ProcessField(kOpSum, 9, 14), "12.75");
}

// A recipe as the program writes one, with `extra` after the sheet names.
std::string Recipe(std::string_view extra) {
  std::string text =
      CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1", "[Output File]",
            "OutputFileTitle=", "OutputFileName=", "InputFileFirst=1", "InputFileLast=1",
            "ExportSpecFileName=s.krs", "WriteDataFormat=", "Sheet1Name=", "Sheet2Name="}) +
      std::string(extra) + "[Input Files]\r\n";
  for (int n = 1; n <= 12; ++n) {
    text += CrLf({std::to_string(n) + "Title=", std::to_string(n) + "FileName="});
  }
  return text;
}

TEST(Utf8Report, RecipeKeyIsReadValidatedAndWrittenBackOnlyWhenThere) {
  const struct {
    std::string extra;
    std::string read;
    std::vector<std::string> messages;
  } cases[] = {
      {"", "", {}},
      {"InputEncoding= UTF-8 \r\n", "UTF-8", {}},
      {"InputEncoding=utf8\r\n",
       "utf8",
       {"Error in Output File : InputEncoding must be auto, utf-8, cp1252 or latin1, not "
        "\"utf8\"!"}},
  };
  for (const auto& c : cases) {
    TempDir dir;
    dir.Write("s.krs", CrLf({"[Header]", "Product=KRO", "FileType=EXPORT SPEC", "FileFormat=1.1"}));
    const std::string path = dir.Write("a.rcp", Recipe(c.extra));
    RecordingPort ui;
    clsRecipe recipe;
    recipe.LoadFromFile(ui, path);
    EXPECT_EQ(recipe.InputEncoding, c.read);
    EXPECT_EQ(ui.Texts(), c.messages);
    if (!c.messages.empty()) continue;
    ASSERT_TRUE(recipe.SaveToFile(ui, path));
    EXPECT_EQ(ReadFile(path), Recipe(c.read.empty() ? "" : "InputEncoding=" + c.read + "\r\n"));
  }
}

}  // namespace
}  // namespace kroveld::testing
