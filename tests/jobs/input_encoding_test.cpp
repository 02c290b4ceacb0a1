// How a conversion chooses to read its report: the run's --encoding, the recipe's InputEncoding
// and auto detection; 8-bit reports convert exactly as they did without a choice.
#include <gtest/gtest.h>

#include <filesystem>

#include "jobs/conversion_job.h"
#include "support/job_support.h"
#include "support/recording_port.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;

// Read by the stock recipe (fields 1-5 and 6-13). "Äpfel" is five characters and six bytes.
const std::string kUtf8Report = CrLf({"Stock", "ITEMS", "Äpfel      12", "山田        7", "END"});
const std::string kUtf8Csv = CrLf({"Äpfel,      12", "山田 ,       7"});
const std::string kCp1252Report =
    CrLf({"Stock", "ITEMS", "\xC4pfel      12", "M\xFCsli \x80 7", "END"});
const std::string kRecipeError =
    "Error in Output File : InputEncoding must be auto, utf-8, cp1252 or latin1, not \"utf8\"!";

struct Conversion {
  testing::TempDir dir;
  testing::RecordingPort port;
  Context ctx{port, dir.path()};
  testing::RecordingHost host;

  // Converts `report` to CSV under the run's `encoding`, with the stock recipe or, with
  // `automatic`, none; returns the output ("" when none was written).
  std::string Run(const std::string& report, InputEncoding encoding,
                  const std::string& recipeKey = "", bool automatic = false) {
    std::string recipe = ReadFile(testing::SmallRecipe(dir));
    recipe.insert(recipe.find("[Input Files]"), recipeKey);
    ctx.options.bUseRecipe = !automatic;
    ctx.options.sRecipeFile = host.recipeBoxText = dir.Write("stock.rcp", recipe);
    ctx.options.sInputFile = dir.Write("in.txt", report);
    ctx.options.sOutputFile = dir.File("out.csv");
    ctx.options.inputEncoding = encoding;
    RunRecipe(ctx, host);
    return std::filesystem::exists(dir.File("out.csv")) ? ReadFile(dir.File("out.csv")) : "";
  }
};

TEST(InputEncoding, ChoiceOfTheRunTheRecipeOrTheReport) {
  std::string badByteBelow = kUtf8Report + "\xFC\r\n";
  const struct {
    const char* what;
    std::string report;
    InputEncoding run;
    std::string recipeKey;
    std::string csv;  // "8-bit": what the run without any choice writes
    std::vector<std::string> messages;
  } cases[] = {
      {"auto, pure ASCII", testing::SmallReport(), InputEncoding::kAuto, "", "8-bit", {}},
      {"auto, valid UTF-8", kUtf8Report, InputEncoding::kAuto, "", kUtf8Csv, {}},
      {"auto, one invalid byte anywhere", badByteBelow, InputEncoding::kAuto, "", "8-bit", {}},
      {"auto, Windows-1252", kCp1252Report, InputEncoding::kAuto, "", "8-bit", {}},
      {"cp1252", kCp1252Report, InputEncoding::kCp1252, "", "8-bit", {}},
      {"latin1", kCp1252Report, InputEncoding::kLatin1, "", "8-bit", {}},
      {"the recipe's utf-8, in any case and with blanks",
       kUtf8Report,
       InputEncoding::kUnset,
       "InputEncoding= UTF-8 \r\n",
       kUtf8Csv,
       {}},
      {"the run's cp1252 before the recipe's utf-8",
       kUtf8Report,
       InputEncoding::kCp1252,
       "InputEncoding=utf-8\r\n",
       "8-bit",
       {}},
      {"an unknown name converts nothing",
       kUtf8Report,
       InputEncoding::kUnset,
       "InputEncoding=utf8\r\n",
       "",
       {kRecipeError}},
      {"unless the run names one",
       kUtf8Report,
       InputEncoding::kUtf8,
       "InputEncoding=utf8\r\n",
       kUtf8Csv,
       {kRecipeError}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Conversion conversion;
    EXPECT_EQ(conversion.Run(c.report, c.run, c.recipeKey),
              c.csv == "8-bit" ? Conversion().Run(c.report, InputEncoding::kUnset) : c.csv);
    EXPECT_EQ(conversion.port.Texts(), c.messages);
  }
  EXPECT_NE(Conversion().Run(kUtf8Report, InputEncoding::kUnset), kUtf8Csv);
}

// Without a recipe the columns are worked out from the marked report: in UTF-8, by characters,
// as they are then cut.
TEST(InputEncoding, AutomaticRecipeWorksOutColumnsByCharacters) {
  // Amounts right-aligned on the page; by bytes the names would overlap them.
  const std::string marked = CrLf({">>1", "Name    Amount", "ÖZTÜRK  451.25", "SMITH    12.00",
                                   "山田      7.00", "<<1", "-", ">>"});
  Conversion c;
  EXPECT_EQ(c.Run(marked, InputEncoding::kUtf8, "", true),
            CrLf({"ÖZTÜRK , 451.25", "SMITH  ,  12.00", "山田   ,   7.00"}));
  EXPECT_EQ(c.port.Texts(), std::vector<std::string>{});
}

}  // namespace
}  // namespace kroveld
