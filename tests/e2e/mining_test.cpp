// The general-ledger example through the real program: detail rows only, each with the
// department printed above it, the rows checked against the department totals the report prints.
#include <gtest/gtest.h>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

using testing::LastLine;
using testing::ReadFile;

const char* kRows =
    "10,SALES,4000,Product sales,12500.00\r\n"
    "10,SALES,4010,Service revenue,3250.50\r\n"
    "10,SALES,4090,Returns,-450.00\r\n"
    "20,WAREHOUSE,5000,Freight in,1120.00\r\n"
    "20,WAREHOUSE,5010,Packing materials,310.25\r\n"
    "30,ADMINISTRATION,6000,Rent,2000.00\r\n"
    "30,ADMINISTRATION,6010,Office supplies,87.40\r\n"
    "30,ADMINISTRATION,6020,Telephone,142.60\r\n";

TEST(Mining, DetailRowsWithTheirDepartmentAndTheTotalsAgree) {
  testing::ExampleWork w("general-ledger");
  const auto r =
      w.Run({"-i", "general-ledger.txt", "-o", "gl.csv", "-r", "general-ledger.rcp", "--verbose"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFile(w.F("gl.csv")), kRows);
  EXPECT_EQ(LastLine(r.err), "kroveld: all 3 printed totals agree with their rows") << r.err;
}

TEST(Mining, ATotalThatDiffersIsAWarningAndTheRowsAreStillWritten) {
  testing::ExampleWork w("general-ledger");
  testing::ReplaceInFile(w.F("general-ledger.txt"), "2,230.00", "2,330.00");
  const auto r =
      w.Run({"-i", "general-ledger.txt", "-o", "gl.csv", "-r", "general-ledger.rcp", "--verbose"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("kroveld: warning: Error in Table 1 : Total on line 26 does not match its "
                       "rows in column E: printed 2,330.00, sum of the rows 2,230.00\n"),
            std::string::npos)
      << r.err;
  EXPECT_EQ(LastLine(r.err), "kroveld: 1 of 3 printed totals differ from their rows") << r.err;
  EXPECT_EQ(ReadFile(w.F("gl.csv")), kRows);
}

TEST(Mining, APatternThatDoesNotCompileIsAMessageNotACrash) {
  testing::ExampleWork w("general-ledger");
  testing::ReplaceInFile(w.F("general-ledger.krs"), "KeepLinesMatching=", "KeepLinesMatching=(");
  const auto r = w.Run({"-i", "general-ledger.txt", "-o", "gl.csv", "-r", "general-ledger.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("kroveld: error: Error in Table 1 : Invalid KeepLinesMatching pattern: "
                       "(^[0-9]{4} (missing )"),
            std::string::npos)
      << r.err;
}

}  // namespace
}  // namespace kroveld
