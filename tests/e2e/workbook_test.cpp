// Workbook output of the real binary, read back cell by cell with readers we did not write (xlrd
// for .xls, openpyxl for .xlsx): the departmental statement example with titles, tables and a
// consolidation, existing outputs with and without clearing, the already-open refusal, CSV
// output and the two real sample reports.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/e2e_support.h"
#include "support/workbook_readers.h"

namespace kroveld {
namespace {

namespace fs = std::filesystem;
using testing::Describe;
using testing::DumpedBook;
using testing::ReadFile;
using testing::ReadWithPython;
using testing::WriteFile;

bool HaveReaders() {
  return testing::HavePythonModules("xlrd, openpyxl");
}

// A work folder holding the departments example and an application folder of its own.
struct Work : testing::ExampleWork {
  Work() : ExampleWork("departments") {}
  testing::RunResult Departments(const std::string& out,
                                 const std::vector<std::string>& more = {}) const {
    std::vector<std::string> args = {"-i", "departments.txt", "-o", out, "-r", "departments.rcp"};
    args.insert(args.end(), more.begin(), more.end());
    return Run(args);
  }
  // Files in the work folder, sorted (the application folder aside).
  std::vector<std::string> Files() const {
    std::vector<std::string> names = testing::FileNames(dir.path());
    std::erase(names, "home");
    return names;
  }
};

// The departments example as both readers must see it. The sums on sheet 2 were worked out from
// the report by hand: Salaries 45,000 + 60,000 + 30,000 and so on.
const DumpedBook& ExpectedDepartments() {
  static const DumpedBook book =
      testing::ParseDump(ReadFile(testing::DataFile("e2e/departments-cells.txt")));
  return book;
}

// Compares two dumps and reports every difference, cell by cell.
void ExpectSameBook(const DumpedBook& actual, const DumpedBook& expected, const std::string& what) {
  EXPECT_EQ(actual.font, expected.font) << what;
  ASSERT_EQ(actual.sheets.size(), expected.sheets.size()) << what;
  for (std::size_t s = 0; s < expected.sheets.size(); ++s) {
    const auto& a = actual.sheets[s];
    const auto& e = expected.sheets[s];
    EXPECT_EQ(a.name, e.name) << what << " sheet " << s + 1;
    for (const auto& [at, cell] : e.cells) {
      const auto it = a.cells.find(at);
      if (it == a.cells.end()) {
        ADD_FAILURE() << what << " sheet " << s + 1 << " R" << at.first << "C" << at.second
                      << " missing, expected " << Describe(cell);
      } else if (Describe(it->second) != Describe(cell)) {
        ADD_FAILURE() << what << " sheet " << s + 1 << " R" << at.first << "C" << at.second << ": "
                      << Describe(it->second) << ", expected " << Describe(cell);
      }
    }
    for (const auto& [at, cell] : a.cells) {
      if (!e.cells.count(at)) {
        ADD_FAILURE() << what << " sheet " << s + 1 << " R" << at.first << "C" << at.second
                      << " unexpected: " << Describe(cell);
      }
    }
  }
}

class WorkbookE2e : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!HaveReaders()) GTEST_SKIP() << "/usr/bin/python3 with xlrd and openpyxl is missing";
  }
  std::string Out(const std::string& stem = "statement") const { return stem + GetParam(); }
};

TEST_P(WorkbookE2e, DepartmentsExampleReadsBackCellByCell) {
  Work w;
  const auto r = w.Departments(Out());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  ExpectSameBook(ReadWithPython(w.F(Out())), ExpectedDepartments(), Out());
  // Nothing is left beside the output: no temporary file, no backup.
  const std::vector<std::string> expected = {"departments.krs", "departments.rcp",
                                             "departments.txt", Out()};
  EXPECT_EQ(w.Files(), expected);
}

TEST_P(WorkbookE2e, ExistingOutputIsWrittenIntoOrClearedFirst) {
  // An older output: a heading on sheet 1 row 1 (overwritten), a note on sheet 1 row 30 and two
  // on sheet 2 (cells the departments run never writes).
  std::vector<std::string> sheet1(30);
  sheet1.front() = "OLD HEADING";
  sheet1.back() = "NOTE ON SHEET 1";
  const std::string notesKrs = testing::SpecHeader() + "[General]\r\nName=n\r\n" +
                               testing::SpecTitle(1, 1, "A", sheet1) +
                               testing::SpecTitle(2, 2, "F", {"", "", "", "NOTE ON SHEET 2"});
  const std::string notesRcp =
      testing::CrLf({"Sheet1Name=Old", "[Header]", "Product=KRO", "FileType=RECIPE",
                     "FileFormat=1.1", "[Output File]", "ExportSpecFileName=notes.krs",
                     "[Input Files]", "1FileName=departments.txt"});
  // The last case runs twice over its own output without clearing: nothing doubled or shifted.
  struct Case {
    const char* name;
    std::vector<std::string> flags;
    bool notes, cleared;
  } cases[] = {{"default", {}, true, true},
               {"--no-clear", {"--no-clear"}, true, false},
               {"own output, --no-clear", {"--no-clear"}, false, false}};
  for (const Case& c : cases) {
    Work w;
    WriteFile(w.F("notes.krs"), notesKrs);
    WriteFile(w.F("notes.rcp"), notesRcp);
    auto r = c.notes ? w.Run({"-i", "departments.txt", "-o", Out(), "-r", "notes.rcp"})
                     : w.Departments(Out());
    ASSERT_EQ(r.status, 0) << r.err;

    r = w.Departments(Out(), c.flags);
    EXPECT_EQ(r.status, 0) << c.name << ": " << r.err;
    DumpedBook expected = ExpectedDepartments();
    if (c.notes) expected.sheets[1].cells[{4, 6}] = {"s", "NOTE ON SHEET 2", "General"};
    if (!c.cleared && c.notes) {
      expected.sheets[0].cells[{30, 1}] = {"s", "NOTE ON SHEET 1", "General"};
    }
    ExpectSameBook(ReadWithPython(w.F(Out())), expected, std::string(c.name) + " " + Out());
  }
}

