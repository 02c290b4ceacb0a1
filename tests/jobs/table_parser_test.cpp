#include "jobs/table_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::RecordingPort;
using testing::TempDir;

using Spans = std::vector<ColumnSpan>;

ColumnSpan S(int start, int end, bool sum = false) {
  return ColumnSpan{start, end, sum};
}

// Runs the analyzer on lines given in code; no message is expected.
Spans Analyze(const std::vector<std::string>& lines, std::string_view tmpl) {
  clsTableParser parser;
  parser.SetLines(lines);
  RecordingPort ui;
  Spans spans;
  EXPECT_TRUE(parser.analyze_template(ui, tmpl, spans)) << "template [" << tmpl << "]";
  EXPECT_TRUE(ui.messages.empty());
  return spans;
}

// A ledger: negatives in parentheses, one row whose two amounts are one blank apart, a label of
// two words, a blank line and an indented total.
//          1         2         3         4
// 1234567890123456789012345678901234567890123456789
const std::vector<std::string> kLedger = {
    "1001  Cash                  1,250.00    (12.50)",
    "1002  Receivables             980.15 (1,300.00)",
    "1100  Prepaid rent             45.00      75.25",
    "",
    "      Total                 2,275.15 (1,237.25)",
};

// A journal: dates, descriptions of one to three words (all with a blank in position 14),
// right-aligned quantities, amounts of varying width, a short ragged line and a last row whose
// amount sticks out two places to the right.
const std::vector<std::string> kJournal = {
    "03/01/24  Fee paid         12     1,204.50",   "03/02/24  Tax due           3       (88.00)",
    "03/05/24  Pay run March   140    12,000.00",   "  short",
    "03/09/24  Fee paid          7          -5.10",
};

// Right-aligned amounts of growing width, with a year-to-date line wider to the left.
const std::vector<std::string> kAmounts = {
    "Sales           1,200.00      950.00", "Returns           (45.50)      (3.00)",
    "Freight            12.00        7.25", "",
    "Net             1,166.50      954.25", "YTD            21,166.50  100,954.25",
};

struct AnalyzeCase {
  const char* name;
  const std::vector<std::string>* lines;
  std::string tmpl;
  Spans expected;
};

class AnalyzeTemplateTest : public ::testing::TestWithParam<AnalyzeCase> {};

TEST_P(AnalyzeTemplateTest, Spans) {
  const AnalyzeCase& c = GetParam();
  EXPECT_EQ(c.expected, Analyze(*c.lines, c.tmpl));
}

INSTANTIATE_TEST_SUITE_P(
    Reports, AnalyzeTemplateTest,
    ::testing::Values(
        // Boundaries where every line is blank: 5-6, 19-28 and 37. "Prepaid rent" stays whole
        // because "Receivables" covers its blank.
        AnalyzeCase{"LedgerDash", &kLedger, "-", {S(1, 5), S(6, 19), S(20, 37), S(38, 47)}},
        // "=" does not split at a single blank column, so the two amounts one blank apart in row
        // 2 join into one field.
        AnalyzeCase{"LedgerEquals", &kLedger, "=", {S(1, 5), S(6, 19), S(20, 47)}},
        // "-" splits the descriptions at the blank they all share; "=" keeps them together.
        AnalyzeCase{
            "JournalDash", &kJournal, "-", {S(1, 9), S(10, 14), S(15, 24), S(25, 30), S(31, 44)}},
        AnalyzeCase{"JournalEquals", &kJournal, " = ", {S(1, 9), S(10, 24), S(25, 30), S(31, 44)}},
        // Marked templates come from row 3, the one with the most words.
        AnalyzeCase{"JournalLeft",
                    &kJournal,
                    "=L",
                    {S(1, 10), S(11, 14), S(15, 18), S(19, 26), S(27, 33), S(34, 44)}},
        AnalyzeCase{"JournalRight",
                    &kJournal,
                    "=r",
                    {S(1, 9), S(10, 14), S(15, 18), S(19, 24), S(25, 30), S(31, 44)}},
        AnalyzeCase{"AmountsDash", &kAmounts, "-", {S(1, 8), S(9, 26), S(27, 37)}},
        // The ")" of the negatives fills the one blank column left between the amounts.
        AnalyzeCase{"AmountsEquals", &kAmounts, "=", {S(1, 8), S(9, 37)}},
        // Every row has three words; the first row gives the marks. Right marks keep each
        // amount whole, left marks cut the "2" of 21,166.50 into the label column.
        AnalyzeCase{"AmountsRight", &kAmounts, "=R", {S(1, 6), S(7, 25), S(26, 37)}},
        AnalyzeCase{"AmountsLeft", &kAmounts, "=L", {S(1, 16), S(17, 30), S(31, 37)}},
        // Explicit marks: "-" fields stay as marked, "=" fields widen over the text under them
        // (the descriptions to 23, the amounts to 44), "+" makes a summed field.
        AnalyzeCase{"JournalExplicitMixed",
                    &kJournal,
                    "--------  ===             +--      +======",
                    {S(1, 9), S(10, 24), S(25, 30, true), S(31, 44, true)}},
        // A fixed template shorter than the data: the last field reaches the longest row.
        AnalyzeCase{"ShortTemplateLastFieldExtended", &kLedger, "----  -----", {S(1, 5), S(6, 47)}},
        // A template wider than every row keeps its marks.
        AnalyzeCase{"TemplateWiderThanRows",
                    &kAmounts,
                    "-------   -------------------   ------------------------",
                    {S(1, 8), S(9, 30), S(31, 56)}},
        // Leading blanks place the fields; the first field still reads from position 1.
        AnalyzeCase{"IndentedTemplate",
                    &kLedger,
                    "      ----------            -------- ---------",
                    {S(1, 17), S(18, 37), S(38, 47)}}),
    [](const ::testing::TestParamInfo<AnalyzeCase>& info) { return info.param.name; });

