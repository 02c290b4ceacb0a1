#include <gtest/gtest.h>

#include <filesystem>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

namespace fs = std::filesystem;
using testing::DataFile;
using testing::ReadFile;
using testing::RunKroveld;
using testing::TempDir;
using testing::WriteFile;

// A marked-up trial balance whose first table runs over a page break; the second table is clean.
constexpr const char* kMarked =
    "ACME SUPPLY CO.               TRIAL BALANCE            PAGE 1\r\n"
    ">>1\r\n"
    "Account  Description               Debit        Credit\r\n"
    "1000     Cash on hand           1,250.00\r\n"
    "1200     Accounts receivable      980.15\r\n"
    "2000     Accounts payable                   (1,300.00)\r\n"
    "\f\r\n"
    "ACME SUPPLY CO.               TRIAL BALANCE            PAGE 2\r\n"
    "Account  Description               Debit        Credit\r\n"
    "-------  -----------------  ----------  ------------\r\n"
    "3000     Retained earnings                      45.50\r\n"
    "4000     Page 2 advertising        10.00\r\n"
    "<<1\r\n"
    "=\r\n"
    ">>2\r\n"
    "Region     Qty     Amount\r\n"
    "North       12   1,204.50\r\n"
    "South        3    (88.00)\r\n"
    "<<2\r\n"
    "-----      +--  +======\r\n"
    ">>\r\n";

struct Work {
  TempDir dir;
  std::string home = dir.File("home");
  Work() { fs::create_directories(home); }
  testing::RunResult Run(const std::vector<std::string>& args) const {
    return RunKroveld(home, args, dir.path());
  }
  std::size_t Entries(const std::string& folder) const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }
};

TEST(Suggest, PrintsTheKeysPerTableAndWritesNothing) {
  Work w;
  WriteFile(w.dir.File("tb.txt"), kMarked);
  const auto r = w.Run({"--suggest", "-i", "tb.txt"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(r.out,
            "[Table 1]\n"
            "; skips lines 7 (blank), 10 (rule), 8, 9 (do not fit the columns) of lines 4-12\n"
            "SkipBlankLines=TRUE\n"
            "SkipLinesMatching=^\\s*(ACME|Account|-{5,})\n"
            "\n"
            "; Table 2, lines 17-18: both lines fit the template; nothing to skip\n");
  EXPECT_EQ(w.Entries(w.home), 0u);        // not even config.ini or the error log
  EXPECT_EQ(w.Entries(w.dir.path()), 2u);  // home and the report
}

// The real card statements, marked up as one table from the first transaction to the last: the
// statement headings between them differ too much for a skip pattern, the transactions all begin
// with their 16-digit number.
TEST(Suggest, RealStatementsGetAKeepPattern) {
  Work w;
  std::string text = ReadFile(DataFile("card-statements.txt"));
  const std::size_t top = text.find("Tran ID");
  const std::size_t last = text.rfind("\r\n0000000") + 2;
  const std::size_t end = text.find("\r\n", last) + 2;
  ASSERT_NE(top, std::string::npos);
  text.insert(end, "<<1\r\n=\r\n>>\r\n");
  text.insert(top, ">>1\r\n");
  WriteFile(w.dir.File("cards.txt"), text);
  const auto r = w.Run({"--suggest", "-i", "cards.txt"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("\nKeepLinesMatching=^\\s*\\d{16}(\\s|$)\n"), std::string::npos) << r.out;
  EXPECT_EQ(r.out.find("SkipLinesMatching"), std::string::npos) << r.out;
}

TEST(Suggest, BadRequests) {
  Work w;
  WriteFile(w.dir.File("tb.txt"), kMarked);
  WriteFile(w.dir.File("long.rcp"), "[Header]\r\nProduct=KRO\r\nFileType=RECIPE\r\n");
  const struct {
    std::vector<std::string> args;
    int status;
    std::string err;
  } cases[] = {
      {{"--suggest", "-i", "tb.txt", "-o", "tb.csv"},
       2,
       "kroveld: --suggest writes nothing: leave out --output\n"},
      {{"--suggest"}, 2, "kroveld: --suggest needs --input\n"},
      {{"--suggest", "--check", "-i", "tb.txt", "-r", "long.rcp"},
       2,
       "kroveld: --check and --suggest are runs of their own: give one of them\n"},
      {{"--suggest", "-i", "none.txt"},
       1,
       "kroveld: warning: Input file: " + w.dir.File("none.txt") + " does not exist!\n"},
      {{"--suggest", "-i", "tb.txt", "-r", "long.rcp"},
       1,
       "kroveld: warning: " + w.dir.File("long.rcp") +
           " is not a short-format recipe (Product=KRO-B): row filters are suggested for "
           "tables whose columns come from a template, so leave out --recipe for a marked-up "
           "report or name a short-format recipe\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.args.back());
    const auto r = w.Run(c.args);
    EXPECT_EQ(r.status, c.status);
    EXPECT_EQ(r.out, "");
    EXPECT_TRUE(r.err.starts_with(c.err)) << r.err;
  }
}

}  // namespace
}  // namespace kroveld
