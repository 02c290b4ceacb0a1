#include <gtest/gtest.h>

#include "engine/column.h"
#include "engine/context.h"
#include "support/extract_support.h"

namespace kroveld::testing {
namespace {

constexpr const char* kEqualSign =
    "Error: Source Data field begin with Equal Sign! This may not be accepted by Excel!";

class ColumnTest : public ::testing::Test {
 protected:
  ExtractFixture f;
  void Line(std::string text) { f.ctx->lineProcessor.SetSlot(1, text); }
};

TEST_F(ColumnTest, OperatorNamesMapToCodesAndAreNormalisedInPlace) {
  struct Case {
    std::string op;
    int code;
    std::string stored;
    bool reported;
  };
  const std::vector<Case> cases = {
      {" sum ", 2, "SUM", false},
      {"First", 1, "FIRST", false},
      {"", 0, "", false},
      {"   ", 0, "", false},
      {"last", 0, "LAST", false},
      {"avg", 0, "AVG", false},  // no name reaches the average
      {" Duplicate", 0, "DUPLICATE", true},
  };
  clsColumn column;
  for (auto c : cases) {
    f.ui.Clear();
    std::string op = c.op;
    EXPECT_EQ(c.code, column.OperatorCode(f.ui, op)) << "[" << c.op << "]";
    EXPECT_EQ(c.stored, op);
    if (c.reported) {
      EXPECT_EQ(std::vector<std::string>{"Unrecognized operator: DUPLICATE in "
                                         "clsColumn.OperatorCode!"},
                f.ui.Texts());
      EXPECT_EQ(Icon::Critical, f.ui.messages[0].icon);
    } else {
      EXPECT_TRUE(f.ui.messages.empty()) << c.op;
    }
  }
}

TEST_F(ColumnTest, AnUnknownOperatorIsReportedForEveryFieldAndReadsTheLastFile) {
  clsColumn column = MakeColumn(1, 3, "A", "duplicate");
  Line("abc");
  column.Process(*f.ctx, 1);
  column.Process(*f.ctx, 2);
  EXPECT_EQ("abc", column.GetCsvValue(*f.ctx));
  EXPECT_EQ(3u, f.ui.messages.size());
  for (const auto& m : f.ui.messages) {
    EXPECT_EQ("Unrecognized operator: DUPLICATE in clsColumn.OperatorCode!", m.text);
  }
  EXPECT_EQ("DUPLICATE", column.PeriodOperator);
  EXPECT_EQ("abc", f.sink.At(2, 1));

  // A changed operator is worked out again.
  f.ui.Clear();
  column.PeriodOperator = " sum";
  f.ctx->recipe.WriteDataFormat = "NearestCent";
  Line("  5");
  EXPECT_EQ("5.00", column.GetCsvValue(*f.ctx));
  EXPECT_TRUE(f.ui.messages.empty());
}

TEST_F(ColumnTest, CsvValuesAreQuotedOnlyForQuotesAndCommas) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"He said \"x\"", "\"He said \"\"x\"\"\""},
      {"1,234.00", "\"1,234.00\""},
      {" 12 ", " 12 "},
      {"", ""},
      {"   ", "   "},
      {"a;b 007", "a;b 007"},
      {"\"", "\"\"\"\""},
      {",", "\",\""},
      {"\x80\xe9", "\x80\xe9"},
  };
  clsColumn column = MakeColumn(1, 20);
  for (const auto& [field, csv] : cases) {
    Line(field);
    EXPECT_EQ(csv, column.GetCsvValue(*f.ctx)) << field;
    std::string appended = "x,";
    column.AppendCsvValue(*f.ctx, appended);
    EXPECT_EQ("x," + csv, appended);
  }
  EXPECT_TRUE(f.ui.messages.empty());
}

TEST_F(ColumnTest, AValueStartingWithEqualSignIsWrittenAfterABeepAndAWarning) {
  clsColumn column = MakeColumn(1, 12, "C");
  Line("  =A1+B1");
  column.Process(*f.ctx, 4);
  EXPECT_EQ("  =A1+B1", f.sink.At(4, 3));  // written as it stands, untrimmed
  EXPECT_EQ(1, f.ui.beeps);
  ASSERT_EQ(1u, f.ui.messages.size());
  EXPECT_EQ(kEqualSign, f.ui.messages[0].text);
  EXPECT_EQ(Icon::Critical, f.ui.messages[0].icon);

  Line("=SUM(A1,B1)");
  EXPECT_EQ("\"=SUM(A1,B1)\"", column.GetCsvValue(*f.ctx));
  EXPECT_EQ(2, f.ui.beeps);
  EXPECT_EQ(2u, f.ui.messages.size());

  Line("a=b");  // only a leading sign counts
  EXPECT_EQ("a=b", column.GetCsvValue(*f.ctx));
  EXPECT_EQ(2, f.ui.beeps);
}

TEST_F(ColumnTest, ProcessWritesToSheetOneAtTheColumnOfTheLetter) {
  const std::vector<std::pair<std::string, int>> cases = {
      {"A", 1}, {"b", 2}, {"Z", 26}, {"AA", 27}};
  Line("value");
  for (const auto& [letter, number] : cases) {
    clsColumn column = MakeColumn(1, 5, letter);
    column.Process(*f.ctx, 7);
    EXPECT_EQ("value", f.sink.GetCell(1, 7, number)) << letter;
  }
  EXPECT_EQ(4, f.sink.cellWrites);
  EXPECT_TRUE(f.ui.messages.empty());

  // A letter the helper refuses (three letters pass the recipe's A-Z test) is reported for every
  // field, and nothing is written.
  clsColumn bad = MakeColumn(1, 5, "A1B");
  bad.Process(*f.ctx, 1);
  bad.Process(*f.ctx, 2);
  EXPECT_EQ(4, f.sink.cellWrites);
  EXPECT_EQ(std::vector<std::string>(2, "unexpected letter code in xl.AlphaToNum2!"), f.ui.Texts());
}

}  // namespace
}  // namespace kroveld::testing
