// String helpers: the tab expansion quirk, trimming, case.
#include "util/strings.h"

#include <gtest/gtest.h>

namespace kroveld {
namespace {

TEST(ExpandTabs, PrintersQuirkAndEdges) {
  struct Case {
    std::string text;
    int tab;
    std::string expected;
  };
  const Case cases[] = {
      {"abcdefgh\tX", 8, "abcdefghX"},  // a tab after exactly stop - 1 characters is swallowed
      {"ab\tc", 8, "ab      c"},
      {"\tx", 8, "        x"},
      {"abcdefg\tx", 8, "abcdefg x"},
      {"abcdefghi\tx", 8, "abcdefghi       x"},  // 9 chars: next stop after 16
      {"a\tb\tc", 4, "a   b   c"},
      {"abcd\tx", 4, "abcdx"},  // swallowed at tab size 4 too
      {"abc", 8, "abc"},
      {"", 8, ""},
      {"abc\tx", 0, ""},  // tab size below 1: empty, not the text
      {"a\tb", 1, "ab"},  // tab size 1: every tab is swallowed
  };
  std::string out = "old content";  // the output buffer is replaced, not appended to
  for (const Case& c : cases) {
    EXPECT_EQ(ExpandTabs(c.text, c.tab), c.expected) << '"' << c.text << "\" tab " << c.tab;
    ExpandTabs(c.text, c.tab, out);
    EXPECT_EQ(out, c.expected) << '"' << c.text << "\" tab " << c.tab;
  }
}

TEST(Strings, TrimCaseAndSmallHelpers) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(TrimLeft("  a "), "a ");
  EXPECT_EQ(TrimRight("  a "), "  a");
  EXPECT_EQ(Trim("\ta\t"), "\ta\t");  // only blanks are trimmed
  EXPECT_EQ(UpperAscii("abc-Xyz\xe9"), "ABC-XYZ\xe9");
  EXPECT_TRUE(EqualsNoCase("Output File", "OUTPUT file"));
  EXPECT_FALSE(EqualsNoCase("abc", "abcd"));
  EXPECT_EQ(FindNoCase("the Header line", "HEADER"), 4u);
  EXPECT_EQ(FindNoCase("abc", "abcd"), std::string_view::npos);
  EXPECT_EQ(ToText(-1234567890123LL), "-1234567890123");
}

}  // namespace
}  // namespace kroveld
