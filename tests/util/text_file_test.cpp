// TextFile: line ends of every kind, buffer boundaries, long lines, NUL bytes, odd paths.
#include "util/text_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::TempDir;

std::vector<std::string> ReadAllOnce(const std::string& path, bool mapped) {
  TextFile f;
  EXPECT_TRUE(mapped ? f.OpenMapped(path) : f.Open(path)) << f.Error();
  std::vector<std::string> lines;
  std::string_view line;
  while (f.ReadLine(line)) lines.emplace_back(line);
  EXPECT_EQ(f.LinesRead(), static_cast<std::int64_t>(lines.size()));
  return lines;
}

// The lines of the file, read through the buffer; read through a memory map they must be the same.
std::vector<std::string> ReadAll(const std::string& path) {
  std::vector<std::string> lines = ReadAllOnce(path, false);
  EXPECT_EQ(ReadAllOnce(path, true), lines) << path << " mapped";
  return lines;
}

using Lines = std::vector<std::string>;

TEST(TextFile, LineEndsOfEveryKindAndNulBytes) {
  struct Case {
    std::string content;
    Lines expected;
  };
  const Case cases[] = {
      {"", {}},
      {"a", {"a"}},
      {"a\r\nb\r\n", {"a", "b"}},
      {"a\nb\n", {"a", "b"}},
      {"a\rb\r", {"a", "b"}},
      {"a\r\n\r\nb", {"a", "", "b"}},
      {"a\n\nb\n", {"a", "", "b"}},
      {"a\r\rb", {"a", "", "b"}},
      {"a\n\rb", {"a", "", "b"}},  // LF then a lone CR: two line ends
      {"\r\n", {""}},
      {"\n\n", {"", ""}},
      {"x\r", {"x"}},
      {std::string("a\0b\r\n\0\n", 7), {std::string("a\0b", 3), std::string(1, '\0')}},
      {"mixed\r\nends\nhere\rlast", {"mixed", "ends", "here", "last"}}};
  TempDir dir;
  int n = 0;
  for (const Case& c : cases) {
    const std::string path = dir.Write("f" + std::to_string(n++) + ".txt", c.content);
    EXPECT_EQ(ReadAll(path), c.expected) << "content: " << ::testing::PrintToString(c.content);
  }
}

// A CR LF whose CR is the last byte of one buffer fill and whose LF is the first of the next
// must still be one line end. Lines of several lengths move the split over the boundary.
TEST(TextFile, CrLfSplitAcrossTheBufferBoundary) {
  TempDir dir;
  constexpr std::size_t kBuffer = 1u << 20;
  for (std::size_t shift = 0; shift < 4; ++shift) {
    // First line so long that its CR falls at kBuffer - 1 - shift + ... around the boundary.
    std::string content(kBuffer - 1 - shift, 'x');
    content += "\r\nsecond\r\nthird";
    const Lines lines = ReadAll(dir.Write("split" + std::to_string(shift) + ".txt", content));
    ASSERT_EQ(lines.size(), 3u) << "shift " << shift;
    EXPECT_EQ(lines[0].size(), kBuffer - 1 - shift);
    EXPECT_EQ(lines[1], "second");
    EXPECT_EQ(lines[2], "third");
  }
  // Many short CR LF lines: with a 7-byte line, some line end straddles the boundary.
  std::string many;
  for (int i = 0; i < 400000; ++i) many += "abcde\r\n";
  const Lines lines = ReadAll(dir.Write("many.txt", many));
  ASSERT_EQ(lines.size(), 400000u);
  for (const auto& l : lines) ASSERT_EQ(l, "abcde");
}

TEST(TextFile, LinesLongerThanTheBufferComeBackWholeUpToTheCap) {
  TempDir dir;
  std::string big(3u << 20, 'q');  // three buffers long, under the cap
  big[12345] = 'A';
  big.back() = 'Z';
  std::string huge(kMaxLineBytes + (5u << 20), 'h');
  const std::string content =
      "short\n" + big + "\r\nafter\n" + huge + "\nnext\n" + big;  // last one without end
  const std::string path = dir.Write("big.txt", content);
  for (bool mapped : {false, true}) {
    TextFile f;
    ASSERT_TRUE(mapped ? f.OpenMapped(path) : f.Open(path)) << f.Error();
    EXPECT_EQ(f.IsMapped(), mapped);
    Lines lines;
    std::string_view line;
    while (f.ReadLine(line)) lines.emplace_back(line);
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[0], "short");
    EXPECT_EQ(lines[1], big);
    EXPECT_EQ(lines[2], "after");
    EXPECT_EQ(lines[3], huge.substr(0, kMaxLineBytes));  // cut, the rest skipped
    EXPECT_EQ(lines[4], "next");
    EXPECT_EQ(lines[5], big);
    EXPECT_EQ(f.FirstCutLine(), 4);
  }
  EXPECT_EQ(ReadAll(dir.Write("small.txt", "a\nb")).size(), 2u);
}

TEST(TextFile, SkipPastTheEndAndReopen) {
  TempDir dir;
  const std::string path = dir.Write("s.txt", "1\r\n2\r\n3\r\n");
  TextFile f(path);
  ASSERT_TRUE(f.IsOpen());
  EXPECT_TRUE(f.SkipLines(2));
  std::string line;
  EXPECT_TRUE(f.ReadLine(line));
  EXPECT_EQ(line, "3");
  EXPECT_FALSE(f.ReadLine(line));
  EXPECT_EQ(line, "");
  EXPECT_FALSE(f.SkipLines(1));
  // Reopening starts over.
  ASSERT_TRUE(f.Open(path));
  EXPECT_TRUE(f.ReadLine(line));
  EXPECT_EQ(line, "1");
  EXPECT_EQ(f.LinesRead(), 1);
}

