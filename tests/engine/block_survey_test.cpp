#include "engine/block_survey.h"

#include <gtest/gtest.h>
#include <re2/re2.h>

#include <string>
#include <vector>

#include "engine/row_filter_suggestion.h"
#include "support/recording_port.h"

namespace kroveld {
namespace {

using testing::RecordingPort;
using Lines = std::vector<std::string>;
using K = BlockLineKind;

// A block of a trial balance that runs over a page break, as the analyzer locates it: the page
// heading and the column headings of page 2, a rule, blank lines and a form feed inside it.
const Lines kTwoPages = {
    "1000     Cash on hand           1,250.00",
    "1200     Accounts receivable      980.15",
    "2000     Accounts payable                   (1,300.00)",
    "",
    "\f",
    "ACME SUPPLY CO.               TRIAL BALANCE            PAGE 2",
    "Account  Description               Debit        Credit",
    "-------  -----------------  ----------  ------------",
    "3000     Retained earnings                      45.50",
    "4000     Page 2 advertising        10.00",
    "ACME SUPPLY CO.               TRIAL BALANCE            PAGE 3",
    "Account  Description               Debit        Credit",
    "5000     Account fees               7.00",
};

struct Surveyed {
  BlockSurvey survey;
  RowFilterSuggestion suggestion;
};

Surveyed Survey(const Lines& lines, const std::string& tmpl) {
  clsTableParser parser;
  parser.SetLines(lines);
  RecordingPort ui;
  Surveyed s{SurveyBlock(ui, parser, tmpl), {}};
  s.suggestion = SuggestRowFilters(lines, s.survey);
  EXPECT_TRUE(ui.messages.empty());
  return s;
}

// The promise made to the user: what is offered compiles, skips every line that is no row and
// keeps every row. Checked here with RE2 directly, not with the code that made the patterns.
void ExpectFiltersKeepExactlyTheRows(const Lines& lines, const Surveyed& s) {
  const RowFilterSuggestion& f = s.suggestion;
  const RE2 skip(f.skipPattern.empty() ? "(?!)" : f.skipPattern, RE2::Quiet);
  const RE2 keep(f.keepPattern.empty() ? "" : f.keepPattern, RE2::Quiet);
  if (!f.skipPattern.empty()) {
    ASSERT_TRUE(skip.ok()) << f.skipPattern;
  }
  ASSERT_TRUE(keep.ok()) << f.keepPattern;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    SCOPED_TRACE("line " + std::to_string(i) + ": " + lines[i]);
    const bool blank = s.survey.kinds[i] == K::kBlank;
    const bool kept = RE2::PartialMatch(lines[i], keep) &&
                      !(!f.skipPattern.empty() && RE2::PartialMatch(lines[i], skip)) &&
                      !(blank && f.skipBlankLines);
    const bool uncovered =
        std::find(f.uncovered.begin(), f.uncovered.end(), i) != f.uncovered.end();
    EXPECT_EQ(kept, s.survey.IsRow(i) || uncovered);
  }
  EXPECT_EQ(f.skipPattern.find(';'), std::string::npos);
  EXPECT_EQ(f.skipPattern.find('['), std::string::npos);
  EXPECT_EQ(f.keepPattern.find('['), std::string::npos);
}

TEST(BlockSurvey, SortsTheLinesOfABlock) {
  const struct {
    const char* name;
    Lines lines;
    std::string tmpl;
    std::vector<K> kinds;
    bool skipBlank;
    std::string skip;
  } cases[] = {
      // Inferred columns over the same block: checked on the binary's suggestion.
      {"a page break inside the table, under an explicit template",
       kTwoPages,
       "AAAA     BBBBBBBBBBBBBBBBBB  CCCCCCCCCC  DDDDDDDDDDDDDD",
       {K::kRow, K::kRow, K::kRow, K::kBlank, K::kBlank, K::kHeading, K::kHeading, K::kRule,
        K::kRow, K::kRow, K::kHeading, K::kHeading, K::kRow},
       true,
       R"(^\s*(ACME|Account|-{5,}))"},
      {"rules of several kinds",
       {"   12   North   1,204.50", "  ==========  =====", "    3   South     (88.00)",
        "+-------+--------+", "   40   East      310.00", " ______________"},
       "-",
       {K::kRow, K::kRule, K::kRow, K::kRule, K::kRow, K::kRule},
       false,
       R"(^\s*(={5,}|\+-{5,}|_{5,}))"},
      {"a group label over its rows and a label wrapped onto two lines stay rows",
       {" By States:", "   Funds            0     12", "   Unemployment    45    102",
        " Supplementary", " Program Account    0      7"},
       "=",
       {K::kRow, K::kRow, K::kRow, K::kRow, K::kRow},
       false,
       ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Surveyed s = Survey(c.lines, c.tmpl);
    EXPECT_EQ(s.survey.kinds, c.kinds);
    EXPECT_EQ(s.suggestion.skipBlankLines, c.skipBlank);
    EXPECT_EQ(s.suggestion.skipPattern, c.skip);
    EXPECT_EQ(s.suggestion.keepPattern, "");
    EXPECT_TRUE(s.suggestion.uncovered.empty());
    ExpectFiltersKeepExactlyTheRows(c.lines, s);
  }
}

// Rows that begin as the page headings do ("Page 2 advertising" under "Page 2 ... ACME"): the
// pattern grows word by word until it matches no row. A heading that no pattern can tell from a
// row is reported, not skipped.
TEST(BlockSurvey, RowsThatLookLikeHeadingsAreKept) {
  const Lines lines = {
      "Page 2                    ACME SUPPLY",    "Page 2 advertising        10.00     4.00",
      "Rent                      12.00     3.50", "Page 3                    ACME SUPPLY",
      "Page 3 advertising        11.00     4.10", "Page 4 of report          13.00     2.00",
  };
  for (const char* tmpl : {"=", "-", "AAAAAAAAAAAAAAAAAA        BBBBB     CCCC"}) {
    SCOPED_TRACE(tmpl);
    const Surveyed s = Survey(lines, tmpl);
    EXPECT_EQ(s.survey.kinds,
              (std::vector<K>{K::kHeading, K::kRow, K::kRow, K::kHeading, K::kRow, K::kRow}));
    EXPECT_EQ(s.suggestion.skipPattern, R"(^\s*Page\s+\d+\s+ACME)");
    ExpectFiltersKeepExactlyTheRows(lines, s);
  }

  // The same words as a row: nothing tells the lines apart, so nothing is offered for them.
  BlockSurvey same;
  same.kinds = {K::kHeading, K::kRow, K::kHeading};
  const Lines twins = {"Total 12", "Total 13", "Total 14"};
  const RowFilterSuggestion f = SuggestRowFilters(twins, same);
  EXPECT_EQ(f.skipPattern, "");
  EXPECT_EQ(f.uncovered, (std::vector<std::size_t>{0, 2}));
}

// The keep pattern offered for statements printed one after another (their headings differ too
// much to skip) is checked on the real card statements through the binary.

TEST(BlockSurvey, LineShapes) {
  const struct {
    std::string line;
    bool blank, rule;
    std::string key;
  } cases[] = {
      {" \f \t", true, false, ""},
      {"--", false, false, "--"},
      {"- 12.00", false, false, "- 9.9"},
      {"**** END ****", false, false, "**** END ****"},
      {"  PAGE   12 of 140 ", false, false, "PAGE 9 of 9"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    EXPECT_EQ(IsBlankLine(c.line), c.blank);
    EXPECT_EQ(IsRuleLine(c.line), c.rule);
    EXPECT_EQ(HeadingKey(c.line), c.key);
  }
}

TEST(BlockSurvey, LiteralPatternsMatchTheirTextAndFitOnARecipeLine) {
  for (const std::string text : {"a.b*c+d?", "(x)[y]{z}", "^$|\\", "50; see [note]", "Page: 1"}) {
    SCOPED_TRACE(text);
    const std::string pattern = LiteralPattern(text);
    const RE2 re(pattern, RE2::Quiet);
    ASSERT_TRUE(re.ok()) << pattern;
    EXPECT_TRUE(RE2::FullMatch(text, re)) << pattern;
    EXPECT_EQ(pattern.find(';'), std::string::npos);
    EXPECT_EQ(pattern.find('['), std::string::npos);
  }
}

}  // namespace
}  // namespace kroveld
