#include "engine/table_parser.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "engine/context.h"
#include "engine/export_specs.h"
#include "engine/short_format.h"
#include "support/recording_port.h"
#include "support/test_support.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::DataFile;
using testing::ReadFile;
using testing::RecordingPort;
using testing::TempDir;

using Spans = std::vector<ColumnSpan>;
using Lines = std::vector<std::string>;

ColumnSpan S(int start, int end, bool sum = false) {
  return ColumnSpan{start, end, sum};
}

// The pictures of the user page are checked by the UserPage tests below; these are the cases the
// page does not draw.
struct AnalyzeCase {
  const char* what;
  Lines lines;
  const char* tmpl;
  Spans spans;
};
AnalyzeCase A(const char* what, Lines lines, const char* tmpl, Spans spans) {
  return {what, std::move(lines), tmpl, std::move(spans)};
}

TEST(AnalyzeTemplate, CasesThePageDoesNotDraw) {
  const AnalyzeCase cases[] = {
      A("a template wider than every row keeps its marks", {"ab 12"}, "---   ----   ------",
        {S(1, 4), S(5, 11), S(12, 19)}),
      A("codes ignore case and surrounding blanks", {"ab  12 3", "x"}, " =r ",
        {S(1, 3), S(4, 7), S(8, 8)}),
      // "ab cdefgh" is one stretch of text; the second field may grow to 7 only, so the third
      // still starts at 9. The first cannot grow at all (the second starts two places after it).
      A("widening stops one blank before the next field", {"ab cdefgh  12"}, "== ===  --",
        {S(1, 3), S(4, 8), S(9, 13)}),
      A("text starting past the field's edge does not widen it", {"ab   xyz   9", "abc"},
        "===  ---", {S(1, 4), S(5, 12)}),
      // The template parser answers false for a last field on the last position; its lists are
      // complete.
      A("one-character last field", {}, "+999 +99 x", {S(1, 5, true), S(6, 9, true), S(10, 10)}),
  };
  for (const auto& c : cases) {
    clsTableParser parser;
    parser.SetLines(c.lines);
    RecordingPort ui;
    Spans spans;
    EXPECT_TRUE(parser.analyze_template(ui, c.tmpl, spans)) << c.what;
    EXPECT_EQ(c.spans, spans) << c.what;
    EXPECT_TRUE(ui.messages.empty()) << c.what;
  }
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
  parser.ClearLines();  // no rows located at all
  EXPECT_FALSE(parser.analyze_template(ui, "-", spans));
  EXPECT_TRUE(ui.messages.empty());
}

