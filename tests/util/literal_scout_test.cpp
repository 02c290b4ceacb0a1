// The running search ahead through a block of lines must answer every line as a search in the
// line alone would: literals mid-line, at a line's end, across a line end, far beyond one search's
// reach, and lines that are not in the block at all.
#include "util/literal_scout.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/report_lines.h"

namespace kroveld {
namespace {

bool Holds(std::string_view line, const std::string& literal, LiteralScout::Kind kind) {
  if (kind == LiteralScout::Kind::Literal) return line.find(literal) != std::string_view::npos;
  return line.find_first_of(literal) != std::string_view::npos;
}

// Every line of the block in order, through one scout, against a search in the line.
void ExpectSameAnswers(const std::string& block, const std::string& literal,
                       LiteralScout::Kind kind = LiteralScout::Kind::Literal) {
  LiteralScout scout;
  scout.Reset(block, literal, kind);
  int line = 0;
  for (const std::string_view text : testing::LinesOf(block)) {
    ++line;
    EXPECT_EQ(scout.Holds(text), Holds(text, literal, kind))
        << "'" << literal << "' on line " << line << ": '" << text.substr(0, 60) << "'";
  }
}

TEST(LiteralScout, AnswersLineByLineAsASearchInTheLine) {
  const std::vector<std::string> blocks = {
      "TOTAL\r\nx TOTAL y\r\nno\r\n   TOTAL\r\nTOTA\r\nL\r\nTOTALTOTAL\r\n",
      // Across a line end, in every kind of line end: never in either line.
      "abc TOT\r\nAL def\nTO\rTAL\r\n\r\nTOTAL",
      // At the block's very end, and one byte short of it.
      "first\r\nlast TOTAL",
      "first\r\nlast TOTA",
      // Empty lines, and lines shorter than the literal.
      "\r\n\r\nT\r\nTO\r\nTOTAL\r\n\r\n",
      // An occurrence right after a line that held one, in the next line and the same one.
      "TOTAL TOTAL\r\nTOTAL\r\nxTOTAL\r\n",
      // Form feeds and tabs, more than sixteen bytes into a line.
      "a\tb\r\nplain\r\n\f\r\n  \f \r\nx\r\n\t" + std::string(40, 'x') + "\f",
  };
  for (const std::string& block : blocks) {
    for (const char* literal : {"TOTAL", "T", "AL", "L\r", "\f"}) ExpectSameAnswers(block, literal);
    ExpectSameAnswers(block, "\f\tL", LiteralScout::Kind::AnyByte);
  }
}

TEST(LiteralScout, RareLiteralsFarBeyondOneSearchAreFoundAndMissedAlike) {
  // 300 000 lines (about 6 MB, many times what one search looks at), the literal on a few lines
  // chosen by a fixed generator: at the start, mid-line, at the end of a line.
  std::string block;
  std::uint32_t state = 12345;
  for (int i = 0; i < 300000; ++i) {
    state = state * 1664525u + 1013904223u;
    const std::uint32_t pick = state >> 20;  // 0..4095
    std::string line = "  " + std::to_string(i) + "  Deferred Salaries   692,221.69";
    if (pick == 7) line = "GRAND TOTAL" + line;
    if (pick == 8) line += " GRAND TOTAL";
    if (pick == 9) line.insert(5, "GRAND TOTAL");
    if (pick == 10) line += "\f";
    if (pick == 11) line.insert(0, "\t");
    block += line;
    block += (i % 3 == 0) ? "\n" : "\r\n";
  }
  ExpectSameAnswers(block, "GRAND TOTAL");
  ExpectSameAnswers(block, "\f");
  ExpectSameAnswers(block, "\f\t", LiteralScout::Kind::AnyByte);
  ExpectSameAnswers(block, "NEVER THERE");
}

TEST(LiteralScout, LinesOutsideTheBlockOrOutOfOrderAreSearchedByThemselves) {
  const std::string block = "one TOTAL\r\ntwo\r\nthree TOTAL\r\nfour\r\n";
  const std::vector<std::string_view> lines = testing::LinesOf(block);
  LiteralScout scout;
  scout.Reset(block, "TOTAL");
  EXPECT_FALSE(scout.Holds(lines[1]));
  EXPECT_TRUE(scout.Holds(lines[2]));
  // Back to an earlier line, then a copy (a line with its form feeds made blanks), then an empty
  // line that has no bytes at all (past the end of a report).
  EXPECT_TRUE(scout.Holds(lines[0]));
  EXPECT_FALSE(scout.Holds(lines[1]));
  const std::string copy = "copy with TOTAL";
  EXPECT_TRUE(scout.Holds(copy));
  EXPECT_FALSE(scout.Holds(std::string_view()));
  EXPECT_FALSE(scout.Holds(lines[3]));
  // An empty literal is in every line.
  scout.Reset(block, "");
  EXPECT_TRUE(scout.Holds(std::string_view()));
}

}  // namespace
}  // namespace kroveld
