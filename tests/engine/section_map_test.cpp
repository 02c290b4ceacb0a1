#include "engine/section_map.h"

#include <gtest/gtest.h>

#include <string_view>

namespace kroveld {
namespace {

SectionMap MapOf(std::initializer_list<std::string_view> lines) {
  SectionMap map;
  for (std::string_view line : lines) map.Note(line);
  return map;
}

TEST(SectionMap, FindsKeysBySectionWithTheFileRules) {
  const SectionMap map = MapOf({
      "Orphan=before any heading",
      "[Table 1]",
      "ReadStartLine=ACCOUNT",
      "SkipLinesMatching = ^[-=]+$ ",
      "KeepLinesMatching=^\\d ; a comment",
      "Blank=   ",
      "SkipBlankLines=TRUE",
      "SkipBlankLines=FALSE",
      "[ Table 1 Col 1 ]",
      "Type=Number",
      "[Table 2]",
      "Type=Text",
  });
  const struct {
    std::string_view section, key, value;
  } cases[] = {
      {"Table 1", "ReadStartLine", "ACCOUNT"},
      {"Table 1", "SkipLinesMatching", "^[-=]+$"},  // brackets in a value are no heading
      {"Table 1", "KeepLinesMatching", "^\\d"},     // cut at the comment, trimmed
      {"Table 1", "Blank", ""},                     // blank reads as absent
      {"Table 1", "SkipBlankLines", "TRUE"},        // the first line wins
      {"Table 1", "Type", ""},                      // sections do not leak into each other
      {"Table 1 Col 1", "Type", "Number"},          // heading names are trimmed
      {"Table 2", "Type", "Text"},
      {"table 2", "Type", ""},  // exact case, as headings are looked up
      {"", "Orphan", ""},
      {"Table 3", "Type", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(map.Find(c.section, c.key), c.value) << c.section << " / " << c.key;
  }
}

TEST(SectionMap, RepeatedHeadingKeepsTheFirstValue) {
  const SectionMap map = MapOf(
      {"[Table 1]", "Type=Date", "[Table 2]", "[Table 1]", "Type=Text", "DateFormat=MM/DD/YY"});
  EXPECT_EQ(map.Find("Table 1", "Type"), "Date");
  EXPECT_EQ(map.Find("Table 1", "DateFormat"), "MM/DD/YY");
}

}  // namespace
}  // namespace kroveld
