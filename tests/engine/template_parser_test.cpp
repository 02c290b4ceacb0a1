#include "engine/template_parser.h"

#include <gtest/gtest.h>

#include "support/recording_port.h"

namespace kroveld {
namespace {

using testing::RecordingPort;

struct ParseCase {
  const char* name;
  std::string tmpl;
  std::vector<int> starts;
  std::vector<int> ends;
  std::vector<std::string> ops;
  bool result;
};

// Test names and failure output show the template, not the bytes of the case.
void PrintTo(const ParseCase& c, std::ostream* os) {
  *os << '"' << c.tmpl << '"';
}

class TemplateParserTest : public ::testing::TestWithParam<ParseCase> {};

TEST_P(TemplateParserTest, FieldsEndsOperatorsAndResult) {
  const ParseCase& c = GetParam();
  RecordingPort ui;
  // Lists arrive holding stale entries: the parser must empty them first.
  std::vector<int> starts{99, 98};
  std::vector<int> ends{97};
  std::vector<std::string> ops{"stale"};
  EXPECT_EQ(c.result, ParseTemplateLine(ui, c.tmpl, starts, ends, ops));
  EXPECT_EQ(c.starts, starts);
  EXPECT_EQ(c.ends, ends);
  EXPECT_EQ(c.ops, ops);
  EXPECT_TRUE(ui.messages.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Templates, TemplateParserTest,
    ::testing::Values(
        // A field closed by a blank ends on that blank; one that reaches the end, on its last
        // character.
        ParseCase{"TwoFieldsAfterLeadingBlanks", "  AAA  BBBB", {3, 8}, {6, 11}, {"", ""}, true},
        // The last field starts on the last position: its end is appended after the scan and
        // the answer is false although the lists are complete.
        ParseCase{"SumFieldsAndOneCharLast",
                  "+999 +99 x",
                  {1, 6, 10},
                  {5, 9, 10},
                  {"Sum", "Sum", ""},
                  false},
        ParseCase{"SingleFieldWholeTemplate", "AAA", {1}, {3}, {""}, true},
        ParseCase{"PlusInsideFieldIsNotAnOperator", "A+B C", {1, 5}, {4, 5}, {"", ""}, false},
        ParseCase{"Empty", "", {}, {}, {}, false},
        ParseCase{"BlanksOnly", "     ", {}, {}, {}, false},
        // A tab is a field character, never a separator.
        ParseCase{"TabInsideField", "AA\tBB CC", {1, 7}, {6, 8}, {"", ""}, true},
        ParseCase{"TabAlone", "\t", {1}, {1}, {""}, false},
        ParseCase{"TrailingBlankClosesLastField", "--- ---- ", {1, 5}, {4, 9}, {"", ""}, true},
        ParseCase{"SingleCharacterTemplate", "+", {1}, {1}, {"Sum"}, false},
        ParseCase{"SumOnLongField", " +==== ---", {2, 8}, {7, 10}, {"Sum", ""}, true}),
    [](const ::testing::TestParamInfo<ParseCase>& info) { return info.param.name; });

// "unexpected error in template analyzer!" guards starts and ends that disagree by more than the
// one open last field. Every template of up to nine positions over blank, mark and sum mark
// must come out with one end per start, each end at or after its start, and no message.
TEST(TemplateParser, StartsAndEndsAlwaysPairUp) {
  RecordingPort ui;
  std::vector<int> starts, ends;
  std::vector<std::string> ops;
  std::string tmpl;
  for (int length = 1; length <= 9; ++length) {
    int combinations = 1;
    for (int i = 0; i < length; ++i) combinations *= 3;
    for (int code = 0; code < combinations; ++code) {
      tmpl.clear();
      for (int i = 0, c = code; i < length; ++i, c /= 3) tmpl += " -+"[c % 3];
      const bool any = ParseTemplateLine(ui, tmpl, starts, ends, ops);
      ASSERT_EQ(starts.size(), ends.size()) << '"' << tmpl << '"';
      ASSERT_EQ(ops.size(), starts.size()) << '"' << tmpl << '"';
      for (std::size_t k = 0; k < starts.size(); ++k) ASSERT_LE(starts[k], ends[k]) << tmpl;
      if (any) {
        ASSERT_FALSE(starts.empty()) << tmpl;
      }
    }
  }
  EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;
}

}  // namespace
}  // namespace kroveld
