// How a conversion chooses to read its report: the run's --encoding, the recipe's InputEncoding,
// auto detection over the whole file, and 8-bit reports converting as they always have.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/context.h"
#include "jobs/conversion_job.h"
#include "jobs/job_test_support.h"
#include "jobs/workbook/xlsx_reader.h"
#include "support/recording_port.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;
using testing::RecordingHost;
using testing::RecordingPort;
using testing::TempDir;

// Fields 1-5 and 6-13 of the stock recipe. In UTF-8 "Äpfel" is five characters, six bytes.
const std::string kUtf8Report =
    CrLf({"Stock list", "ITEMS", "Äpfel      12", "山田        7", "END"});
const std::string kUtf8Csv = CrLf({"Äpfel,      12", "山田 ,       7"});
// The same report written in Windows-1252 (Ä is 0xC4), with a euro sign and a ü.
const std::string kCp1252Report =
    CrLf({"Stock list", "ITEMS", "\xC4pfel      12", "M\xFCsli  \x80 7", "END"});

struct Conversion {
  TempDir dir;
  RecordingPort port;
  Context ctx{port, dir.path()};
  RecordingHost host;

  // Converts `report` with the stock recipe (with `recipeExtra` after its sheet names) under the
  // run's `encoding`; returns the output's bytes ("" when none was written).
  std::string Run(const std::string& report, InputEncoding encoding, const std::string& output,
                  const std::string& recipeExtra = "") {
    std::string recipe = testing::SmallRecipe(dir);
    if (!recipeExtra.empty()) {
      std::string text = ReadFile(recipe);
      const std::string after = "Sheet2Name=\r\n";
      text.insert(text.find(after) + after.size(), recipeExtra + "\r\n");
      dir.Write("stock.rcp", text);
    }
    ctx.options.bUseRecipe = true;
    ctx.options.sRecipeFile = recipe;
    host.recipeBoxText = recipe;
    ctx.options.sInputFile = dir.Write("in.txt", report);
    ctx.options.sOutputFile = dir.File(output);
    ctx.options.inputEncoding = encoding;
    std::filesystem::remove(dir.File(output));
    port.Clear();
    RunRecipe(ctx, host);
    return std::filesystem::exists(dir.File(output)) ? ReadFile(dir.File(output)) : std::string();
  }
};

