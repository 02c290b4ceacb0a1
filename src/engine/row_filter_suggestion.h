// Recipe keys that keep the lines a block survey found out of a table's rows: SkipBlankLines for
// blank lines and form feeds, SkipLinesMatching with one short anchored pattern for the rules and
// headings, or, when the lines to skip have little in common and the rows share how they begin,
// KeepLinesMatching. Every pattern is checked before it is offered: it compiles, it matches each
// line it is meant to skip, and no row of the block.
#pragma once

#include <string>
#include <vector>

#include "engine/block_survey.h"

namespace kroveld {

struct RowFilterSuggestion {
  bool skipBlankLines = false;
  std::string skipPattern;  // value of SkipLinesMatching; empty when not needed
  std::string keepPattern;  // value of KeepLinesMatching; empty when not needed
  // Lines of the block (indices) that do not fit but that no pattern tells from every row.
  std::vector<std::size_t> uncovered;

  bool Empty() const { return !skipBlankLines && skipPattern.empty() && keepPattern.empty(); }
};

RowFilterSuggestion SuggestRowFilters(const std::vector<std::string>& lines,
                                      const BlockSurvey& survey);

// `text` as a pattern that matches it literally and that a recipe line carries whole: ';' (a
// comment there) and '[' (a section heading there) are written as \x3B and \x5B.
std::string LiteralPattern(std::string_view text);

}  // namespace kroveld
