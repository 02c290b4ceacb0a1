#include "jobs/preview/preview_run.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "engine/context.h"
#include "engine/short_format.h"
#include "jobs/conversion_job.h"
#include "jobs/input_encoding.h"
#include "jobs/preview/collecting_port.h"
#include "jobs/preview/message_sections.h"
#include "jobs/preview/preview_recorder.h"
#include "jobs/preview/scratch_folder.h"
#include "jobs/recipe_lint.h"
#include "jobs/workbook/workbook_sink.h"
#include "util/files.h"
#include "util/numbers.h"
#include "util/profile.h"
#include "util/strings.h"
#include "util/text_file.h"
#include "util/timing.h"

namespace kroveld {

namespace {

enum class RecipeForm { kLong, kShort, kExportDefinition };

bool WriteText(const std::string& path, std::string_view text) {
  std::ofstream out(NativePath(path), std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  return static_cast<bool>(out);
}

std::string Absolute(const std::string& path) {
  std::error_code ec;
  const auto abs = std::filesystem::absolute(NativePath(path), ec);
  return ec ? path : abs.lexically_normal().string();
}

RecipeForm FormOf(const std::string& copy) {
  if (EqualsNoCase(GetProfileValueFromFile(copy, "Header", "Product", ""), "KRO-B")) {
    return RecipeForm::kShort;
  }
  if (EqualsNoCase(GetProfileValueFromFile(copy, "Header", "FileType", ""), "EXPORT SPEC")) {
    return RecipeForm::kExportDefinition;
  }
  return RecipeForm::kLong;
}

// The report's first `maxLines` lines. When it has more, they are copied into `cutCopy` and
// `truncated` is set; the run then converts the copy.
bool ReadSample(const std::string& path, std::int64_t maxLines, std::vector<std::string>& lines,
                const std::string& cutCopy, bool& truncated) {
  TextFile file;
  if (!file.Open(path)) return false;
  std::string_view line;
  truncated = false;
  while (file.ReadLine(line)) {
    if (static_cast<std::int64_t>(lines.size()) == maxLines) {
      truncated = true;
      break;
    }
    lines.emplace_back(line);
  }
  if (!truncated) return true;
  std::string text;
  for (const std::string& l : lines) {
    text += l;
    text += "\r\n";
  }
  return WriteText(cutCopy, text);
}

// Report lines that repeat a title's lines.
void FindTitleLines(const std::vector<std::string>& report, std::vector<PreviewTitle>& titles) {
  if (titles.empty()) return;
  std::unordered_map<std::string_view, std::vector<std::size_t>> byText;
  for (std::size_t t = 0; t < titles.size(); ++t) {
    for (const std::string& text : titles[t].lines) {
      const std::string_view trimmed = Trim(text);
      if (!trimmed.empty()) byText[trimmed].push_back(t);
    }
  }
  for (std::size_t i = 0; i < report.size(); ++i) {
    const auto hit = byText.find(Trim(report[i]));
    if (hit == byText.end()) continue;
    for (const std::size_t t : hit->second) {
      auto& lines = titles[t].reportLines;
      if (lines.empty() || lines.back() != static_cast<std::int64_t>(i) + 1) {
        lines.push_back(static_cast<std::int64_t>(i) + 1);
      }
    }
  }
}

void ReadExportDefinition(Context& ctx) {
  const std::string path = ctx.recipe.ExportSpecPath();
  if (FileExists(path)) {
    ctx.recipe.ExportSpecs.ReadFromFile(ctx.ui, path);
  } else {
    ctx.ui.Message("Cannot find Export Specs file: " + ctx.recipe.ExportSpecFileName, Icon::None);
  }
}

// Loads the recipe copy the way a conversion loads the recipe it is given.
void LoadRecipe(Context& ctx, const std::string& copy, const std::string& standsFor,
                const std::string& input) {
  switch (FormOf(copy)) {
    case RecipeForm::kShort:
      LoadFromFileShort(ctx, ctx.recipe, copy);
      ReadExportDefinition(ctx);
      break;
    case RecipeForm::kExportDefinition:
      ctx.recipe.Reset();
      ctx.recipe.Path = standsFor;
      ctx.recipe.InputFileNames[0] = input;
      ctx.recipe.ExportSpecs.ReadFromFile(ctx.ui, copy);
      break;
    case RecipeForm::kLong:
      ctx.recipe.LoadFromFile(ctx.ui, copy, standsFor);
      ctx.recipe.InputFileNames[0] = input;
      ReadExportDefinition(ctx);
      break;
  }
}

// The column checks of a recipe being read name no section ("Invalid Read Column start
// position!"). The column is the one the reading left with the bad value: the k-th such message
// is about the k-th such column, counted again for each reading of the export definition.
void NameColumnSections(std::vector<PreviewMessage>& messages, std::size_t from,
                        const clsExportSpecs& specs) {
  const struct {
    std::string_view text;
    bool (*bad)(const clsColumn&);
  } checks[] = {
      {"Invalid Read Column start position!",
       [](const clsColumn& c) { return c.ReadColumnStart < 1; }},
      {"Invalid Read Column end position!",
       [](const clsColumn& c) { return c.ReadColumnStart >= 1 && c.ReadColumnEnd < 1; }},
  };
  for (const auto& check : checks) {
    std::vector<std::string> sections;
    for (std::size_t t = 0; t < specs.Tables.size(); ++t) {
      const std::vector<clsColumn>& columns = specs.Tables[t].Columns;
      for (std::size_t c = 0; c < columns.size(); ++c) {
        if (check.bad(columns[c])) {
          sections.push_back("Table " + ToText(static_cast<long long>(t) + 1) + " Col " +
                             ToText(static_cast<long long>(c) + 1));
        }
      }
    }
    if (sections.empty()) continue;
    std::size_t k = 0;
    for (std::size_t i = from; i < messages.size(); ++i) {
      if (messages[i].section.empty() && messages[i].text == check.text) {
        messages[i].section = sections[k++ % sections.size()];
      }
    }
  }
}

// What the recipe check says about the text as typed (and, for a long recipe, about the export
// definition it names on disk), after the run's messages: notes, each on its recipe line.
void AddRecipeNotes(const PreviewRequest& request, RecipeForm form, const std::string& specPath,
                    std::vector<PreviewMessage>& messages) {
  const RecipeFileKind kind = form == RecipeForm::kShort              ? RecipeFileKind::ShortRecipe
                              : form == RecipeForm::kExportDefinition ? RecipeFileKind::ExportSpec
                                                                      : RecipeFileKind::Recipe;
  const std::string name = request.recipePath.empty() ? "recipe" : FileName(request.recipePath);
  for (const RecipeNote& note : LintRecipeText(request.recipeText, name, kind)) {
    messages.push_back(
        {note.line > 0 ? "line " + std::to_string(note.line) + ": " + note.text : note.text,
         Icon::Information, true, note.section, note.line});
  }
  if (specPath.empty() || !FileExists(specPath)) return;
  for (const RecipeNote& note : LintRecipeFile(specPath, RecipeFileKind::ExportSpec)) {
    messages.push_back({FormatRecipeNote({FileName(specPath), note.line, {}, note.text}),
                        Icon::Information, true, note.section, 0});
  }
}

}  // namespace

bool PreviewResult::HasMessages() const {
  for (const PreviewMessage& m : messages) {
    if (!m.note) return true;
  }
  return false;
}

PreviewResult RunPreview(const PreviewRequest& request) {
  PreviewResult result;
  CollectingPort port;
  ScratchFolder scratch;

  std::vector<std::string> sample;
  std::string input;
  if (scratch.Path().empty()) {
    port.Message(scratch.Error(), Icon::Critical, {});
  } else if (!FileExists(request.reportPath)) {
    port.Message("Input file: " + request.reportPath + " does not exist!", Icon::Exclamation, {});
  } else {
    const std::string cut = scratch.File("report-sample.txt");
    const std::int64_t maxLines = request.maxLines > 0 ? request.maxLines : kPreviewMaxLines;
    if (!ReadSample(request.reportPath, maxLines, sample, cut, result.truncated)) {
      port.Message("Cannot read the sample report " + request.reportPath, Icon::Critical, {});
    } else {
      input = result.truncated ? cut : Absolute(request.reportPath);
      result.linesPreviewed = static_cast<std::int64_t>(sample.size());
      if (result.truncated) {
        const std::string lines = FormatGroupedCount(maxLines);
        result.notes.push_back("The report has more than " + lines +
                               " lines: the preview shows what the recipe does with the first " +
                               lines + ".");
      }
    }
  }

  RecipeForm form = RecipeForm::kLong;
  std::string specPath;  // the export definition a long recipe names, for its notes
  if (!input.empty()) {
    const std::string copy = scratch.File("recipe-as-typed.rcp");
    if (!WriteText(copy, request.recipeText)) {
      port.Message("Cannot write the recipe text to " + copy, Icon::Critical, {});
    } else {
      Context ctx(port, scratch.Path());
      ctx.tabSize = request.tabSize;
      ctx.currentInput = input;
      ctx.currentRecipe = copy;
      ctx.run.jobStartTick = TickCount();
      const std::string standsFor =
          request.recipePath.empty() ? copy : Absolute(request.recipePath);
      const std::size_t before = port.Messages().size();
      LoadRecipe(ctx, copy, standsFor, input);
      NameColumnSections(port.Messages(), before, ctx.recipe.ExportSpecs);
      form = FormOf(copy);
      if (form == RecipeForm::kLong) specPath = ctx.recipe.ExportSpecPath();
      ctx.periodLabel = PeriodLabel(ctx.recipe);
      ApplyInputEncoding(ctx, ctx.recipe.InputEncoding);

      WorkbookSink sink;  // never opened on a file, never saved
      PreviewRecorder recorder(port, result);
      {
        SinkScope scope(ctx, sink);
        ctx.observer = &recorder;
        ctx.recipe.ExportSpecs.Process(ctx);
        ctx.observer = nullptr;
      }
      result.workbook = std::move(sink.Model());
      if (result.workbook.SheetCount() < 2) result.workbook.GetSheet(2);
    }
  }

  FindTitleLines(sample, result.titles);
  result.messages = std::move(port.Messages());
  for (PreviewMessage& message : result.messages) {
    std::string named = SectionNamedIn(message.text);
    if (!named.empty()) message.section = std::move(named);
    message.recipeLine = RecipeLineFor(request.recipeText, message.section, message.text);
  }
  if (!input.empty()) AddRecipeNotes(request, form, specPath, result.messages);
  return result;
}

}  // namespace kroveld
