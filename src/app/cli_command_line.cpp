#include "app/cli_command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "app/help_text.h"
#include "app/slash_command_line.h"
#include "app/version.h"
#include "util/files.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// The known option nearest to `name`, letter case counting least; a single letter is only
// matched to itself in the other case, since every letter is one edit from every other.
std::string UnknownOptionText(const std::string& name, const std::vector<std::string>& known) {
  const std::string lower = LowerAscii(name);
  std::string nearest;
  std::size_t best = std::string::npos;
  for (const std::string& candidate : known) {
    const std::size_t d =
        2 * EditDistance(lower, LowerAscii(candidate)) + (name == candidate ? 0 : 1);
    if (d < best) best = d, nearest = candidate;
  }
  const std::size_t limit = name.size() <= 2 ? 0 : std::max<std::size_t>(2, name.size() / 3);
  std::string text = "unknown option '" + name + "'";
  if (best / 2 <= limit) text += "; did you mean '" + nearest + "'?";
  return text;
}

// CLI11 checks required options before it complains about unknown ones, so "--frobnicate" alone
// would read "--input is required". The line is walked first: the first argument that names no
// option is reported with the known option nearest to it. Values of options are skipped, and so
// the line ends at "--".
std::string FirstUnknownOption(const CLI::App& app, const std::vector<std::string>& args) {
  std::vector<std::string> known;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
    for (const std::string& name : option->get_snames()) known.push_back("-" + name);
  }
  auto find = [&app](const std::string& name) { return app.get_option_no_throw(name); };
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg == "--") break;
    if (arg.size() < 2 || arg[0] != '-') continue;
    std::string name;
    bool takesNext = false;
    if (arg[1] == '-') {
      const auto eq = arg.find('=');
      name = arg.substr(0, eq);
      if (const CLI::Option* option = find(name)) {
        takesNext = eq == std::string::npos && option->get_expected_min() > 0;
        name.clear();
      }
    } else {
      // Short flags may be grouped ("-sg"); the first one that takes a value takes the rest of
      // the argument, or the next argument when nothing is left.
      for (std::size_t k = 1; k < arg.size(); ++k) {
        const CLI::Option* option = find("-" + arg.substr(k, 1));
        if (option == nullptr) {
          name = "-" + arg.substr(k, 1);
          break;
        }
        if (option->get_expected_min() > 0) {
          takesNext = k + 1 == arg.size();
          break;
        }
      }
    }
    if (!name.empty()) return UnknownOptionText(name, known);
    if (takesNext) ++i;
  }
  return {};
}

}  // namespace

namespace {
std::string EnvironmentOr(const char* name, const char* fallback) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : fallback;
}
}  // namespace

std::string AbsolutePath(const std::string& path) {
  if (path.empty()) return path;
  std::error_code ec;
  // A path typed with backslashes is the same path: make it native before deciding whether it is
  // relative, so \data\june.txt is absolute as /data/june.txt is.
  auto abs = std::filesystem::absolute(NativePath(path), ec);
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
  bool check = false;
  // Input and output are required of a conversion, not of --check; see after the parse.
  app.add_option("-i,--input", input, "Input file, or folder with a wildcard (in/*.txt)");
  app.add_option("-o,--output", output, "Output file (.csv, .xls, .xlsx) or wildcard (out/*.csv)");
  app.add_option("-r,--recipe", recipe, "Recipe file (.rcp); without it the automatic recipe");
  app.add_flag("-s,--subfolders", subfolders, "Also convert the files of subfolders");
  app.add_flag("-g,--beside-input", beside, "Write each output beside its input");
  app.add_flag("-e,--show", show, "Show the spreadsheet application");
  app.add_flag("--no-clear", noClear, "Do not clear the target sheet before writing");
  app.add_option("-w,--sheet", sheet, "Target sheet by name or number");
  app.add_option("-t,--tab-size", tabSize, "Tab stop width of the input text");
  app.add_option("-l,--log", logFile, "Log file (accepted and stored)");
  app.add_flag("-v,--verbose", verbose, "Verbose (accepted and stored)");
  // GNU-style backups of the output a run replaces, as cp, mv and install take them.
  std::string backup, suffix;
  bool backupGiven = false;
  app.add_option("--backup", backup, "Keep a replaced output when the run reports anything")
      ->expected(0, 1)
      ->check(CLI::IsMember(
          {"", "none", "off", "numbered", "t", "existing", "nil", "simple", "never"}));
  app.add_flag("-b", backupGiven, "Like --backup, without a value");
  app.add_option("-S,--suffix", suffix, "Backup suffix (default ~)");
  app.add_flag("--check", check, "Check the recipe given with -r instead of converting");
  std::string encodingName;
  app.add_option("--encoding", encodingName,
                 "How reports are read: auto, utf-8, cp1252 or latin1 (default: as the recipe "
                 "says, else 8-bit text)");
  bool suggest = false;
  app.add_flag("--suggest", suggest, "Print the row filters proposed for the tables of -i");

  if (const std::string unknown = FirstUnknownOption(app, args); !unknown.empty()) {
    result.exitCode = 2;
    result.err = std::string(kProgramName) + ": " + unknown + "\n" +
                 "Run with --help for more information.\n";
    return result;
  }
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

  // The parser's own words for a bad or missing option, in the order it checks them.
  std::string missing;
  InputEncoding encoding = InputEncoding::kUnset;
  if (app.count("--encoding") > 0 &&
      (Trim(encodingName).empty() || !ParseInputEncoding(encodingName, encoding))) {
    missing = "--encoding \"" + encodingName + "\" is not an encoding: use " +
              std::string(kInputEncodingChoices);
  } else if (check && suggest) {
    missing = "--check and --suggest are runs of their own: give one of them";
  } else if (check) {
    if (recipe.empty()) missing = "--check needs --recipe";
    if (!output.empty()) missing = "--check writes nothing: leave out --output";
  } else if (suggest) {
    if (input.empty()) missing = "--suggest needs --input";
    if (!output.empty()) missing = "--suggest writes nothing: leave out --output";
  } else if (input.empty()) {
    missing = "--input is required";
  } else if (output.empty()) {
    missing = "--output is required";
  }
  if (!missing.empty()) {
    result.exitCode = 2;
    result.err = std::string(kProgramName) + ": " + missing + "\n" +
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
  if (encoding != InputEncoding::kUnset) options.inputEncoding = encoding;
  if (!logFile.empty()) {
    options.sLogFile = AbsolutePath(logFile);
    MakeFolderPath(ParentFolderName(options.sLogFile));
  }
  if (verbose) options.bVerbose = true;
  if (app.count("--backup") > 0 || backupGiven) {
    // Without a value the choice is VERSION_CONTROL's, else "existing"; the suffix is --suffix's,
    // else SIMPLE_BACKUP_SUFFIX's, else "~".
    if (backup.empty()) backup = EnvironmentOr("VERSION_CONTROL", "existing");
    options.backup.mode = backup == "none" || backup == "off"       ? BackupMode::kNone
                          : backup == "numbered" || backup == "t"   ? BackupMode::kNumbered
                          : backup == "simple" || backup == "never" ? BackupMode::kSimple
                                                                    : BackupMode::kExisting;
  }
  if (suffix.empty()) suffix = EnvironmentOr("SIMPLE_BACKUP_SUFFIX", "~");
  if (suffix.find('/') == std::string::npos) options.backup.suffix = suffix;
  result.check = check;
  result.suggest = suggest;
  result.job = !check && !suggest;
  return result;
}

}  // namespace kroveld