TEST(AnalyzeTemplate, WideningStopsOneBlankBeforeTheNextField) {
  // "ab cdefgh" is one stretch of text; the second field may grow to 7 only, so the third still
  // starts at 9. The first field cannot grow at all (the second starts two places after it).
  EXPECT_EQ((Spans{S(1, 3), S(4, 8), S(9, 13)}), Analyze({"ab cdefgh  12"}, "== ===  --"));
  // Text that only starts past the field's edge does not widen it.
  EXPECT_EQ((Spans{S(1, 4), S(5, 12)}), Analyze({"ab   xyz   9", "abc"}, "===  ---"));
}

TEST(AnalyzeTemplate, OneCharacterLastFieldIsAccepted) {
  // The parser answers false for a last field on the last position; its lists are complete.
  EXPECT_EQ((Spans{S(1, 5, true), S(6, 9, true), S(10, 10)}), Analyze({}, "+999 +99 x"));
}

TEST(AnalyzeTemplate, NothingToAnalyzeFails) {
  RecordingPort ui;
  Spans spans{S(1, 2)};
  clsTableParser parser;
  parser.SetLines({"", "    ", ""});
  for (std::string_view tmpl : {"-", "=", "=L", "=R", "", "     "}) {
    EXPECT_FALSE(parser.analyze_template(ui, tmpl, spans)) << "template [" << tmpl << "]";
    EXPECT_TRUE(spans.empty());
  }
  // No rows located at all.
  parser.ClearLines();
  EXPECT_FALSE(parser.analyze_template(ui, "-", spans));
  EXPECT_TRUE(ui.messages.empty());
}

TEST(WorkingTemplates, ShowTheMarks) {
  clsTableParser parser;
  parser.SetLines(kJournal);
  EXPECT_EQ("--------  --- ---------   ---    -----------", parser.InferredTemplate(false));
  EXPECT_EQ("--------  -------------   ---    -----------", parser.InferredTemplate(true));
  EXPECT_EQ("LLLLLLLLL LLL LLL LLLLLLL LLLLLL LLLLLLLLL", parser.MarkedTemplate('L'));
  EXPECT_EQ("RRRRRRRR RRRR RRR RRRRR RRRRR RRRRRRRRRRRR", parser.MarkedTemplate('R'));
  EXPECT_EQ("--------  =============   +--      +========",
            parser.VariableToFixedTemplate("--------  ===             +--      +======"));
}

// A report with the table between two key texts.
std::string Report() {
  return CrLf({
      "ACME LTD                     PAGE 1",  // 1
      "ACCOUNT LISTING",                      // 2
      "Code  Name          Amount",           // 3
      "----  ----------  --------",           // 4
      "1001  Cash          100.00",           // 5
      "1002\tBank\t 20.00",                   // 6
      "",                                     // 7
      "1003  Petty cash      5.00",           // 8
      "END OF LISTING",                       // 9
      "ACCOUNT LISTING again",                // 10
  });
}

