#include "jobs/filter_suggest.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "engine/block_survey.h"
#include "engine/context.h"
#include "engine/row_filter_suggestion.h"
#include "engine/section_keys.h"
#include "engine/short_format.h"
#include "engine/table_parser.h"
#include "jobs/conversion_job.h"
#include "jobs/preview/scratch_folder.h"
#include "util/files.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// Line numbers shown in a comment before the rest is only counted.
constexpr std::size_t kLinesShown = 5;

// "12, 15, 18", or "12, 15, 18, 21, 24 and 7 more".
std::string LineList(const std::vector<std::int64_t>& numbers) {
  std::string text;
  for (std::size_t k = 0; k < numbers.size() && k < kLinesShown; ++k) {
    if (k > 0) text += ", ";
    text += std::to_string(numbers[k]);
  }
  if (numbers.size() > kLinesShown) {
    text += " and " + std::to_string(numbers.size() - kLinesShown) + " more";
  }
  return text;
}

struct KindText {
  BlockLineKind kind;
  const char* one;
  const char* many;
};

constexpr KindText kKindTexts[] = {
    {BlockLineKind::kBlank, "blank", "blank"},
    {BlockLineKind::kRule, "rule", "rules"},
    {BlockLineKind::kHeading, "repeated heading", "repeated headings"},
    {BlockLineKind::kMisfit, "does not fit the columns", "do not fit the columns"},
};

// "lines 15, 22 (blank), 16 (rule), 17, 33 (repeated headings)" for the lines `chosen` accepts.
template <typename Chosen>
std::string LinesByKind(const BlockSurvey& survey, std::int64_t firstLine, Chosen chosen) {
  std::string text;
  std::size_t total = 0;
  for (const KindText& k : kKindTexts) {
    std::vector<std::int64_t> numbers;
    for (std::size_t i = 0; i < survey.kinds.size(); ++i) {
      if (survey.kinds[i] == k.kind && chosen(i)) {
        numbers.push_back(firstLine + static_cast<std::int64_t>(i));
      }
    }
    if (numbers.empty()) continue;
    if (!text.empty()) text += ", ";
    text += LineList(numbers) + " (" + (numbers.size() == 1 ? k.one : k.many) + ")";
    total += numbers.size();
  }
  return (total == 1 ? "line " : "lines ") + text;
}

std::string TableText(int n, std::int64_t firstLine, const BlockSurvey& survey,
                      const RowFilterSuggestion& s) {
  const std::size_t count = survey.kinds.size();
  const std::string name = "Table " + ToText(n);
  const std::string block =
      count == 1 ? "line " + std::to_string(firstLine)
                 : "lines " + std::to_string(firstLine) + "-" +
                       std::to_string(firstLine + static_cast<std::int64_t>(count) - 1);
  if (s.Empty() && s.uncovered.empty()) {
    const std::string all = count == 1   ? "its one line fits"
                            : count == 2 ? "both lines fit"
                                         : "all " + std::to_string(count) + " lines fit";
    return "; " + name + ", " + block + ": " + all + " the template; nothing to skip\n";
  }
  auto uncovered = [&s](std::size_t i) {
    return std::find(s.uncovered.begin(), s.uncovered.end(), i) != s.uncovered.end();
  };
  std::string text = "[" + name + "]\n";
  if (!s.keepPattern.empty()) {
    text += "; keeps only the lines that begin as every row of " + block + " does; leaves out " +
            LinesByKind(survey, firstLine, [](std::size_t) { return true; }) + "\n";
    text += "KeepLinesMatching=" + s.keepPattern + "\n";
    return text;
  }
  if (!s.Empty()) {
    text += "; skips " +
            LinesByKind(survey, firstLine, [&](std::size_t i) { return !uncovered(i); }) + " of " +
            block + "\n";
  }
  if (s.skipBlankLines) text += "SkipBlankLines=TRUE\n";
  if (!s.skipPattern.empty()) text += "SkipLinesMatching=" + s.skipPattern + "\n";
  if (!s.uncovered.empty()) {
    text += "; not skipped: " + LinesByKind(survey, firstLine, uncovered) +
            ", since every pattern that matches them matches rows too\n";
  }
  return text;
}

// The keys of one table of a short recipe, read as the short-format loader reads them.
struct ShortTable {
  std::string startKey, endKey, tmpl;
  int startOffset = 0, endOffset = 0;
};

bool ReadShortTable(UiPort& ui, const std::string& path, const std::string& section,
                    ShortTable& t) {
  t.startKey = GetProfileValueFromFile(path, section, "ReadStartLine", kMissing);
  t.endKey = GetProfileValueFromFile(path, section, "ReadEndLine", kMissing);
  const bool startOk =
      ParseLong(GetProfileValueFromFile(path, section, "ReadStartLineOffset", "0"), t.startOffset);
  const bool endOk =
      ParseLong(GetProfileValueFromFile(path, section, "ReadEndLineOffset", "0"), t.endOffset);
  TextFile file;
  if (file.Open(path)) t.tmpl = GetProfileValue(file, section, "Parsing", "", kTrimTrailing);
  if (t.startKey == kMissing) {
    ShowSectionError(ui, section, " : Invalid ReadStartLine!");
    return false;
  }
  if (t.endKey == kMissing) {
    ShowSectionError(ui, section, " : Invalid ReadEndLine!");
    return false;
  }
  if (!startOk || !endOk) {
    ShowOffsetError(ui, section, startOk ? "ReadEndLineOffset" : "ReadStartLineOffset");
    return false;
  }
  return true;
}

}  // namespace

std::string SuggestFilters(UiPort& ui, const FilterSuggestRequest& request) {
  if (!FileExists(request.report)) {
    ui.Message("Input file: " + request.report + " does not exist!", Icon::Exclamation);
    return {};
  }
  ScratchFolder scratch;
  std::string recipe = request.recipe;
  if (recipe.empty()) {
    if (scratch.Path().empty()) {
      ui.Message("Cannot make a temporary folder: " + scratch.Error(), Icon::Critical);
      return {};
    }
    Context ctx(ui, scratch.Path());
    recipe = scratch.File("_AutoRecipe.rcp");
    FileCreateShort(ctx, request.report, recipe);
  } else if (!FileExists(recipe)) {
    ui.Message("Recipe file " + recipe + " does not exist!", Icon::Exclamation);
    return {};
  } else if (!IsShortFormatRecipe(recipe)) {
    ui.Message(recipe +
                   " is not a short-format recipe (Product=KRO-B): row filters are suggested "
                   "for tables whose columns come from a template, so leave out --recipe for a "
                   "marked-up report or name a short-format recipe",
               Icon::Exclamation);
    return {};
  }

  std::string text;
  const int count = CountSectionHeadings(recipe, "[Table ", "Col");
  for (int n = 1; n <= count; ++n) {
    const std::string section = "Table " + ToText(n);
    ShortTable t;
    if (!ReadShortTable(ui, recipe, section, t)) continue;
    clsTableParser parser;
    if (!parser.TestGetTemplate(ui, request.report, t.startKey, t.startOffset, t.endKey,
                                t.endOffset, request.tabSize)) {
      ui.Message(section + " not found!", Icon::Exclamation);
      continue;
    }
    const BlockSurvey survey = SurveyBlock(ui, parser, t.tmpl);
    const RowFilterSuggestion s = SuggestRowFilters(parser.Lines(), survey);
    if (!text.empty()) text += "\n";
    text += TableText(n, parser.FirstLine(), survey, s);
  }
  return text;
}

}  // namespace kroveld
