// The row filters, carried columns and totals check of one table pass.
#include "engine/row_rules.h"

#include <algorithm>
#include <cstring>

#include "engine/context.h"
#include "engine/table.h"
#include "util/strings.h"

namespace kroveld {

namespace {

bool CompileKey(Pattern& into, std::string_view key, const std::string& text,
                const std::string& section, std::string& error) {
  std::string why;
  if (into.Compile(text, why)) return true;
  error = PatternError(section, key, text, why);
  return false;
}

// The sum as the report would most likely print it: two decimals with separators when it has no
// more, otherwise every decimal.
std::string SumText(Fixed4 sum) {
  if (sum.raw % 100 == 0) return FormatGrouped(sum, 2);
  std::string text;
  AppendPlain(text, sum);
  return text;
}

}  // namespace

bool IsFilterBlank(std::string_view line) {
  for (const char c : line) {
    if (c != ' ' && c != '\t' && c != '\f') return false;
  }
  return true;
}

bool RowRules::Prepare(const clsTable& table, int tabSize, bool utf8, std::string& error) {
  *this = RowRules();
  tableNumber_ = table.Number;
  tabSize_ = tabSize;
  utf8_ = utf8;
  const std::string section = "Table " + ToText(table.Number);
  skipBlank_ = table.SkipBlankLines.value_or(false);
  if (!CompileKey(skip_, "SkipLinesMatching", table.SkipLinesMatching, section, error) ||
      !CompileKey(keep_, "KeepLinesMatching", table.KeepLinesMatching, section, error) ||
      !CompileKey(total_, "TotalLinesMatching", table.TotalLinesMatching, section, error)) {
    return false;
  }
  carry_.assign(table.Columns.size(), -1);
  bool carries = false;
  for (std::size_t c = 0; c < table.Columns.size(); ++c) {
    const std::string& text = table.Columns[c].CarryFrom;
    if (text.empty()) continue;
    carries = true;
    // Columns that carry from the same pattern share it and its line.
    int found = -1;
    for (std::size_t p = 0; p < carryPatterns_.size(); ++p) {
      if (carryPatterns_[p].Text() == text) found = static_cast<int>(p);
    }
    if (found < 0) {
      Pattern pattern;
      const std::string columnSection = section + " Col " + ToText(static_cast<long long>(c) + 1);
      if (!CompileKey(pattern, "CarryFrom", text, columnSection, error)) return false;
      carryPatterns_.push_back(std::move(pattern));
      found = static_cast<int>(carryPatterns_.size()) - 1;
    }
    carry_[c] = found;
  }
  carriedLines_.assign(carryPatterns_.size(), std::string());
  if (!carries) carry_.clear();
  if (!total_.Empty()) {
    for (std::size_t c = 0; c < table.Columns.size(); ++c) {
      if (Carries(c)) continue;
      const clsColumn& column = table.Columns[c];
      summed_.push_back(SummedColumn{c, column.ReadColumnStart, column.ReadColumnEnd,
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
  active_ = skipBlank_ || !skip_.Empty() || !keep_.Empty() || !total_.Empty() || carries;
  PlanScouts({});
  return true;
}

void RowRules::PlanScouts(std::string_view report) {
  std::vector<std::string> literals;
  for (const Pattern* pattern : {&skip_, &keep_, &total_}) {
    for (std::string& literal : pattern->SearchedLiterals()) literals.push_back(std::move(literal));
  }
  for (const Pattern& pattern : carryPatterns_) {
    for (std::string& literal : pattern.SearchedLiterals()) literals.push_back(std::move(literal));
  }
  std::sort(literals.begin(), literals.end());
  literals.erase(std::unique(literals.begin(), literals.end()), literals.end());
  scouts_.assign(literals.size(), LiteralScout());
  for (std::size_t i = 0; i < literals.size(); ++i) scouts_[i].Reset(report, literals[i]);
  // A literal that holds another is looked for only in the lines that hold the other (the
  // longest such), so that the search ahead runs once for both.
  for (LiteralScout& scout : scouts_) {
    LiteralScout* shorter = nullptr;
    for (LiteralScout& other : scouts_) {
      const std::string& part = other.Literal();
      if (part.size() < scout.Literal().size() && scout.Literal().find(part) != std::string::npos &&
          (shorter == nullptr || part.size() > shorter->Literal().size())) {
        shorter = &other;
      }
    }
    if (shorter != nullptr) scout.Within(shorter);
  }
  controls_.Reset(report, "\f\t", LiteralScout::Kind::AnyByte);
  skipScouts_ = ScoutsFor(skip_);
  keepScouts_ = ScoutsFor(keep_);
  totalScouts_ = ScoutsFor(total_);
  carryScouts_.clear();
  for (const Pattern& pattern : carryPatterns_) carryScouts_.push_back(ScoutsFor(pattern));
}

std::vector<LiteralScout*> RowRules::ScoutsFor(const Pattern& pattern) {
  std::vector<LiteralScout*> out;
  for (const std::string& literal : pattern.SearchedLiterals()) {
    for (LiteralScout& scout : scouts_) {
      if (scout.Literal() == literal) out.push_back(&scout);
    }
  }
  return out;
}

void RowRules::ReadsFrom(std::string_view report) {
  PlanScouts(report);
}

std::string_view RowRules::CarriedLine(std::size_t index) const {
  return carriedLines_[static_cast<std::size_t>(carry_[index])];
}

bool RowRules::Admit(Context& ctx, std::int64_t lineNumber, std::string_view line) {
  // Form feeds count as blanks for the patterns as for the blank test.
  std::string_view tested = line;
  // (A line read past the end of the report is empty and may have no bytes at all.)
  if (controls_.Holds(line) && line.find('\f') != std::string_view::npos) {
    scratch_.assign(line);
    for (char& c : scratch_) {
      if (c == '\f') c = ' ';
    }
    tested = scratch_;
  }
  for (std::size_t p = 0; p < carryPatterns_.size(); ++p) {
    if (!carryPatterns_[p].Matches(tested, carryScouts_[p].data())) continue;
    carriedLines_[p].assign(line);
    ++carriedVersion_;
    carriedTabs_ = false;
    carriedAscii_ = true;
    for (const std::string& carried : carriedLines_) {
      if (carried.find('\t') != std::string::npos) carriedTabs_ = true;
      if (!IsAscii(carried)) carriedAscii_ = false;
    }
  }
  const bool isTotal = !total_.Empty() && total_.Matches(tested, totalScouts_.data());
  if (isTotal) CheckTotals(ctx, lineNumber, line);
  bool row = true;
  if (skipBlank_ && IsFilterBlank(line)) {
    row = false;
  } else if (!keep_.Empty() && !keep_.Matches(tested, keepScouts_.data())) {
    row = false;
  } else if (!skip_.Empty() && skip_.Matches(tested, skipScouts_.data())) {
    row = false;
  }
  if (row && !isTotal && !summed_.empty()) AddRow(line);
  return row;
}

std::string_view RowRules::Prepared(std::string_view line) {
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
  if (tabSize_ >= 1 && controls_.Holds(line) && line.find('\t') != std::string_view::npos) {
    ExpandTabs(line, tabSize_, expanded_);
    line = expanded_;
  }
  return line;
}

// Positions start..end (from 1) of the prepared line: bytes, or printed columns.
std::string_view RowRules::Field(std::string_view line, std::size_t column, std::size_t& readable) {
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

void RowRules::AddRow(std::string_view line) {
  line = Prepared(line);
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

void RowRules::CheckTotals(Context& ctx, std::int64_t lineNumber, std::string_view line) {
  line = Prepared(line);
  for (std::size_t c = 0; c < summed_.size(); ++c) {
    AmountSum& column = sums_[c];
    std::size_t readable = 0;
    const std::string_view printedText = Trim(Field(line, c, readable));
    const AmountSum::Result sum = column.Take();
    Fixed4 printed;
    // Only numeric columns are checked, and only where the total line prints a number.
    if (column.Numeric() && (QuickFixed(printedText, printed, NumberLocale::Current()) ||
                             ParseFixed(printedText, printed) == NumberParse::kOk)) {
      ++ctx.run.tally.totalsChecked;
      if (sum.overflow || printed.raw != sum.total.raw) {
        ++ctx.run.tally.totalsDiffering;
        // Every difference is reported, once.
        std::string text = "Error in Table " + ToText(tableNumber_) + " : Total on line ";
        AppendInt(text, lineNumber);
        text += " does not match its rows in column " + summed_[c].letter + ": printed ";
        text += printedText;
        text += ", sum of the rows ";
        text += sum.overflow ? std::string("out of range") : SumText(sum.total);
        messages_.push_back(std::move(text));
      }
    }
  }
}

void RowRules::ShowMessages(Context& ctx) {
  for (const std::string& text : messages_) ctx.ui.Message(text, Icon::Exclamation);
  messages_.clear();
}

}  // namespace kroveld
