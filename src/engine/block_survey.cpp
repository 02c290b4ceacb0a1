#include "engine/block_survey.h"

#include <algorithm>
#include <map>

#include "util/numbers.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// Blanks of a line as a person sees them: a form feed or a stray tab is no text.
bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\f' || c == '\v' || c == '\r' || c == '\n';
}

// The characters rules are drawn with, and those that may stand between their runs ("+----+").
constexpr std::string_view kRuleRunChars = "-=_*~#.";
constexpr std::string_view kRuleChars = "-=_*~#.+|";

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::string_view Cell(std::string_view line, const ColumnSpan& s) {
  const auto from = static_cast<std::size_t>(s.start - 1);
  if (from >= line.size()) return {};
  std::string_view cell = line.substr(from, static_cast<std::size_t>(s.end - s.start + 1));
  while (!cell.empty() && IsSpace(cell.front())) cell.remove_prefix(1);
  while (!cell.empty() && IsSpace(cell.back())) cell.remove_suffix(1);
  return cell;
}

bool HasLetter(std::string_view text) {
  return std::any_of(text.begin(), text.end(), IsLetter);
}

// `occupied` counts, per position from 0, the lines with a character there (only ' ' is blank,
// as in the analyzer). A single blank between two occupied positions becomes occupied: words one
// blank apart belong to one column.
void Bridge(std::vector<int>& occupied) {
  for (std::size_t p = 1; p + 1 < occupied.size(); ++p) {
    if (occupied[p] == 0 && occupied[p - 1] > 0 && occupied[p + 1] > 0) occupied[p] = 1;
  }
}

// Lines that join two columns of the template the seed rows make, each line measured against
// the seeds other than itself. Words one blank apart count as one stretch on both sides, so only
// a gap of two blanks or more is a gap between columns. A heading repeated on every page would keep
// its own columns open if only the line itself were left out, so the lines with the same heading
// key are left out together.
void MarkJoiners(const std::vector<std::string>& lines, const std::vector<std::size_t>& candidates,
                 const std::vector<bool>& seed, const std::vector<std::string>& keys,
                 std::vector<bool>& misfit) {
  std::size_t width = 0;
  for (std::size_t i : candidates) width = std::max(width, lines[i].size());
  std::vector<int> all(width, 0);
  for (std::size_t i : candidates) {
    if (!seed[i]) continue;
    for (std::size_t p = 0; p < lines[i].size(); ++p) all[p] += lines[i][p] != ' ' ? 1 : 0;
  }

  std::map<std::string_view, std::vector<std::size_t>> groups;
  for (std::size_t i : candidates) groups[keys[i]].push_back(i);

  std::vector<int> others(width);
  std::vector<int> field(width);
  std::vector<int> own(width);
  for (const auto& [key, members] : groups) {
    others = all;
    for (std::size_t i : members) {
      if (!seed[i]) continue;
      for (std::size_t p = 0; p < lines[i].size(); ++p) others[p] -= lines[i][p] != ' ' ? 1 : 0;
    }
    Bridge(others);
    int id = -1;
    for (std::size_t p = 0; p < width; ++p) {
      if (others[p] > 0 && (p == 0 || others[p - 1] == 0)) ++id;
      field[p] = others[p] > 0 ? id : -1;
    }
    if (id < 1) continue;  // the others make one column at most: nothing to join
    for (std::size_t i : members) {
      const std::string& l = lines[i];
      own.assign(l.size(), 0);
      for (std::size_t p = 0; p < l.size(); ++p) own[p] = l[p] != ' ' ? 1 : 0;
      Bridge(own);
      int runField = -1;
      for (std::size_t p = 0; p < l.size() && !misfit[i]; ++p) {
        if (own[p] == 0) {
          runField = -1;
          continue;
        }
        if (field[p] < 0) continue;
        if (runField >= 0 && field[p] != runField) misfit[i] = true;
        runField = field[p];
      }
    }
  }
}