TEST(InputEncoding, AutoReadsTheWholeReportBeforeChoosing) {
  std::string oneBadByte = kUtf8Report;
  oneBadByte.replace(oneBadByte.find("END"), 3, "END \xFC");  // far below the table
  const struct {
    const char* what;
    std::string report;
    bool utf8;
  } cases[] = {
      {"pure ASCII keeps the 8-bit road", testing::SmallReport(), false},
      {"valid UTF-8 beyond ASCII", kUtf8Report, true},
      {"one invalid byte anywhere makes it 8-bit", oneBadByte, false},
      {"Windows-1252", kCp1252Report, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Conversion eightBit;
    const std::string expected = eightBit.Run(c.report, InputEncoding::kUnset, "out.csv");
    Conversion automatic;
    const std::string csv = automatic.Run(c.report, InputEncoding::kAuto, "out.csv");
    EXPECT_EQ(automatic.ctx.lineProcessor.Utf8(), c.utf8);
    EXPECT_TRUE(automatic.port.messages.empty()) << automatic.port.Texts().front();
    if (c.utf8) {
      EXPECT_EQ(csv, kUtf8Csv);
      EXPECT_NE(csv, expected);
    } else {
      EXPECT_EQ(csv, expected);
    }
  }
}

TEST(InputEncoding, EightBitReportsConvertByteForByteUnderEveryChoiceButUtf8) {
  Conversion before;
  const std::string csv = before.Run(kCp1252Report, InputEncoding::kUnset, "out.csv");
  ASSERT_EQ(csv, CrLf({"\xC4pfel,      12", "M\xFCsli,  \x80 7 "}));
  const std::string xlsx = before.Run(kCp1252Report, InputEncoding::kUnset, "out.xlsx");
  Workbook expected;
  std::string error;
  ASSERT_TRUE(ReadXlsx(before.dir.File("out.xlsx"), expected, error)) << error;
  ASSERT_EQ(expected.GetSheet(1).Get(1, 1).text, "Äpfel");  // decoded from Windows-1252

  for (const InputEncoding e :
       {InputEncoding::kAuto, InputEncoding::kCp1252, InputEncoding::kLatin1}) {
    SCOPED_TRACE(static_cast<int>(e));
    Conversion c;
    EXPECT_EQ(c.Run(kCp1252Report, e, "out.csv"), csv);
    c.Run(kCp1252Report, e, "out.xlsx");
    EXPECT_TRUE(c.port.messages.empty());
    Workbook book;
    ASSERT_TRUE(ReadXlsx(c.dir.File("out.xlsx"), book, error)) << error;
    for (int row = 1; row <= 2; ++row) {
      for (int column = 1; column <= 2; ++column) {
        EXPECT_EQ(book.GetSheet(1).Get(row, column).text,
                  expected.GetSheet(1).Get(row, column).text);
        EXPECT_EQ(book.GetSheet(1).Get(row, column).number,
                  expected.GetSheet(1).Get(row, column).number);
      }
    }
  }
  // Read as UTF-8 each 8-bit letter is one invalid byte, one column, U+FFFD; said once.
  Conversion utf8;
  EXPECT_EQ(utf8.Run(kCp1252Report, InputEncoding::kUtf8, "out.csv"),
            CrLf({"\uFFFDpfel,      12", "M\uFFFDsli,  \uFFFD 7 "}));
  ASSERT_EQ(utf8.port.messages.size(), 1u);
  EXPECT_TRUE(utf8.port.messages[0].note);
}

TEST(InputEncoding, Utf8TextReachesTheWorkbookUnchanged) {
  Conversion c;
  c.Run(kUtf8Report, InputEncoding::kUtf8, "out.xlsx");
  EXPECT_TRUE(c.port.messages.empty());
  Workbook book;
  std::string error;
  ASSERT_TRUE(ReadXlsx(c.dir.File("out.xlsx"), book, error)) << error;
  EXPECT_EQ(book.GetSheet(1).Get(1, 1).text, "Äpfel");
  EXPECT_EQ(book.GetSheet(1).Get(2, 1).text, "山田 ");
  EXPECT_EQ(book.GetSheet(1).Get(2, 2).number, 7);
}

TEST(InputEncoding, TheRunsChoiceComesBeforeTheRecipes) {
  const struct {
    const char* what;
    InputEncoding run;
    std::string recipeKey;
    std::string csv;  // "" when nothing is written
    std::vector<std::string> messages;
  } cases[] = {
      {"the recipe's choice", InputEncoding::kUnset, "InputEncoding=utf-8", kUtf8Csv, {}},
      {"the recipe's auto", InputEncoding::kUnset, "InputEncoding=AUTO", kUtf8Csv, {}},
      {"the run's choice wins",
       InputEncoding::kCp1252,
       "InputEncoding=utf-8",
       CrLf({"\xC3\x84pfe,l      1", "\xE5\xB1\xB1\xE7\x94,\xB0       "}),
       {}},
      {"an unknown encoding converts nothing",
       InputEncoding::kUnset,
       "InputEncoding=utf8",
       "",
       {"Error in Output File : InputEncoding must be auto, utf-8, cp1252 or latin1, not "
        "\"utf8\"!"}},
      {"unless the run names one",
       InputEncoding::kUtf8,
       "InputEncoding=utf8",
       kUtf8Csv,
       {"Error in Output File : InputEncoding must be auto, utf-8, cp1252 or latin1, not "
        "\"utf8\"!"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Conversion conversion;
    EXPECT_EQ(conversion.Run(kUtf8Report, c.run, "out.csv", c.recipeKey), c.csv);
    EXPECT_EQ(conversion.port.Texts(), c.messages);
  }
}

// Without a recipe the columns are worked out from the marked report: in UTF-8, by characters.
TEST(InputEncoding, AutomaticRecipeWorksOutColumnsByCharacters) {
  // Amounts right-aligned on the page; by bytes the names would overlap them.
  const std::string marked = CrLf({">>1", "Name    Amount", "ÖZTÜRK  451.25", "SMITH    12.00",
                                   "山田      7.00", "<<1", "-", ">>"});
  std::string csv[2];
  for (const bool utf8 : {false, true}) {
    Conversion c;
    c.ctx.options.bUseRecipe = false;
    c.ctx.options.sInputFile = c.dir.Write("marked.txt", marked);
    c.ctx.options.sOutputFile = c.dir.File("auto.csv");
    c.ctx.options.inputEncoding = utf8 ? InputEncoding::kUtf8 : InputEncoding::kUnset;
    RunRecipe(c.ctx, c.host);
    EXPECT_TRUE(c.port.messages.empty()) << c.port.Texts().front();
    csv[utf8] = ReadFile(c.dir.File("auto.csv"));
  }
  EXPECT_EQ(csv[1], CrLf({"ÖZTÜRK , 451.25", "SMITH  ,  12.00", "山田   ,   7.00"}));
  EXPECT_NE(csv[0], csv[1]);
}

}  // namespace
}  // namespace kroveld
