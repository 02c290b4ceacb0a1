// Recipe patterns: what they match, the literal the prefilter relies on, and bad patterns.
#include <gtest/gtest.h>
#include <re2/re2.h>

#include <string>
#include <vector>

#include "engine/pattern.h"
#include "support/report_lines.h"

namespace kroveld {
namespace {

Pattern Compiled(std::string_view text) {
  Pattern p;
  std::string error;
  EXPECT_TRUE(p.Compile(text, error)) << text << ": " << error;
  return p;
}

TEST(Pattern, MatchesAsASearchAnchoredAtTheLineEnds) {
  struct Case {
    std::string pattern, matched, missed;  // an empty `missed`: no line to miss
  } cases[] = {
      {"TOTAL", "   DEPT TOTAL   1,234.00", "   dept total"},  // case counts, as for key texts
      {"^DEPT", "DEPT 10 SALES", " DEPT 10"},
      {"END$", "REPORT END", "REPORT END "},
      {"^-+$", "-----------", "---- ----"},
      {"^PAGE\\s+\\d+$", "PAGE   12", "PAGE 12 OF 40"},
      {"SUB|GRAND", "   GRAND TOTAL", "   TOTAL"},
      {"^ *$", "", ""},
      {"a.c", "a\351c", "ac"},  // one byte is one character: 8-bit reports match as they are
      {"(?i)total", "DEPT TOTAL", ""},
      {"^\\$ ?[0-9]", "$ 12", ""},
      {"x{0}TOTAL", "TOTAL", ""},
  };
  for (const Case& c : cases) {
    const Pattern p = Compiled(c.pattern);
    EXPECT_TRUE(p.Matches(c.matched)) << c.pattern << " on " << c.matched;
    if (!c.missed.empty()) {
      EXPECT_FALSE(p.Matches(c.missed)) << c.pattern << " on " << c.missed;
    }
  }
}

// The prefilter must never turn away a line the matcher would take: every pattern below is run
// both ways on every line.
TEST(Pattern, PrefilterAgreesWithTheMatcher) {
  // Escapes that run on past their letter (their digits and letters are no literals), and
  // alternatives, some of them nothing but their literal (found, they match at once).
  const std::vector<std::string> patterns = {"TOTAL",           "^TOTAL",
                                             "TOTAL$",          "^TOTAL$",
                                             "TO?TAL",          "TOT*AL",
                                             "TO+TAL",          "TOT{2}AL",
                                             "TOT{0,1}AL",      "DEPT [0-9]+ TOTAL",
                                             "[]A]TOTAL",       "[[:upper:]]+L",
                                             "(TO)TAL",         "(T|S)UB TOTAL",
                                             "\\.\\.\\.",       "\\QA.B\\E",
                                             "A\\.B",           "A\\bTOTAL",
                                             "^\\s*-+\\s*$",    "TOTAL??X",
                                             "(?:DE|PT)+ X",    "[^ ]TAL",
                                             "TOTAL+?",         "^$",
                                             "a{2,}b",          "\\x54OTAL",
                                             "\\x{54}OTAL",     "\\pLOTAL",
                                             "\\124OTAL",       "TOTAL\\x3B?",
                                             "T\\QOT\\EAL",     "^(ACME|DEPT)|TOTAL",
                                             "^(AB|CD)X",       "^(TO|SU)+B",
                                             "^(TOTAL|SUB)$|X", "TOTAL|^SUB",
                                             "(TOTAL|SUB) X",   "^( +TOTAL|A\\.B)",
                                             "TOT|TOTALL",      "^(DEPT 12 TOTALLY|A)",
                                             "^TOTALLX"};
  const std::vector<std::string> lines = {
      "",        "TOTAL",     " TOTAL ",       "TOTTAL",
      "TOAL",    "TOTOTAL",   "DEPT 12 TOTAL", "]TOTAL",
      "ATOTAL",  "SUB TOTAL", "...",           "A.B",
      "AxB",     "A TOTAL",   "  ----  ",      "TOTALX",
      "TOTALLX", "DEPT X",    "aab",           "ab",
      "xTAL",    "TOTALL",    "SUBX",          "ABX",
      "CDX",     "AB",        "TOSUB",         "TOTOB",
      "SUB",     "ACME LTD",  " TOTAL X",      "DEPT 12 TOTALLY SO",
      "A",
  };
  // The same lines, one after the other in one block of memory, as a mapped report holds them:
  // the literals' searches then run ahead through the block.
  std::string block;
  for (const std::string& line : lines) block += line + "\r\n";
  const std::vector<std::string_view> inBlock = testing::LinesOf(block);
  for (const std::string& text : patterns) {
    const Pattern p = Compiled(text);
    RE2::Options options;
    options.set_encoding(RE2::Options::EncodingLatin1);
    const RE2 plain(text, options);
    ASSERT_TRUE(plain.ok()) << text;
    std::vector<LiteralScout> scouts(p.SearchedLiterals().size());
    std::vector<LiteralScout*> pointers;
    for (std::size_t i = 0; i < scouts.size(); ++i) {
      scouts[i].Reset(block, p.SearchedLiterals()[i]);
      pointers.push_back(&scouts[i]);
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const std::string& line = lines[i];
      const bool expected = RE2::PartialMatch(line, plain);
      EXPECT_EQ(p.Matches(line), expected) << text << " on '" << line << "'";
      EXPECT_EQ(p.Matches(inBlock[i], pointers.data()), expected)
          << text << " on '" << line << "' in the block";
      if (!p.RequiredLiteral().empty() && p.Matches(line)) {
        EXPECT_NE(line.find(p.RequiredLiteral()), std::string::npos) << text;
      }
    }
  }
}

TEST(Pattern, FindsTheLiteralToLookForFirst) {
  const std::pair<std::string, std::string> cases[] = {{"DEPT TOTAL", "DEPT TOTAL"},
                                                       {"^Department: ", "Department: "},
                                                       {"[0-9]+ TOTAL$", " TOTAL"},
                                                       {"TO?TAL FOR", "TAL FOR"},
                                                       {"SUB|GRAND", ""},
                                                       {"(?i)total", ""},
                                                       {"\\d\\d/\\d\\d/\\d{4}", "/"},
                                                       {"PAGE\\s+\\d+", "PAGE"},
                                                       {"\\x54OTAL", "OTAL"},
                                                       {"^[0-9]{16}\\x3B?", ""}};
  for (const auto& [pattern, literal] : cases)
    EXPECT_EQ(Compiled(pattern).RequiredLiteral(), literal) << pattern;
}

TEST(Pattern, BadPatternsSayWhyAndMatchNothing) {
  for (const char* text : {"(unclosed", "[a-", "a**", "x{2,1}", "\\"}) {
    Pattern p;
    std::string error;
    EXPECT_FALSE(p.Compile(text, error)) << text;
    EXPECT_FALSE(error.empty()) << text;
    EXPECT_TRUE(p.Empty());
    EXPECT_FALSE(p.Matches("(unclosed [a- a** x{2,1} \\"));
  }
  // Backreferences are refused rather than run in exponential time.
  Pattern p;
  std::string error;
  EXPECT_FALSE(p.Compile("(a+)\\1", error));
  EXPECT_EQ(PatternError("Table 2", "SkipLinesMatching", "(a+)\\1", error),
            "Error in Table 2 : Invalid SkipLinesMatching pattern: (a+)\\1 (" + error + ")");
}

}  // namespace
}  // namespace kroveld
