// Reports read as UTF-8: tables cut by printed columns (to CSV through the fast path and to
// cells), invalid bytes, sums across periods, the template analyzer and the recipe key.
#include <gtest/gtest.h>

#include "engine/extract_support.h"
#include "engine/recipe.h"
#include "engine/table_parser.h"

namespace kroveld::testing {
namespace {

// Fields 1-4, 6-15 and 16-23: the name field ends where the amount field begins.
clsTable LedgerTable() {
  return MakeTable("START", 1, "END", -1,
                   {MakeColumn(1, 4, "A"), MakeColumn(6, 15, "B"), MakeColumn(16, 23, "C")});
}

const std::string kLedger = CrLf({
    "ID   NAME       AMOUNT",
    "START",
    "A004 ÖZTÜRK ÇAĞ  451.25",
    "A005 SMITH JOHN   12.00",
    "B002 x山田太郎山田 5.00",  // 山 takes columns 15 and 16: it stays with the name
    "C001 M\xFCLLER     3.00",  // an 8-bit ü: one column, written as U+FFFD
    "C002 \xC4RGER      9.00",
    "END",
});

const std::vector<std::vector<std::string>> kLedgerFields = {
    {"A004", "ÖZTÜRK ÇAĞ", "  451.25"},    {"A005", "SMITH JOHN", "   12.00"},
    {"B002", "x山田太郎山", "田 5.00"},    {"C001", "M\uFFFDLLER    ", " 3.00 "},
    {"C002", "\uFFFDRGER     ", " 9.00 "},
};

TEST(Utf8Report, TableCutByPrintedColumnsToCellsAndCsv) {
  for (const bool csv : {false, true}) {
    SCOPED_TRACE(csv ? "csv" : "cells");
    ExtractFixture f;
    f.ui.SetAlwaysDue(false);  // lets the CSV rows take the fast path where they may
    const std::string report = f.UseReport(kLedger);
    f.ctx->lineProcessor.SetUtf8(true);
    clsTable table = LedgerTable();
    f.Run(table, csv);
    ASSERT_FALSE(f.Failed());
    for (std::size_t r = 0; r < kLedgerFields.size(); ++r) {
      const auto& want = kLedgerFields[r];
      if (csv) {
        ASSERT_LT(r, f.sink.rows.size());
        EXPECT_EQ(f.sink.rows[r], want[0] + "," + want[1] + "," + want[2]);
      } else {
        for (int c = 0; c < 3; ++c) EXPECT_EQ(f.sink.At(1 + static_cast<int>(r), c + 1), want[c]);
      }
    }
    if (csv) {
      EXPECT_EQ(f.sink.rows.size(), kLedgerFields.size());
    }
    // Two lines hold invalid bytes: one note, naming the report.
    ASSERT_EQ(f.ui.messages.size(), 1u) << f.ui.messages[0].text;
    EXPECT_TRUE(f.ui.messages[0].note);
    EXPECT_EQ(f.ui.messages[0].text, "The report " + report +
                                         " is not valid UTF-8 throughout: each invalid byte "
                                         "counts as one character and is written as U+FFFD");
  }
}

// Without UTF-8 nothing changes: the same report is cut by bytes, invalid bytes pass unchanged.
TEST(Utf8Report, EightBitReadingStillCutsBytes) {
  ExtractFixture f;
  f.UseReport(kLedger);
  clsTable table = LedgerTable();
  f.Run(table, true);
  ASSERT_EQ(f.sink.rows.size(), 5u);
  EXPECT_EQ(f.sink.rows[0],
            "A004,ÖZTÜRK \xC3,\x87"
            "AĞ  45");
  EXPECT_EQ(f.sink.rows[1], "A005,SMITH JOHN,   12.00");
  EXPECT_EQ(f.sink.rows[3], "C001,M\xFCLLER    , 3.00 ");
  EXPECT_TRUE(f.ui.messages.empty());
}

TEST(Utf8Report, TabsAndByteOrderMarkCountAsPrinted) {
  ExtractFixture f;
  // A byte order mark before the first line, tabs after wide and accented characters.
  f.UseReport("\xEF\xBB\xBFSTART\r\n山田\t12\r\nÄÖ\t34\r\nEND\r\n");
  f.ctx->lineProcessor.SetUtf8(true);
  f.ctx->tabSize = 8;
  clsTable table = MakeTable("START", 0, "END", -1, {MakeColumn(1, 8, "A"), MakeColumn(9, 11)});
  table.Columns[1].WriteColumn = "B";
  f.Run(table);
  EXPECT_EQ(f.sink.At(1, 1), "START ");  // the mark is no part of the text
  EXPECT_EQ(f.sink.At(2, 1), "山田    ");
  EXPECT_EQ(f.sink.At(2, 2), "12 ");
  EXPECT_EQ(f.sink.At(3, 1), "ÄÖ      ");
  EXPECT_EQ(f.sink.At(3, 2), "34 ");
}

TEST(Utf8Report, SumsAcrossPeriodsCutEachSlotByColumns) {
  ExtractFixture f;
  clsLineProcessor& lp = f.ctx->lineProcessor;
  lp.SetUtf8(true);
  lp.SetSlot(1, "ÖZTÜRK  10.50");
  lp.SetSlot(2, "山田    2.25");
  lp.SetSlot(3, "SMITH   1.00");
  f.ctx->recipe.InputFileFirst = 1;
  f.ctx->recipe.InputFileLast = 3;
  EXPECT_EQ(lp.ProcessField(kOpSum, 9, 14), "13.75");
  EXPECT_EQ(lp.ProcessField(kOpFirst, 1, 6), "ÖZTÜRK");
  EXPECT_EQ(lp.ProcessField(kOpLast, 1, 6), "SMITH ");
  lp.SetUtf8(false);
  lp.SetSlot(1, "ÖZTÜRK  10.50");
  EXPECT_EQ(lp.ProcessField(kOpFirst, 9, 14), "  10.5");  // bytes: Ö and Ü take two each
}

TEST(Utf8Report, TemplateAnalyzerCountsColumns) {
  TempDir dir;
  const std::string report = dir.Write(
      "r.txt",
      CrLf({"TOP", "ÖZTÜRK ÇAĞ  451.25", "山田        12.00", "SMITH       17.00", "BOTTOM"}));
  RecordingPort ui;
  clsTableParser parser;
  std::vector<ColumnSpan> spans;
  ASSERT_EQ(parser.Locate(report, "TOP", 1, "BOTTOM", -1, 8, true),
            clsTableParser::Located::kFound);
  ASSERT_TRUE(parser.analyze_template(ui, "=", spans));
  EXPECT_EQ(spans, (std::vector<ColumnSpan>{{1, 11, false}, {12, 18, false}}));
  ASSERT_TRUE(parser.analyze_template(ui, "-", spans));
  EXPECT_EQ(spans, (std::vector<ColumnSpan>{{1, 7, false}, {8, 11, false}, {12, 18, false}}));
  // A template typed with a wide character marks two columns.
  ASSERT_TRUE(parser.analyze_template(ui, "金額 ---", spans));
  EXPECT_EQ(spans, (std::vector<ColumnSpan>{{1, 5, false}, {6, 18, false}}));
  // Read as 8-bit the same lines are longer in bytes than in columns.
  ASSERT_EQ(parser.Locate(report, "TOP", 1, "BOTTOM", -1, 8), clsTableParser::Located::kFound);
  EXPECT_EQ(parser.LongestLine(), 22);
  EXPECT_TRUE(ui.messages.empty());
}

const std::string kSpec = CrLf({"[Header]", "Product=KRO", "FileType=EXPORT SPEC", "FileFormat=1.1",
                                "[General]", "Name=Ledger"});

// A recipe as the program writes one, with `extra` after the sheet names.
std::string Recipe(std::string_view extra) {
  std::string text =
      CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1", "[Output File]",
            "OutputFileTitle=", "OutputFileName=", "InputFileFirst=1", "InputFileLast=1",
            "ExportSpecFileName=s.krs", "WriteDataFormat=", "Sheet1Name=", "Sheet2Name="}) +
      std::string(extra) + CrLf({"[Input Files]", "1Title=", "1FileName=r.txt"});
  for (int n = 2; n <= 12; ++n) {
    text += CrLf({std::to_string(n) + "Title=", std::to_string(n) + "FileName="});
  }
  return text;
}

