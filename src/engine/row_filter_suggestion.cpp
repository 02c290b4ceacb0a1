#include "engine/row_filter_suggestion.h"

#include <re2/re2.h>

#include <algorithm>

namespace kroveld {

namespace {

// More alternatives than this make a skip pattern nobody reads; a keep pattern is tried then.
constexpr std::size_t kReadableAlternatives = 8;
// Past this many, no more are worked out: the lines left are counted as uncovered.
constexpr std::size_t kMostAlternatives = 32;
// A heading's pattern grows word by word until it holds this many letters (or the whole line).
constexpr int kReadableLetters = 4;
// The shortest rule a pattern asks for: "-{5,}" and not the rule's own length, so that a longer
// or shorter rule on another page is skipped too.
constexpr std::size_t kRuleRun = 5;

// What a pattern reads as other than itself; everything else stands for itself.
constexpr std::string_view kMetaCharacters = "\\.+*?()|]{}^$";

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\f' || c == '\v' || c == '\r' || c == '\n';
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::string_view TrimSpace(std::string_view s) {
  while (!s.empty() && IsSpace(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsSpace(s.back())) s.remove_suffix(1);
  return s;
}

std::vector<std::string_view> Words(std::string_view line) {
  std::vector<std::string_view> words;
  std::size_t p = 0;
  while (p < line.size()) {
    while (p < line.size() && IsSpace(line[p])) ++p;
    const std::size_t from = p;
    while (p < line.size() && !IsSpace(line[p])) ++p;
    if (p > from) words.push_back(line.substr(from, p - from));
  }
  return words;
}

// A word as a pattern: its digits as \d+ (page numbers, dates and counts change from page to
// page), everything else literally.
std::string WordPattern(std::string_view word, int& letters) {
  std::string out;
  std::size_t p = 0;
  while (p < word.size()) {
    if (IsDigit(word[p])) {
      while (p < word.size() && IsDigit(word[p])) ++p;
      out += "\\d+";
      continue;
    }
    // A run of one mark ("*****START") stands for any number of it.
    std::size_t q = p;
    while (q < word.size() && word[q] == word[p]) ++q;
    if (q - p >= 3 && !IsLetter(word[p])) {
      out += LiteralPattern(word.substr(p, 1)) + "+";
      p = q;
      continue;
    }
    if (IsLetter(word[p])) ++letters;
    out += LiteralPattern(word.substr(p, 1));
    ++p;
  }
  return out;
}

// "-{5,}" for a line of dashes, "\+-{5,}" for "+-----+-----+": the text before the first long
// run, then the run.
std::string RulePattern(std::string_view line) {
  const std::string_view text = TrimSpace(line);
  for (std::size_t p = 0; p < text.size();) {
    std::size_t q = p;
    while (q < text.size() && text[q] == text[p]) ++q;
    if (q - p >= 3) {
      return LiteralPattern(text.substr(0, p)) + LiteralPattern(text.substr(p, 1)) + "{" +
             std::to_string(std::min(q - p, kRuleRun)) + ",}";
    }
    p = q;
  }
  return LiteralPattern(text);
}

class Rows {
 public:
  Rows(const std::vector<std::string>& lines, const BlockSurvey& survey) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (survey.IsRow(i)) rows_.push_back(&lines[i]);
    }
  }
  // True when the pattern compiles and matches no row.
  bool NoneMatch(const std::string& pattern) const {
    const RE2 re(pattern, RE2::Quiet);
    if (!re.ok()) return false;
    return std::none_of(rows_.begin(), rows_.end(),
                        [&re](const std::string* l) { return RE2::PartialMatch(*l, re); });
  }
  const std::vector<const std::string*>& Lines() const { return rows_; }