TEST(TextFile, SeekToLineReadsOnFromThatLine) {
  TempDir dir;
  const std::string path = dir.Write("seek.txt", "a\r\nbb\ncc\rdd\r\n");
  TextFile f(path);
  ASSERT_TRUE(f.ReadLine(*std::make_unique<std::string>()));  // something buffered already
  ASSERT_TRUE(f.SeekToLine(6, 3));                            // "cc" begins at byte 6
  std::string line;
  EXPECT_TRUE(f.ReadLine(line));
  EXPECT_EQ(line, "cc");
  EXPECT_EQ(f.LinesRead(), 3);
  EXPECT_TRUE(f.ReadLine(line));
  EXPECT_EQ(line, "dd");
  EXPECT_FALSE(f.ReadLine(line));
  EXPECT_FALSE(f.SeekToLine(-1, 1));
  EXPECT_FALSE(f.SeekToLine(0, 0));
  TextFile closed;
  EXPECT_FALSE(closed.SeekToLine(0, 1));
}

// A file that can be mapped is; one that cannot (an empty file) is read through the buffer. Both
// give the lines, the line numbers of a seek and the cut of a long line as the buffer does, also
// after the pages read were given back.
TEST(TextFile, MappedReadingFallsBackAndSurvivesGivingPagesBack) {
  TempDir dir;
  struct Case {
    std::string content;
    bool mapped;
  };
  const Case cases[] = {
      {"", false},
      {"no final line end", true},
      {"form\ffeed\r\nlast\r", true},
      {std::string(5000, 'p') + "\r" + std::string(5000, 'q') + "\n\n", true},
      // Large enough for its pages to be made ready and given back on a thread of their own.
      {[] {
         std::string big;
         const char* ends[] = {"\r\n", "\n", "\r"};
         for (int i = 0; big.size() < (std::size_t{40} << 20); ++i) {
           big.append(static_cast<std::size_t>(i % 251), static_cast<char>('a' + i % 26));
           big += ends[i % 3];
         }
         return big;
       }(),
       true},
  };
  int n = 0;
  for (const Case& c : cases) {
    const std::string path = dir.Write("m" + std::to_string(n++) + ".txt", c.content);
    TextFile f;
    ASSERT_TRUE(f.OpenMapped(path)) << f.Error();
    EXPECT_EQ(f.IsMapped(), c.mapped) << n;
    EXPECT_EQ(f.MappedBytes().size(), c.mapped ? c.content.size() : 0u);
    const Lines first = ReadAll(path);
    Lines lines;
    for (std::string line; f.ReadLine(line);) lines.push_back(line);
    EXPECT_TRUE(lines == first) << n;  // (no dump of the large file)
    // Every page given back, then read again from line 1: the same lines.
    f.ReleaseBefore(static_cast<std::int64_t>(c.content.size()));
    ASSERT_TRUE(f.SeekToLine(0, 1));
    lines.clear();
    for (std::string line; f.ReadLine(line);) lines.push_back(line);
    EXPECT_TRUE(lines == first) << n;  // (no dump of the large file)
  }
  // A seek in a mapped file counts lines from there; a seek beyond its end is refused.
  const std::string path = dir.Write("seek.txt", "a\r\nbb\ncc\rdd");
  TextFile f;
  ASSERT_TRUE(f.OpenMapped(path));
  ASSERT_TRUE(f.IsMapped());
  ASSERT_TRUE(f.SeekToLine(6, 3));
  std::string line;
  EXPECT_TRUE(f.ReadLine(line));
  EXPECT_EQ(line, "cc");
  EXPECT_EQ(f.LinesRead(), 3);
  EXPECT_FALSE(f.SeekToLine(100, 2));
  f.Close();
  EXPECT_FALSE(f.IsMapped());
  EXPECT_TRUE(f.MappedBytes().empty());
}

TEST(TextFile, MissingFilesFoldersAndBackslashPaths) {
  TempDir dir;
  TextFile f;
  EXPECT_FALSE(f.Open(dir.File("missing.txt")));
  EXPECT_FALSE(f.Error().empty());
  EXPECT_FALSE(f.Open(dir.path()));  // a folder is not a text file
  EXPECT_NE(f.Error().find("directory"), std::string::npos) << f.Error();
  EXPECT_FALSE(f.IsOpen());
  std::string_view v;
  EXPECT_FALSE(f.ReadLine(v));
  EXPECT_FALSE(f.Open(""));
  // Pipes and devices are refused without waiting for a writer or reading without end.
  const std::string fifo = dir.File("pipe");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& special : {fifo, std::string("/dev/zero")}) {
    EXPECT_FALSE(f.Open(special));
    EXPECT_EQ(f.Error(), special + ": not a regular file");
    EXPECT_FALSE(f.OpenMapped(special));
    EXPECT_EQ(f.Error(), special + ": not a regular file");
  }

  dir.Write("sub/r.txt", "hello");
  std::string windows = dir.path() + "\\sub\\r.txt";
  ASSERT_TRUE(f.Open(windows)) << f.Error();
  std::string line;
  EXPECT_TRUE(f.ReadLine(line));
  EXPECT_EQ(line, "hello");
}

}  // namespace
}  // namespace kroveld
