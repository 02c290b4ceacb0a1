#include "engine/line_processor.h"

#include <gtest/gtest.h>

#include "engine/context.h"
#include "support/extract_support.h"

namespace kroveld::testing {
namespace {

class LineProcessorTest : public ::testing::Test {
 protected:
  ExtractFixture f;
  clsLineProcessor& lp() { return f.ctx->lineProcessor; }
  clsRecipe& recipe() { return f.ctx->recipe; }
  // Fills slots 1.. with the texts and makes files first..last take part.
  void Slots(std::vector<std::string> texts, int first, int last) {
    for (std::size_t i = 0; i < texts.size(); ++i) lp().SetSlot(static_cast<int>(i) + 1, texts[i]);
    recipe().InputFileFirst = first;
    recipe().InputFileLast = last;
  }
  std::string Field(int code, int first, int last) {
    return std::string(lp().ProcessField(code, first, last));
  }
};

// Slot 1 as a table row fills it: a blank added to a line that does not end in one, before the
// tabs are expanded.
TEST_F(LineProcessorTest, Period1LineGetsItsBlankBeforeTheTabsAreExpanded) {
  struct Case {
    std::string line;
    int tabSize;
    std::string slot;
  };
  const std::vector<Case> cases = {
      {"abc", 8, "abc "},
      {"abc ", 8, "abc "},
      {"", 8, ""},
      {"abcdefgh\tx", 8, "abcdefghx "},  // a tab right after a stop's last column adds nothing
      {"ab\tc", 8, "ab      c "},
      {"ab\t", 8, "ab       "},  // blank added to "ab\t" first, then the tab expanded
      {"a\tb", 0, "a\tb "},      // tab size 0: tabs stay
      {"a\tb", -1, "a\tb "},
      {"\x80\xff\f", 8, "\x80\xff\f "},  // bytes pass through unchanged
  };
  for (const auto& c : cases) {
    lp().SetPeriod1Line(c.line, c.tabSize);
    EXPECT_EQ(c.slot, lp().Slot(1)) << "line [" << c.line << "] tab size " << c.tabSize;
  }
  EXPECT_TRUE(f.ui.messages.empty());
}

TEST_F(LineProcessorTest, SumsCombineNumericPiecesOrReturnTheLastNonNumeric) {
  struct Case {
    std::vector<std::string> slots;
    int code;
    std::string format;
    std::string expected;
  };
  const std::vector<Case> cases = {
      {{"1,000.50", " 2 ", "(0.50)"}, 2, "NearestCent", "1,002.00"},
      {{"1,000.50", " 2 ", "(0.50)"}, 2, "NearestDollar", "1,002"},
      {{"1,000.50", " 2 ", "(0.50)"}, 2, "", "1002"},
      {{"1,000.50", " 2 ", "(0.50)"}, 2, "nearestcent", "1002"},  // the format names are exact
      {{"0.1", "0.2", "0.3"}, 2, "", "0.6"},                      // no binary drift
      {{"12", "n/a"}, 2, "NearestCent", "n/a"},
      {{"n/a", "12", "x"}, 2, "", "x"},
      {{"12", "   "}, 2, "", "   "},  // blanks only are not a number
      {{"12", ""}, 2, "", ""},        // an empty slot (a table fills slot 1 only)
      {{"-1,234.5", "0"}, 2, "NearestDollar", "-1,235"},
  };
  for (const auto& c : cases) {
    f.ui.Clear();
    recipe().WriteDataFormat = c.format;
    Slots(c.slots, 1, static_cast<int>(c.slots.size()));
    EXPECT_EQ(c.expected, Field(c.code, 1, 10)) << c.slots[0] << " code " << c.code;
    EXPECT_TRUE(f.ui.messages.empty());
  }
}

TEST_F(LineProcessorTest, AnEmptyRangeSumsToZero) {
  Slots({"5", "6"}, 2, 1);
  recipe().WriteDataFormat = "";
  EXPECT_EQ("0", Field(2, 1, 5));
  recipe().WriteDataFormat = "NearestCent";
  EXPECT_EQ("0.00", Field(2, 1, 5));
  EXPECT_TRUE(f.ui.messages.empty());
}

// A sum beyond the fixed-point range, or a piece too large to read, gives an empty field.
TEST_F(LineProcessorTest, ASumOutOfRangeIsReportedAndGivesAnEmptyField) {
  for (const std::vector<std::string>& slots :
       {std::vector<std::string>{"900000000000000", "900000000000000"},
        std::vector<std::string>{"1", "99999999999999999999"}}) {
    f.ui.Clear();
    Slots(slots, 1, 2);
    EXPECT_EQ("", Field(2, 1, 20)) << slots[1];
    EXPECT_EQ(f.ui.Texts(), std::vector<std::string>{"Overflow: the sum of columns 1 to 20 is out "
                                                     "of range in clsLineProcessor.ProcessField!"});
  }
}

TEST_F(LineProcessorTest, FirstAndLastAreCutUntrimmedUnformattedAndClipped) {
  recipe().WriteDataFormat = "NearestDollar";
  Slots({"  1234.5  x", "  7.25    y"}, 1, 2);
  EXPECT_EQ("  7.25    ", Field(0, 1, 10));
  EXPECT_EQ("  1234.5  ", Field(1, 1, 10));
  EXPECT_EQ("y", Field(0, 11, 40));
  EXPECT_EQ("", Field(0, 12, 40));
  EXPECT_EQ("", Field(0, 5, 4));                         // last column before the first
  EXPECT_EQ("", Field(0, 2147483647, -2147483647 - 1));  // the width does not overflow
  EXPECT_TRUE(f.ui.messages.empty());

  // While a table runs only slot 1 holds text: the last file's field is then empty.
  Slots({"abc", ""}, 1, 2);
  EXPECT_EQ("", Field(0, 1, 3));
  EXPECT_EQ("abc", Field(1, 1, 3));
}

}  // namespace
}  // namespace kroveld::testing
