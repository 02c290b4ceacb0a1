// Recipes: loading with the loader's messages and quirks, saving and loading back, and the
// resolution of relative names against the recipe's folder.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/recipe.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;
using testing::RecordingPort;
using testing::TempDir;

const std::string kSpec = CrLf({"[Header]", "Product=KRO", "FileType=EXPORT SPEC", "FileFormat=1.1",
                                "[General]", "Name=Ledger", "[Title 1]", "WriteSheet=1",
                                "WriteColumn=A", "TotalLines=1", "1Text=Ledger"});

// The recipe text with `from` replaced by `to` (`from` must occur).
std::string RecipeText(std::string_view specName, std::string_view from = "",
                       std::string_view to = "") {
  std::string text =
      CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1", "[Output File]",
            "OutputFileTitle=Ledger out", "OutputFileName=out\\ledger.xls", "InputFileFirst=2",
            "InputFileLast=3", "ExportSpecFileName=  @  "}) +
      CrLf({"WriteDataFormat=NearestCent", "Sheet1Name=Detail", "Sheet2Name=Summary"}) +
      CrLf({"[Input Files]", "1Title=January", "1FileName=jan.txt", "2Title=February",
            "2FileName=/data/feb.txt", "12Title=December", "12FileName=dec.txt"});
  text.replace(text.find('@'), 1, specName);
  if (!from.empty()) text.replace(text.find(from), from.size(), to);
  return text;
}

TEST(RecipeLoad, ReadsFieldsAndTheExportSpecificationBesideIt) {
  TempDir dir;
  dir.Write("specs/ledger.krs", kSpec);
  const std::string path = dir.Write("r/ledger.rcp", RecipeText("../specs/ledger.krs"));
  RecordingPort ui;
  clsRecipe recipe;
  recipe.LoadFromFile(ui, path);
  EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;
  EXPECT_EQ(recipe.OutputFileTitle, "Ledger out");
  EXPECT_EQ(recipe.OutputFileName, "out\\ledger.xls");
  EXPECT_EQ(recipe.InputFileFirst, 2);
  EXPECT_EQ(recipe.InputFileLast, 3);
  EXPECT_EQ(recipe.ExportSpecFileName, "../specs/ledger.krs");
  EXPECT_EQ(recipe.WriteDataFormat, "NearestCent");
  // Sheet names are looked up from the top of the file, so those in [Output File] are not seen.
  EXPECT_EQ(recipe.Sheet1Name, "");
  EXPECT_EQ(recipe.Sheet2Name, "");
  EXPECT_EQ(recipe.InputFileTitles[0], "January");
  EXPECT_EQ(recipe.InputFileTitles[11], "December");
  EXPECT_EQ(recipe.InputFileName(12), "dec.txt");
  EXPECT_EQ(recipe.InputFileName(5), "");
  EXPECT_EQ(recipe.InputFileName(0), "");
  EXPECT_EQ(recipe.InputFileName(13), "");
  EXPECT_EQ(recipe.InputFilePath(1), dir.path() + "/r/jan.txt");
  EXPECT_EQ(recipe.InputFilePath(2), "/data/feb.txt");
  EXPECT_EQ(recipe.ExportSpecs.Name, "Ledger");
  ASSERT_EQ(recipe.ExportSpecs.Titles.size(), 1u);
}

TEST(RecipeLoad, SheetNamesBeforeTheFirstSectionAreRead) {
  TempDir dir;
  dir.Write("s.krs", kSpec);
  const std::string path = dir.Write(
      "r.rcp", CrLf({"Sheet1Name=Top one", "Sheet2Name = Top two ; note"}) + RecipeText("s.krs"));
  RecordingPort ui;
  clsRecipe recipe;
  recipe.LoadFromFile(ui, path);
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_EQ(recipe.Sheet1Name, "Top one");
  EXPECT_EQ(recipe.Sheet2Name, "Top two");
}

// A value of the recipe replaced: WriteDataFormat is kept only in its exact spelling; an input
// range that is not a 32-bit number keeps the reset value 1.
TEST(RecipeLoad, FormatAndInputRangeValues) {
  TempDir dir;
  dir.Write("s.krs", kSpec);
  const struct {
    const char *line, *replacement, *format;
    int first;
  } cases[] = {
      {"WriteDataFormat=NearestCent", "WriteDataFormat= NearestDollar ", "NearestDollar", 2},
      {"WriteDataFormat=NearestCent", "WriteDataFormat=nearestdollar", "", 2},
      {"WriteDataFormat=NearestCent", "WriteDataFormat=Nearest Cent", "", 2},
      {"InputFileFirst=2", "InputFileFirst=", "NearestCent", 1},
      {"InputFileFirst=2", "InputFileFirst=two", "NearestCent", 1},
      {"InputFileFirst=2", "InputFileFirst=99999999999", "NearestCent", 1}};
  for (const auto& c : cases) {
    RecordingPort ui;
    clsRecipe recipe;
    recipe.WriteDataFormat = "NearestDollar";  // reset by the load
    recipe.InputFileFirst = 7;
    recipe.LoadFromFile(ui, dir.Write("r.rcp", RecipeText("s.krs", c.line, c.replacement)));
    EXPECT_EQ(recipe.WriteDataFormat, c.format) << c.replacement;
    EXPECT_EQ(recipe.InputFileFirst, c.first) << c.replacement;
    EXPECT_EQ(recipe.InputFileLast, 3) << c.replacement;
  }
}

