// Running a table section: find the block by its two key texts, then stream the block's lines
// from input file 1 through the line processor into sheet 1 or the CSV output. The file is read
// sequentially with one buffer; each row reuses the same line and CSV buffers.
#include <string>
#include <string_view>
#include <vector>

#include "engine/context.h"
#include "engine/table.h"
#include "util/line_search.h"
#include "util/strings.h"

namespace kroveld {

namespace {

void Fail(Context& ctx, const std::string& text) {
  ctx.ui.Message(text, Icon::Critical);
  ctx.recipe.ExportSpecs.Failed = true;
}

}  // namespace

void clsTable::Process(Context& ctx, int csvFile) {
  UiPort& ui = ctx.ui;
  clsExportSpecs& specs = ctx.recipe.ExportSpecs;

  // Both keys are searched from line 1 of the first input file taking part, in one pass that
  // stops as soon as both are found.
  const std::string keyFile = ctx.recipe.InputFilePath(ctx.recipe.InputFileFirst);
  const std::string_view keys[] = {ReadStartLine, ReadEndLine};
  const std::vector<KeyLine> found = FindFirstLinesContaining(keyFile, keys);
  const KeyLine& top = found[0];
  const KeyLine& bottom = found[1];
  if (top.line == 0) {
    Fail(ctx, "Error in Table specs: Can not find ReadStartLine: " + ReadStartLine);
    return;
  }
  const std::int64_t startLine = top.line + ReadStartLineOffset;
  if (bottom.line == 0) {
    Fail(ctx, "Error in Table specs: Can not find ReadEndLine: " + ReadEndLine);
    return;
  }
  const std::int64_t endLine = bottom.line + ReadEndLineOffset;
  if (endLine < startLine) {
    Fail(ctx, "Error in Table specs: ReadEndLine key text [" + ReadEndLine +
                  "] was found before ReadStartLine key text [" + ReadStartLine + "]");
    return;
  }
  if (startLine < 1 || endLine < 1) return;

  const int baseRow = specs.getWritePointer(ui, 1);
  int rowIndex = 0;

  // The rows always come from input file 1, whichever file the keys were found in.
  const std::string inputPath = ctx.recipe.InputFilePath(1);
  TextFile file;
  if (!file.Open(inputPath)) {
    Fail(ctx, "Error in Table specs: Can not read input file: " + file.Error());
    return;
  }
  // Lines before the start line are passed over. When the rows come from the file the keys were
  // found in, reading starts at the nearest key line at or before the start line, whose byte
  // offset the search gave; otherwise at line 1.
  KeyLine from{1, 0};
  if (keyFile == inputPath) {
    for (const KeyLine& key : found) {
      if (key.line <= startLine && key.line > from.line) from = key;
    }
  }
  if (from.line == 1 || !file.SeekToLine(from.offset, from.line)) from = KeyLine{1, 0};
  file.SkipLines(startLine - from.line);  // a block past the end of the file reads as empty lines

  const bool csv = csvFile > 0;
  const std::int64_t total = endLine - startLine + 1;
  const std::size_t columnCount = Columns.size();
  clsLineProcessor& lines = ctx.lineProcessor;
  std::string csvLine;
  std::string status;

  for (std::int64_t lineNumber = startLine; lineNumber <= endLine; ++lineNumber) {
    // The port makes the per-row yield and status texts cheap by letting only some through.
    const bool due = ui.Due();
    if (due) {
      ui.ProcessEvents();
      status = ctx.statusPrefix;
      status += " row ";
      AppendInt(status, lineNumber - startLine + 1);
      status += " of ";
      AppendInt(status, total);
      ui.Status(3, status);
    }
    if (ctx.run.stopRequested.load(std::memory_order_relaxed)) {
      if (ui.AskYesNo("Do you want to terminate the process?", Icon::Question)) break;
      ctx.run.stopRequested.store(false);
    }

    lines.ReadRowPeriod1Only(&file, ctx.tabSize);
    csvLine.clear();
    if (csv && !due && lineNumber != startLine) {
      // The usual CSV row: no status text to show and the columns were checked on the first row.
      for (clsColumn& column : Columns) {
        // Joined on the text so far: leading empty fields take no comma and the rest move left.
        if (!csvLine.empty()) csvLine.push_back(',');
        column.AppendCsvValue(ctx, csvLine);
      }
      ++rowIndex;
      ctx.sink->WriteCsvRow(csvLine);
      continue;
    }
    for (std::size_t c = 0; c < columnCount; ++c) {
      clsColumn& column = Columns[c];
      if (due) {
        status = ctx.statusPrefix;
        status += " (col ";
        AppendInt(status, static_cast<long long>(c) + 1);
        status += " of ";
        AppendInt(status, TotalColumns);
        status += ')';
        ui.Status(3, status);
      }
      if (lineNumber == startLine &&
          (column.ReadColumnStart < 1 || column.ReadColumnEnd < column.ReadColumnStart)) {
        Fail(ctx, "Invalid table specs (column " + ToText(static_cast<long long>(c) + 1) +
                      "): ReadColumnStart is smaller than 1 or larger than ReadColumnEnd!");
        file.Close();
        return;
      }
      if (csv) {
        // Joined on the text so far: leading empty fields take no comma and the rest move left.
        if (!csvLine.empty()) csvLine.push_back(',');
        column.AppendCsvValue(ctx, csvLine);
      } else {
        column.Process(ctx, baseRow + rowIndex);
      }
    }
    ++rowIndex;
    if (csv) ctx.sink->WriteCsvRow(csvLine);
  }

  file.Close();
  specs.setWritePointer(ui, 1, baseRow + rowIndex);
  FirstRowWritten = baseRow;
  LastRowWritten = baseRow + rowIndex - 1;
}

}  // namespace kroveld
