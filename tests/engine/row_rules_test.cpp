// Row filters, carried columns, pattern keys and the totals check of a table, on a small general
// ledger: page header, department headings, detail rows, department totals, a form feed.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "engine/row_rules.h"
#include "support/extract_support.h"
#include "support/report_lines.h"

namespace kroveld::testing {
namespace {

using Strings = std::vector<std::string>;

// A detail line: account in 1-10, description in 11-28, amount right-aligned in 29-38.
std::string Detail(const std::string& account, const std::string& description,
                   const std::string& amount) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%-10s%-18s%10s", account.c_str(), description.c_str(),
                amount.c_str());
  return buffer;
}

// Lines 1..13 of the ledger; `deptTotal2` is what the report prints as department 200's total.
std::string Ledger(const std::string& deptTotal2 = "200.00") {
  const Strings lines = {
      "GENERAL LEDGER                      PAGE 1",  // 1
      "ACCOUNT   DESCRIPTION           AMOUNT",      // 2: top key
      "",                                            // 3
      Detail("0999", "Unassigned", "5.00"),          // 4: before any department
      "DEPT: 100 SALES",                             // 5
      Detail("1000", "Cash", "100.00"),              // 6
      Detail("1010", "Receivables", "50.50"),        // 7
      Detail("", "DEPT TOTAL", "150.50"),            // 8
      "\f",                                          // 9: form feed
      "DEPT: 200 ADMIN",                             // 10
      Detail("2000", "Rent", "200.00"),              // 11
      Detail("", "DEPT TOTAL", deptTotal2),          // 12
      "END OF REPORT",                               // 13: bottom key
  };
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

// Column A (1-4) of every line of the ledger's block, lines 3..12: total lines begin with blanks,
// the form feed's line reads as one blank more.
const Strings kBlock = {"", "0999", "DEPT", "1000", "1010", "    ", "\f ", "DEPT", "2000", "    "};

// The ledger's block (lines 3..12), its account in column A, through the given rules.
clsTable LedgerTable(std::vector<clsColumn> columns = {MakeColumn(1, 4, "A")}) {
  clsTable table = MakeTable("ACCOUNT", 1, "END OF", -1, std::move(columns));
  table.Number = 1;
  return table;
}

// The rows of a run, whichever the output: CSV rows, or sheet-1 rows with their cells joined by
// commas like the CSV ones.
Strings Rows(ExtractFixture& f, const clsTable& table, bool csv) {
  if (csv) return f.sink.rows;
  Strings rows;
  for (int r = table.FirstRowWritten; r <= table.LastRowWritten; ++r) {
    std::string row;
    for (int c = 1; c <= static_cast<int>(table.Columns.size()); ++c) {
      row += (c > 1 ? "," : "") + f.sink.At(r, c);
    }
    rows.push_back(row);
  }
  return rows;
}

TEST(RowFilters, DecideWhichLinesOfTheBlockBecomeRows) {
  const Strings details = {"0999", "1000", "1010", "2000"};
  struct Case {
    const char* what;
    bool skipBlank;
    std::string skip, keep;
    Strings rows;
    int endOffset = -1;
  } cases[] = {
      {"no filter: every line", false, "", "", kBlock},
      {"blank lines, form feeds included",
       true,
       "",
       "",
       {"0999", "DEPT", "1000", "1010", "    ", "DEPT", "2000", "    "}},
      {"keep detail rows", false, "", "^[0-9]{4} ", details},
      {"skip headings and totals", true, "^DEPT:|DEPT TOTAL", "", details},
      {"keep and skip together", false, "^0|^2", "^[0-9]", {"1000", "1010"}},
      // A block that ends beyond the report's last line reads empty lines there; the filters see
      // them like any other line.
      {"lines past the end of the report", false, "", "^[0-9]{4} ", details, 5},
  };
  for (const Case& c : cases) {
    for (const bool csv : {false, true}) {
      SCOPED_TRACE(std::string(c.what) + (csv ? " (csv)" : " (sheet)"));
      ExtractFixture f;
      f.UseReport(Ledger());
      clsTable table = MakeTable("ACCOUNT", 1, "END OF", c.endOffset, {MakeColumn(1, 4, "A")});
      table.Number = 1;
      table.SkipBlankLines = c.skipBlank;
      table.SkipLinesMatching = c.skip;
      table.KeepLinesMatching = c.keep;
      f.Run(table, csv);
      EXPECT_TRUE(f.ui.messages.empty());
      EXPECT_EQ(Rows(f, table, csv), c.rows);
      // The write pointer moves by the rows, not by the lines of the block.
      EXPECT_EQ(f.Pointer(), 1 + static_cast<int>(c.rows.size()));
    }
  }
}

TEST(CarriedColumns, AHeadingWithATabIsCutAfterExpansion) {
  // The heading's tab expands to column 9 (tab size 8): positions 9-11 hold the department.
  ExtractFixture f;
  f.UseReport("TOP\r\nDEPT:\t300\r\n4000 x\r\nEND\r\n");
  clsColumn department = MakeColumn(9, 11, "B");
  department.CarryFrom = "^DEPT:";
  clsTable table = MakeTable("TOP", 1, "END", -1, {MakeColumn(1, 4, "A"), department});
  table.SkipLinesMatching = "^DEPT";
  f.Run(table, true);
  EXPECT_EQ(f.sink.rows, Strings{"4000,300"});
}

// Every row gets the latest heading above it, none above the first heading. The quick CSV rows
// write a carried field once per heading: every row must still show it, and a carried "=" value
// still warns on each row that writes it.
TEST(CarriedColumns, EveryRowGetsTheLatestHeadingAboveIt) {
  std::string report = "TOP\r\n0999 item\r\n";
  Strings expected = {"0999,"};
  for (int d = 1; d <= 6; ++d) {
    const std::string dept = d == 4 ? "=40" : std::to_string(d * 100);
    report += "DEPT: " + dept + "\r\n";
    for (int r = 0; r < 25 * d; ++r) {
      const std::string account = std::to_string(1000 + d * 100 + r);
      report += account + " item\r\n";
      expected.push_back(account + "," + dept);
    }
  }
  for (const bool csv : {false, true}) {
    SCOPED_TRACE(csv ? "csv" : "sheet");
    ExtractFixture f;
    f.ui.SetAlwaysDue(false);  // no status text between rows: the quick CSV path takes them
    f.UseReport(report + "END\r\n");
    clsColumn department = MakeColumn(7, 9, "B");
    department.CarryFrom = "^DEPT: ";
    clsTable table = MakeTable("TOP", 1, "END", -1, {MakeColumn(1, 4, "A"), department});
    table.KeepLinesMatching = "^[0-9]{4} ";  // the headings feed the column but are no rows
    f.Run(table, csv);
    EXPECT_EQ(Rows(f, table, csv), expected);
    ASSERT_EQ(f.ui.messages.size(), 100u);  // the 100 rows under "=40"
    for (const auto& m : f.ui.messages) EXPECT_EQ(m.icon, Icon::Critical) << m.text;
  }
}

TEST(PatternKeys, FindTheBlockWithOffsetsAndNameThePatternWhenMissing) {
  struct Case {
    std::string startText, startPattern, endText, endPattern;
    Strings rows;
    std::string message;
  } cases[] = {
      {"", "^ACCOUNT +DESC", "", "^END OF", kBlock, ""},
      {"ACCOUNT", "", "", "DEPT TOTAL +150", {"", "0999", "DEPT", "1000", "1010"}, ""},
      // The pattern wins over a key text that is also given.
      {"nowhere", "^DEPT: 200", "END OF", "", {"2000", "    "}, ""},
      {"", "^ACCOUNT", "", "^NOPE", {}, "Error in Table specs: Can not find ReadEndPattern: ^NOPE"},
      {"",
       "^END",
       "ACCOUNT",
       "",
       {},
       "Error in Table specs: ReadEndLine key text [ACCOUNT] was found before ReadStartPattern "
       "[^END]"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.startPattern + " " + c.endPattern);
    ExtractFixture f;
    f.UseReport(Ledger());
    clsTable table = LedgerTable();
    table.ReadStartLine = c.startText;
    table.ReadStartPattern = c.startPattern;
    table.ReadEndLine = c.endText;
    table.ReadEndPattern = c.endPattern;
    f.Run(table);
    if (c.message.empty()) {
      EXPECT_TRUE(f.ui.messages.empty());
      EXPECT_EQ(Rows(f, table, false), c.rows);
    } else {
      ASSERT_EQ(f.ui.messages.size(), 1u);
      EXPECT_EQ(f.ui.messages[0].text, c.message);
      EXPECT_EQ(f.ui.messages[0].icon, Icon::Critical);
      EXPECT_TRUE(f.Failed());
    }
  }
}

TEST(TotalsCheck, ReportsEachDifferenceOnceAndCountsTheTotals) {
  struct Case {
    std::string printed;  // department 200's printed total
    Strings messages;
  } cases[] = {
      {"200.00", {}},
      {"999.00",
       {"Error in Table 1 : Total on line 12 does not match its rows in column C: printed "
        "999.00, sum of the rows 200.00"}},
      {"", {}},  // a blank total is no total: nothing compared
  };
  for (const Case& c : cases) {
    for (const bool csv : {false, true}) {
      SCOPED_TRACE("'" + c.printed + (csv ? "' (csv)" : "' (sheet)"));
      ExtractFixture f;
      f.UseReport(Ledger(c.printed));
      clsTable table = LedgerTable({MakeColumn(1, 10, "A"), MakeColumn(29, 38, "C")});
      table.KeepLinesMatching = "^[0-9]{4} ";
      table.TotalLinesMatching = "DEPT TOTAL";
      f.Run(table, csv);
      // Department 100's total is compared with the rows since the block's start, 0999 included:
      // 155.50 against the printed 150.50, always a difference.
      Strings expected = {
          "Error in Table 1 : Total on line 8 does not match its rows in column C: printed "
          "150.50, sum of the rows 155.50"};
      expected.insert(expected.end(), c.messages.begin(), c.messages.end());
      EXPECT_EQ(f.ui.Texts(), expected);
      for (const auto& m : f.ui.messages) EXPECT_EQ(m.icon, Icon::Exclamation) << m.text;
      EXPECT_EQ(f.ctx->run.tally.totalsChecked, c.printed.empty() ? 1u : 2u);
      EXPECT_EQ(f.ctx->run.tally.totalsDiffering, expected.size());
      EXPECT_FALSE(f.Failed());  // a difference is a warning: the rows are all written
      EXPECT_EQ(Rows(f, table, csv).size(), 4u);
    }
  }
}

// However many totals differ, each is reported once, in the order of the report and in its place
// among the run's other messages (here the equal-sign warnings of some rows), also when the block
// is long enough for its rows to be summed on a second thread.
TEST(TotalsCheck, EveryDifferenceIsReportedInItsPlace) {
  const std::string equalWarning =
      "Error: Source Data field begin with Equal Sign! This may not be accepted by Excel!";
  for (const int departments : {30, 3000}) {
    std::string report = "ACCOUNT   DESCRIPTION           AMOUNT\r\n";
    Strings expected;
    int line = 1;
    for (int d = 0; d < departments; ++d) {
      for (int r = 0; r < 3; ++r) {
        const bool equalSign = d % 11 == 5 && r == 1;
        report += Detail(equalSign ? "=1000" : "1000", "Cash", "10.00") + "\r\n";
        if (equalSign) expected.push_back(equalWarning);
      }
      const bool differs = d % 7 != 3;
      report += Detail("", "DEPT TOTAL", differs ? "99.00" : "30.00") + "\r\n";
      line += 4;
      if (differs) {
        expected.push_back("Error in Table 1 : Total on line " + std::to_string(line) +
                           " does not match its rows in column C: printed 99.00, sum of the "
                           "rows 30.00");
      }
    }
    for (const bool csv : {false, true}) {
      SCOPED_TRACE(std::to_string(departments) + (csv ? " (csv)" : " (sheet)"));
      ExtractFixture f;
      f.UseReport(report + "END OF REPORT\r\n");
      clsTable table = LedgerTable({MakeColumn(1, 10, "A"), MakeColumn(29, 38, "C")});
      table.KeepLinesMatching = "^=?[0-9]{4} ";
      table.TotalLinesMatching = "DEPT TOTAL";
      f.Run(table, csv);
      ASSERT_EQ(f.ui.Texts().size(), expected.size());
      EXPECT_EQ(f.ui.Texts(), expected);
      EXPECT_EQ(f.ctx->run.tally.totalsChecked, static_cast<std::uint64_t>(departments));
      EXPECT_EQ(Rows(f, table, csv).size(), static_cast<std::size_t>(departments) * 3);
    }
  }
}

// A UTF-8 report: the carried heading and the total line hold characters beyond ASCII, so their
// positions count printed columns, as the other fields' do.
TEST(RowRulesUtf8, CarriedFieldsAndTotalsAreCutByPrintedColumns) {
  for (const bool csv : {false, true}) {
    ExtractFixture f;
    f.ctx->lineProcessor.SetUtf8(true);
    f.UseReport(CrLf({"TOP", "Dépt: 10 Genève", "1000 Café       12.25", "1010 Thé         7.55",
                      "Total ééé       19.80", "END"}));
    clsColumn department = MakeColumn(7, 8, "A");  // "10", after "Dépt: " (6 columns)
    department.CarryFrom = "^Dépt: ";
    clsTable table = MakeTable("TOP", 1, "END", -1,
                               {department, MakeColumn(1, 4, "B"), MakeColumn(16, 21, "C")});
    table.Number = 1;
    table.KeepLinesMatching = "^[0-9]";
    table.TotalLinesMatching = "Total";
    f.Run(table, csv);
    // 12.25 + 7.55 against 19.80; cut by bytes the fields would read 12.2, 7.5 and 19.
    EXPECT_EQ(f.ui.Texts(), Strings{});
    EXPECT_EQ(f.ctx->run.tally.totalsChecked, 1u);
    EXPECT_EQ(Rows(f, table, csv), (Strings{"10,1000, 12.25", "10,1010,  7.55"}))
        << (csv ? "csv" : "sheet");
  }
}

TEST(RowRulesBadPatterns, FailTheTableWithTheKeyAndTheLibrarysReason) {
  const std::pair<std::string clsTable::*, std::string> keys[] = {
      {&clsTable::SkipLinesMatching, "SkipLinesMatching"},
      {&clsTable::KeepLinesMatching, "KeepLinesMatching"},
      {&clsTable::TotalLinesMatching, "TotalLinesMatching"},
      {&clsTable::ReadStartPattern, "ReadStartPattern"}};
  for (const auto& [key, name] : keys) {
    ExtractFixture f;
    f.UseReport(Ledger());
    clsTable table = LedgerTable();
    table.*key = "([0-9]";
    f.Run(table);
    ASSERT_EQ(f.ui.messages.size(), 1u) << name;
    EXPECT_TRUE(f.ui.messages[0].text.starts_with("Error in Table 1 : Invalid " + name +
                                                  " pattern: ([0-9] (missing "))
        << f.ui.messages[0].text;
    EXPECT_TRUE(f.Failed());
    EXPECT_TRUE(f.sink.cells.empty());
  }
}

TEST(RowRulesBlankTest, FormFeedsTabsAndBlanksOnly) {
  EXPECT_TRUE(IsFilterBlank(""));
  EXPECT_TRUE(IsFilterBlank(" \t\f "));
  EXPECT_FALSE(IsFilterBlank(" \f.\t"));
  EXPECT_FALSE(IsFilterBlank("\r"));
}

// The quick reading of amounts must give what the general numeric test gives, or leave the text
// to it: one case for each way the quick reading takes a text or steps aside.
TEST(QuickAmounts, AgreeWithTheNumericTestOrStepAside) {
  const NumberLocale loc;  // '.', ',' and "$"
  const char* quick[] = {"  12,500.00 ", "(450.00)",    "-3.5", "0",
                         "1234567.8901", "  (1,234)  ", "007"};
  const char* aside[] = {
      "1,2,3", "12,34.00", "1,234,", "1.",  ".5",    "1.23456", "$5.00",
      "5-",    "(5",       "1e3",    "   ", "12 34", "",        "999999999999999"};
  for (const char* text : quick) {
    Fixed4 fast;
    Fixed4 general;
    ASSERT_TRUE(QuickFixed(text, fast, loc)) << text;
    ASSERT_EQ(ParseFixed(text, general, loc), NumberParse::kOk) << text;
    EXPECT_EQ(fast.raw, general.raw) << text;
  }
  for (const char* text : aside) {
    Fixed4 fast;
    EXPECT_FALSE(QuickFixed(text, fast, loc)) << text;
  }
}

// What the rules made of each line: row or not, and the carried line it left.
struct Verdicts {
  Strings lines;
  Strings messages;
  std::uint64_t checked = 0;
  std::uint64_t differing = 0;
};

Verdicts RunRules(const clsTable& table, const std::string& report, bool inPlace) {
  ExtractFixture f;
  RowRules rules;
  std::string error;
  EXPECT_TRUE(rules.Prepare(table, 8, false, error)) << error;
  // The lines as views into the report, or each a copy of its own.
  const std::vector<std::string_view> views = LinesOf(report);
  const Strings copies(views.begin(), views.end());
  if (inPlace) rules.ReadsFrom(report);
  Verdicts v;
  for (std::size_t i = 0; i < views.size(); ++i) {
    const std::string_view line = inPlace ? views[i] : std::string_view(copies[i]);
    const bool row = rules.Admit(*f.ctx, static_cast<std::int64_t>(i) + 1, line);
    v.lines.push_back((row ? "row " : "--- ") + std::string(rules.CarriedLine(1)));
  }
  rules.ShowMessages(*f.ctx);
  v.messages = f.ui.Texts();
  v.checked = f.ctx->run.tally.totalsChecked;
  v.differing = f.ctx->run.tally.totalsDiffering;
  return v;
}

// The rules read the lines of a mapped report in place, their searches running ahead through it;
// they must decide every line as they do for lines handed one by one.
TEST(RowRulesInPlace, DecideAsForLinesReadOneByOne) {
  const std::string amount = "        1,234.50";  // columns 21-36
  std::string report = "ACCOUNT   DESCRIPTION         AMOUNT\r\n";
  for (int dept = 1; dept <= 40; ++dept) {
    // A heading, after a form feed on every other department (the heading pattern takes the
    // form feed as a blank), then rows, blank lines of every kind, and a total.
    report +=
        std::string(dept % 2 ? "" : "\f") + "  DEPT " + std::to_string(100 + dept) + " SALES\r\n";
    const int rows = 60 * (dept % 7 + 1);
    for (int r = 0; r < rows; ++r) {
      report += std::to_string(1000 + r) + "  Item " + std::to_string(r % 10) + "        " +
                (r % 5 == 0 ? "      (1,000.25)" : amount) + "\r\n";
      if (r % 97 == 0) report += "\r\n   \r\n\f\r\n \f\t \r\n";
      if (r % 89 == 0) report += "\t1999 tabbed   x\r\n";
      if (r % 83 == 0) report += "2000  ends in DEPT\r\nTOTAL starts the next line\n";
    }
    // The rows' sum, printed right (every eighth department) or wrong (every other fourth).
    const Fixed4 sum{(rows - rows / 5) * 12345000LL - rows / 5 * 10002500LL +
                     (dept % 8 != 0 ? 100 : 0)};
    std::string total = FormatGrouped(sum, 2);
    total.insert(0, 16 - total.size(), ' ');
    // With an amount, with none printed, with empty columns, with the literal at the line's end.
    const std::string totals[] = {"          DEPT TOTAL" + total + "\r\n", "DEPT\fTOTAL\r\n",
                                  "          DEPT TOTAL\r\n", "      GRAND DEPT TOTAL\n"};
    report += totals[dept % 4];
  }
  clsColumn department = MakeColumn(8, 10, "B");
  department.CarryFrom = "^ *DEPT [0-9]";
  clsTable table = LedgerTable({MakeColumn(1, 4, "A"), department, MakeColumn(21, 36, "C")});
  table.SkipBlankLines = true;
  table.SkipLinesMatching = "^(ACCOUNT|  DEPT)|TOTAL";
  table.TotalLinesMatching = "DEPT TOTAL";
  const Verdicts inPlace = RunRules(table, report, true);
  const Verdicts apart = RunRules(table, report, false);
  ASSERT_EQ(inPlace.lines.size(), apart.lines.size());
  for (std::size_t i = 0; i < inPlace.lines.size(); ++i) {
    ASSERT_EQ(inPlace.lines[i], apart.lines[i]) << "line " << i + 1;
  }
  EXPECT_EQ(inPlace.messages, apart.messages);
  EXPECT_EQ(inPlace.checked, apart.checked);
  EXPECT_EQ(inPlace.differing, apart.differing);
  // The report is built to give some of each: rows, passed-over lines, totals that differ.
  EXPECT_GT(apart.differing, 0u);
  EXPECT_GT(apart.checked, apart.differing);
}

}  // namespace
}  // namespace kroveld::testing
