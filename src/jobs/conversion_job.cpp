#include "jobs/conversion_job.h"

#include <filesystem>
#include <future>
#include <system_error>

#include "engine/short_format.h"
#include "jobs/auto_recipe_lock.h"
#include "jobs/input_encoding.h"
#include "jobs/trace.h"
#include "jobs/workbook/workbook_codecs.h"
#include "jobs/write_report.h"
#include "util/files.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

namespace {

constexpr int kMaxTabSize = 1000;

// The input as an absolute path, so that a recipe's folder never changes what it names.
std::string AbsoluteInput(const std::string& input) {
  std::error_code ec;
  auto abs = std::filesystem::absolute(NativePath(input), ec);
  return ec ? input : abs.lexically_normal().string();
}

void ReadExportSpecs(Context& ctx) {
  Trace("frmMain.cmdRunRecipe_Click 12");
  const std::string path = ctx.recipe.ExportSpecPath();
  if (FileExists(path)) {
    ctx.recipe.ExportSpecs.ReadFromFile(ctx.ui, path);
  } else {
    ctx.ui.Message("Cannot find Export Specs file: " + ctx.recipe.ExportSpecFileName, Icon::None);
  }
}

// Reports this size and larger are searched for tabs on a second thread while the conversion
// starts; smaller ones (nearly all of them) take less time to search than a thread to start.
constexpr std::uint64_t kTabSearchAside = std::uint64_t{4} << 20;

// The tab note for the report being converted. It comes before anything else the conversion
// shows: with a large report the search runs aside and the note, if due, is shown at the first
// message or question or when the conversion ends, whichever comes first.
class TabNote {
 public:
  TabNote(Context& ctx, ConversionHost& host) : ctx_(ctx), host_(host) {
    if (host.WarnedAboutTabsInFile()) return;
    if (FileSizeOf(ctx.currentInput) < kTabSearchAside) {
      if (FileContainsByte(ctx.currentInput, '\t')) WarnAboutTabsInFile(ctx, host);
      return;
    }
    search_ = std::async(std::launch::async,
                         [path = ctx.currentInput] { return FileContainsByte(path, '\t'); });
    ctx.ui.ShowFirst(this, [this] {
      if (search_.get()) WarnAboutTabsInFile(ctx_, host_);
    });
  }
  ~TabNote() {
    try {
      ctx_.ui.Settle();
    } catch (...) {
      // Leaving by an exception already: the note is not worth a second one.
    }
  }
  TabNote(const TabNote&) = delete;
  TabNote& operator=(const TabNote&) = delete;

 private:
  Context& ctx_;
  ConversionHost& host_;
  std::future<bool> search_;
};

// The system's message, and what the path really is when something stands there.
void MissingInput(Context& ctx) {
  ctx.ui.Message("Input file: " + ctx.currentInput + " does not exist!", Icon::Exclamation);
  if (FolderExists(ctx.currentInput)) {
    std::string pattern = ctx.currentInput;
    if (!pattern.empty() && !IsSeparator(pattern.back())) pattern += '/';
    ctx.ui.Message(
        ctx.currentInput + " is a folder; '" + pattern + "*.txt' converts the reports in it",
        Icon::Information);
  } else if (PathExists(ctx.currentInput)) {
    ctx.ui.Message(
        ctx.currentInput + " is not a regular file (a pipe or a device), so it is not read",
        Icon::Information);
  }
}

// The automatic recipe: a short recipe written from the marked-up input, then loaded.
void RunAutomatic(Context& ctx, ConversionHost& host, bool csv) {
  Trace("frmMain.cmdRunRecipe_Click 9");
  const std::string autoPath = AutoRecipePath(ctx);
  if (!FileExists(ctx.currentInput)) {
    MissingInput(ctx);
    return;
  }
  const TabNote tabNote(ctx, host);
  ApplyInputEncoding(ctx, {});
  {
    // _AutoRecipe.rcp and _ExportSpecs.krs are shared by every process of this application
    // folder; once the export definition is in memory they are no longer needed.
    AutoRecipeLock lock(ctx.appFolder, ctx.ui, ctx.run.stopRequested);
    if (lock.Stopped()) return;
    Trace("frmMain.cmdRunRecipe_Click 10");
    if (FileExists(autoPath)) DeleteFile(autoPath);
    FileCreateShort(ctx, ctx.currentInput, autoPath);
    Trace("frmMain.cmdRunRecipe_Click 11");
    LoadFromFileShort(ctx, ctx.recipe, autoPath);
    ReadExportSpecs(ctx);
  }
  ctx.periodLabel = PeriodLabel(ctx.recipe);
  Trace("frmMain.cmdRunRecipe_Click 13");
  WriteReport(ctx, csv);
}

// The recipe the user chose, in either form; the report being converted is its input file 1.
void RunWithRecipe(Context& ctx, ConversionHost& host, bool csv) {
  Trace("frmMain.cmdRunRecipe_Click 4");
  if (!FileExists(ctx.currentRecipe)) {
    ctx.ui.Message("Recipe file " + host.RecipeBoxText() + " does not exist!", Icon::Exclamation);
    return;
  }
  if (!FileExists(ctx.currentInput)) {
    MissingInput(ctx);
    return;
  }
  Trace("frmMain.cmdRunRecipe_Click 5");
  const TabNote tabNote(ctx, host);
  // The run's own choice already counts while a short recipe's columns are worked out; a
  // long-form recipe's InputEncoding counts when the run names none.
  ApplyInputEncoding(ctx, {});
  LoadChosenRecipe(ctx);
  if (ctx.options.inputEncoding == InputEncoding::kUnset && !ctx.recipe.InputEncoding.empty() &&
      !ApplyInputEncoding(ctx, ctx.recipe.InputEncoding)) {
    return;  // an encoding the recipe names wrongly would cut every field in the wrong place
  }
  ctx.periodLabel = PeriodLabel(ctx.recipe);
  Trace("frmMain.cmdRunRecipe_Click 6");
  WriteReport(ctx, csv);
}

}  // namespace

