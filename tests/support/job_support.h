// Helpers of the conversion-job and batch tests: a small report with its recipe and export
// definition written into a temporary folder, and a host that records what a conversion asks.
#pragma once

#include <string>

#include "jobs/conversion_job.h"
#include "support/test_support.h"

namespace kroveld::testing {

// A host that keeps the tab flag in memory and counts MRU updates.
class RecordingHost : public ConversionHost {
 public:
  bool WarnedAboutTabsInFile() override { return warned; }
  void SetWarnedAboutTabsInFile() override { warned = true; }
  void UpdateMRUs() override { ++mruUpdates; }
  std::string RecipeBoxText() override { return recipeBoxText; }
  void JobStarted() override { ++started; }
  void JobFinished() override { ++finished; }
  int started = 0;
  int finished = 0;
  bool warned = false;
  int mruUpdates = 0;
  std::string recipeBoxText;
};

// Lines 1..6: a title, "ITEMS", two rows, "END". The table is the two rows.
// Names are padded to five characters, so every row is 13 characters long.
inline std::string Pad5(std::string_view s) {
  return std::string(s) + std::string(5 - s.size(), ' ');
}
inline std::string SmallReport(std::string_view first = "apple", std::string_view second = "pear") {
  return CrLf({"Stock list", "ITEMS", Pad5(first) + "      12", Pad5(second) + "       7", "END"});
}
// The CSV SmallReport converts to with SmallRecipe (fields cut at 1-5 and 6-13).
inline std::string SmallCsv(std::string_view first = "apple", std::string_view second = "pear") {
  return CrLf({Pad5(first) + ",      12", Pad5(second) + ",       7"});
}

// Writes "stock.krs" and "stock.rcp" (naming `inputName` as its input file 1) into the folder
// and returns the recipe path.
inline std::string SmallRecipe(const TempDir& dir, std::string_view inputName = "elsewhere.txt") {
  dir.Write("stock.krs", SpecHeader() + "[General]\r\nName=Stock\r\n" +
                             SpecTable(1, "ITEMS", 1, "END", -1, {{1, 5, "A"}, {6, 13, "B"}}));
  return dir.Write("stock.rcp",
                   CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1",
                         "[Output File]", "OutputFileTitle=", "OutputFileName=out.csv",
                         "InputFileFirst=1", "InputFileLast=1", "ExportSpecFileName=stock.krs",
                         "WriteDataFormat=", "Sheet1Name=", "Sheet2Name=", "[Input Files]",
                         "1Title=", "1FileName=" + std::string(inputName)}));
}

}  // namespace kroveld::testing
