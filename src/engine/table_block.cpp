// The key search of a table and the checks on the block it gives.
#include "engine/table_block.h"

#include <functional>
#include <string_view>
#include <vector>

#include "engine/context.h"
#include "engine/pattern.h"
#include "engine/section_keys.h"
#include "engine/table.h"
#include "util/strings.h"

namespace kroveld {

void FailTable(Context& ctx, const std::string& text) {
  ctx.ui.Message(text, Icon::Critical);
  ctx.recipe.ExportSpecs.Failed = true;
}

namespace {

// The first line (from 1) of the file matching each pattern that is not empty; the byte offset of
// a line found this way is not known (-1), so reading the rows starts from line 1.
void FindFirstLinesMatching(const std::string& path, const Pattern* patterns[2], KeyLine found[2],
                            const std::function<void()>& afterBlock) {
  TextFile file;
  if (!file.Open(path)) return;
  int wanted = 0;
  for (int k = 0; k < 2; ++k) wanted += patterns[k]->Empty() ? 0 : 1;
  std::string_view line;
  std::int64_t number = 0;
  while (wanted > 0 && file.ReadLine(line)) {
    ++number;
    for (int k = 0; k < 2; ++k) {
      if (found[k].line == 0 && !patterns[k]->Empty() && patterns[k]->Matches(line)) {
        found[k] = KeyLine{number, -1};
        --wanted;
      }
    }
    if ((number & 0xFFFF) == 0) afterBlock();
  }
}

}  // namespace

bool LocateTableBlock(Context& ctx, const clsTable& table, TextFile* keyText, LocatedBlock& block) {
  UiPort& ui = ctx.ui;
  const std::string section = "Table " + ToText(static_cast<long long>(table.Number));
  // A pattern key takes the place of its key text.
  Pattern patterns[2];
  const std::string* patternTexts[2] = {&table.ReadStartPattern, &table.ReadEndPattern};
  const char* patternNames[2] = {"ReadStartPattern", "ReadEndPattern"};
  for (int k = 0; k < 2; ++k) {
    std::string why;
    if (!patterns[k].Compile(*patternTexts[k], why)) {
      FailTable(ctx, PatternError(section, patternNames[k], *patternTexts[k], why));
      return false;
    }
  }
  // A block of the search takes a millisecond or two: the window stays live through it.
  const auto afterBlock = [&ui, &ctx, &table] {
    RunProgress& progress = ctx.run.progress;
    progress.table = table.Number;
    progress.row = progress.rows = 0;
    progress.phase = "reading";
    ui.Progress(progress);
    ui.ProcessEvents();
  };
  // Both keys are searched from line 1 of the first input file taking part, in one pass that
  // stops as soon as both are found.
  block.keyFile = ctx.recipe.InputFilePath(ctx.recipe.InputFileFirst);
  KeyLine found[2];
  if (patterns[0].Empty() || patterns[1].Empty()) {
    std::vector<std::string_view> texts;
    if (patterns[0].Empty()) texts.push_back(table.ReadStartLine);
    if (patterns[1].Empty()) texts.push_back(table.ReadEndLine);
    const std::vector<KeyLine> lines =
        keyText != nullptr && keyText->IsMapped()
            ? FindFirstLinesContaining(keyText->MappedBytes(), texts,
                                       [&afterBlock, keyText](std::int64_t searched) {
                                         keyText->ReleaseBefore(searched);
                                         afterBlock();
                                       })
            : FindFirstLinesContaining(block.keyFile, texts, afterBlock);
    std::size_t next = 0;
    for (int k = 0; k < 2; ++k) {
      if (patterns[k].Empty()) found[k] = lines[next++];
    }
  }
  if (!patterns[0].Empty() || !patterns[1].Empty()) {
    const Pattern* both[2] = {&patterns[0], &patterns[1]};
    FindFirstLinesMatching(block.keyFile, both, found, afterBlock);
  }
  block.top = found[0];
  block.bottom = found[1];
  block.startLine = block.endLine = 0;
  if (block.top.line != 0 && block.bottom.line != 0) {
    block.startLine = block.top.line + table.ReadStartLineOffset;
    block.endLine = block.bottom.line + table.ReadEndLineOffset;
  }
  if (ctx.observer != nullptr) {
    ctx.observer->TableKeysSearched(
        table, TableBlock{block.top.line, block.bottom.line, block.startLine, block.endLine});
  }
  // The messages name the pattern when the key is one.
  const std::string topName = patterns[0].Empty() ? "ReadStartLine" : "ReadStartPattern";
  const std::string& topText = patterns[0].Empty() ? table.ReadStartLine : table.ReadStartPattern;
  const std::string bottomName = patterns[1].Empty() ? "ReadEndLine" : "ReadEndPattern";
  const std::string& bottomText = patterns[1].Empty() ? table.ReadEndLine : table.ReadEndPattern;
  if (block.top.line == 0) {
    FailTable(ctx, "Error in Table specs: Can not find " + topName + ": " + topText);
    NoteMissingKey(ui, section, topName, topText);
    return false;
  }
  if (block.bottom.line == 0) {
    FailTable(ctx, "Error in Table specs: Can not find " + bottomName + ": " + bottomText);
    NoteMissingKey(ui, section, bottomName, bottomText);
    return false;
  }
  if (block.endLine < block.startLine) {
    FailTable(ctx, "Error in Table specs: " + KeyWords(bottomName, bottomText) +
                       " was found before " + KeyWords(topName, topText));
    return false;
  }
  // The end lies at or after the start: a block that ends before line 1 starts there too.
  if (block.startLine < 1) {
    if (ctx.options.bVerbose) {
      ui.Note(section + " skipped: it would start on line " +
              ToText(static_cast<long long>(block.startLine)) +
              ", before the first line of the report (ReadStartLine found on line " +
              ToText(static_cast<long long>(block.top.line)) + ", ReadStartLineOffset " +
              ToText(static_cast<long long>(table.ReadStartLineOffset)) + ")");
    }
    return false;
  }
  return true;
}

}  // namespace kroveld
