// Typed columns through the real binary: the clean CSV a Type gives, the float and date columns
// that readers we did not write (openpyxl, xlrd, pandas) see in our workbooks, the note on values
// kept as text, the check that knows the keys, and outputs of recipes without them that stay
// byte for byte what they were.
#include <gtest/gtest.h>

#include "support/e2e_support.h"
#include "support/workbook_readers.h"

namespace kroveld {
namespace {

using testing::ReadFile;
using testing::WriteFile;

constexpr const char* kLedger =
    "LEDGER\r\n"
    "Date       Account  Amount\r\n"
    "---------- -------- ------------\r\n"
    "05.03.23   1000        1,554.73-\r\n"
    "29.02.24   1200           12.00\r\n"
    "           2000\r\n"
    "01.01.49   3000          (3.50)\r\n"
    "END\r\n";

// The trial balance example's recipe, with the ledger as its report and an export definition of
// one table: date, account, amount, typed as `types` says (or not at all).
struct Ledger : testing::ExampleWork {
  explicit Ledger(bool typed) : ExampleWork("trial-balance") {
    WriteFile(F("trial-balance.txt"), kLedger);
    WriteFile(F("trial-balance.krs"),
              testing::SpecHeader() +
                  testing::SpecTable(
                      1, "Date", 2, "END", -1,
                      {{1, 10, "A", "", typed ? "Type=Date\r\nDateFormat=DD.MM.YY\r\n" : ""},
                       {12, 19, "B", "", typed ? "Type=Text\r\n" : ""},
                       {21, 32, "C", "", typed ? "Type=Number\r\n" : ""}}));
  }
  testing::RunResult Convert(const std::string& out) const {
    return Run({"-i", "trial-balance.txt", "-r", "trial-balance.rcp", "-o", out});
  }
  void EditReport(const std::string& from, const std::string& to) const {
    testing::ReplaceInFile(F("trial-balance.txt"), from, to);
  }
};

TEST(TypedColumns, CsvHoldsPlainNumbersIsoDatesAndTrimmedText) {
  Ledger w(true);
  auto r = w.Convert("out.csv");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(ReadFile(w.F("out.csv")),
            "2023-03-05,1000,-1554.73\r\n"
            "2024-02-29,1200,12.00\r\n"
            ",2000,\r\n"  // blank typed fields keep their places
            "2049-01-01,3000,-3.50\r\n");

  // A date that does not exist and an amount that is not one stay as text, each column noted
  // once with its first such value and line.
  w.EditReport("29.02.24", "29.02.23");
  w.EditReport("  12.00", "TWELVE!");
  w.EditReport("(3.50)", " n/a  ");
  r = w.Convert("out.csv");
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err,
            "kroveld: warning: Table 1 Col 1 : \"29.02.23\" on line 5 is not a date of the form "
            "DD.MM.YY and is kept as text\n"
            "kroveld: warning: Table 1 Col 3 : \"TWELVE!\" on line 5 is not a number and is kept "
            "as text, as is 1 more value of this column\n");
  EXPECT_EQ(ReadFile(w.F("out.csv")),
            "2023-03-05,1000,-1554.73\r\n"
            "29.02.23,1200,TWELVE!\r\n"
            ",2000,\r\n"
            "2049-01-01,3000,n/a\r\n");
}

class TypedWorkbookE2e : public ::testing::TestWithParam<const char*> {};

TEST_P(TypedWorkbookE2e, ReadersSeeFloatAndDateColumns) {
  if (!testing::HavePythonModules("xlrd, openpyxl")) GTEST_SKIP() << "python3 readers missing";
  Ledger w(true);
  const std::string out = std::string("out") + GetParam();
  const auto r = w.Convert(out);
  ASSERT_EQ(r.status, 0) << r.err;
  const testing::DumpedBook book = testing::ReadWithPython(w.F(out));
  ASSERT_FALSE(book.sheets.empty());
  testing::ExpectCells(book.sheets[0],
                       {{1, 1, "d [2023-03-05] yyyy-mm-dd"},
                        {1, 2, "s [1000] General"},
                        {1, 3, "n [-1554.73] #,##0.00"},
                        {2, 1, "d [2024-02-29] yyyy-mm-dd"},
                        {2, 2, "s [1200] General"},
                        {2, 3, "n [12.0] 0.00"},
                        {3, 2, "s [2000] General"},
                        {4, 1, "d [2049-01-01] yyyy-mm-dd"},
                        {4, 2, "s [3000] General"},
                        {4, 3, "n [-3.5] 0.00"}},
                       true);  // the blank fields are empty cells
  // pandas (whose .xls reading needs a newer xlrd than Debian's) types the date and amount
  // columns of the .xlsx (it reads the account texts as numbers itself, whatever the cells hold).
  if (std::string(GetParam()) == ".xlsx" && testing::HavePythonModules("pandas")) {
    int status = 0;
    const std::string dtypes = testing::RunCapture(
        "/usr/bin/python3 -c \"import pandas, sys; d = pandas.read_excel(sys.argv[1], "
        "header=None); print(d.dtypes[0], d.dtypes[2])\" '" +
            w.F(out) + "' 2>&1",
        &status);
    EXPECT_EQ(status, 0) << dtypes;
    EXPECT_EQ(dtypes, "datetime64[ns] float64\n");
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, TypedWorkbookE2e, ::testing::Values(".xlsx", ".xls"));

TEST(TypedColumns, TheCheckKnowsTypeAndDateFormat) {
  Ledger w(true);
  auto r = w.Run({"--check", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(r.out, "");

  // A misspelt key is still an unknown one, and a bad value is the loader's error.
  testing::ReplaceInFile(w.F("trial-balance.krs"), "Type=Text", "Tpye=Text");
  testing::ReplaceInFile(w.F("trial-balance.krs"), "Type=Number", "Type=Amount");
  r = w.Run({"--check", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("Error in Table 1 Col 3 : Type must be Number, Text or Date!"),
            std::string::npos)
      << r.err;
  EXPECT_NE((r.out + r.err).find("unknown key 'Tpye'"), std::string::npos) << r.out << r.err;
}

// Every part of an .xlsx but its creation time, as "name sha256" lines.
std::string XlsxParts(const std::string& path) {
  int status = 0;
  const std::string out = testing::RunCapture(
      "/usr/bin/python3 -c \"import hashlib, sys, zipfile; z = zipfile.ZipFile(sys.argv[1]); "
      "[print(n, hashlib.sha256(z.read(n)).hexdigest()) for n in z.namelist() "
      "if n != 'docProps/core.xml']\" '" +
          path + "' 2>&1",
      &status);
  EXPECT_EQ(status, 0) << out;
  return out;
}

TEST(TypedColumns, RecipesWithoutTypeWriteTheWorkbooksTheyAlwaysWrote) {
  const std::string data = std::string(KROVELD_TEST_DATA) + "/e2e/";
  for (const char* example : {"trial-balance", "departments"}) {
    testing::ExampleWork w(example);
    for (const char* suffix : {".xls", ".xlsx"}) {
      const std::string out = std::string("out") + suffix;
      const auto r = w.Run(
          {"-i", std::string(example) + ".txt", "-r", std::string(example) + ".rcp", "-o", out});
      ASSERT_EQ(r.status, 0) << r.err;
      const std::string before = data + example + suffix;
      if (std::string(suffix) == ".xls") {
        EXPECT_TRUE(ReadFile(w.F(out)) == ReadFile(before)) << example << suffix;
      } else {
        const std::string parts = XlsxParts(before);
        EXPECT_NE(parts.find("xl/styles.xml "), std::string::npos) << parts;
        EXPECT_EQ(XlsxParts(w.F(out)), parts) << example << suffix;
      }
    }
  }
}

}  // namespace
}  // namespace kroveld
