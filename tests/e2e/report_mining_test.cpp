// The two real multi-part print-outs of the sample collection mined into clean CSV tables by the
// real program: the card statements give one row per transaction with the statement's account
// and customer carried onto it, the treasury statement gives its cash-flow table across a page
// break with page headers, rules and column headings left out. The expected files were checked
// line by line against the reports.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

using testing::DataFile;
using testing::ReadFile;

struct Case {
  const char* report;
  const char* recipe;    // in tests/data/e2e, with its .krs beside it
  const char* expected;  // the hand-checked CSV, in tests/data/e2e
};

// Names the case in a failure instead of dumping its bytes.
void PrintTo(const Case& c, std::ostream* os) {
  *os << c.recipe;
}

class ReportMining : public ::testing::TestWithParam<Case> {};

TEST_P(ReportMining, CsvMatchesTheHandCheckedRows) {
  const Case& c = GetParam();
  testing::TempDir dir;
  const std::string home = dir.File("home");
  std::filesystem::create_directories(home);
  const auto r = testing::RunKroveld(home, {"-i", DataFile(c.report), "-o", dir.File("out.csv"),
                                            "-r", DataFile(std::string("e2e/") + c.recipe)});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");  // no value fell back to text, no total or filter note
  EXPECT_EQ(ReadFile(dir.File("out.csv")), ReadFile(DataFile(std::string("e2e/") + c.expected)));
}

INSTANTIATE_TEST_SUITE_P(
    RealReports, ReportMining,
    ::testing::Values(Case{"card-statements.txt", "card-transactions.rcp", "card-transactions.csv"},
                      Case{"treasury-statement-2013-02-05.txt", "treasury-cash-flows.rcp",
                           "treasury-cash-flows.csv"}),
    [](const auto& info) { return info.index == 0 ? "CardStatements" : "TreasuryStatement"; });

}  // namespace
}  // namespace kroveld
