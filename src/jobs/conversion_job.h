// One conversion of one input file into one output file (RunRecipe): checks the options in a
// fixed order, loads the recipe the user chose or builds the automatic one from the input, reads
// the export definition it names and runs the output phase.
#pragma once

#include <string>
#include <string_view>

#include "engine/context.h"

namespace kroveld {

class PrivateProfile;

// What a conversion asks of the window, or the command line, that started it.
class ConversionHost {
 public:
  virtual ~ConversionHost() = default;
  // The bWarnedAboutTabsInFile setting: the user has been told once that inputs hold tabs.
  virtual bool WarnedAboutTabsInFile() = 0;
  virtual void SetWarnedAboutTabsInFile() = 0;
  // Adds the current input, output and recipe texts to the most-recently-used lists.
  virtual void UpdateMRUs() = 0;
};

// A host that keeps bWarnedAboutTabsInFile in [General] of a config.ini and keeps no
// most-recently-used lists. ReadSettings reads the flag as the main window does when it loads;
// once read, the flag is written as soon as it becomes true.
class ConfigIniHost : public ConversionHost {
 public:
  explicit ConfigIniHost(std::string configPath);
  // A missing file shows path + " can not be found!", a wrong header the header check's own
  // message; then nothing is read, nothing will be written, and the result is false.
  bool ReadSettings(UiPort& ui);
  // The same, leaving the file as read in `ini` for a caller that reads more settings from it.
  bool ReadSettings(UiPort& ui, PrivateProfile& ini);
  bool WarnedAboutTabsInFile() override { return warned_; }
  void SetWarnedAboutTabsInFile() override;
  void UpdateMRUs() override {}

 protected:
  const std::string& ConfigPath() const { return config_path_; }

 private:
  std::string config_path_;
  bool warned_ = false;
  bool read_ = false;  // the settings were read, so the file is a config.ini of ours
};

enum class OutputKind { None, Csv, Workbook };

inline constexpr const char* kTabNote =
    "NOTE: The text in the Input File contains tab characters.\n"
    "To specify the tab stop, change the options.";

// ".CSV" anywhere in the upper-cased path gives CSV (tested first), else ".XLS" a workbook.
OutputKind OutputKindOf(std::string_view outputPath);
// Application folder + "_AutoRecipe.rcp".
std::string AutoRecipePath(const Context& ctx);
// "first", or "first-last" when the recipe's period range holds more than one file.
std::string PeriodLabel(const clsRecipe& recipe);

// Shows the tab-characters note unless the host says it was shown before, and remembers it.
void WarnAboutTabsInFile(Context& ctx, ConversionHost& host);
// One conversion with ctx.options; everything it has to say goes through the port.
void RunRecipe(Context& ctx, ConversionHost& host);

}  // namespace kroveld