TEST(Locate, FindsRowsBetweenKeysWithOffsetsAndExpandsTabs) {
  TempDir dir;
  const std::string path = dir.Write("report.txt", Report());
  clsTableParser parser;
  RecordingPort ui;
  ASSERT_TRUE(parser.TestGetTemplate(ui, path, "ACCOUNT LISTING", 3, "END OF LISTING", -1, 8));
  EXPECT_EQ(5, parser.FirstLine());
  EXPECT_EQ((std::vector<std::string>{"1001  Cash          100.00", "1002    Bank     20.00", "",
                                      "1003  Petty cash      5.00"}),
            parser.Lines());
  // Tab size 0: the rows stay as they are.
  ASSERT_TRUE(parser.TestGetTemplate(ui, path, "ACCOUNT LISTING", 4, "END OF LISTING", -3, 0));
  EXPECT_EQ((std::vector<std::string>{"1002\tBank\t 20.00"}), parser.Lines());
  EXPECT_TRUE(ui.messages.empty());
}

TEST(Locate, TabAfterAFullStopIsSwallowed) {
  TempDir dir;
  const std::string path = dir.Write("tabs.txt", CrLf({"TOP", "ABCDEFGH\tX", "AB\tC", "END"}));
  clsTableParser parser;
  ASSERT_EQ(clsTableParser::Located::kFound, parser.Locate(path, "TOP", 1, "END", -1, 8));
  EXPECT_EQ((std::vector<std::string>{"ABCDEFGHX", "AB      C"}), parser.Lines());
}

TEST(Locate, NotFound) {
  TempDir dir;
  const std::string path = dir.Write("report.txt", Report());
  struct Case {
    const char* what;
    const char* top;
    int topOffset;
    const char* bottom;
    int bottomOffset;
  };
  const Case cases[] = {
      {"top key missing", "NO SUCH KEY", 0, "END OF LISTING", 0},
      {"bottom key missing", "ACCOUNT LISTING", 0, "NO SUCH KEY", 0},
      {"keys are case-sensitive", "account listing", 0, "END OF LISTING", 0},
      {"end before start", "END OF LISTING", 0, "ACCOUNT LISTING", 0},
      {"start below 1", "ACME", -1, "END OF LISTING", 0},
      {"end below 1 too", "ACME", -3, "ACME", -1},
      {"block past the end of the file", "ACCOUNT LISTING again", 5, "ACCOUNT LISTING again", 9},
  };
  for (const Case& c : cases) {
    clsTableParser parser;
    RecordingPort ui;
    EXPECT_FALSE(parser.TestGetTemplate(ui, path, c.top, c.topOffset, c.bottom, c.bottomOffset, 8))
        << c.what;
    EXPECT_TRUE(parser.Lines().empty()) << c.what;
    EXPECT_TRUE(ui.messages.empty()) << c.what;
  }
  clsTableParser parser;
  EXPECT_EQ(clsTableParser::Located::kNotFound,
            parser.Locate(dir.File("missing.txt"), "A", 0, "B", 0, 8));
}

TEST(Locate, OneRowTableAndBlockRunningPastTheEnd) {
  TempDir dir;
  const std::string path = dir.Write("report.txt", Report());
  clsTableParser parser;
  ASSERT_EQ(clsTableParser::Located::kFound,
            parser.Locate(path, "END OF LISTING", 0, "END OF LISTING", 0, 8));
  EXPECT_EQ((std::vector<std::string>{"END OF LISTING"}), parser.Lines());
  // Rows past the last line are simply not there.
  ASSERT_EQ(clsTableParser::Located::kFound,
            parser.Locate(path, "END OF LISTING", 0, "END OF LISTING", 5, 8));
  EXPECT_EQ(2u, parser.Lines().size());
}

TEST(Locate, NoMoreThan9999Rows) {
  TempDir dir;
  std::string text = "TOP\r\n";
  for (int i = 0; i < 10000; ++i) text += "  row " + std::to_string(i) + "   12.00\r\n";
  text += "BOTTOM\r\n";
  const std::string path = dir.Write("big.txt", text);

  clsTableParser parser;
  RecordingPort ui;
  EXPECT_FALSE(parser.TestGetTemplate(ui, path, "TOP", 1, "BOTTOM", -1, 8));  // 10,000 rows
  ASSERT_EQ(1u, ui.messages.size());
  EXPECT_EQ("Error: A table must have no more than 9999 rows!", ui.messages[0].text);
  EXPECT_EQ(Icon::Critical, ui.messages[0].icon);
  EXPECT_TRUE(parser.Lines().empty());

  ui.Clear();
  EXPECT_TRUE(parser.TestGetTemplate(ui, path, "TOP", 2, "BOTTOM", -1, 8));  // 9,999 rows
  EXPECT_EQ(9999u, parser.Lines().size());
  EXPECT_EQ("  row 1   12.00", parser.Lines().front());
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_EQ(clsTableParser::Located::kTooManyRows, parser.Locate(path, "TOP", 0, "BOTTOM", 0, 8));
}

}  // namespace
}  // namespace kroveld
