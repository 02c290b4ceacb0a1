// The totals check of one table pass, and the thread that sums a large block's rows.
#include "engine/totals_check.h"

#include <utility>

#include "engine/context.h"
#include "engine/table.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// The sum as the report would most likely print it: two decimals with separators when it has no
// more, otherwise every decimal.
std::string SumText(Fixed4 sum) {
  if (sum.raw % 100 == 0) return FormatGrouped(sum, 2);
  std::string text;
  AppendPlain(text, sum);
  return text;
}

}  // namespace

TotalsCheck::~TotalsCheck() {
  if (held_ != nullptr) held_->ui.Withdraw(this);
  if (thread_.joinable()) {
    {
      const std::lock_guard lock(mutex_);
      quit_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }
}

void TotalsCheck::Prepare(const clsTable& table, int tabSize, bool utf8) {
  tableNumber_ = table.Number;
  tabSize_ = tabSize;
  utf8_ = utf8;
  for (const clsColumn& column : table.Columns) {
    if (!column.CarryFrom.empty()) continue;
    summed_.push_back(SummedColumn{column.ReadColumnStart, column.ReadColumnEnd,
                                   UpperAscii(Trim(column.WriteColumn))});
  }
  sums_.assign(summed_.size(), AmountSum(NumberLocale::Current()));
  for (const SummedColumn& c : summed_) {
    const bool valid = c.start >= 1 && c.end >= c.start;
    fieldBytes_.push_back(valid ? AmountSum::Bytes{static_cast<std::size_t>(c.start - 1),
                                                   static_cast<std::size_t>(c.end - c.start + 1)}
                                : AmountSum::Bytes{std::string_view::npos, 0});
  }
}

// The first line since the differences were last shown: the port is to show them before
// whatever it shows next.
void TotalsCheck::Hold(Context& ctx) {
  held_ = &ctx;
  ctx.ui.ShowFirst(this, [this] { Show(*held_); });
}

// The full batch goes to the thread, started by the first one; with two batches waiting the row
// pass waits for it.
void TotalsCheck::Hand() {
  std::unique_lock lock(mutex_);
  if (!thread_.joinable()) thread_ = std::thread([this] { Work(); });
  changed_.wait(lock, [this] { return queued_.size() < kQueued; });
  queued_.push_back(std::move(filling_));
  if (spare_.empty()) {
    filling_ = Batch();
  } else {
    filling_ = std::move(spare_.back());
    spare_.pop_back();
  }
  lock.unlock();
  changed_.notify_all();
}

void TotalsCheck::Work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return quit_ || !queued_.empty(); });
    if (queued_.empty()) return;
    Batch batch = std::move(queued_.front());
    queued_.pop_front();
    busy_ = true;
    lock.unlock();
    try {
      Check(batch);
    } catch (...) {
      lock.lock();
      if (!failure_) failure_ = std::current_exception();
      lock.unlock();
    }
    batch.entries.clear();
    batch.bytes.clear();
    batch.lines = 0;
    lock.lock();
    spare_.push_back(std::move(batch));
    busy_ = false;
    changed_.notify_all();
  }
}

// Every line taken so far checked: the thread's batches finished, the one being filled checked
// here.
void TotalsCheck::CatchUp() {
  if (thread_.joinable()) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return queued_.empty() && !busy_; });
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
  }
  Check(filling_);
  filling_.entries.clear();
  filling_.bytes.clear();
  filling_.lines = 0;
}

void TotalsCheck::Show(Context& ctx) {
  if (held_ != nullptr) ctx.ui.Withdraw(this);
  held_ = nullptr;
  CatchUp();
  ctx.run.tally.totalsChecked += std::exchange(checked_, 0);
  ctx.run.tally.totalsDiffering += std::exchange(differing_, 0);
  const std::vector<std::string> found = std::move(found_);
  found_.clear();
  for (const std::string& text : found) ctx.ui.Message(text, Icon::Exclamation);
}

void TotalsCheck::Check(const Batch& batch) {
  for (const Entry& entry : batch.entries) {
    const std::string_view line(entry.data != nullptr ? entry.data : batch.bytes.data() + entry.at,
                                entry.size);
    if (entry.lineNumber == 0) {
      AddRow(line, entry.controls);
    } else {
      CheckTotals(entry.lineNumber, line, entry.controls);
    }
  }
}

std::string_view TotalsCheck::Prepared(std::string_view line, bool controls) {
  byColumns_ = false;
  if (utf8_ && !IsAscii(line)) {
    if (!IsValidUtf8(line)) {
      RepairUtf8(line, repaired_);
      line = repaired_;
    }
    if (tabSize_ >= 1 && line.find('\t') != std::string_view::npos) {
      ExpandTabsByColumns(line, tabSize_, expanded_);
      line = expanded_;
    }
    columns_.Build(line);
    byColumns_ = true;
    return line;
  }
  if (tabSize_ >= 1 && controls && line.find('\t') != std::string_view::npos) {
    ExpandTabs(line, tabSize_, expanded_);
    line = expanded_;
  }
  return line;
}

// Positions start..end (from 1) of the prepared line: bytes, or printed columns.
std::string_view TotalsCheck::Field(std::string_view line, std::size_t column,
                                    std::size_t& readable) {
  readable = 0;
  const SummedColumn& c = summed_[column];
  if (c.start < 1 || c.end < c.start) return {};
  if (byColumns_) {
    const std::string_view field = columns_.Cut(line, c.start, c.end - c.start + 1);
    readable = field.size();
    return field;
  }
  const std::size_t from = static_cast<std::size_t>(c.start - 1);
  if (from >= line.size()) return {};
  readable = line.size() - from;
  return line.substr(from, static_cast<std::size_t>(c.end - c.start + 1));
}

void TotalsCheck::AddRow(std::string_view line, bool controls) {
  line = Prepared(line, controls);
  if (!byColumns_) {
    AmountSum::AddFields(sums_, fieldBytes_, line);
    return;
  }
  for (std::size_t c = 0; c < summed_.size(); ++c) {
    std::size_t readable = 0;
    const std::string_view field = Field(line, c, readable);
    sums_[c].Add(field, readable);
  }
}

void TotalsCheck::CheckTotals(std::int64_t lineNumber, std::string_view line, bool controls) {
  line = Prepared(line, controls);
  for (std::size_t c = 0; c < summed_.size(); ++c) {
    AmountSum& column = sums_[c];
    std::size_t readable = 0;
    const std::string_view printedText = Trim(Field(line, c, readable));
    const AmountSum::Result sum = column.Take();
    Fixed4 printed;
    // Only numeric columns are checked, and only where the total line prints a number.
    if (column.Numeric() && (QuickFixed(printedText, printed, NumberLocale::Current()) ||
                             ParseFixed(printedText, printed) == NumberParse::kOk)) {
      ++checked_;
      if (sum.overflow || printed.raw != sum.total.raw) {
        ++differing_;
        // Every difference is reported, once.
        std::string text = "Error in Table " + ToText(tableNumber_) + " : Total on line ";
        AppendInt(text, lineNumber);
        text += " does not match its rows in column " + summed_[c].letter + ": printed ";
        text += printedText;
        text += ", sum of the rows ";
        text += sum.overflow ? std::string("out of range") : SumText(sum.total);
        found_.push_back(std::move(text));
      }
    }
  }
}

}  // namespace kroveld