TEST(Utf8Report, RecipeKeyIsReadValidatedAndWrittenBackOnlyWhenUsed) {
  const struct {
    const char* what;
    std::string extra;
    std::string read;
    std::string message;
  } cases[] = {
      {"absent", "", "", ""},
      {"utf-8", "InputEncoding=utf-8\r\n", "utf-8", ""},
      {"written as typed", "InputEncoding= Auto \r\n", "Auto", ""},
      {"unknown", "InputEncoding=utf8\r\n", "utf8",
       "Error in Output File : InputEncoding must be auto, utf-8, cp1252 or latin1, not \"utf8\"!"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    TempDir dir;
    dir.Write("s.krs", kSpec);
    const std::string text = Recipe(c.extra);
    const std::string path = dir.Write("a.rcp", text);
    RecordingPort ui;
    clsRecipe recipe;
    recipe.LoadFromFile(ui, path);
    EXPECT_EQ(recipe.InputEncoding, c.read);
    if (c.message.empty()) {
      EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;
    } else {
      ASSERT_EQ(ui.Texts(), std::vector<std::string>{c.message});
      continue;
    }
    ASSERT_TRUE(recipe.SaveToFile(ui, path));
    EXPECT_EQ(ReadFile(path),
              c.what == std::string("written as typed") ? Recipe("InputEncoding=Auto\r\n") : text);
    // Dropped again: the key stays, empty, so that it reads as absent.
    recipe.InputEncoding.clear();
    ASSERT_TRUE(recipe.SaveToFile(ui, path));
    EXPECT_EQ(ReadFile(path), Recipe(c.extra.empty() ? "" : "InputEncoding=\r\n"));
  }
  // A new recipe file gets the key after the sheet names.
  TempDir dir;
  RecordingPort ui;
  clsRecipe recipe;
  recipe.ExportSpecFileName = "s.krs";
  recipe.InputEncoding = "utf-8";
  ASSERT_TRUE(recipe.SaveToFile(ui, dir.File("new.rcp")));
  const std::string text = ReadFile(dir.File("new.rcp"));
  EXPECT_NE(text.find("Sheet2Name=\r\nInputEncoding=utf-8\r\n\r\n[Input Files]"), std::string::npos)
      << text;
}

}  // namespace
}  // namespace kroveld::testing
