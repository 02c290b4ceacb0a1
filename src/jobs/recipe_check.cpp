#include "jobs/recipe_check.h"

#include <stdlib.h>

#include <filesystem>
#include <system_error>

#include "engine/context.h"
#include "jobs/conversion_job.h"
#include "jobs/input_encoding.h"
#include "jobs/recipe_lint.h"
#include "jobs/workbook/workbook_sink.h"
#include "util/files.h"
#include "util/profile.h"
#include "util/strings.h"
#include "util/timing.h"

namespace kroveld {

namespace {

// A folder of this check's own, removed with everything in it at the end of the check.
class PrivateFolder {
 public:
  PrivateFolder() {
    std::error_code ec;
    std::string pattern = (std::filesystem::temp_directory_path(ec) / "kroveld-check-XXXXXX");
    if (ec) pattern = "/tmp/kroveld-check-XXXXXX";
    if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~PrivateFolder() {
    std::error_code ec;
    if (!path_.empty()) std::filesystem::remove_all(path_, ec);
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// The tables of a short recipe whose columns are worked out from the report itself (templates
// "=L", "=R", "=", "-" and templates holding "="); without a report they cannot be checked.
std::vector<int> TablesNeedingReport(const std::string& shortRecipe) {
  std::vector<int> tables;
  const int count = CountSectionHeadings(shortRecipe, "[Table ", "Col");
  for (int n = 1; n <= count; ++n) {
    const std::string tmpl =
        GetProfileValueFromFile(shortRecipe, "Table " + ToText(n), "Parsing", "");
    const std::string code = UpperAscii(Trim(tmpl));
    if (code == "-" || tmpl.find('=') != std::string::npos) tables.push_back(n);
  }
  return tables;
}

// Passes everything on to the check's port but the notes of the conversion pass (a table it
// skipped), which become notes of the check like the others.
class PassNotes final : public UiPort {
 public:
  explicit PassNotes(UiPort& ui) : ui_(ui) {}
  void ShowMessage(std::string_view text, Icon icon, std::string_view title) override {
    ui_.Message(text, icon, title);
  }
  void ShowNote(std::string_view text) override { notes.emplace_back(text); }
  bool Ask(std::string_view text, Icon icon, std::string_view title) override {
    return ui_.AskYesNo(text, icon, title);
  }
  void Status(int panel, std::string_view text) override { ui_.Status(panel, text); }
  std::string Caption() const override { return ui_.Caption(); }
  void SetCaption(std::string_view text) override { ui_.SetCaption(text); }
  void Beep() override { ui_.Beep(); }
  void ProcessEvents() override { ui_.ProcessEvents(); }
  void Progress(const RunProgress& where) override { ui_.Progress(where); }

  std::vector<std::string> notes;

 private:
  UiPort& ui_;
};

}  // namespace

std::vector<RecipeNote> CheckRecipe(UiPort& ui, const RecipeCheckRequest& request) {
  std::vector<RecipeNote> notes;
  if (!FileExists(request.recipe)) {
    ui.Message("Recipe file " + request.recipe + " does not exist!", Icon::Exclamation);
    return notes;
  }
  if (!request.report.empty() && !FileExists(request.report)) {
    ui.Message("Input file: " + request.report + " does not exist!", Icon::Exclamation);
    return notes;
  }
  PrivateFolder folder;
  if (folder.Path().empty()) {
    ui.Message("Cannot make a temporary folder to check the recipe in", Icon::Critical);
    return notes;
  }
  PassNotes port(ui);
  Context ctx(port, folder.Path());
  ctx.currentRecipe = request.recipe;
  ctx.currentInput = request.report;
  ctx.tabSize = request.tabSize;
  // A check says what a verbose run would: the notes on what the pass quietly leaves out.
  ctx.options.bVerbose = true;

  const bool isShort = IsShortFormatRecipe(request.recipe);
  bool load = true;
  if (isShort && request.report.empty()) {
    for (int table : TablesNeedingReport(request.recipe)) {
      notes.push_back({request.recipe, 0, "Table " + ToText(table),
                       "the columns of this table are worked out from the report; give one with "
                       "--input to check the recipe"});
      load = false;
    }
  }
  if (load) {
    LoadChosenRecipe(ctx);
    if (!request.report.empty()) {
      WorkbookSink sink;  // in memory only: never saved
      SinkScope scope(ctx, sink);
      ctx.periodLabel = PeriodLabel(ctx.recipe);
      ctx.run.jobStartTick = TickCount();
      ApplyInputEncoding(ctx, ctx.recipe.InputEncoding);
      ctx.recipe.ExportSpecs.Process(ctx);
    }
  }

  const std::vector<RecipeNote> own = LintRecipeFile(
      request.recipe, isShort ? RecipeFileKind::ShortRecipe : RecipeFileKind::Recipe);
  notes.insert(notes.end(), own.begin(), own.end());
  if (!isShort) {
    const std::string spec = ctx.recipe.ExportSpecPath();
    if (!spec.empty() && FileExists(spec)) {
      const std::vector<RecipeNote> specNotes = LintRecipeFile(spec, RecipeFileKind::ExportSpec);
      notes.insert(notes.end(), specNotes.begin(), specNotes.end());
    }
  }
  // What the pass left out concerns the export definition (for a short recipe, the recipe).
  const std::string spec = isShort ? request.recipe : ctx.recipe.ExportSpecPath();
  for (const std::string& text : port.notes) notes.push_back({spec, 0, {}, text});
  return notes;
}

}  // namespace kroveld
