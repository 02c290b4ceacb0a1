#include "app/cli_command_line.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <system_error>

#include "app/help_text.h"
#include "app/slash_command_line.h"
#include "app/version.h"
#include "util/files.h"

namespace kroveld {

std::string AbsolutePath(const std::string& path) {
  if (path.empty()) return path;
  std::error_code ec;
  auto abs = std::filesystem::absolute(path, ec);
  return ec ? path : abs.lexically_normal().string();
}

CliParseResult ParseConventionalCommandLine(const std::vector<std::string>& args,
                                            clsConversionOptions& options) {
  CliParseResult result;
  CLI::App app{"Converts fixed-column text reports to CSV or spreadsheet files.", kProgramName};
  app.set_help_flag("-h,--help", "Show the command-line help");
  app.set_version_flag("--version", std::string(kProgramName) + " " + VersionText());

  std::string input, output, recipe, logFile, sheet;
  int tabSize = options.lTabSize;
  bool subfolders = false, beside = false, show = false, noClear = false, verbose = false;
  app.add_option("-i,--input", input, "Input file, or folder with a wildcard (in/*.txt)")
      ->required();
  app.add_option("-o,--output", output, "Output file (.csv, .xls, .xlsx) or wildcard (out/*.csv)")
      ->required();
  app.add_option("-r,--recipe", recipe, "Recipe file (.rcp); without it the automatic recipe");
  app.add_flag("-s,--subfolders", subfolders, "Also convert the files of subfolders");
  app.add_flag("-g,--beside-input", beside, "Write each output beside its input");
  app.add_flag("-e,--show", show, "Show the spreadsheet application");
  app.add_flag("--no-clear", noClear, "Do not clear the target sheet before writing");
  app.add_option("-w,--sheet", sheet, "Target sheet by name or number");
  app.add_option("-t,--tab-size", tabSize, "Tab stop width of the input text");
  app.add_option("-l,--log", logFile, "Log file (accepted and stored)");
  app.add_flag("-v,--verbose", verbose, "Verbose (accepted and stored)");

  std::vector<std::string> reversed(args.rbegin(), args.rend());
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    result.out = CommandLineHelpText();
    return result;
  } catch (const CLI::CallForVersion&) {
    result.out = std::string(kProgramName) + " " + VersionText() + "\n";
    return result;
  } catch (const CLI::ParseError& e) {
    result.exitCode = 2;
    result.err = std::string(kProgramName) + ": " + e.what() + "\n" +
                 "Run with --help for more information.\n";
    return result;
  }

  options.sInputFile = AbsolutePath(input);
  options.sOutputFile = AbsolutePath(output);
  if (!recipe.empty()) {
    options.sRecipeFile = AbsolutePath(recipe);
    options.bUseRecipe = true;
  }
  if (subfolders) options.bDoSubfolders = true;
  if (beside) options.bSaveInOriginalFolder = true;
  if (show) options.bShowExcel = true;
  if (noClear) options.bClearOutputFileBeforeProcessing = false;
  if (!sheet.empty()) options.sSheetTarget = sheet;
  options.lTabSize = tabSize;
  if (!logFile.empty()) {
    options.sLogFile = AbsolutePath(logFile);
    MakeFolderPath(ParentFolderName(options.sLogFile));
  }
  if (verbose) options.bVerbose = true;
  result.job = true;
  return result;
}

}  // namespace kroveld