// Marks the lines that cross a column boundary the rows keep to, or hold words in a column where
// most rows hold numbers; the rows are the lines of `rows`. `numbered` tells the lines with a
// number in a column of numbers; false when the table has no such column.
bool MarkColumnMisfits(const std::vector<std::string>& lines,
                       const std::vector<std::size_t>& candidates,
                       const std::vector<std::size_t>& rows, const std::vector<ColumnSpan>& spans,
                       std::vector<bool>& misfit, std::vector<bool>& numbered) {
  const std::size_t columns = spans.size();
  std::vector<bool> numeric(columns, false);
  std::vector<bool> clean(columns, false);  // boundary after column k
  for (std::size_t k = 0; k < columns; ++k) {
    int numbers = 0;
    int words = 0;
    int crossings = 0;
    for (std::size_t i : rows) {
      const std::string_view cell = Cell(lines[i], spans[k]);
      if (cell.empty()) continue;
      if (IsNumeric(cell)) {
        ++numbers;
      } else if (HasLetter(cell)) {
        ++words;
      }
    }
    numeric[k] = numbers >= 2 && numbers > words;
    if (k + 1 < columns) {
      const auto b = static_cast<std::size_t>(spans[k].end);  // first position of column k+1
      for (std::size_t i : rows) {
        const std::string& l = lines[i];
        if (b < l.size() && !IsSpace(l[b - 1]) && !IsSpace(l[b])) ++crossings;
      }
      clean[k] = static_cast<std::size_t>(crossings) * 4 < rows.size();
    }
  }

  const bool anyNumeric = std::find(numeric.begin(), numeric.end(), true) != numeric.end();
  for (std::size_t i : candidates) {
    const std::string& l = lines[i];
    bool numbers = false;
    for (std::size_t k = 0; k < columns && !misfit[i]; ++k) {
      const std::string_view cell = Cell(l, spans[k]);
      if (numeric[k] && !cell.empty() && IsNumeric(cell)) numbers = true;
      if (numeric[k] && !cell.empty() && !IsNumeric(cell) && HasLetter(cell)) misfit[i] = true;
      const auto b = static_cast<std::size_t>(spans[k].end);
      if (k + 1 < columns && clean[k] && b < l.size() && !IsSpace(l[b - 1]) && !IsSpace(l[b])) {
        misfit[i] = true;
      }
    }
    numbered[i] = numbers;
  }
  return anyNumeric;
}

// Lines of words only in a table of numbers belong to the rows when they lead to a row with
// numbers (a group label over its rows, a label wrapped onto the line above its figures), at
// most two such lines away, or stand right under one (a note to that row; a line met more than
// once, as "END OF STATEMENT", is a footer there instead). The others are an address, a title or
// a banner between the tables of the block.
void MarkStrayLabels(const std::vector<std::string>& lines,
                     const std::vector<std::size_t>& candidates, const std::vector<bool>& numbered,
                     const std::vector<bool>& repeated, std::vector<bool>& misfit) {
  constexpr int kReach = 2;
  std::vector<bool> candidate(lines.size(), false);
  for (std::size_t i : candidates) candidate[i] = true;
  // The next line that is not blank in the direction `step`, or -1.
  auto next = [&lines](std::ptrdiff_t j, int step) -> std::ptrdiff_t {
    for (j += step; j >= 0 && j < static_cast<std::ptrdiff_t>(lines.size()); j += step) {
      if (!IsBlankLine(lines[static_cast<std::size_t>(j)])) return j;
    }
    return -1;
  };
  auto isRow = [&](std::ptrdiff_t j) {
    const auto u = static_cast<std::size_t>(j);
    return j >= 0 && candidate[u] && !misfit[u] && numbered[u];
  };
  auto leadsToRow = [&](std::size_t i) {
    std::ptrdiff_t j = static_cast<std::ptrdiff_t>(i);
    for (int labels = 0; labels <= kReach; ++labels) {
      j = next(j, 1);
      if (j < 0) return false;
      const auto u = static_cast<std::size_t>(j);
      if (!candidate[u] || misfit[u]) return false;
      if (numbered[u]) return true;
    }
    return false;
  };
  std::vector<bool> stray(lines.size(), false);
  for (std::size_t i : candidates) {
    if (misfit[i] || numbered[i]) continue;
    const bool note = !repeated[i] && isRow(next(static_cast<std::ptrdiff_t>(i), -1));
    stray[i] = !note && !leadsToRow(i);
  }
  for (std::size_t i : candidates) misfit[i] = misfit[i] || stray[i];
}

// Rows to work the columns out from: the lines with a number ending where numbers of many lines
// end (a column of amounts or account numbers). Headings and addresses have numbers too, a page
// number or a house number, but seldom where the rows have theirs. All lines when no position
// holds such a column.
std::vector<bool> SeedRows(const std::vector<std::string>& lines,
                           const std::vector<std::size_t>& candidates) {
  std::vector<std::vector<std::size_t>> ends(lines.size());
  std::size_t width = 0;
  std::size_t withNumbers = 0;
  for (std::size_t i : candidates) {
    const std::string& l = lines[i];
    for (std::size_t p = 0; p < l.size();) {
      if (IsSpace(l[p])) {
        ++p;
        continue;
      }
      std::size_t q = p;
      while (q < l.size() && !IsSpace(l[q])) ++q;
      const std::string_view word(l.data() + p, q - p);
      const bool digits =
          std::any_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
      if (digits && IsNumeric(word)) ends[i].push_back(q);  // one past the last character
      p = q;
    }
    if (!ends[i].empty()) ++withNumbers;
    width = std::max(width, l.size() + 1);
  }
  std::vector<std::size_t> count(width + 1, 0);
  for (std::size_t i : candidates) {
    for (std::size_t e : ends[i]) ++count[e];
  }
  // A trailing sign ("47.88-") ends a number one place later than its neighbours.
  auto column = [&](std::size_t e) {
    auto strong = [&](std::size_t p) { return count[p] >= 2 && count[p] * 5 >= withNumbers; };
    return strong(e) || (e > 0 && strong(e - 1));
  };
  std::vector<bool> seed(lines.size(), false);
  std::size_t seeds = 0;
  for (std::size_t i : candidates) {
    seed[i] = std::any_of(ends[i].begin(), ends[i].end(), column);
    seeds += seed[i] ? 1 : 0;
  }
  if (seeds < 2) {
    for (std::size_t i : candidates) seed[i] = true;
  }
  return seed;
}

}  // namespace