bool IsShortFormatRecipe(const std::string& path) {
  return EqualsNoCase(GetProfileValueFromFile(path, "Header", "Product", ""), "KRO-B");
}

void LoadChosenRecipe(Context& ctx) {
  if (IsShortFormatRecipe(ctx.currentRecipe)) {
    AutoRecipeLock lock(ctx.appFolder, ctx.ui, ctx.run.stopRequested);
    if (lock.Stopped()) return;
    LoadFromFileShort(ctx, ctx.recipe, ctx.currentRecipe);
    ReadExportSpecs(ctx);
  } else {
    ctx.recipe.LoadFromFile(ctx.ui, ctx.currentRecipe);
    ctx.recipe.InputFileNames[0] = AbsoluteInput(ctx.currentInput);
    ReadExportSpecs(ctx);
  }
}

OutputKind OutputKindOf(std::string_view outputPath) {
  if (FindNoCase(outputPath, ".CSV") != std::string_view::npos) return OutputKind::Csv;
  if (NamesWorkbook(outputPath)) return OutputKind::Workbook;
  return OutputKind::None;
}

std::string AutoRecipePath(const Context& ctx) {
  return ctx.AppFile("_AutoRecipe.rcp");
}

std::string PeriodLabel(const clsRecipe& recipe) {
  std::string label = ToText(recipe.InputFileFirst);
  if (recipe.InputFileLast != recipe.InputFileFirst) {
    label += '-';
    label += ToText(recipe.InputFileLast);
  }
  return label;
}

void WarnAboutTabsInFile(Context& ctx, ConversionHost& host) {
  if (host.WarnedAboutTabsInFile()) return;
  host.SetWarnedAboutTabsInFile();
  ctx.ui.Note(kTabNote);
}

namespace {

void RunConversion(Context& ctx, ConversionHost& host) {
  const clsConversionOptions& options = ctx.options;
  ctx.currentInput = options.sInputFile;
  ctx.currentRecipe = options.sRecipeFile;
  ctx.currentOutput = options.sOutputFile;
  ctx.tabSize = options.lTabSize;

  const OutputKind kind = OutputKindOf(ctx.currentOutput);
  if (kind == OutputKind::None) {
    ctx.ui.Message("Output File must be of type XLS or CSV", Icon::Exclamation);
    return;
  }
  const bool csv = kind == OutputKind::Csv;
  if (ctx.tabSize > kMaxTabSize) {
    // No printer's tab stop is this wide; expanding one tab would take gigabytes of blanks.
    ctx.ui.Message("Tab size " + ToText(ctx.tabSize) + " is too large: a tab stop is at most " +
                       ToText(kMaxTabSize) + " characters",
                   Icon::Exclamation);
  } else if (options.bUseRecipe) {
    RunWithRecipe(ctx, host, csv);
  } else {
    RunAutomatic(ctx, host, csv);
  }
  Trace("frmMain.cmdRunRecipe_Click 14");
  host.UpdateMRUs();
}

}  // namespace

void RunRecipe(Context& ctx, ConversionHost& host) {
  // With a backup policy, the output this run may replace is kept aside until the run is over,
  // and stays when the run reported anything.
  OutputBackup backup(ctx.options.sOutputFile, ctx.options.backup);
  const std::uint64_t shownBefore = ctx.ui.MessagesShown();
  RunConversion(ctx, host);
  const bool reported = ctx.ui.MessagesShown() > shownBefore;
  backup.Finish(reported);
  RunTally& tally = ctx.run.tally;
  ++tally.filesConverted;
  if (reported) ++tally.filesFailed;
  tally.bytesRead += FileSizeOf(ctx.currentInput);
}

}  // namespace kroveld