TEST_P(WorkbookE2e, OutputOpenInASpreadsheetProgramIsLeftAlone) {
  for (const std::string& lock : {".~lock." + Out() + "#", "~$" + Out()}) {
    Work w;
    ASSERT_EQ(w.Departments(Out()).status, 0);
    const std::string before = ReadFile(w.F(Out()));
    WriteFile(w.F(lock), "someone,host,/home/someone;08.03.2024 10:00;");
    const auto r = w.Departments(Out(), {"--no-clear"});
    EXPECT_EQ(r.status, 1) << lock;
    EXPECT_EQ(r.err,
              "kroveld: note:  Microsoft Excel is already open. Please close it then retry\n")
        << lock;
    EXPECT_EQ(ReadFile(w.F(Out())), before) << lock;
    const std::vector<std::string> expected = {lock, "departments.krs", "departments.rcp",
                                               "departments.txt", Out()};
    std::vector<std::string> sorted = expected;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(w.Files(), sorted) << lock;
  }
}

TEST_P(WorkbookE2e, AlwaysTwoSheetsAndTheStandardFont) {
  // The trial balance recipe names no sheets and writes nothing to sheet 2.
  Work w;
  w.CopyExample("trial-balance");
  const auto r = w.Run({"-i", "trial-balance.txt", "-o", Out("tb"), "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 0) << r.err;
  const DumpedBook book = ReadWithPython(w.F(Out("tb")));
  ASSERT_EQ(book.sheets.size(), 2u);
  EXPECT_EQ(book.sheets[0].name, "Sheet1");
  EXPECT_EQ(book.sheets[1].name, "Sheet2");
  EXPECT_TRUE(book.sheets[1].cells.empty());
  EXPECT_EQ(book.font, "Courier New");
  const auto& s1 = book.sheets[0].cells;
  EXPECT_EQ(Describe(s1.at({1, 1})), "s [ACME WIDGETS LTD - TRIAL BALANCE BY DEPARTMENT] General");
  EXPECT_EQ(Describe(s1.at({3, 1})), "n [1000.0] General");  // account 1000 is a number
  EXPECT_EQ(Describe(s1.at({3, 3})), "n [12450.0] #,##0.00");
}

// The two real print-outs of the sample collection, converted with recipes of ours.
TEST_P(WorkbookE2e, RealSampleReports) {
  struct Case {
    const char* recipe;
    const char* report;
    std::vector<testing::CellIs> cells;
  } cases[] = {
      {"card-statements.rcp",
       "card-statements.txt",
       {
           {1, 1, "s [CARD STATEMENT - FIRST ACCOUNT] General"},
           {2, 2, "s [00000000050         ] General"},  // zero-padded: stays text
           {3, 2, "s [000001945.87        ] General"},
           {4, 2, "n [623.0] General"},
           {5, 1, "s [0000000058866561] General"},
           {5, 3, "n [183.88] 0.00"},  // "$      183.88 "
           {6, 3, "n [14.0] 0.00"},
           {8, 2, "s [Return item at DuBuque, Wuckert and Mraz         ] General"},
           {8, 3, "n [-47.88] 0.00"},  // trailing minus "47.88-"
           {10, 3, "n [241.66] 0.00"},
       }},
      {"treasury.rcp",
       "treasury-statement-2013-02-05.txt",
       {
           {1, 1, "s [DAILY TREASURY STATEMENT 2013-02-05] General"},
           {2, 1, "s [ Federal Reserve Account               ] General"},
           {2, 2, "n [50724.0] #,##0"},  // "$     50,724"
           {3, 1, "s [ Supplementary Financing Program ] General"},
           {4, 5, "n [0.0] General"},
           {6, 5, "n [85446.0] #,##0"},
           {7, 4, "n [4007477.0] #,##0"},
           {8, 2, "n [-9415.0] #,##0"},  // "$     -9,415"
           {8, 4, "n [-34722.0] #,##0"},
       }},
  };
  for (const Case& c : cases) {
    Work w;
    const auto r = w.Run({"-i", testing::DataFile(c.report), "-o", Out(), "-r",
                          testing::DataFile(std::string("e2e/") + c.recipe)});
    EXPECT_EQ(r.status, 0) << c.recipe << ": " << r.err;
    const DumpedBook book = ReadWithPython(w.F(Out()));
    ASSERT_EQ(book.sheets.size(), 2u) << c.recipe;
    EXPECT_EQ(book.font, "Courier New");
    testing::ExpectCells(book.sheets[0], c.cells, false);
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, WorkbookE2e, ::testing::Values(".xls", ".xlsx"),
                         [](const auto& info) { return std::string(info.param + 1); });

TEST(WorkbookE2eCsv, CsvOutputCreatesNoWorkbook) {
  // Titles and the consolidation have no CSV form; the table rows are all there is. A name that
  // holds ".csv" anywhere is CSV even when it ends in ".xlsx".
  for (const char* out : {"statement.csv", "statement.csv.xlsx"}) {
    Work w;
    const auto r = w.Departments(out);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "") << out;
    const std::string csv = ReadFile(w.F(out));
    EXPECT_EQ(csv, ReadFile(testing::DataFile("e2e/departments.csv"))) << out;
    EXPECT_NE(csv.substr(0, 2), "PK") << out;
    EXPECT_EQ(w.Files().size(), 4u) << out;
  }
}

}  // namespace
}  // namespace kroveld
