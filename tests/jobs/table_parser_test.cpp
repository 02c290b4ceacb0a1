#include "jobs/table_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/context.h"
#include "engine/export_specs.h"
#include "support/recording_port.h"
#include "support/test_support.h"
#include "util/profile.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::DataFile;
using testing::ReadFile;
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

// The pictures of the user page are checked by the UserPage tests below; these are the cases the
// page does not draw.
TEST(AnalyzeTemplate, ExplicitTemplatesThePageDoesNotDraw) {
  // A template wider than every row keeps its marks.
  EXPECT_EQ((Spans{S(1, 8), S(9, 30), S(31, 56)}),
            Analyze(kAmounts, "-------   -------------------   ------------------------"));
  // Leading blanks place the fields; the first field still reads from position 1.
  EXPECT_EQ((Spans{S(1, 17), S(18, 37), S(38, 47)}),
            Analyze(kLedger, "      ----------            -------- ---------"));
}

TEST(AnalyzeTemplate, CodesIgnoreCaseAndSurroundingBlanks) {
  EXPECT_EQ((Spans{S(1, 6), S(7, 25), S(26, 37)}), Analyze(kAmounts, " =r "));
  EXPECT_EQ((Spans{S(1, 9), S(10, 24), S(25, 30), S(31, 44)}), Analyze(kJournal, " = "));
  EXPECT_EQ((Spans{S(1, 16), S(17, 30), S(31, 37)}), Analyze(kAmounts, "=l"));
}

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

