#include "app/startup.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/app_folder.h"
#include "app/cli_command_line.h"
#include "app/cli_preview.h"
#include "app/console_port.h"
#include "app/help_text.h"
#include "app/settings.h"
#include "app/slash_command_line.h"
#include "app/startup_files.h"
#include "engine/context.h"
#include "jobs/batch.h"
#include "jobs/filter_suggest.h"
#include "jobs/recipe_check.h"
#include "jobs/trace.h"
#include "util/files.h"
#include "util/numbers.h"
#include "util/strings.h"

namespace kroveld {

namespace {

std::atomic<bool>* g_stop = nullptr;

// Signals that stop a run as Ctrl-C does: the terminal's interrupt, a polite kill, and the
// terminal going away.
constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The first stop signal asks the batch to stop before its next file (the table under way ends at
// its current row, and no temporary file is left behind); a second one ends the process.
extern "C" void OnInterrupt(int signal) {
  if (g_stop != nullptr) g_stop->store(true);
  std::signal(signal, SIG_DFL);
}

void PrintHelp() {
  std::fputs(CommandLineHelpText().c_str(), stdout);
}

bool AllBlank(const std::vector<std::string>& args) {
  for (const auto& a : args) {
    if (!Trim(a).empty()) return false;
  }
  return true;
}

std::string Join(const std::vector<std::string>& args) {
  std::string text;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (i > 0) text += ' ';
    text += args[i];
  }
  return text;
}

// The command line's host: the typed recipe path stands for the recipe box, and the lists take
// the typed texts in memory only (a command-line run never writes them back).
class ConsoleHost final : public ConversionHost {
 public:
  ConsoleHost(Settings& settings, ConsolePort& port, clsConversionOptions typed)
      : settings_(settings), port_(port), typed_(std::move(typed)) {}

  bool WarnedAboutTabsInFile() override { return settings_.WarnedAboutTabsInFile(); }
  void SetWarnedAboutTabsInFile() override { settings_.SetWarnedAboutTabsInFile(); }
  void UpdateMRUs() override {
    settings_.inputs.AddUniqueItemToCollection(typed_.sInputFile);
    settings_.outputs.AddUniqueItemToCollection(typed_.sOutputFile);
    settings_.recipes.AddUniqueItemToCollection(typed_.sRecipeFile);
  }
  std::string RecipeBoxText() override { return typed_.sRecipeFile; }
  // The console names a batch's file before the first line it shows for it.
  void FileStarted(const std::string& file, std::size_t number, std::size_t count) override {
    port_.BeginFile(file, number, count);
  }

