// Running a table section: find the block by its two key texts, then stream the block's lines
// from input file 1 through the line processor into sheet 1 or the CSV output. The file is read
// sequentially with one buffer; each row reuses the same line and CSV buffers.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "engine/context.h"
#include "engine/table.h"

#include "engine/section_keys.h"
#include "util/line_search.h"
#include "util/strings.h"

namespace kroveld {

namespace {

void Fail(Context& ctx, const std::string& text) {
  ctx.ui.Message(text, Icon::Critical);
  ctx.recipe.ExportSpecs.Failed = true;
}

// Where the fast CSV path cuts one column: bytes [from, from + width) of the line as slot 1 would
// hold it, clipped to it.
struct FastCut {
  long long from = 0;
  long long width = 0;
};

// The cuts of every column, or false when some column must go through the line processor (an
// operator that reads another slot, sums, or is unknown and reported per field).
bool PlanFastCuts(const Context& ctx, const std::vector<clsColumn>& columns,
                  std::vector<FastCut>& cuts) {
  cuts.clear();
  for (const clsColumn& column : columns) {
    if (column.SingleFileSlot(ctx) != 1) return false;
    const long long width =
        static_cast<long long>(column.ReadColumnEnd) - column.ReadColumnStart + 1;
    cuts.push_back(FastCut{column.ReadColumnStart - 1LL, width < 1 ? 0 : width});
  }
  return true;
}

// One CSV row from `line` as slot 1 would hold it after ReadRowPeriod1Only (the line and, when it
// is not empty and does not end in a blank, one blank more), without copying the line first.
// The row is built in `buffer`, which only grows; `warned` is set when an equal-sign warning was
// shown.
std::string_view WriteFastRow(Context& ctx, const std::vector<FastCut>& cuts, std::string_view line,
                              std::string& buffer, bool& warned) {
  const long long size = static_cast<long long>(line.size());
  const bool blank = size > 0 && line.back() != ' ';
  const long long slotSize = size + (blank ? 1 : 0);
  // Each field holds at most the whole slot, doubled quotes, two quotes and a comma.
  const std::size_t room = cuts.size() * (2 * static_cast<std::size_t>(slotSize) + 5);
  if (buffer.size() < room) buffer.resize(std::max(room, 2 * buffer.size()));
  char* const begin = buffer.data();
  char* out = begin;
  warned = false;
  for (const FastCut& cut : cuts) {
    if (out != begin) *out++ = ',';
    long long from = cut.from;
    long long to = from + cut.width;
    if (from < 0) from = 0;
    if (to > slotSize) to = slotSize;
    if (from >= to) continue;  // an empty field
    const long long inLine = to < size ? to : size;
    const std::string_view piece =
        from < inLine
            ? line.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(inLine - from))
            : std::string_view();
    bool equalSign = false;
    out = clsColumn::PutCsvValue(piece, to > size, out, equalSign);
    if (equalSign) {
      ctx.lineProcessor.SetPeriod1Line(line, ctx.tabSize);
      clsColumn::WarnEqualSign(ctx.ui);
      warned = true;
    }
  }
  return std::string_view(begin, static_cast<std::size_t>(out - begin));
}

}  // namespace

