// The analyzer's second look at a located table: which lines of the block are rows that fit the
// table's template, and which are not rows at all — blank lines, rules, and lines that do not fit
// the columns (page headings repeated inside the block, a title that runs across the columns).
// The survey only reads the lines; it never changes what the analyzer gives a conversion.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/table_parser.h"
#include "util/ui_port.h"

namespace kroveld {

enum class BlockLineKind {
  kRow,      // fits the template: a detail row (totals and wrapped labels included)
  kBlank,    // blanks only (form feeds and tabs count as blanks)
  kRule,     // a line drawn with - = _ * ~ # . (and + | between runs): "-----  ----", "+---+"
  kHeading,  // does not fit the columns and is met more than once (digits aside)
  kMisfit,   // does not fit the columns, met once
};

struct BlockSurvey {
  std::vector<BlockLineKind> kinds;  // one per line of the block, in order
  std::vector<ColumnSpan> spans;     // the columns the rows were measured against (may be empty)

  bool IsRow(std::size_t i) const { return kinds[i] == BlockLineKind::kRow; }
  std::size_t Count(BlockLineKind kind) const;
};

// Line text with its digits folded and blank runs made one, trimmed: the same heading on page 2
// and on page 3 gives the same key.
std::string HeadingKey(std::string_view line);
bool IsBlankLine(std::string_view line);
bool IsRuleLine(std::string_view line);

// Sorts the lines `parser` located (its Lines()) against the template `tmpl`, given as the
// recipe gives it ("-", "=", "=L", "=R" or a template line). A line does not fit when it joins
// columns that the other lines keep apart, runs across a column boundary that the rows respect,
// or has words where most rows have numbers. For the inferred templates the columns are worked
// out without the lines that do not fit, so a heading does not widen them.
BlockSurvey SurveyBlock(UiPort& ui, const clsTableParser& parser, std::string_view tmpl);

}  // namespace kroveld
