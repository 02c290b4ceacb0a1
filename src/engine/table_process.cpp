// Running a table section: locate the block by its two key texts, then stream the block's lines
// from input file 1 through the row writer into sheet 1 or the CSV output. When the keys are
// searched in input file 1 itself, the file is opened once and mapped: the search and the rows
// read the same pages, which the kernel reads from the disk once and copies nowhere.
#include <string>
#include <string_view>

#include "engine/context.h"
#include "engine/row_rules.h"
#include "engine/table.h"
#include "engine/table_block.h"
#include "engine/table_rows.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// Puts `file` at the start line of the block. Lines before it are passed over: reading starts at
// the nearest line whose byte offset is known (line 1, or a key line at or before the start
// when the keys were found in this file) or, in a mapped file whose start lies before the top key
// line, steps back from that key line when that is nearer. A block past the end of the file
// reads as empty lines.
void GoToStart(TextFile& file, const LocatedBlock& block, bool keysInFile) {
  const std::int64_t startLine = block.startLine;
  KeyLine from{1, 0};
  if (keysInFile) {
    for (const KeyLine& key : {block.top, block.bottom}) {
      if (key.line <= startLine && key.line > from.line) from = key;
    }
    const std::int64_t back = block.top.line - startLine;
    if (file.IsMapped() && back > 0 && back < startLine - from.line) {
      const std::int64_t offset = StartOfLineBefore(file.MappedBytes(), block.top.offset, back);
      if (offset >= 0 && file.SeekToLine(offset, startLine)) return;
    }
  }
  if (from.line == 1 || !file.SeekToLine(from.offset, from.line)) from = KeyLine{1, 0};
  file.SkipLines(startLine - from.line);
}

}  // namespace

void clsTable::Process(Context& ctx) {
  // The rows always come from input file 1, whichever file the keys were found in.
  const std::string inputPath = ctx.recipe.InputFilePath(1);
  const bool keysInFile = ctx.recipe.InputFilePath(ctx.recipe.InputFileFirst) == inputPath;
  TextFile file;
  if (keysInFile) file.OpenMapped(inputPath);  // a file it cannot open is reported below

  // A report that another program cuts short while it is read fails the table, saying so.
  const auto cutShort = [&ctx, &file] {
    if (!file.CutShort()) return false;
    FailTable(ctx, "Error in Table specs: Can not read input file: " + file.Error());
    return true;
  };
  LocatedBlock block;
  if (!LocateTableBlock(ctx, *this, keysInFile ? &file : nullptr, block)) {
    cutShort();
    return;
  }
  // Row filters, carried columns and the totals check, when the table has any.
  RowRules rules;
  std::string ruleError;
  if (!rules.Prepare(*this, ctx.tabSize, ctx.lineProcessor.Utf8(), ruleError)) {
    FailTable(ctx, ruleError);
    return;
  }
  TableRowWriter rows(ctx, *this, block.startLine, block.endLine, &rules);
  if (!file.IsOpen() && !file.OpenMapped(inputPath)) {
    FailTable(ctx, "Error in Table specs: Can not read input file: " + file.Error());
    return;
  }
  GoToStart(file, block, keysInFile);
  // The lines are views into the mapping: the rules' searches can run ahead through it.
  if (file.IsMapped()) rules.ReadsFrom(file.MappedBytes());

  std::int64_t pastEnd = 0;  // rows read past the end of the file
  for (std::int64_t lineNumber = block.startLine; lineNumber <= block.endLine; ++lineNumber) {
    if (!rows.Turn(lineNumber)) break;
    std::string_view line;
    if (!file.ReadLine(line)) {
      if (file.CutShort()) break;
      line = {};  // past the end of the file: empty lines, up to a point
      if (++pastEnd > kMaxRowsPastEnd) {
        rows.Settle();
        ctx.ui.Message("Table " + ToText(static_cast<long long>(Number)) +
                           " reads past the end of the report, whose last line is " +
                           ToText(static_cast<long long>(file.LinesRead())) + ": stopped after " +
                           ToText(static_cast<long long>(kMaxRowsPastEnd)) +
                           " empty rows (check the table's line offsets)",
                       Icon::Exclamation);
        break;
      }
    }
    const TableRowWriter::Next next = rows.Write(lineNumber, line);
    if (next == TableRowWriter::Next::Fail) return;
    if (next == TableRowWriter::Next::Stop) break;
  }
  rows.Settle();
  if (cutShort()) return;
  rows.Finish();
}

}  // namespace kroveld