// The first row is reached from the start key line when it lies at or below it, from line 1
// when above: both give the same rows, under mixed line ends.
TEST(Locate, StartOffsetsAroundTheKeyLine) {
  TempDir dir;
  const std::string path = dir.Write("mixed.txt", "one\r\ntwo\rthree\nTOP\r\nfive\rsix\nEND\n");
  const struct {
    int offset;
    std::int64_t firstLine;
    const char* firstRow;
  } cases[] = {{-3, 1, "one"}, {-1, 3, "three"}, {0, 4, "TOP"}, {2, 6, "six"}};
  for (const auto& c : cases) {
    clsTableParser parser;
    ASSERT_EQ(clsTableParser::Located::kFound, parser.Locate(path, "TOP", c.offset, "END", 0, 8))
        << c.offset;
    EXPECT_EQ(parser.FirstLine(), c.firstLine) << c.offset;
    EXPECT_EQ(parser.Lines().front(), c.firstRow) << c.offset;
    EXPECT_EQ(parser.Lines().back(), "END") << c.offset;
  }
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

// ---- the user page: its examples are what the analyzer and the short format produce ----

std::vector<std::string> SplitLines(std::string_view text) {
  std::vector<std::string> lines;
  std::size_t from = 0;
  while (from < text.size()) {
    std::size_t to = text.find('\n', from);
    if (to == std::string_view::npos) to = text.size();
    std::string line(text.substr(from, to - from));
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
    from = to + 1;
  }
  return lines;
}

std::string RightTrim(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return std::string(s);
}

std::vector<std::string> RightTrimmed(std::vector<std::string> lines) {
  for (std::string& l : lines) l = RightTrim(l);
  return lines;
}

// A code block of the page together with the HTML comment right above its opening fence, for
// example "<!-- example: auto-card-statement.txt | Tran ID | 2 | END OF STATEMENT | -1 -->".
struct PageBlock {
  std::string tag;
  std::vector<std::string> lines;
  std::size_t pageLine = 0;
};

std::vector<PageBlock> TaggedBlocks() {
  const std::vector<std::string> page =
      SplitLines(ReadFile(std::string(KROVELD_SOURCE_DIR) + "/docs/automatic-mode.md"));
  std::vector<PageBlock> blocks;
  for (std::size_t i = 0; i + 1 < page.size(); ++i) {
    const std::string& l = page[i];
    if (!l.starts_with("<!-- ") || !l.ends_with(" -->") || !page[i + 1].starts_with("```")) {
      continue;
    }
    PageBlock b;
    b.tag = l.substr(5, l.size() - 9);
    b.pageLine = i + 1;
    for (i += 2; i < page.size() && !page[i].starts_with("```"); ++i) b.lines.push_back(page[i]);
    blocks.push_back(std::move(b));
  }
  return blocks;
}

const PageBlock* FindBlock(const std::vector<PageBlock>& blocks, std::string_view tag) {
  for (const PageBlock& b : blocks) {
    if (b.tag == tag) return &b;
  }
  return nullptr;
}

std::vector<std::string> SplitTrimmed(std::string_view s, char sep) {
  std::vector<std::string> parts;
  for (std::size_t from = 0;;) {
    const std::size_t to = s.find(sep, from);
    std::string_view part = s.substr(from, to == std::string_view::npos ? s.npos : to - from);
    while (!part.empty() && part.front() == ' ') part.remove_prefix(1);
    parts.push_back(RightTrim(part));
    if (to == std::string_view::npos) return parts;
    from = to + 1;
  }
}

// "1-5, 6-19, 20-30 sum": the column list printed under every picture.
std::string ColumnList(const Spans& spans) {
  std::string list;
  for (const ColumnSpan& s : spans) {
    if (!list.empty()) list += ", ";
    list += std::to_string(s.start) + "-" + std::to_string(s.end) + (s.sum ? " sum" : "");
  }
  return list;
}

// The bracket line: "[---]" over each column's positions, "|" for a column one position wide.
std::string Brackets(const Spans& spans) {
  std::string line(static_cast<std::size_t>(spans.back().end), ' ');
  for (const ColumnSpan& s : spans) {
    const auto at = [&line](int p) -> char& { return line[static_cast<std::size_t>(p - 1)]; };
    for (int p = s.start; p <= s.end; ++p) at(p) = '-';
    at(s.start) = '[';
    at(s.end) = ']';
    if (s.start == s.end) at(s.start) = '|';
  }
  return line;
}

// A picture of the page:
//   two ruler lines (tens, units), the table's rows,
//   for an explicit template the template line followed by "   <- template",
//   the bracket line, and 'template "CODE": LIST' or "template above: LIST".
struct Picture {
  std::vector<std::string> ruler;
  std::vector<std::string> rows;
  std::string tmpl;
  std::string brackets;
  std::string list;
};

::testing::AssertionResult ReadPicture(const PageBlock& b, Picture& p) {
  const std::size_t n = b.lines.size();
  if (n < 5) return ::testing::AssertionFailure() << "too short";
  const std::string& last = b.lines[n - 1];
  const std::size_t colon = last.find(": ");
  if (!last.starts_with("template ") || colon == std::string::npos) {
    return ::testing::AssertionFailure() << "no template line at the end: " << last;
  }
  const std::string which = last.substr(9, colon - 9);
  p.list = last.substr(colon + 2);
  p.brackets = b.lines[n - 2];
  std::size_t rowsEnd = n - 2;
  if (which == "above") {
    const std::size_t arrow = b.lines[n - 3].find("<- template");
    if (arrow == std::string::npos) return ::testing::AssertionFailure() << "no template drawn";
    p.tmpl = RightTrim(std::string_view(b.lines[n - 3]).substr(0, arrow));
    rowsEnd = n - 3;
  } else if (which.size() >= 3 && which.front() == '"' && which.back() == '"') {
    p.tmpl = which.substr(1, which.size() - 2);
  } else {
    return ::testing::AssertionFailure() << "bad template name: " << which;
  }
  p.ruler.assign(b.lines.begin(), b.lines.begin() + 2);
  p.rows.assign(b.lines.begin() + 2, b.lines.begin() + static_cast<std::ptrdiff_t>(rowsEnd));
  return ::testing::AssertionSuccess();
}

std::vector<std::string> Ruler(std::size_t width) {
  std::string tens;
  std::string units;
  for (std::size_t i = 1; i <= width; ++i) {
    tens += i % 10 == 0 ? static_cast<char>('0' + i / 10 % 10) : ' ';
    units += static_cast<char>('0' + i % 10);
  }
  return {RightTrim(tens), units};
}

TEST(UserPage, PicturesShowTheColumnsTheAnalyzerFinds) {
  int pictures = 0;
  for (const PageBlock& b : TaggedBlocks()) {
    if (!b.tag.starts_with("example")) continue;
    SCOPED_TRACE("picture at line " + std::to_string(b.pageLine) + " of the page");
    ++pictures;
    Picture p;
    ASSERT_TRUE(ReadPicture(b, p));

    clsTableParser parser;
    // "example: FILE | top key | offset | bottom key | offset": the rows are a table of a
    // report in tests/data, located as a short-format recipe would locate it.
    const std::vector<std::string> source =
        b.tag == "example" ? std::vector<std::string>{} : SplitTrimmed(b.tag.substr(9), '|');
    if (source.empty()) {
      parser.SetLines(p.rows);
    } else {
      ASSERT_EQ(5u, source.size()) << b.tag;
      ASSERT_TRUE(b.tag.starts_with("example: ")) << b.tag;
      ASSERT_EQ(clsTableParser::Located::kFound,
                parser.Locate(DataFile(source[0]), source[1], std::stoi(source[2]), source[3],
                              std::stoi(source[4]), 8));
      EXPECT_EQ(RightTrimmed(parser.Lines()), RightTrimmed(p.rows));
    }
    RecordingPort ui;
    Spans spans;
    ASSERT_TRUE(parser.analyze_template(ui, p.tmpl, spans)) << p.tmpl;
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(p.list, ColumnList(spans));
    EXPECT_EQ(RightTrim(p.brackets), Brackets(spans));
    EXPECT_EQ(Ruler(p.ruler[1].size()), p.ruler);
    EXPECT_GE(p.ruler[1].size(), static_cast<std::size_t>(spans.back().end));
  }
  EXPECT_GE(pictures, 14);
}

TEST(UserPage, MarkingUpExampleGivesTheRecipeShown) {
  const std::vector<PageBlock> blocks = TaggedBlocks();
  const PageBlock* before = FindBlock(blocks, "report before marking up");
  const PageBlock* after = FindBlock(blocks, "report after marking up");
  const PageBlock* recipe = FindBlock(blocks, "short recipe of the marked-up report");
  ASSERT_TRUE(before && after && recipe);

  const std::string report = DataFile("auto-marked-report.txt");
  EXPECT_EQ(SplitLines(ReadFile(report)), after->lines);
  // Marking up only adds lines: the markers and the template line after each "<<" line.
  std::vector<std::string> unmarked;
  for (std::size_t i = 0; i < after->lines.size(); ++i) {
    const std::string& l = after->lines[i];
    if (l.starts_with("<<")) ++i;
    if (!l.starts_with(">>") && !l.starts_with("<<")) unmarked.push_back(l);
  }
  EXPECT_EQ(before->lines, unmarked);

  RecordingPort ui;
  TempDir dir;
  Context ctx(ui, dir.path());
  clsExportSpecs specs;
  specs.FileCreateShort(ctx, report, dir.File("_AutoRecipe.rcp"));
  EXPECT_EQ(SplitLines(ReadFile(dir.File("_AutoRecipe.rcp"))), recipe->lines);
  EXPECT_TRUE(ui.messages.empty());
}

TEST(UserPage, OwnShortRecipeGivesTheColumnsShown) {
  const std::vector<PageBlock> blocks = TaggedBlocks();
  int recipes = 0;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (!blocks[i].tag.starts_with("recipe: ")) continue;
    SCOPED_TRACE("recipe at line " + std::to_string(blocks[i].pageLine) + " of the page");
    ++recipes;
    // The picture right after the recipe shows its columns.
    ASSERT_LT(i + 1, blocks.size());
    Picture p;
    ASSERT_TRUE(ReadPicture(blocks[i + 1], p));

    RecordingPort ui;
    TempDir dir;
    Context ctx(ui, dir.path());
    std::string text;
    for (const std::string& l : blocks[i].lines) text += l + "\r\n";
    const std::string shortPath = dir.Write("own.rcp", text);
    const std::string longPath = dir.File("long.krs");
    clsExportSpecs specs;
    specs.FileConvertShortToLong(ctx, shortPath, longPath, DataFile(blocks[i].tag.substr(8)));
    EXPECT_TRUE(ui.messages.empty());

    Spans spans;
    const int columns =
        std::stoi(GetProfileValueFromFile(longPath, "Table 1", "TotalColumns", "0"));
    for (int k = 1; k <= columns; ++k) {
      const std::string col = "Table 1 Col " + std::to_string(k);
      spans.push_back(S(std::stoi(GetProfileValueFromFile(longPath, col, "ReadColumnStart", "0")),
                        std::stoi(GetProfileValueFromFile(longPath, col, "ReadColumnEnd", "0")),
                        GetProfileValueFromFile(longPath, col, "PeriodOperator", "") == "SUM"));
    }
    EXPECT_EQ(p.list, ColumnList(spans));
  }
  EXPECT_GE(recipes, 1);
}

}  // namespace
}  // namespace kroveld
