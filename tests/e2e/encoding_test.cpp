// UTF-8 reports through the real binary: the Turkish ledger line cut by characters into CSV (as
// UTF-8) and into an .xlsx read back by openpyxl, the recipe's InputEncoding, auto detection,
// the note on invalid bytes, and a bad --encoding.
#include <gtest/gtest.h>

#include <filesystem>

#include "e2e/e2e_support.h"
#include "jobs/workbook_test_helpers.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;
using testing::RunResult;

// Template "---- ---------- -------": code 1-4, name 6-15, amount 17-23.
const std::string kExportSpec = CrLf({"[Header]",
                                      "Product=KRO",
                                      "FileType=EXPORT SPEC",
                                      "FileFormat=1.1",
                                      "[General]",
                                      "Name=Ledger",
                                      "[Table 1]",
                                      "ReadStartLine=CODE",
                                      "ReadStartLineOffset=2",
                                      "ReadEndLine=TOTAL",
                                      "ReadEndLineOffset=-2",
                                      "TotalColumns=3",
                                      "[Table 1 Col 1]",
                                      "ReadColumnStart=1",
                                      "ReadColumnEnd=4",
                                      "WriteColumn=A",
                                      "PeriodOperator=",
                                      "[Table 1 Col 2]",
                                      "ReadColumnStart=6",
                                      "ReadColumnEnd=15",
                                      "WriteColumn=B",
                                      "PeriodOperator=",
                                      "[Table 1 Col 3]",
                                      "ReadColumnStart=17",
                                      "ReadColumnEnd=23",
                                      "WriteColumn=C",
                                      "PeriodOperator="});

const std::string kReport =
    CrLf({"CODE NAME       AMOUNT", "---- ---------- -------", "A004 ÖZTÜRK ÇAĞ  451.25",
          "A005 山田 太郎    12.00", "A006 SMITH J.      7.50", "", "TOTAL"});

// Each field as the page prints it; the amount keeps the blank the line processor adds.
const std::string kExpectedCsv =
    CrLf({"A004,ÖZTÜRK ÇAĞ, 451.25", "A005,山田 太郎 ,  12.00", "A006,SMITH J.  ,   7.50"});

struct Work {
  testing::TempDir dir;
  std::string home = dir.File("home");
  explicit Work(const std::string& recipeExtra = "") {
    std::filesystem::create_directories(home);
    dir.Write("ledger.krs", kExportSpec);
    dir.Write("ledger.rcp", CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1",
                                  "[Output File]", "ExportSpecFileName=ledger.krs"}) +
                                recipeExtra + CrLf({"[Input Files]", "1FileName=ledger.txt"}));
    dir.Write("ledger.txt", kReport);
  }
  RunResult Run(const std::string& out, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> args = {"-i", "ledger.txt", "-o", out, "-r", "ledger.rcp"};
    args.insert(args.end(), more.begin(), more.end());
    return testing::RunKroveld(home, args, dir.path());
  }
};

TEST(EncodingE2e, Utf8ReportToCsvByCharacters) {
  const struct {
    const char* what;
    std::vector<std::string> args;
    std::string recipeExtra;
  } cases[] = {
      {"--encoding utf-8", {"--encoding", "utf-8"}, ""},
      {"--encoding auto", {"--encoding=auto"}, ""},
      {"the recipe's InputEncoding", {}, "InputEncoding=utf-8\r\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Work w(c.recipeExtra);
    const RunResult r = w.Run("ledger.csv", c.args);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(ReadFile(w.dir.File("ledger.csv")), kExpectedCsv);
  }
  // Without a choice the report is cut by bytes, as it always was.
  Work w;
  const RunResult r = w.Run("ledger.csv");
  EXPECT_EQ(r.status, 0) << r.err;
  const std::string csv = ReadFile(w.dir.File("ledger.csv"));
  EXPECT_EQ(csv.substr(0, csv.find("\r\n")), "A004,ÖZTÜRK \xC3,AĞ  45");
}

TEST(EncodingE2e, Utf8ReportToXlsxReadsBackByOpenpyxl) {
  if (!testing::HavePythonModules("openpyxl")) GTEST_SKIP() << "python3 with openpyxl is missing";
  Work w;
  const RunResult r = w.Run("ledger.xlsx", {"--encoding", "utf-8"});
  ASSERT_EQ(r.status, 0) << r.err;
  const testing::DumpedBook book = testing::ReadWithPython(w.dir.File("ledger.xlsx"));
  ASSERT_FALSE(book.sheets.empty());
  const auto& cells = book.sheets[0].cells;
  const struct {
    int row, column;
    const char* type;
    const char* value;
  } expected[] = {
      {1, 1, "s", "A004"},       {1, 2, "s", "ÖZTÜRK ÇAĞ"}, {1, 3, "n", "451.25"},
      {2, 2, "s", "山田 太郎 "}, {2, 3, "n", "12.0"},       {3, 2, "s", "SMITH J.  "},
  };
  for (const auto& e : expected) {
    const auto it = cells.find({e.row, e.column});
    ASSERT_NE(it, cells.end()) << "R" << e.row << "C" << e.column;
    EXPECT_EQ(it->second.type, e.type) << "R" << e.row << "C" << e.column;
    EXPECT_EQ(it->second.value, e.value) << "R" << e.row << "C" << e.column;
  }
}

TEST(EncodingE2e, InvalidBytesAreNotedOnceAndBadNamesRefused) {
  Work w;
  std::string report = kReport;
  report.replace(report.find("SMITH"), 5, "M\xDCLLR");  // an 8-bit Ü
  report.replace(report.find("A004"), 1, "\xC4");       // and an 8-bit Ä two lines above
  testing::WriteFile(w.dir.File("ledger.txt"), report);
  RunResult r = w.Run("ledger.csv", {"--encoding", "utf-8"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "kroveld: note: The report " + w.dir.File("ledger.txt") +
                       " is not valid UTF-8 throughout: each invalid byte counts as one "
                       "character and is written as U+FFFD\n");
  EXPECT_EQ(ReadFile(w.dir.File("ledger.csv")),
            CrLf({"\uFFFD004,ÖZTÜRK ÇAĞ, 451.25", "A005,山田 太郎 ,  12.00",
                  "A006,M\uFFFDLLR J.  ,   7.50"}));
  // Auto reads the same file as 8-bit: no note, the bytes as they are.
  r = w.Run("auto.csv", {"--encoding", "auto"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err, "");
  const std::string csv = ReadFile(w.dir.File("auto.csv"));
  EXPECT_NE(csv.find("\r\nA006,M\xDCLLR J.  ,   7.50\r\n"), std::string::npos) << csv;

  r = w.Run("bad.csv", {"--encoding", "utf-16"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err,
            "kroveld: --encoding \"utf-16\" is not an encoding: use auto, utf-8, cp1252 or "
            "latin1\nRun with --help for more information.\n");
  EXPECT_FALSE(std::filesystem::exists(w.dir.File("bad.csv")));
}

}  // namespace
}  // namespace kroveld
