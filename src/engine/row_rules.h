// The rules a table may add to its row pass: which lines of the located block become rows (blank
// lines skipped, a keep pattern, a skip pattern), which earlier line each carried column cuts its
// value from (the latest heading that matched its pattern), and which lines are the totals its
// rows are checked against. One object per pass of one table; a table without rules has an
// inactive one and the pass goes exactly as before.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/pattern.h"
#include "engine/totals_check.h"
#include "util/literal_scout.h"

namespace kroveld {

class Context;
class clsTable;

// The blank test of the row filters: nothing but blanks, tabs and form feeds.
bool IsFilterBlank(std::string_view line);

class RowRules {
 public:
  // Compiles the table's patterns; once, before the first line. False when one does not compile:
  // `error` then holds the message to show ("Error in Table n : Invalid <key> pattern: ...").
  // `utf8`: the report is read as UTF-8, so positions count printed columns.
  bool Prepare(const clsTable& table, int tabSize, bool utf8, std::string& error);
  // Says that the lines Admit will be given lie in order in `report` (the mapped report, which
  // outlives the rules): the searches for literals then run ahead through it instead of through
  // each line, and the totals check reads the lines there. Optional; the answers are the same
  // either way.
  void ReadsFrom(std::string_view report);

  // Whether the table has any rule at all; when not, nothing below need be called.
  bool Active() const { return active_; }

  // Line `lineNumber` of the block, in order: notes it for the carried columns and the totals
  // check, and says whether it becomes a row. A difference between a printed total and its rows
  // is shown before whatever the run shows next, and counted in the run's tally.
  bool Admit(Context& ctx, std::int64_t lineNumber, std::string_view line);
  // Shows the differences not shown yet (Exclamation): when the table ends.
  void ShowMessages(Context& ctx) {
    if (totals_.Active()) totals_.Show(ctx);
  }

  // Whether column `index` (from 0) takes its value from a carried line instead of the current
  // one.
  bool Carries(std::size_t index) const { return index < carry_.size() && carry_[index] >= 0; }
  // The line column `index` cuts its value from: the latest line that matched its pattern, or
  // an empty line before any has. Only for columns that carry.
  std::string_view CarriedLine(std::size_t index) const {
    return carriedLines_[static_cast<std::size_t>(carry_[index])];
  }
  // Changes whenever a carried line does: what was cut from the carried lines before still holds
  // while it stays the same.
  std::uint64_t CarriedVersion() const { return carriedVersion_; }
  // True when some carried line holds a tab (its fields then need the line processor's
  // expansion).
  bool CarriedTabs() const { return carriedTabs_; }
  // True when every carried line is ASCII (a UTF-8 line beyond it is cut by printed columns).
  bool CarriedAscii() const { return carriedAscii_; }

 private:
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

  TotalsCheck totals_;
  std::string scratch_;  // the line with form feeds as blanks, when it has any

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