TEST(RecipeLoad, BadHeaderIsReportedAndLoadingGoesOn) {
  TempDir dir;
  dir.Write("s.krs", kSpec);
  const std::string path = dir.Write("r.rcp", RecipeText("s.krs", "Product=KRO", "Product=KRO-B"));
  RecordingPort ui;
  clsRecipe recipe;
  recipe.LoadFromFile(ui, path);
  EXPECT_EQ(ui.Texts(), (std::vector<std::string>{"Incorrect product code!",
                                                  "invalid header in recipe file: " + path}));
  EXPECT_EQ(recipe.OutputFileName, "out\\ledger.xls");
  EXPECT_EQ(recipe.ExportSpecs.Titles.size(), 1u);
}

TEST(RecipeLoad, MissingExportSpecificationLeavesNoSections) {
  TempDir dir;
  dir.Write("s.krs", kSpec);
  RecordingPort ui;
  clsRecipe recipe;
  recipe.LoadFromFile(ui, dir.Write("a.rcp", RecipeText("s.krs")));
  ASSERT_EQ(recipe.ExportSpecs.Titles.size(), 1u);
  recipe.LoadFromFile(ui, dir.Write("b.rcp", RecipeText("nope.krs")));
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"Cannot find Export Specs file: nope.krs"});
  EXPECT_EQ(ui.messages[0].icon, Icon::None);
  EXPECT_TRUE(recipe.ExportSpecs.Titles.empty());
  EXPECT_EQ(recipe.OutputFileTitle, "Ledger out");
}

TEST(RecipeLoad, MissingRecipeIsReportedTwiceAndKeepsThePreviousOne) {
  TempDir dir;
  dir.Write("s.krs", kSpec);
  std::filesystem::create_directory(dir.File("folder.rcp"));
  RecordingPort ui;
  clsRecipe recipe;
  recipe.LoadFromFile(ui, dir.Write("a.rcp", RecipeText("s.krs")));
  ASSERT_TRUE(ui.messages.empty());
  for (const std::string& missing : {dir.File("gone.rcp"), dir.File("folder.rcp")}) {
    ui.Clear();
    recipe.LoadFromFile(ui, missing);
    EXPECT_EQ(ui.Texts(), (std::vector<std::string>{"Cannot find recipe file: " + missing,
                                                    "Cannot find recipe file: " + missing}));
    EXPECT_EQ(ui.messages[0].icon, Icon::None);
    EXPECT_EQ(recipe.OutputFileName, "out\\ledger.xls");  // nothing was reset
    EXPECT_EQ(recipe.ExportSpecs.Titles.size(), 1u);      // the previous .krs was read again
  }

  RecordingPort fresh;
  clsRecipe empty;
  empty.LoadFromFile(fresh, dir.File("gone.rcp"));
  EXPECT_EQ(fresh.Texts(),
            (std::vector<std::string>{"Cannot find recipe file: " + dir.File("gone.rcp"),
                                      "Cannot find recipe file: " + dir.File("gone.rcp"),
                                      "Cannot find Export Specs file: "}));
}

TEST(ResolveRelative, AbsoluteNamesStayAndRelativeOnesFollowTheOwner) {
  const struct {
    const char* owner;
    const char* name;
    const char* expected;
  } cases[] = {
      {"/home/u/r.rcp", "a.krs", "/home/u/a.krs"},
      {"/home/u/r.rcp", "/etc/a.krs", "/etc/a.krs"},
      {"/home/u/r.rcp", "\\share\\a.krs", "\\share\\a.krs"},
      {"/home/u/r.rcp", "C:\\x\\a.krs", "C:\\x\\a.krs"},
      {"C:\\data\\r.rcp", "sub\\a.krs", "C:\\data\\sub\\a.krs"},
      {"r.rcp", "a.krs", "a.krs"},
      {"/home/u/r.rcp", "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ResolveRelativeTo(c.owner, c.name), c.expected) << c.owner << " + " << c.name;
  }
}

}  // namespace
}  // namespace kroveld
