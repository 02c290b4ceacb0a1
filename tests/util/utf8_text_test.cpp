#include "util/utf8_text.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace kroveld {
namespace {

TEST(Utf8Text, LineColumnsCutByPrintedColumns) {
  const struct {
    const char* what;
    std::string_view line;
    long long first, width;
    std::string_view field;
  } cases[] = {
      {"code", "A004 ÖZTÜRK ÇAĞ  451.25", 1, 4, "A004"},
      {"name of ten characters", "A004 ÖZTÜRK ÇAĞ  451.25", 6, 10, "ÖZTÜRK ÇAĞ"},
      {"amount, clipped to the line", "A004 ÖZTÜRK ÇAĞ  451.25", 17, 50, " 451.25"},
      {"a wide character takes two columns", "山田 12", 6, 2, "12"},
      {"a cut after a wide character's first half keeps it whole", "山田 12", 1, 3, "山田"},
      {"the field starting on its second half does not get it", "山田 12", 4, 2, " "},
      {"a combining mark goes with its letter", "Ze\u0301ro 5", 1, 2, "Ze\u0301"},
      {"a mark before any letter belongs to column 1", "\u0301ab", 1, 1, "\u0301a"},
  };
  LineColumns columns;
  for (const auto& c : cases) {
    columns.Build(c.line);
    EXPECT_EQ(columns.Cut(c.line, c.first, c.width), c.field) << c.what;
  }
  // On ASCII the column cut is the byte cut, for every field.
  const std::string ascii = "ACCT-001  Office supplies  1,234.50 ";
  const long long n = static_cast<long long>(ascii.size());
  columns.Build(ascii);
  for (long long first = -1; first <= n + 1; ++first) {
    for (long long width = 0; width <= n + 1; ++width) {
      const long long from = std::max(first - 1, 0LL), to = std::min(first - 1 + width, n);
      ASSERT_EQ(columns.Cut(ascii, first, width), from < to ? ascii.substr(from, to - from) : "");
    }
  }
}

TEST(Utf8Text, ClassifyFileTextReadsTheWholeFile) {
  testing::TempDir dir;
  // A character whose bytes straddle the end of the reader's first block is still valid; an
  // invalid byte after megabytes of ASCII still makes the file 8-bit.
  const std::size_t block = std::size_t{1} << 20;
  const struct {
    std::string content;
    FileText expected;
  } cases[] = {
      {"A004 SMITH   12.00\r\n", FileText::kAscii},
      {"A004 ÖZTÜRK ÇAĞ  451.25\r\n", FileText::kUtf8},
      {"A004 ÖZTÜRK\r\nB001 M\xFCLLER\r\n", FileText::kEightBit},
      {"ÖZ\xE5\xB1", FileText::kEightBit},  // cut short at the end
      {std::string(block - 1, 'a') + "山\r\n", FileText::kUtf8},
      {std::string(3 * block, 'b') + "\xC4\n", FileText::kEightBit},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ClassifyFileText(dir.Write("r.txt", c.content)), c.expected) << c.content.size();
  }
  EXPECT_EQ(ClassifyFileText(dir.File("missing.txt")), FileText::kUnreadable);
}

}  // namespace
}  // namespace kroveld
