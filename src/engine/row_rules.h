// The rules a table may add to its row pass: which lines of the located block become rows (blank
// lines skipped, a keep pattern, a skip pattern), which earlier line each carried column cuts its
// value from (the latest heading that matched its pattern), and the check of the rows against the
// total lines the report prints. One object per pass of one table; a table without rules has an
// inactive one and the pass goes exactly as before.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/amount_sum.h"
#include "engine/pattern.h"
#include "util/literal_scout.h"
#include "util/numbers.h"
#include "util/utf8_text.h"

namespace kroveld {

class Context;
class clsTable;

// The blank test of the row filters: nothing but blanks, tabs and form feeds.
bool IsFilterBlank(std::string_view line);

class RowRules {
 public:
  // Compiles the table's patterns. False when one does not compile: `error` then holds the
  // message to show ("Error in Table n : Invalid <key> pattern: ...").
  // `utf8`: the report is read as UTF-8, so positions count printed columns.
  bool Prepare(const clsTable& table, int tabSize, bool utf8, std::string& error);
  // Says that the lines Admit will be given lie in order in `report` (the mapped report): the
  // searches for literals then run ahead through it instead of through each line. Optional; the
  // answers are the same either way.
  void ReadsFrom(std::string_view report);

  // Whether the table has any rule at all; when not, nothing below need be called.
  bool Active() const { return active_; }

  // Line `lineNumber` of the block, in order: notes it for the carried columns and the totals
  // check, and says whether it becomes a row. Differences between printed totals and the rows
  // are counted in the run's tally and held for ShowMessages.
  bool Admit(Context& ctx, std::int64_t lineNumber, std::string_view line);
  // Whether Admit found differences to show; ShowMessages shows them (Exclamation).
  bool HasMessages() const { return !messages_.empty(); }
  void ShowMessages(Context& ctx);

  // Whether column `index` (from 0) takes its value from a carried line instead of the current
  // one.
  bool Carries(std::size_t index) const { return index < carry_.size() && carry_[index] >= 0; }
  // The line column `index` cuts its value from: the latest line that matched its pattern, or
  // an empty line before any has. Only for columns that carry.
  std::string_view CarriedLine(std::size_t index) const;
  // Changes whenever a carried line does: what was cut from the carried lines before still holds
  // while it stays the same.
  std::uint64_t CarriedVersion() const { return carriedVersion_; }
  // True when some carried line holds a tab (its fields then need the line processor's
  // expansion).
  bool CarriedTabs() const { return carriedTabs_; }
  // True when every carried line is ASCII (a UTF-8 line beyond it is cut by printed columns).
  bool CarriedAscii() const { return carriedAscii_; }

 private:
  void AddRow(std::string_view line);
  void CheckTotals(Context& ctx, std::int64_t lineNumber, std::string_view line);
  // The line as slot 1 would hold it for cutting: tabs expanded, UTF-8 beyond ASCII indexed by
  // printed columns.
  std::string_view Prepared(std::string_view line);
  // The field of summed column `column` in the prepared line; `readable` says how many bytes from
  // its start may be read.
  std::string_view Field(std::string_view line, std::size_t column, std::size_t& readable);

  void PlanScouts(std::string_view report);
  std::vector<LiteralScout*> ScoutsFor(const Pattern& pattern);

  bool active_ = false;
  bool skipBlank_ = false;
  Pattern skip_;
  Pattern keep_;
  Pattern total_;
  // Carried columns: distinct patterns, the latest line each matched, and per column the
  // pattern it uses (-1: the column cuts the current line).
  std::vector<Pattern> carryPatterns_;
  std::vector<std::string> carriedLines_;
  std::vector<int> carry_;
  bool carriedTabs_ = false;
  bool carriedAscii_ = true;
  std::uint64_t carriedVersion_ = 0;

  // Totals check: the columns summed (all that do not carry), their positions and letters.
  struct SummedColumn {
    std::size_t index = 0;
    int start = 0;
    int end = 0;
    std::string letter;
  };
  std::vector<SummedColumn> summed_;
  std::vector<AmountSum> sums_;               // per summed column, since the last total line
  std::vector<AmountSum::Bytes> fieldBytes_;  // per summed column, its bytes in a line
  int tableNumber_ = 0;
  int tabSize_ = 0;
  bool utf8_ = false;
  bool byColumns_ = false;  // the prepared line is cut through columns_
  LineColumns columns_;
  std::string repaired_;
  std::vector<std::string> messages_;
  std::string expanded_;  // the line with its tabs expanded, when it has any
  std::string scratch_;   // the line with form feeds as blanks, when it has any

  // The searches for the literals of the patterns (one per distinct literal, shared by the
  // patterns that need it) and for form feeds and tabs (which few lines hold); and each
  // pattern's scouts, in the order its Matches takes them.
  std::vector<LiteralScout> scouts_;
  LiteralScout controls_;
  std::vector<LiteralScout*> skipScouts_;
  std::vector<LiteralScout*> keepScouts_;
  std::vector<LiteralScout*> totalScouts_;
  std::vector<std::vector<LiteralScout*>> carryScouts_;
};

}  // namespace kroveld
