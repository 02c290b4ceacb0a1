// The key search of a table and the checks on the block it gives.
#include "engine/table_block.h"

#include <string_view>
#include <vector>

#include "engine/context.h"
#include "engine/section_keys.h"
#include "engine/table.h"
#include "util/strings.h"

namespace kroveld {

void FailTable(Context& ctx, const std::string& text) {
  ctx.ui.Message(text, Icon::Critical);
  ctx.recipe.ExportSpecs.Failed = true;
}

bool LocateTableBlock(Context& ctx, const clsTable& table, TextFile* keyText, LocatedBlock& block) {
  UiPort& ui = ctx.ui;
  // Both keys are searched from line 1 of the first input file taking part, in one pass that
  // stops as soon as both are found.
  block.keyFile = ctx.recipe.InputFilePath(ctx.recipe.InputFileFirst);
  const std::string_view keys[] = {table.ReadStartLine, table.ReadEndLine};
  // A block of the search takes a millisecond or two: the window stays live through it.
  const auto breathe = [&ui, &ctx, &table] {
    RunProgress& progress = ctx.run.progress;
    progress.table = table.Number;
    progress.row = progress.rows = 0;
    progress.phase = "reading";
    ui.Progress(progress);
    ui.ProcessEvents();
  };
  const std::vector<KeyLine> found =
      keyText != nullptr && keyText->IsMapped()
          ? FindFirstLinesContaining(keyText->MappedBytes(), keys,
                                     [&breathe, keyText](std::int64_t searched) {
                                       keyText->ReleaseBefore(searched);
                                       breathe();
                                     })
          : FindFirstLinesContaining(block.keyFile, keys, breathe);
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
  const std::string section = "Table " + ToText(static_cast<long long>(table.Number));
  if (block.top.line == 0) {
    FailTable(ctx, "Error in Table specs: Can not find ReadStartLine: " + table.ReadStartLine);
    NoteMissingKey(ui, section, "ReadStartLine", table.ReadStartLine);
    return false;
  }
  if (block.bottom.line == 0) {
    FailTable(ctx, "Error in Table specs: Can not find ReadEndLine: " + table.ReadEndLine);
    NoteMissingKey(ui, section, "ReadEndLine", table.ReadEndLine);
    return false;
  }
  if (block.endLine < block.startLine) {
    FailTable(ctx, "Error in Table specs: ReadEndLine key text [" + table.ReadEndLine +
                       "] was found before ReadStartLine key text [" + table.ReadStartLine + "]");
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
