// What a command-line run says about itself beyond the system's messages: the --verbose summary
// (files converted and failed, rows written, bytes read, seconds, throughput), which does not
// count as a message, and the note on a wildcard that matches no file.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

namespace fs = std::filesystem;
using testing::LastLine;

TEST(Verbose, OneSummaryLineAtTheEndOfAConventionalRun) {
  testing::ExampleWork w("trial-balance");
  const std::string size = std::to_string(fs::file_size(w.F("trial-balance.txt")));
  const std::string bytes =
      size.size() > 3 ? size.substr(0, size.size() - 3) + "," + size.substr(size.size() - 3) : size;
  auto r = w.Run({"-i", "trial-balance.txt", "-o", "a.csv", "-r", "trial-balance.rcp", "-v"});
  EXPECT_EQ(r.status, 0) << r.err;  // the summary is not a message
  EXPECT_TRUE(std::regex_match(
      LastLine(r.err), std::regex("kroveld: 1 file converted, 0 failed, 11 rows written, " + bytes +
                                  R"( bytes read in \d+\.\d\d s \(\d+\.\d MB/s\))")))
      << r.err;

  // A batch of two reports, one of which the recipe does not fit.
  fs::create_directories(w.F("in"));
  fs::copy_file(w.F("trial-balance.txt"), w.F("in/a.txt"));
  testing::WriteFile(w.F("in/b.txt"), "nothing the recipe looks for\r\n");
  r = w.Run({"-i", "in/*.txt", "-o", "out/*.csv", "-r", "trial-balance.rcp", "--verbose"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(LastLine(r.err).find("kroveld: 2 files converted, 1 failed, 11 rows written, "),
            std::string::npos)
      << r.err;

  // Without --verbose, and on the slash command line (where /V is only accepted), no summary.
  r = w.Run({"-i", "trial-balance.txt", "-o", "b.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.err, "");
  r = w.Run({"/I" + testing::Backslashed(w.F("trial-balance.txt")),
             "/O" + testing::Backslashed(w.F("c.csv")),
             "/R" + testing::Backslashed(w.F("trial-balance.rcp")), "/V"});
  EXPECT_EQ(r.err, "");
}

TEST(Batch, AWildcardThatMatchesNothingSaysSoAndStillSucceeds) {
  testing::ExampleWork w("trial-balance");
  fs::create_directories(w.F("empty"));
  const auto r = w.Run({"-i", "empty/*.txt", "-o", "out/*.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err,
            "kroveld: note: No file matches " + w.F("empty/*.txt") + ": nothing was converted\n");
}

}  // namespace
}  // namespace kroveld