 private:
  Settings& settings_;
  ConsolePort& port_;
  const clsConversionOptions typed_;
};

// A Ctrl-C that the run honoured without a word (between files, or outside a table's rows) is
// said on one line, so that the run does not end as if nothing had happened.
void ReportStop(const Context& ctx, ConsolePort& port, const BatchStop& stop) {
  if (!ctx.run.stopRequested.load() || port.TerminateConfirmed()) return;
  if (stop.betweenFiles) {
    port.Message("Conversion stopped by the user before file " + std::to_string(stop.next) +
                     " of " + std::to_string(stop.count),
                 Icon::Exclamation);
  } else {
    port.Message("Conversion stopped by the user", Icon::Exclamation);
  }
}

// The host of a command-line conversion: the settings, and the console told which file of a
// batch is being converted.
// --check: the recipe check's messages and notes on stderr; 1 when there was anything to say.
int RunRecipeCheck(const Context& ctx, ConsolePort& port) {
  const std::vector<RecipeNote> notes = CheckRecipe(
      port,
      RecipeCheckRequest{ctx.options.sRecipeFile, ctx.options.sInputFile, ctx.options.lTabSize});
  for (const RecipeNote& note : notes) port.Note(FormatRecipeNote(note));
  port.EraseProgress();
  return port.MessageShown() || !notes.empty() ? 1 : 0;
}

// --suggest: the keys to paste on stdout, messages on stderr; 1 when a message was shown.
int RunFilterSuggestions(const Context& ctx, ConsolePort& port) {
  const std::string text = SuggestFilters(
      port, FilterSuggestRequest{ctx.options.sInputFile,
                                 ctx.options.bUseRecipe ? ctx.options.sRecipeFile : std::string(),
                                 ctx.options.lTabSize});
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
  port.EraseProgress();
  return port.MessageShown() ? 1 : 0;
}

// "2 files converted, 1 failed, 12,345 rows written, 3.4 MB read in 0.52 s (6.5 MB/s)"; sizes
// under a megabyte in bytes.
std::string RunSummary(const RunTally& tally, double seconds) {
  auto grouped = [](std::uint64_t n) { return FormatGroupedCount(static_cast<std::int64_t>(n)); };
  const double megabytes = static_cast<double>(tally.bytesRead) / 1e6;
  char figures[96];
  std::snprintf(figures, sizeof figures, " read in %.2f s (%.1f MB/s)", seconds,
                seconds > 0 ? megabytes / seconds : 0.0);
  char size[32];
  std::snprintf(size, sizeof size, "%.1f MB", megabytes);
  const std::string read = tally.bytesRead < 1000000 ? grouped(tally.bytesRead) + " bytes" : size;
  return grouped(tally.filesConverted) +
         (tally.filesConverted == 1 ? " file converted, " : " files converted, ") +
         grouped(tally.filesFailed) + " failed, " + grouped(tally.rowsWritten) +
         (tally.rowsWritten == 1 ? " row written, " : " rows written, ") + read + figures;
}

// The totals check in one line, when a table checked any: "all 12 printed totals agree with
// their rows", or "3 of 12 printed totals differ from their rows" (each was shown as it was met).
std::string TotalsSummary(const RunTally& tally) {
  if (tally.totalsChecked == 0) return {};
  auto grouped = [](std::uint64_t n) { return FormatGroupedCount(static_cast<std::int64_t>(n)); };
  const bool one = tally.totalsChecked == 1;
  if (tally.totalsDiffering == 0) {
    return one ? "the printed total agrees with its rows"
               : "all " + grouped(tally.totalsChecked) + " printed totals agree with their rows";
  }
  return grouped(tally.totalsDiffering) + " of " + grouped(tally.totalsChecked) +
         (one ? " printed total differs" : " printed totals differ") + " from their rows";
}

}  // namespace

std::string PrepareApplicationFolder(Context& ctx) {
  WriteErrorLogHeader(ctx.AppFile("ErrorLog.txt"));
  Trace("MainModule.Main 1");
  ctx.tabSize = 8;
  std::string configPath = ctx.AppFile("config.ini");
  if (!FileExists(configPath)) CreateDefaultConfig(configPath);
  Trace("MainModule.Main 2");
  return configPath;
}

bool DisplayAvailable() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

int RunMain(int argc, char** argv) {
  const std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + argc);
  // A preview writes nothing, not even the error log or a first config.ini.
  if (!args.empty() && args.front().starts_with('-') && IsPreviewCommandLine(args)) {
    return RunPreviewCommandLine(args);
  }
  ConsolePort port(stderr, ::isatty(STDERR_FILENO) == 1);
  Context ctx(port, FindAppFolder());
  // A check writes nothing either, nor do suggestions.
  if (!args.empty() && args.front().starts_with('-') &&
      (std::find(args.begin(), args.end(), "--check") != args.end() ||
       std::find(args.begin(), args.end(), "--suggest") != args.end())) {
    clsConversionOptions options = ctx.options;
    const CliParseResult parsed = ParseConventionalCommandLine(args, options);
    if (parsed.check || parsed.suggest) {
      ctx.options = options;
      return parsed.check ? RunRecipeCheck(ctx, port) : RunFilterSuggestions(ctx, port);
    }
  }
  const std::string configPath = PrepareApplicationFolder(ctx);
  if (args.empty()) {  // the window is started by main() before it gets here
    PrintHelp();
    return 0;
  }

  const bool conventional = !(args.front().starts_with('/') || AllBlank(args));
  if (!conventional) {
    const SlashParseResult parsed = ParseCommandLine(Join(args), ctx.options, ctx.appFolder);
    // "/?" shows the help and is still a job: the conversion runs with what the line gave.
    if (parsed.helpRequested) PrintHelp();
    if (!parsed.job) return 0;
  } else {
    const CliParseResult parsed = ParseConventionalCommandLine(args, ctx.options);
    if (!parsed.job) {
      std::fputs(parsed.out.c_str(), stdout);
      std::fputs(parsed.err.c_str(), stderr);
      return parsed.exitCode;
    }
  }

  // The hidden main window reads its settings; the command line's options stand as they are.
  Settings settings(configPath);
  settings.Read(port);
  ConsoleHost host(settings, port, ctx.options);

  g_stop = &ctx.run.stopRequested;
  for (int signal : kStopSignals) std::signal(signal, OnInterrupt);
  BatchStop stop;
  const auto started = std::chrono::steady_clock::now();
  BeginProcessing(ctx, host, &stop);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  port.EndFile();
  for (int signal : kStopSignals) std::signal(signal, SIG_DFL);
  g_stop = nullptr;

  // The process ends without saving settings: the lists stay as config.ini had them.
  ReportStop(ctx, port, stop);
  if (conventional && ctx.options.bVerbose) {
    port.Summary(RunSummary(ctx.run.tally, seconds));
    const std::string totals = TotalsSummary(ctx.run.tally);
    if (!totals.empty()) port.Summary(totals);
  }
  port.EraseProgress();
  return port.MessageShown() ? 1 : 0;
}

}  // namespace kroveld
