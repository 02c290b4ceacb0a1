// A pattern a recipe gives to pick lines of a report (row filters, carried headings, pattern keys,
// total lines). Matching is linear in the line (RE2: no catastrophic backtracking on whatever a
// user writes), and a literal that every match must contain is looked for first, so most lines of
// a large report are turned away by a plain substring search without running the matcher.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "util/literal_scout.h"

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
  bool Matches(std::string_view line) const { return Matches(line, nullptr); }
  // The same, with the searches for the literals of SearchedLiterals() left to `scouts` (one per
  // literal, in that order), which may answer them faster for the lines of a mapped report.
  [[gnu::always_inline]] bool Matches(std::string_view line, LiteralScout* const* scouts) const {
    // Most lines of a report are settled here, without a call: by the first eight bytes of a
    // pattern that opens with a literal, by the scout of a pattern that is one literal, or by
    // the literals of a pattern of alternatives.
    if (quick_ == Quick::Head) {
      if (line.size() >= 8) {
        std::uint64_t first;
        std::memcpy(&first, line.data(), 8);
        if ((first & requiredNeedle_.headMask) != requiredNeedle_.head) return false;
      }
    } else if (quick_ == Quick::Scout && scouts != nullptr) {
      return scouts[0]->Holds(line);
    } else if (quick_ == Quick::Alternatives && scouts != nullptr) {
      for (const Needle& alt : alternatives_) {
        if (alt.Found(line, scouts)) return alt.decides || Test(line, scouts);
      }
      return false;
    }
    return Test(line, scouts);
  }

  // The literals Matches searches for anywhere in a line (those it tests at the line's start
  // excluded), in the order of the scouts it takes.
  std::vector<std::string> SearchedLiterals() const;

  // The literal every match contains, as found by the prefilter (empty: none was found). For
  // tests and the benchmark's report.
  const std::string& RequiredLiteral() const { return required_; }

 private:
  void PlanAlternatives(std::string_view text);
  bool Test(std::string_view line, LiteralScout* const* scouts) const;

  enum class Kind {
    Regex,          // run the matcher (after the required-literal test, if any)
    Literal,        // the pattern is one literal: a substring search settles it
    PrefixLiteral,  // "^literal"
    SuffixLiteral,  // "literal$"
    WholeLiteral,   // "^literal$"
  };

  // A literal of the prefilter, looked for at the line's start or anywhere in it.
  struct Needle {
    std::string text;
    bool atStart = false;
    int scout = -1;        // for a literal searched anywhere: its place among SearchedLiterals()
    bool decides = false;  // an alternative that is nothing but the literal: found, it matches
    // The first eight bytes of the text and the mask of those it has, so that most lines are
    // turned away by one comparison of their first eight bytes.
    std::uint64_t head = 0;
    std::uint64_t headMask = 0;

    void Set(std::string literal, bool start);
    bool In(std::string_view line, LiteralScout* const* scouts) const;
    // In() for a needle that is not empty and, when not at the start, has its scout.
    bool Found(std::string_view line, LiteralScout* const* scouts) const {
      if (!atStart) return scouts[scout]->Holds(line);
      if (line.size() < 8) return line.starts_with(text);
      std::uint64_t first;
      std::memcpy(&first, line.data(), 8);
      if ((first & headMask) != head) return false;
      return text.size() <= 8 ||
             (line.size() >= text.size() &&
              std::memcmp(line.data() + 8, text.data() + 8, text.size() - 8) == 0);
    }
  };
  void NumberScouts();

  enum class Quick {
    None,
    Head,   // every match opens with requiredNeedle_: lines of eight bytes or more whose first
            // eight do not agree with it are turned away
    Scout,  // the pattern is requiredNeedle_ searched anywhere, its scout the first one
    Alternatives,  // a line that holds none of the alternatives' literals is turned away; the
                   // first one found settles the match when it decides it
  };
  Quick quick_ = Quick::None;

  std::string text_;
  bool compiled_ = false;
  Kind kind_ = Kind::Regex;
  std::string required_;
  bool requiredAtStart_ = false;  // the literal is where every match begins, at the line's start
  Needle requiredNeedle_;         // required_ as the prefilter tests it
  // For a pattern of alternatives: a literal each alternative needs (a match needs one of them).
  std::vector<Needle> alternatives_;
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
