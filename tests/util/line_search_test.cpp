// FindNextLine's signed results and the whole-file key search.
#include "util/line_search.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::TempDir;

TEST(FindNextLine, SignsOffsetsAndExclusion) {
  TempDir dir;
  const std::string path =
      dir.Write("s.krs", CrLf({"[Header]", "Product=KRO", "[Table 1]", "[Table 1 Col 1]", "x",
                               "[Title 1]", "[Consolidate 1]", "[Table 2]"}));
  TextFile f(path);
  ASSERT_TRUE(f.IsOpen());
  // Section sequence scan: tables +n, titles -n, consolidations n + 10000000, "Col" excluded.
  const auto next = [&] { return FindNextLine(f, "[Table ", "[Title ", "[Consolidate ", "Col"); };
  EXPECT_EQ(next(), 3);             // [Table 1]
  EXPECT_EQ(next(), -3);            // [Title 1], counted from the line after [Table 1]
  EXPECT_EQ(next(), 1 + 10000000);  // [Consolidate 1]
  EXPECT_EQ(next(), 1);             // [Table 2]
  EXPECT_EQ(next(), 0);             // end of file
}

TEST(FindNextLine, TextOneWinsEmptyTextsAreIgnoredAndTheCompareWindow) {
  TempDir dir;
  const std::string greek = CrLf({"alpha beta", "beta", "gamma"});
  const std::string totals = CrLf({"TOTAL    x", "x  TOTAL", "ab", "  TOTAL"});
  struct Case {
    std::string content, text1, text2, text3, exclude;
    int start, length;
    std::int64_t result;
  };
  const Case cases[] = {
      {greek, "beta", "alpha", "", "", 1, 0, 1},  // both occur: text 1 decides
      {greek, "zzz", "", "gamma", "", 1, 0, 3 + 10000000},
      {greek, "zzz", "", "", "beta", 1, 0, 0},
      {greek, "beta", "", "", "alpha", 1, 0, 2},       // line 1 excluded
      {CrLf({"", "", "x"}), "", "", "", "", 1, 0, 3},  // empty text: any line not empty
      {totals, "TOTAL", "", "", "", 3, 5, 4},          // only columns 3..7 are looked at
      {totals, "TOTAL", "", "", "", 4, 5, 2},
      {totals, "x", "", "", "", 1, 3, 2},  // "TOT" has no x, "x  " has
  };
  int n = 0;
  for (const Case& c : cases) {
    TextFile f(dir.Write("t" + std::to_string(++n) + ".txt", c.content));
    EXPECT_EQ(FindNextLine(f, c.text1, c.text2, c.text3, c.exclude, c.start, c.length), c.result)
        << "case " << n;
  }
}

TEST(FindFirstLineContaining, CountsLinesLikeTheReader) {
  TempDir dir;
  struct Case {
    std::string content;
    std::string key;
    std::int64_t line;
  };
  const Case cases[] = {
      {"a\r\nb\r\nKEY here\r\n", "KEY", 3},
      {"a\nb\nKEY\n", "KEY", 3},
      {"a\rb\rKEY", "KEY", 3},
      {"a\r\n\r\n\n\rKEY", "KEY", 5},
      {"KEY\nKEY", "KEY", 1},
      {"ke\ny", "ke\ny", 0},  // a key never spans a line end
      {"abc", "abcd", 0},
      {"", "x", 0},
      {"\r\n\r\n  x\r\n", "", 3},  // empty key: first non-empty line
      {"\n\r\n\r", "", 0},
      {std::string("a\0b\nc\0KEY", 9), std::string("\0KEY", 4), 2},
  };
  int n = 0;
  for (const Case& c : cases) {
    const std::string path = dir.Write("k" + std::to_string(n++) + ".txt", c.content);
    EXPECT_EQ(FindFirstLineContaining(path, c.key), c.line)
        << ::testing::PrintToString(c.content) << " key " << c.key;
  }
  EXPECT_EQ(FindFirstLineContaining(dir.File("missing.txt"), "x"), 0);
}

