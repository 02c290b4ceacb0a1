// Cutting CSV rows straight from the read buffer.
#include "engine/fast_csv_rows.h"

#include <algorithm>

#include "engine/context.h"
#include "util/utf8_text.h"

namespace kroveld {

// The cuts of every column, or false when some column must go through the line processor (an
// operator that reads another slot, sums, or is unknown and reported per field).
bool FastCsvRows::Plan(const Context& ctx, const std::vector<clsColumn>& columns) {
  cuts_.clear();
  for (const clsColumn& column : columns) {
    if (column.SingleFileSlot(ctx) != 1) return false;
    const long long width =
        static_cast<long long>(column.ReadColumnEnd) - column.ReadColumnStart + 1;
    cuts_.push_back(ColumnCut{column.ReadColumnStart - 1LL, width < 1 ? 0 : width});
  }
  return true;
}

// One CSV row from `line` as slot 1 would hold it after ReadRowPeriod1Only (the line and, when it
// is not empty and does not end in a blank, one blank more), without copying the line first.
// `warned` is set when an equal-sign warning was shown.
std::string_view FastCsvRows::WriteRow(Context& ctx, std::string_view line, bool& warned) {
  const long long size = static_cast<long long>(line.size());
  const bool blank = size > 0 && line.back() != ' ';
  const long long slotSize = size + (blank ? 1 : 0);
  // Each field holds at most the whole slot, doubled quotes, two quotes and a comma.
  const std::size_t room = cuts_.size() * (2 * static_cast<std::size_t>(slotSize) + 5);
  if (row_.size() < room) row_.resize(std::max(room, 2 * row_.size()));
  char* const begin = row_.data();
  char* out = begin;
  warned = false;
  for (const ColumnCut& cut : cuts_) {
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

bool FastCsvRows::Cut(Context& ctx, const std::vector<clsColumn>& columns, std::string_view line,
                      std::string_view& row) {
  if (!planned_) {
    fast_ = Plan(ctx, columns);
    planned_ = true;
  }
  // A UTF-8 line beyond ASCII is cut by printed columns, in the line processor.
  if (!fast_ || clsLineProcessor::ExpandsTabs(line, ctx.tabSize) ||
      (ctx.lineProcessor.Utf8() && !IsAscii(line))) {
    planned_ = false;  // AppendCsvValue works the operators out again
    return false;
  }
  pending_ = line;
  has_pending_ = true;
  bool warned = false;
  row = WriteRow(ctx, line, warned);
  if (warned) planned_ = false;  // the user interface had its turn
  return true;
}

void FastCsvRows::Settle(Context& ctx) {
  if (has_pending_) ctx.lineProcessor.SetPeriod1Line(pending_, ctx.tabSize);
  has_pending_ = false;
  planned_ = false;
}

}  // namespace kroveld
