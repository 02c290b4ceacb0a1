// A pattern a recipe gives to pick lines of a report (row filters, carried headings, pattern keys,
// total lines). Matching is linear in the line (RE2: no catastrophic backtracking on whatever a
// user writes), and a literal that every match must contain is looked for first, so most lines of
// a large report are turned away by a plain substring search without running the matcher.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace re2 {
class RE2;
}

namespace kroveld {

class Pattern {
 public:
  Pattern();
  ~Pattern();
  Pattern(const Pattern&);
  Pattern& operator=(const Pattern&);
  Pattern(Pattern&&) noexcept;
  Pattern& operator=(Pattern&&) noexcept;

  // Compiles `text`. False when it is not a valid pattern; `error` then says why, in the
  // library's words. An empty text compiles to no pattern (Empty()).
  bool Compile(std::string_view text, std::string& error);
  bool Empty() const { return !compiled_; }
  const std::string& Text() const { return text_; }

  // Whether the pattern occurs anywhere in `line` (unanchored, as a search; "^" and "$" anchor
  // at the ends of the line).
  bool Matches(std::string_view line) const;

  // The literal every match contains, as found by the prefilter (empty: none was found). For
  // tests and the benchmark's report.
  const std::string& RequiredLiteral() const { return required_; }

 private:
  void PlanAlternatives(std::string_view text);

  enum class Kind {
    Regex,          // run the matcher (after the required-literal test, if any)
    Literal,        // the pattern is one literal: a substring search settles it
    PrefixLiteral,  // "^literal"
    SuffixLiteral,  // "literal$"
    WholeLiteral,   // "^literal$"
  };

  std::string text_;
  bool compiled_ = false;
  Kind kind_ = Kind::Regex;
  std::string required_;
  bool requiredAtStart_ = false;  // the literal is where every match begins, at the line's start
  // For a pattern of alternatives: a literal each alternative needs (a match needs one of them).
  struct Alternative {
    std::string literal;
    bool atStart = false;
  };
  std::vector<Alternative> alternatives_;
  std::shared_ptr<const re2::RE2> re_;  // shared: copies of a table share one compiled pattern
};

// The validation message of a pattern that does not compile: "Error in <section> : Invalid <key>
// pattern: <text> (<why>)".
std::string PatternError(std::string_view section, std::string_view key, std::string_view text,
                         std::string_view why);

// A key as the found-before message names it: "ReadEndLine key text [<text>]" for a key text,
// "ReadEndPattern [<pattern>]" for a pattern key.
std::string KeyWords(std::string_view name, std::string_view text);

}  // namespace kroveld
