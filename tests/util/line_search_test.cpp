// The whole-file key search: line counting like the reader, offsets, block boundaries.
#include "util/line_search.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::TempDir;

// The search on the file and the search on its bytes in memory, which must agree.
std::vector<KeyLine> Search(const std::string& path, std::span<const std::string_view> keys) {
  const std::vector<KeyLine> found = FindFirstLinesContaining(path, keys);
  TextFile file;
  if (file.OpenMapped(path)) {
    std::int64_t told = 0;
    const std::vector<KeyLine> inMemory = FindFirstLinesContaining(
        file.MappedBytes(), keys, [&told](std::int64_t searched) { told = searched; });
    for (std::size_t k = 0; k < keys.size(); ++k) {
      EXPECT_EQ(inMemory[k].line, found[k].line) << path << " key " << keys[k];
      EXPECT_EQ(inMemory[k].offset, found[k].offset) << path << " key " << keys[k];
    }
    EXPECT_LE(told, static_cast<std::int64_t>(file.MappedBytes().size()));
  }
  return found;
}

// The line of the first occurrence of one key, as the table's key search finds it.
std::int64_t FirstLine(const std::string& path, std::string_view key) {
  const std::string_view keys[] = {key};
  return Search(path, keys)[0].line;
}

TEST(FindFirstLinesContaining, CountsLinesLikeTheReader) {
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
    EXPECT_EQ(FirstLine(path, c.key), c.line)
        << ::testing::PrintToString(c.content) << " key " << c.key;
  }
  EXPECT_EQ(FirstLine(dir.File("missing.txt"), "x"), 0);
}

// Several keys in one pass: each gets the line of its first occurrence, and the offset at
// which that line begins (checked against the bytes: the line read from there holds the key).
TEST(FindFirstLinesContaining, LinesAndOffsetsOfEveryKey) {
  TempDir dir;
  const std::string content =
      std::string("head\r\n\rEND first\nx\r\rTOP\r\n") + "END again\n\n  tail TOP\rlast";
  const std::string path = dir.Write("m.txt", content);
  const std::vector<std::string_view> keys = {"TOP", "END", "", "absent", "a\nb", "tail", "last"};
  const std::vector<KeyLine> found = Search(path, keys);
  ASSERT_EQ(found.size(), keys.size());
  const std::int64_t lines[] = {6, 3, 1, 0, 0, 9, 10};
  for (std::size_t k = 0; k < keys.size(); ++k) {
    EXPECT_EQ(found[k].line, lines[k]) << keys[k];
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
TEST(FindFirstLinesContaining, BlockBoundaries) {
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
  EXPECT_EQ(FirstLine(dir.Write("crlf.txt", crlf_split), "THE KEY"), 3);

  // A key that starts in the first block and ends in the second.
  for (std::size_t back : {1u, 3u, 6u}) {
    std::string straddle(kBlock - back, 'y');
    straddle[100] = '\n';
    straddle += "ACCOUNT TOTAL\n";
    EXPECT_EQ(FirstLine(dir.Write("straddle.txt", straddle), "ACCOUNT TOTAL"), 2) << back;
  }
  text += "zzz TOTAL\r\n";
  EXPECT_EQ(FirstLine(dir.Write("many.txt", text), "TOTAL"), lines + 1);
  // Lone CRs over the boundary.
  std::string cr(kBlock + 10, 'c');
  for (std::size_t i = 0; i < cr.size(); i += 1000) cr[i] = '\r';
  cr += "\rKEY";
  const std::int64_t crs = static_cast<std::int64_t>((kBlock + 10 + 999) / 1000) + 1;
  EXPECT_EQ(FirstLine(dir.Write("cr.txt", cr), "KEY"), crs + 1);

  // The offset of a line that begins right after a CR LF split over the boundary, and of one
  // that begins in the second block, with a second key found in the first block.
  const std::string_view keys[] = {"second", "THE KEY", "xxx"};
  const std::vector<KeyLine> found = Search(dir.Write("crlf2.txt", crlf_split), keys);
  EXPECT_EQ(found[0].line, 2);
  EXPECT_EQ(found[0].offset, static_cast<std::int64_t>(kBlock + 1));
  EXPECT_EQ(found[1].line, 3);
  EXPECT_EQ(found[1].offset, static_cast<std::int64_t>(kBlock + 9));
  EXPECT_EQ(found[2].line, 1);
  EXPECT_EQ(found[2].offset, 0);
}

// Stepping back over lines from a line start: every line end TextFile knows, counted as it counts
// them. Checked against the line starts that reading forward gives, for every line and count.
TEST(StartOfLineBefore, StepsBackOverLinesAsTheReaderCountsThem) {
  const std::string texts[] = {
      "a\r\nbb\nccc\rdd\r\n",
      "\r\n\r\n\n\r\r\nx",       // empty lines of every kind
      "form\ffeed\r\r\nz\n\rq",  // a form feed is part of its line; CR CR LF is two ends
      "one line",
  };
  TempDir dir;
  int n = 0;
  for (const std::string& text : texts) {
    // Where each line begins, as the reader finds it going forward through the mapped file.
    TextFile f;
    ASSERT_TRUE(f.OpenMapped(dir.Write("b" + std::to_string(n++) + ".txt", text)));
    ASSERT_TRUE(f.IsMapped());
    const std::string_view bytes = f.MappedBytes();
    std::vector<std::int64_t> starts;
    for (std::string_view line; f.ReadLine(line);) starts.push_back(line.data() - bytes.data());
    const std::int64_t lines = static_cast<std::int64_t>(starts.size());
    for (std::int64_t from = 0; from < lines; ++from) {
      for (std::int64_t back = 0; back <= from + 1; ++back) {
        const std::int64_t expected =
            back <= from ? starts[static_cast<std::size_t>(from - back)] : -1;
        EXPECT_EQ(StartOfLineBefore(bytes, starts[static_cast<std::size_t>(from)], back), expected)
            << ::testing::PrintToString(text) << " line " << from + 1 << " back " << back;
      }
    }
  }
  EXPECT_EQ(StartOfLineBefore("abc", 7, 1), -1);  // an offset outside the text
}

}  // namespace
}  // namespace kroveld
