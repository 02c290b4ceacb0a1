#include <gtest/gtest.h>
#include <unistd.h>

#include "engine/context.h"
#include "engine/table.h"
#include "support/extract_support.h"

namespace kroveld::testing {
namespace {

constexpr const char* kTerminate = "Do you want to terminate the process?";

class TableTest : public ::testing::Test {
 protected:
  ExtractFixture f;
};

TEST_F(TableTest, AFullOutputStopsTheTableAtOnce) {
  f.UseReport(NumberedLines(25, {{10, "== TOP =="}, {20, "== BOTTOM =="}}));
  f.sink.fullFrom = 3;  // the third row is the first the output cannot take
  clsTable table = MakeTable("TOP", 1, "BOTTOM", -1, {MakeColumn(1, 8, "A")});
  f.Run(table);
  EXPECT_TRUE(f.sink.RowWritten(3));
  EXPECT_FALSE(f.sink.RowWritten(4));
  EXPECT_EQ(3, table.LastRowWritten);
}

TEST_F(TableTest, ARunawayEndOffsetStopsAfterItsEmptyRowsWithOneWarning) {
  f.UseReport(NumberedLines(25, {{10, "TOP HERE"}, {20, "BOTTOM HERE"}}));
  clsTable table = MakeTable("TOP", 1, "BOTTOM", 2147483600, {MakeColumn(1, 8, "A")});
  table.Number = 3;
  f.Run(table);
  // Lines 11..25 of the report, then the empty rows past its end up to the limit.
  EXPECT_EQ(table.LastRowWritten, 15 + static_cast<int>(kMaxRowsPastEnd));
  ASSERT_EQ(f.ui.messages.size(), 1u);
  EXPECT_EQ(f.ui.messages[0].text,
            "Table 3 reads past the end of the report, whose last line is 25: stopped after 65536 "
            "empty rows (check the table's line offsets)");
  EXPECT_FALSE(f.Failed());
}

TEST_F(TableTest, KeySearchProblemsAreReportedAndMarkTheExportFailed) {
  struct Case {
    std::string top;
    std::string bottom;
    std::string message;
    std::string note = {};
  };
  // The bottom key occurs on lines 3 and 30, the top key on line 10: both searches start at line 1.
  const std::string report = NumberedLines(
      40, {{3, "Total"}, {10, "Accounts Payable"}, {30, "Total"}, {35, "Inside Total row"}});
  const std::vector<Case> cases = {
      {"Accounts Payable", "Total",
       "Error in Table specs: ReadEndLine key text [Total] was found before ReadStartLine key "
       "text [Accounts Payable]"},
      {"Accounts Receivable", "Total",
       "Error in Table specs: Can not find ReadStartLine: Accounts Receivable"},
      {"Accounts Payable", "Grand", "Error in Table specs: Can not find ReadEndLine: Grand"},
      {"accounts payable", "Total",  // case counts
       "Error in Table specs: Can not find ReadStartLine: accounts payable"},
      // A key missing from its section is searched as its stand-in; a note says so.
      {"Accounts Payable", "-999999", "Error in Table specs: Can not find ReadEndLine: -999999",
       "Table 0 has no ReadEndLine key (or it stands after a key that is read later): -999999 "
       "is the stand-in for a missing key"},
  };
  for (const auto& c : cases) {
    ExtractFixture g;
    g.UseReport(report);
    clsTable table = MakeTable(c.top, 0, c.bottom, 0, {MakeColumn(1, 5)});
    g.Run(table, true);
    std::vector<std::string> expected{c.message};
    if (!c.note.empty()) expected.push_back(c.note);
    EXPECT_EQ(expected, g.ui.Texts());
    EXPECT_EQ(Icon::Critical, g.ui.messages.at(0).icon);
    EXPECT_TRUE(g.Failed());
    EXPECT_TRUE(g.sink.rows.empty());
    EXPECT_EQ(1, g.Pointer());
  }
}

// Blank lines, trailing blanks, tabs and leading empty fields are spelled out by the comparison
// of the two CSV paths below; an empty field between others keeps its comma.
TEST_F(TableTest, AnEmptyFieldBetweenOthersKeepsItsComma) {
  f.UseReport("START\r\nab\r\nEND\r\n");
  clsTable table =
      MakeTable("START", 1, "END", -1, {MakeColumn(1, 1), MakeColumn(10, 12), MakeColumn(2, 2)});
  f.Run(table, true);
  EXPECT_EQ(std::vector<std::string>{"a,,b"}, f.sink.rows);
}

TEST_F(TableTest, AnInvalidColumnIsReportedOnTheFirstRowNamingIt) {
  for (auto bad : {MakeColumn(0, 3, "B"), MakeColumn(5, 4, "B")}) {
    for (bool csv : {false, true}) {
      ExtractFixture g;
      g.UseReport(NumberedLines(6, {{1, "TOP"}, {6, "END"}}));
      g.ctx->recipe.ExportSpecs.WritePointer1 = 3;
      clsTable table = MakeTable("TOP", 1, "END", -1, {MakeColumn(1, 4, "A"), bad});
      g.Run(table, csv);
      EXPECT_EQ(std::vector<std::string>{"Invalid table specs (column 2): ReadColumnStart is "
                                         "smaller than 1 or larger than ReadColumnEnd!"},
                g.ui.Texts());
      EXPECT_EQ(Icon::Critical, g.ui.messages[0].icon);
      EXPECT_TRUE(g.Failed());
      EXPECT_EQ(3, g.Pointer());
      EXPECT_TRUE(g.sink.rows.empty());
      EXPECT_EQ(csv ? 0 : 1, g.sink.cellWrites);  // column 1 of the first row went out first
      EXPECT_FALSE(g.sink.RowWritten(4));
    }
  }
}

TEST_F(TableTest, KeysAreSearchedInTheFirstFileTakingPartButRowsComeFromFileOne) {
  f.UseReport("period one a\r\nperiod one b\r\nperiod one c\r\n");
  f.ctx->recipe.InputFileNames[1] = f.dir.Write("p2.txt", "x\r\nKEY\r\n");
  f.ctx->recipe.InputFileFirst = 2;
  f.ctx->recipe.InputFileLast = 2;
  clsTable table = MakeTable("KEY", 0, "KEY", 1, {MakeColumn(1, 12, "A", "first")});
  f.Run(table);
  // Lines 2-3 of file 1 land in slot 1; FIRST reads slot 2, which a table never fills.
  EXPECT_EQ("", f.sink.At(1, 1));
  EXPECT_EQ(2, f.sink.cellWrites);
  EXPECT_EQ(3, f.Pointer());
  EXPECT_EQ("period one c ", f.ctx->lineProcessor.Slot(1));
}

// Yes ends the table keeping its rows and leaves the request for the batch loop, which stops
// between files; No goes on and clears it.
TEST_F(TableTest, AStopRequestIsAskedAboutOnceAndAnsweredEitherWay) {
  for (bool yes : {true, false}) {
    ExtractFixture g;
    g.UseReport(NumberedLines(10, {{1, "TOP"}, {10, "END"}}));
    g.ui.onProcessEvents = [&g] {
      if (g.ui.events == 3) g.ctx->run.stopRequested = true;
    };
    g.ui.ExpectQuestion(kTerminate, yes);
    clsTable table = MakeTable("TOP", 1, "END", -1, {MakeColumn(1, 6)});
    g.Run(table, true);
    EXPECT_EQ(yes ? 2u : 8u, g.sink.rows.size());
    EXPECT_EQ(yes ? 3 : 9, g.Pointer());
    EXPECT_EQ(yes, g.ctx->run.stopRequested);
    EXPECT_EQ(1u, g.ui.questions.size());
    EXPECT_FALSE(g.Failed());
    EXPECT_TRUE(g.ui.messages.empty());
  }
}

// Another program cuts the report short while its rows are read (the mapped pages beyond its new
// end are gone): the table fails saying so, and the process goes on.
TEST_F(TableTest, AReportCutShortWhileReadFailsTheTable) {
  const std::string path = f.UseReport(NumberedLines(20000, {{1, "TOP"}, {20000, "END"}}));
  f.ui.onProcessEvents = [&] {
    if (f.ui.events == 5) {
      ASSERT_EQ(::truncate(path.c_str(), 0), 0);
    }
  };
  clsTable table = MakeTable("TOP", 1, "END", -1, {MakeColumn(1, 10)});
  f.Run(table, true);
  EXPECT_EQ(f.ui.Texts(),
            std::vector<std::string>{"Error in Table specs: Can not read input file: " + path +
                                     ": the file was cut short while it was read"});
  EXPECT_TRUE(f.Failed());
  EXPECT_LT(f.sink.rows.size(), 10u);
}

TEST_F(TableTest, TheStatusPanelShowsTheRowAndThenEachColumn) {
  f.UseReport(NumberedLines(4, {{1, "TOP"}, {4, "END"}}));
  f.ctx->statusPrefix = "Converting r.txt";
  clsTable table = MakeTable("TOP", 1, "END", -1, {MakeColumn(1, 2), MakeColumn(3, 4)});
  f.Run(table, true);
  const std::vector<std::pair<int, std::string>> expected = {
      {3, "Converting r.txt row 1 of 2"},   {3, "Converting r.txt (col 1 of 2)"},
      {3, "Converting r.txt (col 2 of 2)"}, {3, "Converting r.txt row 2 of 2"},
      {3, "Converting r.txt (col 1 of 2)"}, {3, "Converting r.txt (col 2 of 2)"}};
  EXPECT_EQ(expected, f.ui.statuses);
  EXPECT_EQ(2, f.ui.events);  // one yield per row
}

// Lone CRs, bytes above 127, tabs and a last line without a line end are among the cases below;
// here a form feed and a NUL byte inside a line and a line of a megabyte.
TEST_F(TableTest, AwkwardBytesPassThrough) {
  const std::string longField(1 << 20, 'w');
  f.UseReport("TOP\r\nform\ffeed\r\n" + std::string("nul\0byte", 8) + "\n" + longField + "\nEND");
  clsTable table = MakeTable("TOP", 1, "END", -1, {MakeColumn(1, 1 << 21)});
  f.Run(table, true);
  EXPECT_EQ(
      (std::vector<std::string>{"form\ffeed ", std::string("nul\0byte ", 9), longField + " "}),
      f.sink.rows);
  EXPECT_TRUE(f.ui.messages.empty());
}

// Reading starts at a key line's byte offset when it can; the rows must be those that reading
// from line 1 gives, whatever the line ends and offsets.
TEST_F(TableTest, RowsAreTheLinesCountedFromLineOneWhateverTheLineEnds) {
  const std::string report = "title\r\n\rBOTTOM early?\nno\r\r\nTOP\ra\nb\r\nc\r\rBOTTOM\r\nd\nzed";
  std::vector<std::string> lines;  // the report's lines as the reader counts them from line 1
  {
    ExtractFixture g;
    TextFile file(g.UseReport(report));
    for (std::string line; file.ReadLine(line);) lines.push_back(line);
    ASSERT_EQ(13u, lines.size());
  }
  struct Case {
    std::string top;
    int topOffset;
    std::string bottom;
    int bottomOffset;
  };
  const std::vector<Case> cases = {
      {"TOP", 1, "BOTTOM\r", 0},  // a key with a line end is never found: reported below
      {"TOP", 1, "c", 1},         // start after the top key line
      {"TOP", 0, "d", 0},         // start at the top key line
      {"TOP", -3, "e", 0},        // start before the top key line
      {"BOTTOM", 5, "no", 8},     // start after the bottom key line (found first)
      {"zed", 0, "zed", 2},       // the last line, then lines past the end: empty rows
      // Starts before the top key line: stepped back from it when that is nearer than line 1
      // or the bottom key line, otherwise read forward from there.
      {"c", -1, "zed", 0},    // one line back
      {"c", -3, "zed", 0},    // three back, four forward: back
      {"c", -4, "zed", 0},    // as far back as forward from line 1: forward
      {"c", -8, "zed", 0},    // line 1 itself
      {"zed", -2, "no", 9},   // back from the top key rather than on from the bottom key
      {"zed", -10, "b", 10},  // on from line 1 rather than back from the top key
      {"d", -3, "zed", 0},    // back over CR LF, a lone CR and an empty line
      {"c", -9, "zed", 0},    // line 0: nothing, silently
  };
  for (const auto& c : cases) {
    ExtractFixture g;
    g.UseReport(report);
    clsTable table = MakeTable(c.top, c.topOffset, c.bottom, c.bottomOffset, {MakeColumn(1, 40)});
    g.Run(table, true);
    std::int64_t top = 0, bottom = 0;
    for (std::size_t i = lines.size(); i-- > 0;) {
      if (lines[i].find(c.top) != std::string::npos) top = static_cast<std::int64_t>(i) + 1;
      if (lines[i].find(c.bottom) != std::string::npos) bottom = static_cast<std::int64_t>(i) + 1;
    }
    if (bottom == 0) {
      EXPECT_EQ(
          std::vector<std::string>{"Error in Table specs: Can not find ReadEndLine: " + c.bottom},
          g.ui.Texts());
      continue;
    }
    if (top + c.topOffset < 1) {
      EXPECT_TRUE(g.sink.rows.empty()) << c.top << c.topOffset;
      EXPECT_TRUE(g.ui.messages.empty()) << c.top << c.topOffset;
      EXPECT_FALSE(g.Failed()) << c.top << c.topOffset;
      continue;
    }
    if (bottom + c.bottomOffset < top + c.topOffset) {
      EXPECT_EQ(
          std::vector<std::string>{"Error in Table specs: ReadEndLine key text [" + c.bottom +
                                   "] was found before ReadStartLine key text [" + c.top + "]"},
          g.ui.Texts());
      continue;
    }
    std::vector<std::string> expected;
    for (std::int64_t n = top + c.topOffset; n <= bottom + c.bottomOffset; ++n) {
      const std::string line = n <= static_cast<std::int64_t>(lines.size())
                                   ? lines[static_cast<std::size_t>(n - 1)]
                                   : "";
      expected.push_back(line.empty() || line.back() == ' ' ? line : line + " ");
    }
    EXPECT_EQ(expected, g.sink.rows) << c.top << c.topOffset << " " << c.bottom << c.bottomOffset;
    EXPECT_TRUE(g.ui.messages.empty());
  }
}

// Between the rows that show a status text, CSV rows are cut straight from the read buffer. Every
// kind of line and column must give what the row-by-row path (a port that is always due) gives:
// the same rows, messages, beeps, and the same line left in slot 1.
TEST_F(TableTest, CsvRowsBetweenStatusUpdatesMatchTheRowByRowPath) {
  std::string body;
  const std::vector<std::string> kinds = {
      "abcdefghij",    // no trailing blank: columns 11 and 10-11 see the added blank
      "abcdefghi ",    // ends in a blank: nothing added
      "",              // empty line: every field empty, leading empties shift
      "abc",           // short: fields past the end are empty
      "  \"q\",d  ",   // quotes doubled and enclosed
      "ab,cd,efgh",    // commas enclosed
      "x,y\"",         // a quote that ends the line, the blank after it inside the quotes
      "   =A1+B2",     // equal-sign warning for the fields starting with it
      "ta\tb\tcdefg",  // tabs: expanded at tab size 8, kept at 0
      "          ",    // blanks only
      "\xe9\x80\xff\x01"
      "bytes!",  // bytes above 127 and control bytes pass through
  };
  for (int i = 0; i < 700; ++i) body += kinds[static_cast<std::size_t>(i) % kinds.size()] + "\r\n";
  const std::string report = "HEAD\r\n" + body + "FOOT\r\n";

  struct Case {
    std::string name;
    std::vector<clsColumn> columns;
    int tabSize = 8;
    int fileLast = 1;
  };
  const std::vector<Case> cases = {
      {"plain cuts", {MakeColumn(1, 3), MakeColumn(4, 10), MakeColumn(11, 11), MakeColumn(10, 12)}},
      {"leading empty fields", {MakeColumn(20, 30), MakeColumn(12, 40), MakeColumn(1, 1)}},
      {"wide and overlapping", {MakeColumn(1, 2000000000), MakeColumn(2, 2), MakeColumn(1, 4)}},
      {"known operators",
       {MakeColumn(1, 5, "A", "first"), MakeColumn(6, 11, "B", " last "),
        MakeColumn(3, 4, "C", "AVG")}},
      {"no tab expansion", {MakeColumn(1, 4), MakeColumn(5, 12)}, 0},
      {"unknown operator", {MakeColumn(1, 4), MakeColumn(5, 8, "B", "DUPLICATE")}},
      {"sum", {MakeColumn(1, 4, "A", "SUM"), MakeColumn(5, 8)}},
      {"last file is 2", {MakeColumn(1, 4), MakeColumn(5, 8, "B", "FIRST")}, 8, 2},
  };
  for (const Case& c : cases) {
    std::vector<std::string> rows[2];
    std::vector<std::string> texts[2];
    int beeps[2] = {0, 0};
    std::string slot1[2];
    for (int rowByRow = 0; rowByRow < 2; ++rowByRow) {
      ExtractFixture g;
      g.ui.SetAlwaysDue(rowByRow == 1);
      g.UseReport(report);
      g.ctx->recipe.InputFileLast = c.fileLast;
      g.ctx->tabSize = c.tabSize;
      clsTable table = MakeTable("HEAD", 1, "FOOT", -1, c.columns);
      g.Run(table, true);
      rows[rowByRow] = g.sink.rows;
      texts[rowByRow] = g.ui.Texts();
      beeps[rowByRow] = g.ui.beeps;
      slot1[rowByRow] = g.ctx->lineProcessor.Slot(1);
      EXPECT_EQ(700u, g.sink.rows.size()) << c.name;
      EXPECT_FALSE(g.Failed()) << c.name;
    }
    EXPECT_EQ(rows[1], rows[0]) << c.name;
    EXPECT_EQ(texts[1], texts[0]) << c.name;
    EXPECT_EQ(beeps[1], beeps[0]) << c.name;
    EXPECT_EQ(slot1[1], slot1[0]) << c.name;
  }
  // Rows spelled out, so that more than the two paths agreeing is checked.
  ExtractFixture g;
  g.ui.SetAlwaysDue(false);
  g.UseReport(report);
  clsTable table =
      MakeTable("HEAD", 1, "FOOT", -1,
                {MakeColumn(20, 30), MakeColumn(8, 11), MakeColumn(1, 3), MakeColumn(4, 5)});
  g.Run(table, true);
  ASSERT_EQ(700u, g.sink.rows.size());
  const std::vector<std::string> expected = {
      "hij ,abc,de",
      "hi ,abc,de",
      "",
      "abc, ",
      "  ,\"  \"\"\",\"q\"\"\"",
      "fgh ,\"ab,\",cd",
      "\"x,y\",\"\"\" \"",
      "B2 ,   ,=A",
      "fg , b  ,ta ,  ",
      "   ,   ,  ",
      "es! ,\xe9\x80\xff,\x01"
      "b",
  };
  EXPECT_EQ(expected, std::vector<std::string>(g.sink.rows.begin() + 11, g.sink.rows.begin() + 22));
  const std::string warning =
      "Error: Source Data field begin with Equal Sign! This may not be accepted by Excel!";
  EXPECT_EQ(std::vector<std::string>(63, warning), g.ui.Texts());  // rows 7, 18, ..., 689
  EXPECT_EQ(63, g.ui.beeps);
  EXPECT_EQ("x,y\" ", g.ctx->lineProcessor.Slot(1));  // the table's last line, blank added
}

// The fast path looks a line over sixteen bytes at a time for commas, quotes, equal signs, tabs
// and bytes above 127 (which a UTF-8 report leaves to the line processor), keeping them in 64-bit
// words, and a line longer than 1024 bytes field by field: such bytes just before, on and after
// every boundary, in fields that end or begin there, must give what the row-by-row path gives,
// for a report read as 8-bit text and as UTF-8.
TEST_F(TableTest, SpecialBytesAtEveryWordBoundaryMatchTheRowByRowPath) {
  std::string body;
  std::size_t lines = 0;
  for (std::size_t at : {0u, 1u, 15u, 16u, 62u, 63u, 64u, 65u, 127u, 128u, 1022u, 1023u, 1024u}) {
    for (char special : {',', '"', '=', '\t', '\xE9'}) {
      for (std::size_t length : {at + 1, at + 2, at + 70, std::size_t{1030}}) {
        if (length <= at) continue;
        std::string line(length, 'x');
        for (std::size_t i = 7; i < length; i += 11) line[i] = ' ';
        line[at] = special;
        body += line + "\r\n";
        ++lines;
      }
    }
  }
  const std::string report = "HEAD\r\n" + body + "FOOT\r\n";
  const std::vector<clsColumn> columns = {
      MakeColumn(1, 1),       MakeColumn(2, 16),     MakeColumn(17, 64),  MakeColumn(60, 70),
      MakeColumn(64, 66),     MakeColumn(65, 65),    MakeColumn(66, 200), MakeColumn(1000, 1025),
      MakeColumn(1024, 1024), MakeColumn(1025, 3000)};
  for (bool utf8 : {false, true}) {
    std::vector<std::string> rows[2], texts[2];
    std::string slot1[2];
    for (int rowByRow = 0; rowByRow < 2; ++rowByRow) {
      ExtractFixture g;
      g.ui.SetAlwaysDue(rowByRow == 1);
      const std::string path = g.UseReport(report);
      g.ctx->lineProcessor.SetUtf8(utf8);
      clsTable table = MakeTable("HEAD", 1, "FOOT", -1, columns);
      g.Run(table, true);
      rows[rowByRow] = g.sink.rows;
      for (std::string text : g.ui.Texts()) {  // the invalid-byte note names the report
        if (const std::size_t at = text.find(path); at != std::string::npos)
          text.replace(at, path.size(), "REPORT");
        texts[rowByRow].push_back(text);
      }
      slot1[rowByRow] = g.ctx->lineProcessor.Slot(1);
      ASSERT_EQ(lines, g.sink.rows.size());
    }
    for (std::size_t i = 0; i < lines; ++i) {
      EXPECT_EQ(rows[1][i], rows[0][i]) << "line " << i + 1 << (utf8 ? " utf-8" : "");
    }
    EXPECT_EQ(texts[1], texts[0]);
    EXPECT_FALSE(texts[0].empty());  // the equal signs were warned about
    EXPECT_EQ(slot1[1], slot1[0]);
  }
}

TEST_F(TableTest, EmptyAndMissingInputsAreReportedNotCrashed) {
  for (bool missing : {false, true}) {
    ExtractFixture g;
    g.UseReport("");
    if (missing) g.ctx->recipe.InputFileNames[0] = g.dir.File("no-such-report.txt");
    clsTable table = MakeTable("TOP", 0, "END", 0, {MakeColumn(1, 2)});
    g.Run(table, true);
    EXPECT_EQ(std::vector<std::string>{"Error in Table specs: Can not find ReadStartLine: TOP"},
              g.ui.Texts());
    EXPECT_TRUE(g.Failed());
  }
}

}  // namespace
}  // namespace kroveld::testing
