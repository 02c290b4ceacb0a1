// A UTF-8 report through the real binary: cut by characters into CSV (UTF-8) and into an .xlsx
// that openpyxl reads back, and a bad --encoding refused.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/e2e_support.h"
#include "support/workbook_readers.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;

TEST(EncodingE2e, Utf8LedgerToCsvAndXlsx) {
  testing::TempDir dir;
  const std::string home = dir.File("home");
  std::filesystem::create_directories(home);
  // Template "---- ---------- -------": code 1-4, name 6-15, amount 17-23.
  dir.Write("ledger.krs",
            testing::SpecHeader() + testing::SpecTable(1, "CODE", 1, "TOTAL", -1,
                                                       {{1, 4, "A"}, {6, 15, "B"}, {17, 23, "C"}}));
  dir.Write("ledger.rcp", CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1",
                                "[Output File]", "ExportSpecFileName=ledger.krs"}));
  dir.Write("ledger.txt", CrLf({"CODE NAME       AMOUNT", "A004 ÖZTÜRK ÇAĞ  451.25",
                                "A005 山田 太郎    12.00", "TOTAL"}));
  const auto run = [&](const std::string& out, const std::vector<std::string>& more) {
    std::vector<std::string> args = {"-i", "ledger.txt", "-o", out, "-r", "ledger.rcp"};
    args.insert(args.end(), more.begin(), more.end());
    return testing::RunKroveld(home, args, dir.path());
  };

  testing::RunResult r = run("ledger.csv", {"--encoding", "utf-8"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(ReadFile(dir.File("ledger.csv")),
            CrLf({"A004,ÖZTÜRK ÇAĞ, 451.25", "A005,山田 太郎 ,  12.00"}));

  r = run("ledger.csv", {"--encoding", "utf-16"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err,
            "kroveld: --encoding \"utf-16\" is not an encoding: use auto, utf-8, cp1252 or "
            "latin1\nRun with --help for more information.\n");

  if (!testing::HavePythonModules("openpyxl")) GTEST_SKIP() << "python3 with openpyxl is missing";
  r = run("ledger.xlsx", {"--encoding=auto"});
  ASSERT_EQ(r.status, 0) << r.err;
  const testing::DumpedBook book = testing::ReadWithPython(dir.File("ledger.xlsx"));
  ASSERT_FALSE(book.sheets.empty());
  std::string cells;
  for (const auto& [at, cell] : book.sheets[0].cells) cells += cell.type + ":" + cell.value + "|";
  EXPECT_EQ(cells, "s:A004|s:ÖZTÜRK ÇAĞ|n:451.25|s:A005|s:山田 太郎 |n:12.0|");
}

}  // namespace
}  // namespace kroveld