 private:
  std::vector<const std::string*> rows_;
};

// The shortest readable start of the line that tells it from every row: its first words, with
// blanks between them as \s+; the whole line (anchored at its end) when nothing shorter does.
// Empty when even the whole line matches a row.
std::string HeadingPattern(std::string_view line, const Rows& rows) {
  const std::vector<std::string_view> words = Words(line);
  std::string alternative;
  int letters = 0;
  for (std::size_t k = 0; k < words.size(); ++k) {
    if (k > 0) alternative += "\\s+";
    alternative += WordPattern(words[k], letters);
    const bool whole = k + 1 == words.size();
    if (letters < kReadableLetters && !whole) continue;
    if (rows.NoneMatch("^\\s*" + alternative)) return alternative;
    if (whole && rows.NoneMatch("^\\s*" + alternative + "\\s*$")) return alternative + "\\s*$";
  }
  return {};
}

std::string Anchored(const std::vector<std::string>& alternatives) {
  if (alternatives.size() == 1) return "^\\s*" + alternatives.front();
  std::string pattern = "^\\s*(";
  for (std::size_t k = 0; k < alternatives.size(); ++k) {
    if (k > 0) pattern += '|';
    pattern += alternatives[k];
  }
  return pattern + ")";
}

// True when `pattern` compiles and matches each of `lines` (`match`) or none of them.
bool MatchesAll(const std::string& pattern, const std::vector<const std::string*>& lines,
                bool match) {
  const RE2 re(pattern, RE2::Quiet);
  if (!re.ok()) return false;
  return std::all_of(lines.begin(), lines.end(), [&re, match](const std::string* l) {
    return RE2::PartialMatch(*l, re) == match;
  });
}

// The way every row begins, when they all begin alike: the first word with its digits as \d{n}
// (or \d+ when the counts differ) and the rest literally, e.g. "^\s*\d{16}\s" for lines that
// start with a 16-digit account number. Empty when the rows begin differently.
std::string CommonStart(const Rows& rows) {
  if (rows.Lines().empty()) return {};
  for (const bool counted : {true, false}) {
    std::string shape;
    bool same = true;
    for (const std::string* l : rows.Lines()) {
      const std::vector<std::string_view> words = Words(*l);
      std::string s;
      const std::string_view w = words.front();
      for (std::size_t p = 0; p < w.size();) {
        if (!IsDigit(w[p])) {
          s += LiteralPattern(w.substr(p, 1));
          ++p;
          continue;
        }
        const std::size_t from = p;
        while (p < w.size() && IsDigit(w[p])) ++p;
        s += counted ? "\\d{" + std::to_string(p - from) + "}" : "\\d+";
      }
      if (l == rows.Lines().front()) {
        shape = s;
      } else if (s != shape) {
        same = false;
        break;
      }
    }
    if (same) return "^\\s*" + shape + "(\\s|$)";
  }
  return {};
}

}  // namespace

std::string LiteralPattern(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == ';') {
      out += "\\x3B";
    } else if (c == '[') {
      out += "\\x5B";
    } else if (kMetaCharacters.find(c) != std::string_view::npos) {
      out += '\\';
      out += c;
    } else {
      out += c;
    }
  }
  return out;
}

RowFilterSuggestion SuggestRowFilters(const std::vector<std::string>& lines,
                                      const BlockSurvey& survey) {
  RowFilterSuggestion s;
  const Rows rows(lines, survey);
  std::vector<std::string> alternatives;
  std::vector<const std::string*> skipped;  // the lines the skip pattern must match
  std::vector<const std::string*> others;   // every line that is no row, blank ones aside
  std::size_t headings = 0;
  auto add = [&alternatives](std::string alternative) {
    if (std::find(alternatives.begin(), alternatives.end(), alternative) == alternatives.end()) {
      alternatives.push_back(std::move(alternative));
      return true;
    }
    return false;
  };

  for (std::size_t i = 0; i < lines.size(); ++i) {
    const BlockLineKind kind = survey.kinds[i];
    if (kind == BlockLineKind::kRow) continue;
    if (kind == BlockLineKind::kBlank) {
      s.skipBlankLines = true;
      continue;
    }
    others.push_back(&lines[i]);
    // A line an earlier alternative covers already needs none of its own.
    if (!alternatives.empty() && MatchesAll(Anchored(alternatives), {&lines[i]}, true)) {
      skipped.push_back(&lines[i]);
      continue;
    }
    if (kind != BlockLineKind::kRule && headings >= kMostAlternatives) {
      s.uncovered.push_back(i);
      continue;
    }
    std::string alternative =
        kind == BlockLineKind::kRule ? RulePattern(lines[i]) : HeadingPattern(lines[i], rows);
    if (kind == BlockLineKind::kRule && !rows.NoneMatch("^\\s*" + alternative)) {
      alternative = HeadingPattern(lines[i], rows);
    }
    if (alternative.empty()) {
      s.uncovered.push_back(i);
      continue;
    }
    if (add(std::move(alternative)) && kind != BlockLineKind::kRule) ++headings;
    skipped.push_back(&lines[i]);
  }

  if (!alternatives.empty()) {
    const std::string pattern = Anchored(alternatives);
    if (MatchesAll(pattern, skipped, true) && MatchesAll(pattern, rows.Lines(), false)) {
      s.skipPattern = pattern;
    } else {
      s.uncovered.clear();
      for (std::size_t i = 0; i < lines.size(); ++i) {
        if (survey.kinds[i] != BlockLineKind::kRow && survey.kinds[i] != BlockLineKind::kBlank) {
          s.uncovered.push_back(i);
        }
      }
    }
  }

  // Many different lines to skip, or some no pattern can name: naming the rows may do better.
  if (headings > kReadableAlternatives || !s.uncovered.empty()) {
    const std::string keep = CommonStart(rows);
    if (!keep.empty() && MatchesAll(keep, rows.Lines(), true) && MatchesAll(keep, others, false)) {
      s.keepPattern = keep;
      s.skipPattern.clear();
      s.skipBlankLines = false;  // a blank line matches no keep pattern
      s.uncovered.clear();
    }
  }
  std::sort(s.uncovered.begin(), s.uncovered.end());
  return s;
}

}  // namespace kroveld
