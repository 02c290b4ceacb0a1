// Running a table section: locate the block by its two key texts, then stream the block's lines
// from input file 1 through the row writer into sheet 1 or the CSV output. The file is read
// sequentially with one buffer; each row reuses the same line and CSV buffers.
#include <string>
#include <string_view>

#include "engine/context.h"
#include "engine/table.h"
#include "engine/table_block.h"
#include "engine/table_rows.h"
#include "util/strings.h"

namespace kroveld {

void clsTable::Process(Context& ctx) {
  LocatedBlock block;
  if (!LocateTableBlock(ctx, *this, block)) return;
  const std::int64_t startLine = block.startLine;
  const std::int64_t endLine = block.endLine;
  TableRowWriter rows(ctx, *this, startLine, endLine);

  // The rows always come from input file 1, whichever file the keys were found in.
  const std::string inputPath = ctx.recipe.InputFilePath(1);
  TextFile file;
  if (!file.Open(inputPath)) {
    FailTable(ctx, "Error in Table specs: Can not read input file: " + file.Error());
    return;
  }
  // Lines before the start line are passed over. When the rows come from the file the keys were
  // found in, reading starts at the nearest key line at or before the start line, whose byte
  // offset the search gave; otherwise at line 1.
  KeyLine from{1, 0};
  if (block.keyFile == inputPath) {
    for (const KeyLine& key : {block.top, block.bottom}) {
      if (key.line <= startLine && key.line > from.line) from = key;
    }
  }
  if (from.line == 1 || !file.SeekToLine(from.offset, from.line)) from = KeyLine{1, 0};
  file.SkipLines(startLine - from.line);  // a block past the end of the file reads as empty lines

  std::int64_t pastEnd = 0;  // rows read past the end of the file
  for (std::int64_t lineNumber = startLine; lineNumber <= endLine; ++lineNumber) {
    if (!rows.Turn(lineNumber)) break;
    std::string_view line;
    if (!file.ReadLine(line)) {
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
  file.Close();
  rows.Finish();
}

}  // namespace kroveld