// Several keys in one pass: each gets the line FindFirstLineContaining gives it, and the offset at
// which that line begins (checked against the bytes: the line read from there holds the key).
TEST(FindFirstLinesContaining, LinesAndOffsetsOfEveryKey) {
  TempDir dir;
  const std::string content =
      std::string("head\r\n\rEND first\nx\r\rTOP\r\n") + "END again\n\n  tail TOP\rlast";
  const std::string path = dir.Write("m.txt", content);
  const std::vector<std::string_view> keys = {"TOP", "END", "", "absent", "a\nb", "tail", "last"};
  const std::vector<KeyLine> found = FindFirstLinesContaining(path, keys);
  ASSERT_EQ(found.size(), keys.size());
  const std::int64_t lines[] = {6, 3, 1, 0, 0, 9, 10};
  for (std::size_t k = 0; k < keys.size(); ++k) {
    EXPECT_EQ(found[k].line, lines[k]) << keys[k];
    EXPECT_EQ(found[k].line, FindFirstLineContaining(path, keys[k])) << keys[k];
    if (found[k].line == 0) continue;
    TextFile f(path);
    ASSERT_TRUE(f.SeekToLine(found[k].offset, found[k].line));
    std::string line;
    ASSERT_TRUE(f.ReadLine(line));
    EXPECT_NE(line.find(keys[k]), std::string::npos) << keys[k] << " read [" << line << "]";
    const auto at = static_cast<std::size_t>(found[k].offset);
    EXPECT_TRUE(at == 0 || content[at - 1] == '\r' || content[at - 1] == '\n') << keys[k];
    EXPECT_EQ(f.LinesRead(), found[k].line);
  }
  EXPECT_EQ(FindFirstLinesContaining(dir.File("missing.txt"), keys)[0].line, 0);
}

// The search reads in blocks of several megabytes: keys and CR LF pairs that straddle a block
// boundary must be found and counted as in one piece.
TEST(FindFirstLineContaining, BlockBoundaries) {
  TempDir dir;
  constexpr std::size_t kBlock = 4u << 20;
  // Line ends: 9-byte CR LF lines up to past the first block, then the key.
  std::string text;
  std::int64_t lines = 0;
  while (text.size() < kBlock + 100) {
    text += "1234567\r\n";
    ++lines;
  }
  // Put a CR exactly at the end of the first block, its LF in the second.
  std::string crlf_split(kBlock - 1, 'x');
  crlf_split += "\r\nsecond\r\nTHE KEY";
  EXPECT_EQ(FindFirstLineContaining(dir.Write("crlf.txt", crlf_split), "THE KEY"), 3);

  // A key that starts in the first block and ends in the second.
  for (std::size_t back : {1u, 3u, 6u}) {
    std::string straddle(kBlock - back, 'y');
    straddle[100] = '\n';
    straddle += "ACCOUNT TOTAL\n";
    EXPECT_EQ(FindFirstLineContaining(dir.Write("straddle.txt", straddle), "ACCOUNT TOTAL"), 2)
        << back;
  }
  text += "zzz TOTAL\r\n";
  EXPECT_EQ(FindFirstLineContaining(dir.Write("many.txt", text), "TOTAL"), lines + 1);
  // Lone CRs over the boundary.
  std::string cr(kBlock + 10, 'c');
  for (std::size_t i = 0; i < cr.size(); i += 1000) cr[i] = '\r';
  cr += "\rKEY";
  const std::int64_t crs = static_cast<std::int64_t>((kBlock + 10 + 999) / 1000) + 1;
  EXPECT_EQ(FindFirstLineContaining(dir.Write("cr.txt", cr), "KEY"), crs + 1);

  // The offset of a line that begins right after a CR LF split over the boundary, and of one
  // that begins in the second block, with a second key found in the first block.
  const std::string_view keys[] = {"second", "THE KEY", "xxx"};
  const std::vector<KeyLine> found =
      FindFirstLinesContaining(dir.Write("crlf2.txt", crlf_split), keys);
  EXPECT_EQ(found[0].line, 2);
  EXPECT_EQ(found[0].offset, static_cast<std::int64_t>(kBlock + 1));
  EXPECT_EQ(found[1].line, 3);
  EXPECT_EQ(found[1].offset, static_cast<std::int64_t>(kBlock + 9));
  EXPECT_EQ(found[2].line, 1);
  EXPECT_EQ(found[2].offset, 0);
}

}  // namespace
}  // namespace kroveld
