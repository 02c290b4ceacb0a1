// Compiling and matching recipe patterns, with the literal prefilter worked out from the pattern
// text.
#include "engine/pattern.h"

#include <re2/re2.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <vector>

#include "util/byte_scan.h"
#include "util/literal_scout.h"

namespace kroveld {

namespace {

// One atom of the pattern at its outer level: a literal byte, or anything else (a class, a group,
// ".", an escape such as \d, an assertion), which breaks a run of literal bytes.
struct Atom {
  bool literal = false;
  char c = 0;
};

// Index just past the character class that opens at `i` ("[" ... "]"), or npos.
std::size_t SkipClass(std::string_view p, std::size_t i) {
  std::size_t j = i + 1;
  if (j < p.size() && p[j] == '^') ++j;
  if (j < p.size() && p[j] == ']') ++j;  // a leading "]" is a member
  while (j < p.size() && p[j] != ']') {
    if (p[j] == '\\') {
      j += 2;
    } else if (p[j] == '[' && j + 1 < p.size() && p[j + 1] == ':') {
      const std::size_t end = p.find(":]", j + 2);
      if (end == std::string_view::npos) return std::string_view::npos;
      j = end + 2;
    } else {
      ++j;
    }
  }
  return j < p.size() ? j + 1 : std::string_view::npos;
}

// Index just past the group that opens at `i` ("(" ... ")"), or npos.
std::size_t SkipGroup(std::string_view p, std::size_t i) {
  int depth = 0;
  std::size_t j = i;
  while (j < p.size()) {
    const char c = p[j];
    if (c == '\\') {
      j += 2;
      continue;
    }
    if (c == '[') {
      j = SkipClass(p, j);
      if (j == std::string_view::npos) return j;
      continue;
    }
    if (c == '(') ++depth;
    if (c == ')' && --depth == 0) return j + 1;
    ++j;
  }
  return std::string_view::npos;
}

// Reads a counted repetition "{n}", "{n,}" or "{n,m}" at `i`: its least count in `least` and the
// index past it, or npos when the brace does not open one.
std::size_t ReadRepeat(std::string_view p, std::size_t i, long& least) {
  std::size_t j = i + 1;
  const std::size_t digits = j;
  least = 0;
  while (j < p.size() && std::isdigit(static_cast<unsigned char>(p[j]))) {
    least = least * 10 + (p[j] - '0');
    if (least > 100000) least = 100000;
    ++j;
  }
  if (j == digits) return std::string_view::npos;
  if (j < p.size() && p[j] == ',') {
    ++j;
    while (j < p.size() && std::isdigit(static_cast<unsigned char>(p[j]))) ++j;
  }
  return j < p.size() && p[j] == '}' ? j + 1 : std::string_view::npos;
}

// Index just past the escape that opens at `i` (a backslash and at least one byte): "\d" and
// its kind are two bytes, but "\x3B", "\x{263A}", "\pL", "\p{Greek}" and the octal "\073" run
// on, and their digits and letters are no literals. Npos for "\Q...\E", whose literal text is
// left to the matcher.
std::size_t SkipEscape(std::string_view p, std::size_t i) {
  const char d = p[i + 1];
  std::size_t j = i + 2;
  if (d == 'Q') return std::string_view::npos;
  if ((d == 'x' || d == 'p' || d == 'P') && j < p.size() && p[j] == '{') {
    const std::size_t end = p.find('}', j);
    return end == std::string_view::npos ? end : end + 1;
  }
  if (d == 'x') return std::min(j + 2, p.size());
  if (d == 'p' || d == 'P') return std::min(j + 1, p.size());
  if (d >= '0' && d <= '7') {
    while (j < p.size() && j < i + 4 && p[j] >= '0' && p[j] <= '7') ++j;
  }
  return j;
}

struct Analysis {
  bool usable = false;  // false: no literal can be relied on (alternation, flags, odd syntax)
  bool anchoredStart = false;
  bool anchoredEnd = false;
  std::vector<Atom> atoms;
};

// Splits the outer level of the pattern into atoms, dropping those a quantifier makes optional.
Analysis Analyse(std::string_view p) {
  Analysis a;
  // Inline flags such as (?i) change what a literal matches; alternation means no single literal
  // is required. Both are left to the matcher alone.
  if (p.find("(?") != std::string_view::npos) return a;
  std::size_t i = 0;
  if (!p.empty() && p[0] == '^') {
    a.anchoredStart = true;
    i = 1;
  }
  while (i < p.size()) {
    const char c = p[i];
    Atom atom;
    if (c == '|') return a;
    if (c == '$' && i + 1 == p.size()) {
      a.anchoredEnd = true;
      break;
    }
    if (c == '\\') {
      if (i + 1 >= p.size()) return a;
      const char d = p[i + 1];
      // An escaped punctuation byte stands for itself; \d, \b, \Q and their kind do not.
      if (!std::isalnum(static_cast<unsigned char>(d))) {
        atom = Atom{true, d};
        i += 2;
      } else {
        i = SkipEscape(p, i);
        if (i == std::string_view::npos) return a;
      }
    } else if (c == '[') {
      i = SkipClass(p, i);
      if (i == std::string_view::npos) return a;
    } else if (c == '(') {
      i = SkipGroup(p, i);
      if (i == std::string_view::npos) return a;
    } else if (c == '.' || c == '^' || c == '$' || c == '*' || c == '+' || c == '?' || c == '{' ||
               c == ')') {
      ++i;  // an assertion or a stray operator: not a literal
    } else {
      atom = Atom{true, c};
      ++i;
    }
    // A quantifier after the atom: optional ones drop it, repeated ones end the run after it.
    bool endRun = false;
    if (i < p.size()) {
      const char q = p[i];
      long least = 1;
      std::size_t after = std::string_view::npos;
      if (q == '*' || q == '?') {
        least = 0;
        after = i + 1;
      } else if (q == '+') {
        after = i + 1;
      } else if (q == '{') {
        after = ReadRepeat(p, i, least);
      }
      if (after != std::string_view::npos) {
        i = after;
        if (i < p.size() && (p[i] == '?' || p[i] == '+')) ++i;  // lazy or possessive
        if (least == 0) atom.literal = false;
        endRun = true;
      }
    }
    a.atoms.push_back(atom);
    if (endRun) a.atoms.push_back(Atom{});
  }
  a.usable = true;
  return a;
}

// The pattern cut at its outer "|"s (none: the pattern alone).
std::vector<std::string_view> SplitAlternatives(std::string_view p) {
  std::vector<std::string_view> parts;
  std::size_t from = 0;
  std::size_t i = 0;
  while (i < p.size()) {
    const char c = p[i];
    if (c == '\\') {
      i += 2;
    } else if (c == '[') {
      i = SkipClass(p, i);
      if (i == std::string_view::npos) return {p};
    } else if (c == '(') {
      i = SkipGroup(p, i);
      if (i == std::string_view::npos) return {p};
    } else {
      if (c == '|') {
        parts.push_back(p.substr(from, i - from));
        from = i + 1;
      }
      ++i;
    }
  }
  parts.push_back(p.substr(std::min(from, p.size())));
  return parts;
}

// The longest literal run a pattern without outer "|" needs, and whether it opens an anchored
// pattern; empty when there is none to rely on.
// The longest run of literal bytes of an analysed pattern, whether it is the pattern's anchored
// start, and whether the pattern is nothing but literal bytes.
std::string LongestRun(const Analysis& a, bool& atStart, bool& allLiteral) {
  atStart = false;
  allLiteral = true;
  std::string best;
  std::string run;
  bool inFirstRun = true;  // the run being read starts at the first atom
  for (const Atom& atom : a.atoms) {
    if (atom.literal) {
      run.push_back(atom.c);
      if (run.size() > best.size()) {
        best = run;
        atStart = inFirstRun && a.anchoredStart;
      }
    } else {
      allLiteral = false;
      inFirstRun = false;
      run.clear();
    }
  }
  return best;
}

std::string LongestRun(std::string_view p, bool& atStart) {
  atStart = false;
  const Analysis a = Analyse(p);
  if (!a.usable) return {};
  bool allLiteral = false;
  return LongestRun(a, atStart, allLiteral);
}

// Whether a pattern without outer "|" is nothing but literal bytes, perhaps after a "^": a line
// that holds them (at its start, with the "^") matches it.
bool AllLiteral(std::string_view p) {
  const Analysis a = Analyse(p);
  if (!a.usable || a.anchoredEnd || a.atoms.empty()) return false;
  for (const Atom& atom : a.atoms) {
    if (!atom.literal) return false;
  }
  return true;
}

bool Contains(std::string_view line, std::string_view literal) {
  if (literal.empty()) return true;
  if (line.size() < literal.size()) return false;  // an empty line may have no bytes at all
  return scan::FindKey(line.data(), line.size(), literal) != nullptr;
}

}  // namespace

std::string PatternError(std::string_view section, std::string_view key, std::string_view text,
                         std::string_view why) {
  std::string out = "Error in ";
  out += section;
  out += " : Invalid ";
  out += key;
  out += " pattern: ";
  out += text;
  out += " (";
  out += why;
  out += ")";
  return out;
}

std::string KeyWords(std::string_view name, std::string_view text) {
  std::string out(name);
  out += name.ends_with("Pattern") ? " [" : " key text [";
  out += text;
  out += "]";
  return out;
}

void Pattern::Needle::Set(std::string literal, bool start) {
  text = std::move(literal);
  atStart = start;
  scout = -1;
  char bytes[8] = {};
  char mask[8] = {};
  const std::size_t n = std::min<std::size_t>(text.size(), 8);
  std::memcpy(bytes, text.data(), n);
  std::memset(mask, 0xFF, n);
  std::memcpy(&head, bytes, 8);
  std::memcpy(&headMask, mask, 8);
}

[[gnu::always_inline]] inline bool Pattern::Needle::In(std::string_view line,
                                                       LiteralScout* const* scouts) const {
  if (text.empty()) return true;
  if (!atStart) {
    return scouts != nullptr && scout >= 0 ? scouts[scout]->Holds(line) : Contains(line, text);
  }
  if (line.size() < 8) return line.starts_with(text);
  std::uint64_t first;
  std::memcpy(&first, line.data(), 8);
  if ((first & headMask) != head) return false;
  if (text.size() <= 8) return true;
  return line.size() >= text.size() &&
         std::memcmp(line.data() + 8, text.data() + 8, text.size() - 8) == 0;
}

void Pattern::NumberScouts() {
  quick_ = Quick::None;
  if (!requiredNeedle_.text.empty()) {
    if (requiredNeedle_.atStart && (kind_ == Kind::PrefixLiteral || kind_ == Kind::Regex)) {
      quick_ = Quick::Head;
    } else if (kind_ == Kind::Literal) {
      quick_ = Quick::Scout;
    }
  }
  if (!alternatives_.empty() && requiredNeedle_.text.empty()) quick_ = Quick::Alternatives;
  int next = 0;
  if ((kind_ == Kind::Literal || kind_ == Kind::Regex) && !requiredNeedle_.text.empty() &&
      !requiredNeedle_.atStart) {
    requiredNeedle_.scout = next++;
  }
  for (Needle& alt : alternatives_) {
    if (!alt.atStart) alt.scout = next++;
  }
}

std::vector<std::string> Pattern::SearchedLiterals() const {
  std::vector<std::string> out;
  if (requiredNeedle_.scout >= 0) out.push_back(requiredNeedle_.text);
  for (const Needle& alt : alternatives_) {
    if (alt.scout >= 0) out.push_back(alt.text);
  }
  return out;
}

Pattern::Pattern() = default;
Pattern::~Pattern() = default;
Pattern::Pattern(const Pattern&) = default;
Pattern& Pattern::operator=(const Pattern&) = default;
Pattern::Pattern(Pattern&&) noexcept = default;
Pattern& Pattern::operator=(Pattern&&) noexcept = default;

bool Pattern::Compile(std::string_view text, std::string& error) {
  *this = Pattern();
  text_ = std::string(text);
  if (text.empty()) return true;
  // Reports are 8-bit text and positions count bytes: the pattern matches bytes (Latin-1), so a
  // line that is not valid UTF-8 is matched like any other and "." is one byte.
  RE2::Options options;
  options.set_encoding(RE2::Options::EncodingLatin1);
  options.set_log_errors(false);
  auto re = std::make_shared<const RE2>(re2::StringPiece(text.data(), text.size()), options);
  if (!re->ok()) {
    error = re->error();
    return false;
  }
  re_ = std::move(re);
  compiled_ = true;

  const Analysis a = Analyse(text);
  if (!a.usable) {
    PlanAlternatives(text);
    NumberScouts();
    return true;
  }
  // The longest run of literal bytes is what the prefilter looks for.
  bool allLiteral = true;
  required_ = LongestRun(a, requiredAtStart_, allLiteral);
  if (allLiteral && !required_.empty()) {
    if (a.anchoredStart && a.anchoredEnd) {
      kind_ = Kind::WholeLiteral;
    } else if (a.anchoredStart) {
      kind_ = Kind::PrefixLiteral;
    } else if (a.anchoredEnd) {
      kind_ = Kind::SuffixLiteral;
    } else {
      kind_ = Kind::Literal;
    }
  }
  requiredNeedle_.Set(required_, requiredAtStart_ || kind_ == Kind::PrefixLiteral);
  NumberScouts();
  return true;
}

// A pattern of alternatives, each opening with a group of alternatives or not ("^(A|B)|C"): the
// literal each one needs. One alternative without a literal leaves the pattern to the matcher.
void Pattern::PlanAlternatives(std::string_view text) {
  const std::vector<std::string_view> parts = SplitAlternatives(text);
  if (parts.size() < 2 && !(text.starts_with("(") || text.starts_with("^("))) return;
  std::vector<Needle> plan;
  for (const std::string_view part : parts) {
    const bool anchored = part.starts_with("^");
    const std::string_view body = anchored ? part.substr(1) : part;
    std::vector<std::string> branches;
    bool complete = true;  // the branches are all of their alternative, nothing follows them
    // A leading group of alternatives: each of its own alternatives opens the match (what
    // follows the group is only dropped, which keeps the test a necessary one).
    if (body.starts_with("(") && !body.starts_with("(?")) {
      const std::size_t end = SkipGroup(body, 0);
      if (end == std::string_view::npos) return;
      for (const std::string_view inner : SplitAlternatives(body.substr(1, end - 2))) {
        branches.push_back((anchored ? "^" : "") + std::string(inner));
      }
      if (end < body.size() && std::string_view("*?{").find(body[end]) != std::string_view::npos) {
        return;  // an optional group: nothing of it is needed
      }
      complete = end == body.size();
    } else {
      branches.emplace_back(part);
    }
    for (const std::string& branch : branches) {
      if (SplitAlternatives(branch).size() > 1) return;
      bool atStart = false;
      std::string literal = LongestRun(branch, atStart);
      if (literal.empty()) return;
      plan.emplace_back();
      plan.back().Set(std::move(literal), atStart);
      plan.back().decides = complete && AllLiteral(branch);
    }
  }
  alternatives_ = std::move(plan);
}

bool Pattern::Test(std::string_view line, LiteralScout* const* scouts) const {
  if (!compiled_) return false;
  switch (kind_) {
    case Kind::Literal:
    case Kind::PrefixLiteral:
      return requiredNeedle_.In(line, scouts);
    case Kind::SuffixLiteral:
      return line.ends_with(required_);
    case Kind::WholeLiteral:
      return line == required_;
    case Kind::Regex:
      break;
  }
  if (!alternatives_.empty()) {
    bool possible = false;
    for (const Needle& alt : alternatives_) {
      if (alt.In(line, scouts)) {
        // An alternative that is just its literal matches where the literal is found.
        if (alt.decides) return true;
        possible = true;
        break;
      }
    }
    if (!possible) return false;
  }
  // An anchored pattern that opens with a literal is turned away by its first bytes.
  if (!requiredNeedle_.In(line, scouts)) return false;
  return RE2::PartialMatch(re2::StringPiece(line.data(), line.size()), *re_);
}

}  // namespace kroveld
