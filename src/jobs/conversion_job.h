// One conversion of one input file into one output file (RunRecipe): checks the options in a
// fixed order, loads the recipe the user chose or builds the automatic one from the input, reads
// the export definition it names and runs the output phase.
#pragma once

#include <string>
#include <string_view>

#include "engine/context.h"

namespace kroveld {

// What a conversion asks of the window, or the command line, that started it.
class ConversionHost {
 public:
  virtual ~ConversionHost() = default;
  // The bWarnedAboutTabsInFile setting: the user has been told once that inputs hold tabs.
  virtual bool WarnedAboutTabsInFile() = 0;
  virtual void SetWarnedAboutTabsInFile() = 0;
  // Adds the current input, output and recipe texts to the most-recently-used lists.
  virtual void UpdateMRUs() = 0;
  // The recipe as the user gave it (the window's recipe box, the command line's recipe path),
  // quoted by "Recipe file ... does not exist!".
  virtual std::string RecipeBoxText() = 0;
  // Called when a whole job (BeginProcessing) starts and when it has ended; the context's
  // run.running is true in between, so a window can disable Convert and refuse re-entry.
  virtual void JobStarted() {}
  virtual void JobFinished() {}
  // A wildcard batch is about to convert file `number` of `count`.
  virtual void FileStarted(const std::string& /*file*/, std::size_t /*number*/,
                           std::size_t /*count*/) {}
};

enum class OutputKind { None, Csv, Workbook };

inline constexpr const char* kTabNote =
    "NOTE: The text in the Input File contains tab characters.\n"
    "To specify the tab stop, change the options.";

// ".CSV" anywhere in the upper-cased path gives CSV (tested first), else the suffix of a workbook
// codec anywhere in it (".XLS", which ".XLSX" contains) a workbook.
OutputKind OutputKindOf(std::string_view outputPath);
// Application folder + "_AutoRecipe.rcp".
std::string AutoRecipePath(const Context& ctx);
// "first", or "first-last" when the recipe's period range holds more than one file.
std::string PeriodLabel(const clsRecipe& recipe);

// A recipe of the short format carries Product "KRO-B" in its header.
bool IsShortFormatRecipe(const std::string& path);
// Loads ctx.currentRecipe, long form or short form, with its export definition, for the report
// ctx.currentInput (which becomes its input file 1). A short recipe is converted into
// "_ExportSpecs.krs" of ctx.appFolder.
void LoadChosenRecipe(Context& ctx);

// Shows the tab-characters note unless the host says it was shown before, and remembers it.
void WarnAboutTabsInFile(Context& ctx, ConversionHost& host);
// One conversion with ctx.options; everything it has to say goes through the port.
void RunRecipe(Context& ctx, ConversionHost& host);

}  // namespace kroveld
