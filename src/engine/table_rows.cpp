// The row pass of a table: status and stop question between rows, the fast CSV cut when it
// applies, otherwise the line through slot 1 and each column.
#include "engine/table_rows.h"

#include "engine/context.h"
#include "engine/row_rules.h"
#include "engine/table.h"
#include "engine/table_block.h"
#include "util/strings.h"

namespace kroveld {

TableRowWriter::TableRowWriter(Context& ctx, clsTable& table, std::int64_t startLine,
                               std::int64_t endLine, RowRules* rules)
    : ctx_(ctx),
      table_(table),
      start_(startLine),
      total_(endLine - startLine + 1),
      csv_(!ctx.sink->HoldsCells()),
      baseRow_(ctx.recipe.ExportSpecs.getWritePointer(ctx.ui, 1)),
      rules_(rules != nullptr && rules->Active() ? rules : nullptr) {
  for (clsColumn& column : table.Columns) column.StartTypedValues();
}

// The port makes the per-row yield and status texts cheap by letting only some through.
bool TableRowWriter::TakeTurn(std::int64_t lineNumber) {
  UiPort& ui = ctx_.ui;
  if (due_) {
    fast_.Settle(ctx_);
    ui.ProcessEvents();
    status_ = ctx_.statusPrefix;
    status_ += " row ";
    AppendInt(status_, lineNumber - start_ + 1);
    status_ += " of ";
    AppendInt(status_, total_);
    ui.Status(3, status_);
    RunProgress& progress = ctx_.run.progress;
    progress.table = table_.Number;
    progress.row = lineNumber - start_ + 1;
    progress.rows = total_;
    progress.phase = "writing";
    ui.Progress(progress);
  }
  if (ctx_.run.stopRequested.load(std::memory_order_relaxed)) {
    fast_.Settle(ctx_);
    if (ui.AskYesNo(kTerminateQuestion, Icon::Question)) return false;
    ctx_.run.stopRequested.store(false);
  }
  return true;
}

TableRowWriter::Next TableRowWriter::Write(std::int64_t lineNumber, std::string_view line) {
  if (rules_ != nullptr) {
    if (!rules_->Admit(ctx_, lineNumber, line)) {
      ++filtered_;
      return Next::Row;
    }
  }
  // The usual CSV row (no status text due, the columns checked on the first row) is cut straight
  // from the line when the columns allow it.
  if (csv_ && !due_ && rowIndex_ != 0) {
    std::string_view row;
    if (fast_.Cut(ctx_, table_.Columns, line, lineNumber, row, rules_)) {
      ++rowIndex_;
      ctx_.sink->WriteCsvRow(row);
      return Next::Row;
    }
  }
  fast_.Drop();
  return WriteThroughColumns(lineNumber, line);
}

// The line goes into slot 1 and each column produces its value from there.
TableRowWriter::Next TableRowWriter::WriteThroughColumns(std::int64_t lineNumber,
                                                         std::string_view line) {
  UiPort& ui = ctx_.ui;
  ctx_.lineProcessor.SetPeriod1Line(line, ctx_.tabSize);
  csvLine_.clear();
  bool placed = false;  // a typed column has taken its place in the CSV row
  const std::size_t columnCount = table_.Columns.size();
  bool carriedInSlot = false;  // slot 1 holds a carried line instead of this one
  for (std::size_t c = 0; c < columnCount; ++c) {
    clsColumn& column = table_.Columns[c];
    // A carried column reads its positions from its carried line, put into slot 1 for it.
    if (rules_ != nullptr && rules_->Carries(c)) {
      ctx_.lineProcessor.SetPeriod1Line(rules_->CarriedLine(c), ctx_.tabSize);
      carriedInSlot = true;
    } else if (carriedInSlot) {
      ctx_.lineProcessor.SetPeriod1Line(line, ctx_.tabSize);
      carriedInSlot = false;
    }
    if (due_) {
      status_ = ctx_.statusPrefix;
      status_ += " (col ";
      AppendInt(status_, static_cast<long long>(c) + 1);
      status_ += " of ";
      AppendInt(status_, table_.TotalColumns);
      status_ += ')';
      ui.Status(3, status_);
    }
    if (rowIndex_ == 0 &&
        (column.ReadColumnStart < 1 || column.ReadColumnEnd < column.ReadColumnStart)) {
      FailTable(ctx_, "Invalid table specs (column " + ToText(static_cast<long long>(c) + 1) +
                          "): ReadColumnStart is smaller than 1 or larger than ReadColumnEnd!");
      return Next::Fail;
    }
    if (csv_) {
      // Joined on the text so far: leading empty fields take no comma and the rest move left;
      // a typed column keeps its place, empty or not.
      if (!csvLine_.empty() || placed) csvLine_.push_back(',');
      column.AppendCsvValue(ctx_, csvLine_, lineNumber);
      placed = placed || column.IsTyped();
    } else {
      column.Process(ctx_, baseRow_ + rowIndex_, lineNumber);
    }
  }
  if (carriedInSlot) ctx_.lineProcessor.SetPeriod1Line(line, ctx_.tabSize);
  ++rowIndex_;
  if (csv_) {
    ctx_.sink->WriteCsvRow(csvLine_);
  } else if (ctx_.sink->Full()) {
    return Next::Stop;
  }
  return Next::Row;
}

void TableRowWriter::Settle() {
  fast_.Settle(ctx_);
}

void TableRowWriter::Finish() {
  fast_.Settle(ctx_);
  for (std::size_t c = 0; c < table_.Columns.size(); ++c) {
    table_.Columns[c].NoteKeptAsText(ctx_.ui, table_.Number, static_cast<int>(c) + 1);
  }
  if (rules_ != nullptr) rules_->ShowMessages(ctx_);
  ctx_.run.tally.rowsWritten += static_cast<std::uint64_t>(rowIndex_);
  ctx_.recipe.ExportSpecs.setWritePointer(ctx_.ui, 1, baseRow_ + rowIndex_);
  table_.FirstRowWritten = baseRow_;
  table_.LastRowWritten = baseRow_ + rowIndex_ - 1;
  if (ctx_.observer != nullptr) {
    ctx_.observer->TableRowsWritten(table_, table_.FirstRowWritten, table_.LastRowWritten);
    if (rules_ != nullptr) ctx_.observer->TableLinesFiltered(table_, filtered_);
  }
}

}  // namespace kroveld
