// Nothing lost: with --backup the output a run replaces is kept as NAME~ (or NAME.~N~) when the
// run reported anything (a wrong recipe, a stop), and no backup is left by a run that reported
// nothing; a stop while a workbook is being saved keeps the old workbook.
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;

struct Work : testing::ExampleWork {
  Work() : ExampleWork("trial-balance") {
    testing::WriteFile(F("wrong.rcp"), "[Header]\r\nProduct=KRO\r\n");
    Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "trial-balance.rcp"});
    good = ReadFile(F("out.csv"));
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names = testing::FileNames(dir.path());
    std::erase_if(names, [](const std::string& n) {
      return !n.starts_with("out.") && !n.starts_with(".out.");
    });
    return names;
  }
  // big.txt: `rows` ledger lines between TOP and BOTTOM; big.rcp: a short recipe for them.
  void WriteBigReport(int rows) const {
    std::string report = "TOP\n";
    const std::string row = "1000    Cash at bank                        12,450.00\n";
    report.reserve(row.size() * static_cast<std::size_t>(rows) + 16);
    for (int i = 0; i < rows; ++i) report += row;
    report += "BOTTOM\n";
    testing::WriteFile(F("big.txt"), report);
    testing::WriteFile(
        F("big.rcp"),
        "[Header]\r\nProduct=KRO-B\r\nFileType=RECIPE\r\nFileFormat=1.0\r\n[Table 1]\r\n"
        "ReadStartLine=TOP\r\nReadStartLineOffset=1\r\nReadEndLine=BOTTOM\r\n"
        "ReadEndLineOffset=-1\r\nParsing=------- ------------------------------- "
        "-------------\r\nWriteColumn=A\r\n");
  }
  std::string good;
};

TEST(Backup, KeptWhenTheRunReportsAnythingAndOnlyThen) {
  Work w;
  ASSERT_FALSE(w.good.empty());
  // A wrong recipe: the system still writes its empty CSV; the good one is kept as out.csv~.
  auto r = w.Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "wrong.rcp", "--backup"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(ReadFile(w.F("out.csv")), "");
  EXPECT_EQ(ReadFile(w.F("out.csv~")), w.good);
  // A run that reports nothing leaves no backup of its own and the earlier one as it was.
  r = w.Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "trial-balance.rcp", "-b"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(w.Names(), (std::vector<std::string>{"out.csv", "out.csv~"}));
  EXPECT_EQ(ReadFile(w.F("out.csv~")), w.good);
  // Numbered backups count up; "existing" goes on numbering once numbered ones exist; a suffix.
  for (const char* control : {"--backup=numbered", "--backup=numbered", "--backup"}) {
    w.Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "wrong.rcp", control});
  }
  w.Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "wrong.rcp", "--backup=simple",
         "--suffix=.old"});
  EXPECT_EQ(w.Names(), (std::vector<std::string>{"out.csv", "out.csv.old", "out.csv.~1~",
                                                 "out.csv.~2~", "out.csv.~3~", "out.csv~"}));
  EXPECT_EQ(ReadFile(w.F("out.csv.~1~")), w.good);  // what the clean run had written
  EXPECT_EQ(ReadFile(w.F("out.csv.~2~")), "");
  // Without --backup nothing is kept; a bad control word is refused before anything runs.
  w.Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(w.Names().size(), 6u);
  r = w.Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "wrong.rcp", "--backup=often"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(ReadFile(w.F("out.csv")), w.good);
}

TEST(Backup, KeptWhenARunIsStoppedBySignal) {
  Work w;
  // A report long enough that the signal comes while its table is being written.
  w.WriteBigReport(800000);
  const auto r = testing::RunKroveld(
      w.home, {"-i", "big.txt", "-o", "out.csv", "-r", "big.rcp", "--backup"}, w.dir.path(),
      [&](pid_t pid) {
        testing::AwaitEntry(w.dir.path(), ".out.csv.kroveld-", 4000);  // the new output is written
        kill(pid, SIGTERM);
      });
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_EQ(ReadFile(w.F("out.csv~")), w.good);
  EXPECT_EQ(w.Names(), (std::vector<std::string>{"out.csv", "out.csv~"}));
}

TEST(Save, AStopWhileTheWorkbookIsSavedKeepsTheOldOne) {
  Work w;
  w.Run({"-i", "trial-balance.txt", "-o", "book.xlsx", "-r", "trial-balance.rcp"});
  const std::string before = ReadFile(w.F("book.xlsx"));
  ASSERT_FALSE(before.empty());
  // 300,000 rows: the save takes long enough for a signal to come while it runs.
  w.WriteBigReport(300000);
  const auto r = testing::RunKroveld(
      w.home, {"-i", "big.txt", "-o", "book.xlsx", "-r", "big.rcp"}, w.dir.path(), [&](pid_t pid) {
        // The temporary workbook appears when the save begins.
        testing::AwaitEntry(w.dir.path(), ".book.xlsx.kroveld-", 20000);
        kill(pid, SIGTERM);
      });
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("kroveld: error: Saving " + w.F("book.xlsx") +
                       " was stopped; the file there is kept as it was\n"),
            std::string::npos)
      << r.err;
  EXPECT_EQ(ReadFile(w.F("book.xlsx")), before);
  for (const std::string& name : testing::FileNames(w.dir.path())) {
    EXPECT_FALSE(name.starts_with(".book.xlsx.")) << name;
  }
}

}  // namespace
}  // namespace kroveld