std::size_t BlockSurvey::Count(BlockLineKind kind) const {
  return static_cast<std::size_t>(std::count(kinds.begin(), kinds.end(), kind));
}

bool IsBlankLine(std::string_view line) {
  return std::all_of(line.begin(), line.end(), IsSpace);
}

bool IsRuleLine(std::string_view line) {
  std::size_t marks = 0;
  std::size_t longest = 0;
  std::size_t run = 0;
  char last = '\0';
  for (const char c : line) {
    if (IsSpace(c)) {
      run = 0;
      last = '\0';
      continue;
    }
    if (kRuleChars.find(c) == std::string_view::npos) return false;
    ++marks;
    run = c == last ? run + 1 : 1;
    last = c;
    if (kRuleRunChars.find(c) != std::string_view::npos) longest = std::max(longest, run);
  }
  return marks >= 3 && longest >= 3;
}

std::string HeadingKey(std::string_view line) {
  std::string key;
  key.reserve(line.size());
  bool pendingBlank = false;
  for (const char c : line) {
    if (IsSpace(c)) {
      pendingBlank = !key.empty();
      continue;
    }
    if (pendingBlank) key += ' ';
    pendingBlank = false;
    const bool digit = c >= '0' && c <= '9';
    if (digit && !key.empty() && key.back() == '9') continue;
    key += digit ? '9' : c;
  }
  return key;
}

BlockSurvey SurveyBlock(UiPort& ui, const clsTableParser& parser, std::string_view tmpl) {
  const std::vector<std::string>& lines = parser.Lines();
  const std::size_t n = lines.size();
  BlockSurvey survey;
  survey.kinds.assign(n, BlockLineKind::kRow);

  std::vector<std::size_t> candidates;
  std::vector<std::string> keys(n);
  std::map<std::string, int> keyCounts;
  for (std::size_t i = 0; i < n; ++i) {
    if (IsBlankLine(lines[i])) {
      survey.kinds[i] = BlockLineKind::kBlank;
    } else if (IsRuleLine(lines[i])) {
      survey.kinds[i] = BlockLineKind::kRule;
    } else {
      candidates.push_back(i);
      keys[i] = HeadingKey(lines[i]);
      ++keyCounts[keys[i]];
    }
  }
  if (candidates.empty()) return survey;

  const std::vector<bool> seed = SeedRows(lines, candidates);
  std::vector<bool> misfit(n, false);
  const std::string code = UpperAscii(Trim(tmpl));
  if (code == "-" || code == "=") MarkJoiners(lines, candidates, seed, keys, misfit);

  // The columns are worked out from the seed rows that fit, as the recipe's template would work
  // them out from a block of rows only.
  auto fitting = [&candidates](const std::vector<bool>& flags, const std::vector<bool>* among) {
    std::vector<std::size_t> rows;
    for (std::size_t i : candidates) {
      if (!flags[i] && (among == nullptr || (*among)[i])) rows.push_back(i);
    }
    return rows.empty() ? candidates : rows;
  };
  const std::vector<std::size_t> rows = fitting(misfit, &seed);
  clsTableParser shaped;
  std::vector<std::string> shapedLines;
  shapedLines.reserve(rows.size());
  for (std::size_t i : rows) shapedLines.push_back(lines[i]);
  shaped.SetLines(std::move(shapedLines));
  if (shaped.analyze_template(ui, tmpl, survey.spans)) {
    // Twice: the second time the kinds of the columns come from every line the first time left.
    std::vector<bool> first = misfit;
    std::vector<bool> numbered(n, false);
    MarkColumnMisfits(lines, candidates, rows, survey.spans, first, numbered);
    if (MarkColumnMisfits(lines, candidates, fitting(first, nullptr), survey.spans, misfit,
                          numbered)) {
      std::vector<bool> repeated(n, false);
      for (std::size_t i : candidates) repeated[i] = keyCounts[keys[i]] > 1;
      MarkStrayLabels(lines, candidates, numbered, repeated, misfit);
    }
  }

  for (std::size_t i : candidates) {
    if (!misfit[i]) continue;
    survey.kinds[i] = keyCounts[keys[i]] > 1 ? BlockLineKind::kHeading : BlockLineKind::kMisfit;
  }
  return survey;
}

}  // namespace kroveld
