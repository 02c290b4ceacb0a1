// The general-ledger example through the real program: detail rows only, each with the
// department printed above it, the rows checked against the department totals the report prints.
#include <gtest/gtest.h>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

using testing::ReadFile;

struct Work : testing::ExampleWork {
  Work() : ExampleWork("general-ledger") {}
};

const char* kRows =
    "10,SALES,4000,Product sales,12500.00\r\n"
    "10,SALES,4010,Service revenue,3250.50\r\n"
    "10,SALES,4090,Returns,-450.00\r\n"
    "20,WAREHOUSE,5000,Freight in,1120.00\r\n"
    "20,WAREHOUSE,5010,Packing materials,310.25\r\n"
    "30,ADMINISTRATION,6000,Rent,2000.00\r\n"
    "30,ADMINISTRATION,6010,Office supplies,87.40\r\n"
    "30,ADMINISTRATION,6020,Telephone,142.60\r\n";

std::string LastLine(const std::string& text) {
  const std::size_t end = text.find_last_not_of('\n');
  const std::size_t start = text.rfind('\n', end);
  return text.substr(start == std::string::npos ? 0 : start + 1, end - start);
}

TEST(Mining, DetailRowsWithTheirDepartmentAndTheTotalsAgree) {
  Work w;
  const auto r =
      w.Run({"-i", "general-ledger.txt", "-o", "gl.csv", "-r", "general-ledger.rcp", "--verbose"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFile(w.F("gl.csv")), kRows);
  EXPECT_EQ(LastLine(r.err), "kroveld: all 3 printed totals agree with their rows") << r.err;
}

TEST(Mining, ATotalThatDiffersIsAWarningAndTheRowsAreStillWritten) {
  Work w;
  std::string report = ReadFile(w.F("general-ledger.txt"));
  const std::size_t at = report.find("2,230.00");
  ASSERT_NE(at, std::string::npos);
  report.replace(at, 8, "2,330.00");
  testing::WriteFile(w.F("general-ledger.txt"), report);
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
  Work w;
  std::string spec = ReadFile(w.F("general-ledger.krs"));
  const std::size_t at = spec.find("KeepLinesMatching=");
  ASSERT_NE(at, std::string::npos);
  spec.insert(at + 18, "(");
  testing::WriteFile(w.F("general-ledger.krs"), spec);
  const auto r = w.Run({"-i", "general-ledger.txt", "-o", "gl.csv", "-r", "general-ledger.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("kroveld: error: Error in Table 1 : Invalid KeepLinesMatching pattern: "
                       "(^[0-9]{4} (missing )"),
            std::string::npos)
      << r.err;
}

}  // namespace
}  // namespace kroveld
