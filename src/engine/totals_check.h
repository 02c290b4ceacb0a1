// The check of a table's rows against the totals its report prints: each summed column adds the
// amounts of the rows since the last total line, and a total line compares the sums with the
// values it prints. The lines are taken in by batches; once a block has filled one, they are
// summed on a second thread a batch or two behind the row pass. What the check finds is shown
// before anything else the run shows next, and at the latest when the table ends, so every
// difference keeps its place among the run's messages.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "engine/amount_sum.h"
#include "util/utf8_text.h"

namespace kroveld {

class Context;
class clsTable;

class TotalsCheck {
 public:
  TotalsCheck() = default;
  ~TotalsCheck();
  TotalsCheck(const TotalsCheck&) = delete;
  TotalsCheck& operator=(const TotalsCheck&) = delete;

  // Sums every column of `table` that does not carry its value down. `utf8`: the report is read
  // as UTF-8, so positions count printed columns. Once, before the first line.
  void Prepare(const clsTable& table, int tabSize, bool utf8);
  bool Active() const { return !summed_.empty(); }

  // Lines that lie in `report` (the mapped report, which outlives the check) are read there
  // rather than copied. Optional.
  void ReadsFrom(std::string_view report) { report_ = report; }

  // A row of the block. `controls`: the line may hold a tab (false only when it holds none).
  void Row(Context& ctx, std::string_view line, bool controls) { Take(ctx, line, controls, 0); }
  // A total line, line `lineNumber` of the report.
  void Total(Context& ctx, std::int64_t lineNumber, std::string_view line, bool controls) {
    Take(ctx, line, controls, lineNumber);
  }
  // Shows the differences found in the lines taken so far (Exclamation) and counts the totals in
  // the run's tally.
  void Show(Context& ctx);

 private:
  // A line taken in: where it lies in the report, or else its bytes' place in the batch; whether
  // it may hold a tab; and for a total line its number (0 for a row).
  struct Entry {
    const char* data = nullptr;
    std::size_t at = 0;
    std::size_t size = 0;
    std::int64_t lineNumber = 0;
    bool controls = false;
  };
  struct Batch {
    std::vector<Entry> entries;
    std::string bytes;      // the lines that do not lie in the report
    std::size_t lines = 0;  // the bytes of all its lines
  };
  // A batch this full goes to the thread (or, before there is one, starts it). The thread stays
  // within a megabyte behind the row pass, where the mapped report's pages are still at hand.
  static constexpr std::size_t kBatchLines = 4096;
  static constexpr std::size_t kBatchBytes = std::size_t{256} << 10;
  static constexpr std::size_t kQueued = 2;  // batches waiting for the thread at most

  void Take(Context& ctx, std::string_view line, bool controls, std::int64_t lineNumber) {
    if (held_ == nullptr) Hold(ctx);
    const std::less<const char*> before;  // pointers into unrelated memory compare safely
    const bool inReport = !before(line.data(), report_.data()) &&
                          !before(report_.data() + report_.size(), line.data() + line.size());
    if (inReport) {
      filling_.entries.push_back(Entry{line.data(), 0, line.size(), lineNumber, controls});
    } else {
      filling_.entries.push_back(
          Entry{nullptr, filling_.bytes.size(), line.size(), lineNumber, controls});
      filling_.bytes.append(line);
    }
    filling_.lines += line.size();
    if (filling_.entries.size() >= kBatchLines || filling_.lines >= kBatchBytes) Hand();
  }
  void Hold(Context& ctx);
  void Hand();
  void Work();
  void CatchUp();
  void Check(const Batch& batch);
  void AddRow(std::string_view line, bool controls);
  void CheckTotals(std::int64_t lineNumber, std::string_view line, bool controls);
  // The line as slot 1 would hold it for cutting: tabs expanded, UTF-8 beyond ASCII indexed by
  // printed columns.
  std::string_view Prepared(std::string_view line, bool controls);
  // The field of summed column `column` in the prepared line; `readable` says how many bytes
  // from its start may be read.
  std::string_view Field(std::string_view line, std::size_t column, std::size_t& readable);

  // The columns summed: their positions and letters.
  struct SummedColumn {
    int start = 0;
    int end = 0;
    std::string letter;
  };
  std::vector<SummedColumn> summed_;
  int tableNumber_ = 0;
  int tabSize_ = 0;
  bool utf8_ = false;

  // Filled by whichever side checks the lines (the thread while it runs, otherwise the row
  // pass): the sums since the last total line, the scratch of preparing a line, the differences
  // found and the totals compared.
  std::vector<AmountSum> sums_;
  std::vector<AmountSum::Bytes> fieldBytes_;
  bool byColumns_ = false;  // the prepared line is cut through columns_
  LineColumns columns_;
  std::string repaired_;
  std::string expanded_;
  std::vector<std::string> found_;
  std::uint64_t checked_ = 0;
  std::uint64_t differing_ = 0;

  // The row pass's side.
  Context* held_ = nullptr;  // the run whose port holds Show back to be called first
  std::string_view report_;
  Batch filling_;

  // Shared with the thread, under mutex_.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Batch> queued_;
  std::vector<Batch> spare_;
  bool busy_ = false;  // the thread is checking a batch
  bool quit_ = false;
  std::exception_ptr failure_;
  std::thread thread_;
};

}  // namespace kroveld