void clsTable::Process(Context& ctx) {
  UiPort& ui = ctx.ui;
  clsExportSpecs& specs = ctx.recipe.ExportSpecs;

  // Both keys are searched from line 1 of the first input file taking part, in one pass that
  // stops as soon as both are found.
  const std::string keyFile = ctx.recipe.InputFilePath(ctx.recipe.InputFileFirst);
  const std::string_view keys[] = {ReadStartLine, ReadEndLine};
  // A block of the search takes a millisecond or two: the window stays live through it.
  const std::vector<KeyLine> found = FindFirstLinesContaining(keyFile, keys, [&ui, &ctx, this] {
    RunProgress& progress = ctx.run.progress;
    progress.table = Number;
    progress.row = progress.rows = 0;
    progress.phase = "reading";
    ui.Progress(progress);
    ui.ProcessEvents();
  });
  const KeyLine& top = found[0];
  const KeyLine& bottom = found[1];
  if (ctx.observer != nullptr) {
    TableBlock block{top.line, bottom.line, 0, 0};
    if (top.line != 0 && bottom.line != 0) {
      block.startLine = top.line + ReadStartLineOffset;
      block.endLine = bottom.line + ReadEndLineOffset;
    }
    ctx.observer->TableKeysSearched(*this, block);
  }
  if (top.line == 0) {
    Fail(ctx, "Error in Table specs: Can not find ReadStartLine: " + ReadStartLine);
    NoteMissingKey(ui, "Table " + ToText(static_cast<long long>(Number)), "ReadStartLine",
                   ReadStartLine);
    return;
  }
  const std::int64_t startLine = top.line + ReadStartLineOffset;
  if (bottom.line == 0) {
    Fail(ctx, "Error in Table specs: Can not find ReadEndLine: " + ReadEndLine);
    NoteMissingKey(ui, "Table " + ToText(static_cast<long long>(Number)), "ReadEndLine",
                   ReadEndLine);
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

  const bool csv = !ctx.sink->HoldsCells();
  const std::int64_t total = endLine - startLine + 1;
  const std::size_t columnCount = Columns.size();
  clsLineProcessor& lines = ctx.lineProcessor;
  std::string csvLine;
  std::string status;
  std::int64_t pastEnd = 0;  // rows read past the end of the file

  // The usual CSV row (no status text due, the columns checked on the first row) takes a fast
  // path when every column reads slot 1 with a known operator: the fields are cut straight from
  // the line in the read buffer, with the blank that ReadRowPeriod1Only would append supplied on
  // the fly, and written quoted into one row buffer. Slot 1 itself is filled only when something
  // outside this loop could look at it: before any call to the user interface and at the end.
  std::vector<FastCut> cuts;
  std::string rowBuffer;
  bool planned = false;  // whether `cuts` reflects the columns (worked out again after any UI call)
  bool fast = false;
  std::string_view pending;  // the line that slot 1 is still to receive
  bool hasPending = false;
  const auto keepPending = [&] {
    if (hasPending) lines.SetPeriod1Line(pending, ctx.tabSize);
    hasPending = false;
  };

  for (std::int64_t lineNumber = startLine; lineNumber <= endLine; ++lineNumber) {
    // The port makes the per-row yield and status texts cheap by letting only some through.
    const bool due = ui.Due();
    if (due) {
      keepPending();
      planned = false;
      ui.ProcessEvents();
      status = ctx.statusPrefix;
      status += " row ";
      AppendInt(status, lineNumber - startLine + 1);
      status += " of ";
      AppendInt(status, total);
      ui.Status(3, status);
      RunProgress& progress = ctx.run.progress;
      progress.table = Number;
      progress.row = lineNumber - startLine + 1;
      progress.rows = total;
      progress.phase = "writing";
      ui.Progress(progress);
    }
    if (ctx.run.stopRequested.load(std::memory_order_relaxed)) {
      keepPending();
      planned = false;
      if (ui.AskYesNo(kTerminateQuestion, Icon::Question)) break;
      ctx.run.stopRequested.store(false);
    }

    std::string_view line;
    if (!file.ReadLine(line)) {
      line = {};  // past the end of the file: empty lines, up to a point
      if (++pastEnd > kMaxRowsPastEnd) {
        keepPending();
        ui.Message("Table " + ToText(static_cast<long long>(Number)) +
                       " reads past the end of the report, whose last line is " +
                       ToText(static_cast<long long>(file.LinesRead())) + ": stopped after " +
                       ToText(static_cast<long long>(kMaxRowsPastEnd)) +
                       " empty rows (check the table's line offsets)",
                   Icon::Exclamation);
        break;
      }
    }
    if (csv && !due && lineNumber != startLine) {
      if (!planned) {
        fast = PlanFastCuts(ctx, Columns, cuts);
        planned = true;
      }
      const bool tabs = clsLineProcessor::ExpandsTabs(line, ctx.tabSize);
      if (fast && !tabs) {
        pending = line;
        hasPending = true;
        bool warned = false;
        const std::string_view row = WriteFastRow(ctx, cuts, line, rowBuffer, warned);
        if (warned) planned = false;  // the user interface had its turn
        ++rowIndex;
        ctx.sink->WriteCsvRow(row);
        continue;
      }
      planned = false;  // AppendCsvValue works the operators out again
    }

    hasPending = false;
    lines.SetPeriod1Line(line, ctx.tabSize);
    csvLine.clear();
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
    if (csv) {
      ctx.sink->WriteCsvRow(csvLine);
    } else if (ctx.sink->Full()) {
      break;
    }
  }

  keepPending();
  file.Close();
  ctx.run.tally.rowsWritten += static_cast<std::uint64_t>(rowIndex);
  specs.setWritePointer(ui, 1, baseRow + rowIndex);
  FirstRowWritten = baseRow;
  LastRowWritten = baseRow + rowIndex - 1;
  if (ctx.observer != nullptr)
    ctx.observer->TableRowsWritten(*this, FirstRowWritten, LastRowWritten);
}

}  // namespace kroveld
