#include "util/utf8_text.h"

#include <gtest/gtest.h>

#include "support/test_support.h"
#include "util/strings.h"

namespace kroveld {
namespace {

using testing::TempDir;

TEST(Utf8Text, PrintedColumnsOfCharacters) {
  const struct {
    std::uint32_t cp;
    int columns;
  } cases[] = {
      {'A', 1},     {0xD6, 1},   {0x11E, 1},    // Ö, Ğ
      {0x5C71, 2},  {0xAC00, 2}, {0xFF21, 2},   // 山, 가, fullwidth A
      {0x3000, 2},  {0x303F, 1}, {0x1F600, 2},  // ideographic space; half-fill space; emoji
      {0x20000, 2}, {0xA4D0, 1}, {0xFF61, 1},   // CJK ext. B; Lisu; halfwidth ideographic stop
      {0x0301, 0},  {0x200B, 0}, {0xFEFF, 0},   // combining acute, zero-width space, BOM
      {0x1160, 0},  {0x115F, 2}, {0x10FFFF, 1},
  };
  for (const auto& c : cases) EXPECT_EQ(PrintedColumns(c.cp), c.columns) << std::hex << c.cp;
}

// The line of a Turkish ledger whose bytes cut the name in the middle of a letter.
constexpr std::string_view kLedgerLine = "A004 ÖZTÜRK ÇAĞ  451.25 ";

TEST(Utf8Text, LineColumnsCutByPrintedColumns) {
  const struct {
    const char* what;
    std::string_view line;
    long long first, width;
    std::string_view field;
  } cases[] = {
      {"code", kLedgerLine, 1, 4, "A004"},
      {"name of ten characters", kLedgerLine, 6, 10, "ÖZTÜRK ÇAĞ"},
      {"amount", kLedgerLine, 17, 7, " 451.25"},
      {"past the end is clipped", kLedgerLine, 20, 50, "1.25 "},
      {"wholly past the end", kLedgerLine, 30, 3, ""},
      {"before column 1 is clipped", kLedgerLine, -1, 4, "A0"},
      {"a wide character takes two columns", "山田 12", 1, 4, "山田"},
      {"the columns after wide ones", "山田 12", 6, 2, "12"},
      {"a cut after a wide character's first half keeps it whole", "山田 12", 1, 3, "山田"},
      {"the field that starts on its second half does not get it", "山田 12", 4, 2, " "},
      {"a field of one second half is empty", "山田 12", 2, 1, ""},
      {"a combining mark goes with its letter", "Ze\u0301ro 5", 1, 4, "Ze\u0301ro"},
      {"and not with the next field", "Ze\u0301ro 5", 3, 1, "r"},
      {"a mark before any letter belongs to column 1", "\u0301ab", 1, 1, "\u0301a"},
      {"U+FFFD is one column", "a\uFFFDb", 2, 2, "\uFFFDb"},
  };
  LineColumns columns;
  for (const auto& c : cases) {
    columns.Build(c.line);
    EXPECT_EQ(columns.Cut(c.line, c.first, c.width), c.field) << c.what;
  }
  columns.Build("山田 12");
  EXPECT_EQ(columns.Columns(), 7);
  columns.Build("");
  EXPECT_EQ(columns.Cut("", 1, 5), "");
}

// On ASCII text the column cut is the byte cut, for every field of every length.
TEST(Utf8Text, LineColumnsOnAsciiCutAsBytes) {
  const std::string line = "ACCT-001  Office supplies     1,234.50 ";
  LineColumns columns;
  columns.Build(line);
  const long long n = static_cast<long long>(line.size());
  for (long long first = -1; first <= n + 2; ++first) {
    for (long long width = 0; width <= n + 2; ++width) {
      const long long from = std::max(first - 1, 0LL);
      const long long to = std::min(first - 1 + width, n);
      const std::string_view bytes =
          from < to ? std::string_view(line).substr(from, to - from) : std::string_view();
      ASSERT_EQ(columns.Cut(line, first, width), bytes) << first << "," << width;
    }
  }
}

TEST(Utf8Text, RepairReplacesEachInvalidByte) {
  const struct {
    std::string in;
    std::string out;
    std::size_t replaced;
  } cases[] = {
      {"ÖZTÜRK", "ÖZTÜRK", 0},
      {"a\xC4z", "a\uFFFDz", 1},                            // an 8-bit Ä among UTF-8
      {"\x80\xBF", "\uFFFD\uFFFD", 2},                      // stray continuation bytes
      {"ab\xE5\xB1", "ab\uFFFD\uFFFD", 2},                  // a character cut short at the end
      {"\xC0\x80", "\uFFFD\uFFFD", 2},                      // overlong NUL
      {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD", 3},            // a surrogate
      {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD", 4},  // past U+10FFFF
      {"\xF0\x9F\x98\x80!", "\U0001F600!", 0},
  };
  std::string out;
  for (const auto& c : cases) {
    EXPECT_EQ(RepairUtf8(c.in, out), c.replaced) << c.in;
    EXPECT_EQ(out, c.out) << c.in;
    EXPECT_EQ(IsValidUtf8(c.in), c.replaced == 0) << c.in;
    EXPECT_TRUE(IsValidUtf8(out));
  }
}

TEST(Utf8Text, TabsExpandByPrintedColumns) {
  const struct {
    std::string in;
    int tabSize;
    std::string out;
  } cases[] = {
      {"山\tx", 8, "山      x"},  // the wide character takes two of the eight columns
      {"ÄÖÜß\tx", 4, "ÄÖÜßx"},    // four columns: a tab right after a stop's last adds none
      {"ÄÖ\tx", 4, "ÄÖ  x"},     {"Ze\u0301\tx", 4, "Ze\u0301  x"},  // the mark takes no column
      {"\t山", 2, "  山"},       {"", 8, ""},
      {"a\tb", 0, ""},  // as ExpandTabs: no tab size, no text
  };
  std::string out;
  for (const auto& c : cases) {
    ExpandTabsByColumns(c.in, c.tabSize, out);
    EXPECT_EQ(out, c.out) << c.in;
  }
  // ASCII text expands exactly as the 8-bit expansion does.
  for (const std::string text : {"a\tbc\t\tdefghij\tk", "\t\t", "abcdefg\th", "x"}) {
    for (int tab : {1, 3, 8}) {
      ExpandTabsByColumns(text, tab, out);
      EXPECT_EQ(out, ExpandTabs(text, tab)) << text << " / " << tab;
    }
  }
}

TEST(Utf8Text, ColumnPictureHasOneBytePerColumn) {
  EXPECT_EQ(ColumnPicture("ÖZ 12"), "#Z 12");
  EXPECT_EQ(ColumnPicture("山田  x"), "####  x");
  EXPECT_EQ(ColumnPicture("e\u0301 =\uFFFD"), "e =#");
}

TEST(Utf8Text, ParseInputEncodingNames) {
  const struct {
    const char* text;
    bool ok;
    InputEncoding encoding;
  } cases[] = {
      {"", true, InputEncoding::kUnset},
      {"auto", true, InputEncoding::kAuto},
      {" UTF-8 ", true, InputEncoding::kUtf8},
      {"cp1252", true, InputEncoding::kCp1252},
      {"Latin1", true, InputEncoding::kLatin1},
      {"utf8", false, InputEncoding::kUnset},
      {"windows-1252", false, InputEncoding::kUnset},
      {"utf-16", false, InputEncoding::kUnset},
  };
  for (const auto& c : cases) {
    InputEncoding e = InputEncoding::kUnset;
    EXPECT_EQ(ParseInputEncoding(c.text, e), c.ok) << c.text;
    if (c.ok) {
      EXPECT_EQ(e, c.encoding) << c.text;
    }
  }
}

TEST(Utf8Text, ClassifyFileTextReadsTheWholeFile) {
  TempDir dir;
  const std::size_t block = std::size_t{1} << 20;  // the reader's block
  // A character whose bytes straddle the end of the reader's first block is still valid.
  std::string straddling(block - 1, 'a');
  straddling += "山 tail\r\n";
  // An invalid byte far into the file, after a megabyte of ASCII, still makes it 8-bit.
  std::string lateInvalid(3 * block, 'b');
  lateInvalid += "Ö\xC4\n";
  const struct {
    const char* name;
    std::string content;
    FileText expected;
  } cases[] = {
      {"ascii.txt", "ID   NAME\r\nA004 SMITH   12.00\r\n", FileText::kAscii},
      {"empty.txt", "", FileText::kAscii},
      {"utf8.txt", "A004 ÖZTÜRK ÇAĞ  451.25\r\n", FileText::kUtf8},
      {"bom.txt", "\xEF\xBB\xBFID\r\n", FileText::kUtf8},
      {"one-bad-byte.txt", "A004 ÖZTÜRK\r\nB001 M\xFCLLER\r\n", FileText::kEightBit},
      {"cp1252.txt", "B001 M\xFCLLER \x80 12\r\n", FileText::kEightBit},
      {"cut-short-at-end.txt", "ÖZ\xE5\xB1", FileText::kEightBit},
      {"straddling.txt", straddling, FileText::kUtf8},
      {"late-invalid.txt", lateInvalid, FileText::kEightBit},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ClassifyFileText(dir.Write(c.name, c.content)), c.expected) << c.name;
  }
  EXPECT_EQ(ClassifyFileText(dir.File("missing.txt")), FileText::kUnreadable);
}

}  // namespace
}  // namespace kroveld