// A report with the table between two key texts.
const std::string kReport = CrLf({
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

struct FoundCase {
  const char* what;
  std::string text;
  const char* top;
  int topOffset;
  const char* bottom;
  int bottomOffset;
  int tabSize;
  std::int64_t firstLine;
  Lines rows;
};
FoundCase F(const char* what, std::string text, const char* top, int topOffset, const char* bottom,
            int bottomOffset, int tabSize, std::int64_t firstLine, Lines rows) {
  return {what,         std::move(text), top,       topOffset,      bottom,
          bottomOffset, tabSize,         firstLine, std::move(rows)};
}

TEST(Locate, Found) {
  // Mixed line ends: the first row is reached from the start key line when it lies at or below
  // it, from line 1 when above; both give the same rows.
  const std::string mixed = "one\r\ntwo\rthree\nTOP\r\nfive\rsix\nEND\n";
  const FoundCase cases[] = {
      F("rows between the keys, tabs expanded", kReport, "ACCOUNT LISTING", 3, "END OF LISTING", -1,
        8, 5,
        {"1001  Cash          100.00", "1002    Bank     20.00", "", "1003  Petty cash      5.00"}),
      F("tab size 0 keeps the rows as they are", kReport, "ACCOUNT LISTING", 4, "END OF LISTING",
        -3, 0, 6, {"1002\tBank\t 20.00"}),
      F("rows past the last line are simply not there", kReport, "END OF LISTING", 0,
        "END OF LISTING", 5, 8, 9, {"END OF LISTING", "ACCOUNT LISTING again"}),
      F("a tab after a full stop is swallowed", CrLf({"TOP", "ABCDEFGH\tX", "AB\tC", "END"}), "TOP",
        1, "END", -1, 8, 2, {"ABCDEFGHX", "AB      C"}),
      F("start above the key line", mixed, "TOP", -1, "END", 0, 8, 3,
        {"three", "TOP", "five", "six", "END"}),
      F("start below the key line", mixed, "TOP", 2, "END", 0, 8, 6, {"six", "END"}),
  };
  TempDir dir;
  for (const auto& c : cases) {
    const std::string path = dir.Write("report.txt", c.text);
    clsTableParser parser;
    RecordingPort ui;
    EXPECT_EQ(clsTableParser::Located::kFound,
              parser.Locate(path, c.top, c.topOffset, c.bottom, c.bottomOffset, c.tabSize))
        << c.what;
    ASSERT_TRUE(
        parser.TestGetTemplate(ui, path, c.top, c.topOffset, c.bottom, c.bottomOffset, c.tabSize))
        << c.what;
    EXPECT_EQ(c.firstLine, parser.FirstLine()) << c.what;
    EXPECT_EQ(c.rows, parser.Lines()) << c.what;
    EXPECT_TRUE(ui.messages.empty()) << c.what;
  }
}

TEST(Locate, NotFound) {
  TempDir dir;
  const std::string path = dir.Write("report.txt", kReport);
  const struct {
    const char* what;
    const char* top;
    int topOffset;
    const char* bottom;
    int bottomOffset;
  } cases[] = {
      {"top key missing", "NO SUCH KEY", 0, "END OF LISTING", 0},
      {"bottom key missing", "ACCOUNT LISTING", 0, "NO SUCH KEY", 0},
      {"keys are case-sensitive", "account listing", 0, "END OF LISTING", 0},
      {"end before start", "END OF LISTING", 0, "ACCOUNT LISTING", 0},
      {"start below 1", "ACME", -1, "END OF LISTING", 0},
      {"block past the end of the file", "ACCOUNT LISTING again", 5, "ACCOUNT LISTING again", 9},
  };
  for (const auto& c : cases) {
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

TEST(Locate, NoMoreThan9999Rows) {
  TempDir dir;
  std::string text = "TOP\r\n";
  for (int i = 0; i < 10000; ++i) text += "  row " + std::to_string(i) + "   12.00\r\n";
  const std::string path = dir.Write("big.txt", text + "BOTTOM\r\n");

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

Lines SplitLines(const std::string& text) {
  Lines lines;
  std::istringstream in(text);
  for (std::string l; std::getline(in, l); lines.push_back(std::move(l))) {
    if (!l.empty() && l.back() == '\r') l.pop_back();
  }
  return lines;
}

Lines RightTrimmed(Lines lines) {
  for (std::string& l : lines) l = TrimRight(l);
  return lines;
}

// A code block of the page together with the HTML comment right above its opening fence, for
// example "<!-- example: auto-card-statement.txt | Tran ID | 2 | END OF STATEMENT | -1 -->".
struct PageBlock {
  std::string tag;
  Lines lines;
  std::size_t pageLine = 0;
};

std::vector<PageBlock> TaggedBlocks() {
  const Lines page =
      SplitLines(ReadFile(std::string(KROVELD_SOURCE_DIR) + "/docs/automatic-mode.md"));
  std::vector<PageBlock> blocks;
  for (std::size_t i = 0; i + 1 < page.size(); ++i) {
    const std::string& l = page[i];
    if (!l.starts_with("<!-- ") || !l.ends_with(" -->") || !page[i + 1].starts_with("```")) {
      continue;
    }
    PageBlock b{l.substr(5, l.size() - 9), {}, i + 1};
    for (i += 2; i < page.size() && !page[i].starts_with("```"); ++i) b.lines.push_back(page[i]);
    blocks.push_back(std::move(b));
  }
  return blocks;
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
    at(s.start) = s.start == s.end ? '|' : '[';
    if (s.start != s.end) at(s.end) = ']';
  }
  return line;
}

// The two ruler lines (tens, units) of a picture `width` positions wide.
Lines Ruler(std::size_t width) {
  std::string tens;
  std::string units;
  for (std::size_t i = 1; i <= width; ++i) {
    tens += i % 10 == 0 ? static_cast<char>('0' + i / 10 % 10) : ' ';
    units += static_cast<char>('0' + i % 10);
  }
  return {std::string(TrimRight(tens)), units};
}

// A picture of the page:
//   two ruler lines (tens, units), the table's rows,
//   for an explicit template the template line followed by "   <- template",
//   the bracket line, and 'template "CODE": LIST' or "template above: LIST".
struct Picture {
  Lines ruler;
  Lines rows;
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
  p.brackets = TrimRight(b.lines[n - 2]);
  std::size_t rowsEnd = n - 2;
  if (which == "above") {
    const std::size_t arrow = b.lines[n - 3].find("<- template");
    if (arrow == std::string::npos) return ::testing::AssertionFailure() << "no template drawn";
    p.tmpl = TrimRight(std::string_view(b.lines[n - 3]).substr(0, arrow));
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

TEST(UserPage, PicturesShowTheColumnsTheAnalyzerFinds) {
  int pictures = 0;
  for (const PageBlock& b : TaggedBlocks()) {
    if (!b.tag.starts_with("example")) continue;
    SCOPED_TRACE("picture at line " + std::to_string(b.pageLine) + " of the page");
    ++pictures;
    Picture p;
    ASSERT_TRUE(ReadPicture(b, p));

    clsTableParser parser;
    if (b.tag == "example") {
      parser.SetLines(p.rows);
    } else {
      // "example: FILE | top key | offset | bottom key | offset": the rows are a table of a
      // report in tests/data, located as a short-format recipe would locate it.
      ASSERT_TRUE(b.tag.starts_with("example: ")) << b.tag;
      Lines source;
      std::istringstream fields(b.tag.substr(9));
      for (std::string f; std::getline(fields, f, '|');) source.emplace_back(Trim(f));
      ASSERT_EQ(5u, source.size()) << b.tag;
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
    EXPECT_EQ(p.brackets, Brackets(spans));
    EXPECT_EQ(Ruler(p.ruler[1].size()), p.ruler);
    EXPECT_GE(p.ruler[1].size(), static_cast<std::size_t>(spans.back().end));
  }
  EXPECT_GE(pictures, 14);
}

TEST(UserPage, MarkingUpExampleGivesTheRecipeShown) {
  const std::vector<PageBlock> blocks = TaggedBlocks();
  const auto block = [&blocks](std::string_view tag) -> const PageBlock* {
    for (const PageBlock& b : blocks) {
      if (b.tag == tag) return &b;
    }
    return nullptr;
  };
  const PageBlock* before = block("report before marking up");
  const PageBlock* after = block("report after marking up");
  const PageBlock* recipe = block("short recipe of the marked-up report");
  ASSERT_TRUE(before && after && recipe);

  const std::string report = DataFile("auto-marked-report.txt");
  EXPECT_EQ(SplitLines(ReadFile(report)), after->lines);
  // Marking up only adds lines: the markers and the template line after each "<<" line.
  Lines unmarked;
  for (std::size_t i = 0; i < after->lines.size(); ++i) {
    const std::string& l = after->lines[i];
    if (l.starts_with("<<")) ++i;
    if (!l.starts_with(">>") && !l.starts_with("<<")) unmarked.push_back(l);
  }
  EXPECT_EQ(before->lines, unmarked);

  RecordingPort ui;
  TempDir dir;
  Context ctx(ui, dir.path());
  FileCreateShort(ctx, report, dir.File("_AutoRecipe.rcp"));
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
    const std::string longPath = dir.File("long.krs");
    FileConvertShortToLong(ctx, dir.Write("own.rcp", text), longPath,
                           DataFile(blocks[i].tag.substr(8)));
    EXPECT_TRUE(ui.messages.empty());

    const auto key = [&longPath](const std::string& section, const char* name) {
      return GetProfileValueFromFile(longPath, section, name, "0");
    };
    Spans spans;
    for (int k = 1; k <= std::stoi(key("Table 1", "TotalColumns")); ++k) {
      const std::string col = "Table 1 Col " + std::to_string(k);
      spans.push_back(S(std::stoi(key(col, "ReadColumnStart")),
                        std::stoi(key(col, "ReadColumnEnd")), key(col, "PeriodOperator") == "SUM"));
    }
    EXPECT_EQ(p.list, ColumnList(spans));
  }
  EXPECT_GE(recipes, 1);
}

}  // namespace
}  // namespace kroveld
