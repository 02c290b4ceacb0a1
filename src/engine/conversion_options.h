// The one record a conversion reads: filled by the command line or from the main window.
#pragma once

#include <string>

#include "util/files.h"
#include "util/utf8_text.h"

namespace kroveld {

class clsConversionOptions {
 public:
  std::string sInputFile;   // input file, folder or wildcard pattern
  std::string sOutputFile;  // output file or pattern
  std::string sRecipeFile;  // recipe to use
  bool bUseRecipe = false;  // true: the recipe file; false: the automatic recipe
  bool bDoSubfolders = false;
  bool bSaveInOriginalFolder = false;
  std::string sLogFile;   // accepted and stored only
  bool bVerbose = false;  // the run summary, and notes on what a pass quietly leaves out
  bool bShowExcel = false;
  bool bClearOutputFileBeforeProcessing = true;
  std::string sSheetTarget = "1";
  int lTabSize = 8;
  // How reports are read (command line --encoding, the options dialog); kUnset leaves it to the
  // recipe, and to 8-bit text when the recipe says nothing either.
  InputEncoding inputEncoding = InputEncoding::kUnset;
  // Keeping the output a run replaces (command line --backup); none from the window.
  BackupPolicy backup;
  int lCommandLineExitCode = 0;  // kept in the record for command-line runs; nothing uses it yet
  std::string sErr;              // kept in the record for an error text; nothing uses it yet
};

}  // namespace kroveld
