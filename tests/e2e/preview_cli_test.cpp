// kroveld --preview through the real binary: the blocks and the first rows on stdout, the
// messages on stderr, the exit status, and not one file written anywhere.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

using testing::ExampleWork;
using testing::ReadFile;
using testing::RunResult;

// Every file under `folder`, with its size.
std::set<std::pair<std::string, std::uintmax_t>> Listing(const std::string& folder) {
  std::set<std::pair<std::string, std::uintmax_t>> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    files.insert({entry.path().string(), entry.is_regular_file() ? entry.file_size() : 0});
  }
  return files;
}

TEST(PreviewCli, ExamplePrintsBlocksAndFirstRowsAndWritesNothing) {
  ExampleWork w("trial-balance");
  const auto before = Listing(w.dir.path());
  const RunResult r = w.Run({"--preview", "-i", "trial-balance.txt", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(Listing(w.dir.path()), before);  // not even config.ini or the error log
  // The blocks, spans and rows the tables found, then the first rows of the sheet.
  EXPECT_EQ(r.out.substr(0, r.out.find("\n\n") + 1),
            "Title 1: sheet 1 rows 1-2, column A\n"
            "Title 2: sheet 1 row 10, column A\n"
            "Table 1: lines 8-14 (top key on line 6, bottom key on line 16), sheet 1 rows 3-9\n"
            "  Col 1: characters 1-8 -> column A\n  Col 2: characters 10-39 -> column B\n"
            "  Col 3: characters 41-53 -> column C\n  Col 4: characters 55-67 -> column D\n"
            "Table 2: lines 21-24 (top key on line 19, bottom key on line 26), sheet 1 rows 11-14\n"
            "  Col 1: characters 1-8 -> column A\n  Col 2: characters 10-39 -> column B\n"
            "  Col 3: characters 41-47 -> column C\n  Col 4: characters 49-60 -> column D\n");
  for (const char* line :
       {"Sheet 1 (Sheet1): 14 rows\n",
        " 5 |                                           2000 | Accounts payable               "
        "|               |  4,120.10\n",
        "12 | E-0023                                         | Bram de Vries                  "
        "|         152.5 |  3,977.25\n",
        "Sheet 2 (Sheet2): empty\n"}) {
    EXPECT_NE(r.out.find(line), std::string::npos) << line << "\nin\n" << r.out;
  }
}

TEST(PreviewCli, MessagesGoToStderrWithExitStatusOne) {
  ExampleWork w("trial-balance");
  testing::ReplaceInFile(w.F("trial-balance.krs"), "Employee Name", "Employee Nmae");
  const RunResult r =
      w.Run({"--preview", "-i", "trial-balance.txt", "-r", "trial-balance.rcp", "--rows", "2"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err,
            "kroveld: error: Error in Table specs: Can not find ReadStartLine: Employee Nmae\n");
  EXPECT_NE(r.out.find("Table 2: top key text not found\n"), std::string::npos) << r.out;
  // The pass ends at the failing table: the titles and Table 1 wrote rows 1-10.
  EXPECT_NE(r.out.find("10 rows, the first 2 shown"), std::string::npos) << r.out;
  EXPECT_EQ(r.out.find("\n3 |"), std::string::npos) << r.out;  // two rows shown, no more
  EXPECT_FALSE(std::filesystem::exists(w.home + "/config.ini"));
}

TEST(PreviewCli, RejectedLinesAndMissingFiles) {
  ExampleWork w("trial-balance");
  RunResult r = w.Run({"--preview", "-i", "trial-balance.txt"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("--recipe is required"), std::string::npos) << r.err;
  r = w.Run({"--preview", "-i", "nothing.txt", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("kroveld: warning: Input file: "), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("nothing.txt does not exist!"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace kroveld
