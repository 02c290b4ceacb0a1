// A full disk: every output kind fails with one line that names the path and the reason, the
// old output stays as it was and no temporary file is left. Needs a small tmpfs, which only root
// can mount; elsewhere the test is skipped.
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;

class FullDisk : public ::testing::Test {
 protected:
  void SetUp() override {
    disk_ = work_.File("disk");
    fs::create_directories(disk_);
    if (::geteuid() != 0 || ::mount("tmpfs", disk_.c_str(), "tmpfs", 0, "size=64k") != 0) {
      GTEST_SKIP() << "cannot mount a small tmpfs here (needs root)";
    }
    mounted_ = true;
  }
  void TearDown() override {
    if (mounted_) ::umount(disk_.c_str());
  }

  testing::TempDir work_;
  std::string disk_;
  bool mounted_ = false;
};

TEST_F(FullDisk, EveryOutputKindFailsCleanlyAndKeepsTheOldOutput) {
  // A report of about 200 KB, three columns on every row.
  std::string report = "TOP\n";
  for (int i = 0; i < 3000; ++i) {
    char line[80];
    std::snprintf(line, sizeof line, "%-8d%-40s%12.2f\n", i,
                  ("account " + std::to_string(i * 7)).c_str(), i * 1.5);
    report += line;
  }
  report += "BOTTOM\n";
  const std::string input = work_.Write("big.txt", report);
  const std::string small = work_.Write(
      "small.txt", "TOP\n1       cash                                          1.00\nBOTTOM\n");
  const std::string recipe = work_.Write(
      "big.rcp",
      "[Header]\r\nProduct=KRO-B\r\nFileType=RECIPE\r\nFileFormat=1.0\r\n[Table 1]\r\n"
      "ReadStartLine=TOP\r\nReadStartLineOffset=1\r\nReadEndLine=BOTTOM\r\nReadEndLineOffset=-1\r\n"
      "Parsing=------- --------------------------------------- -----------\r\nWriteColumn=A\r\n");
  const std::string home = work_.File("home");
  fs::create_directories(home);
  for (const char* kind : {"csv", "xlsx", "xls"}) {
    SCOPED_TRACE(kind);
    const std::string output = disk_ + "/out." + kind;
    auto r = testing::RunKroveld(home, {"-i", small, "-o", output, "-r", recipe});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::string before = ReadFile(output);
    r = testing::RunKroveld(home, {"-i", input, "-o", output, "-r", recipe});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "kroveld: error: Cannot write " + output + ": No space left on device\n");
    EXPECT_EQ(ReadFile(output), before);
    int files = 0;
    for (const auto& e : fs::directory_iterator(disk_))
      files += e.path().filename() != "out.csv" && e.path().filename() != "out.xlsx" &&
               e.path().filename() != "out.xls";
    EXPECT_EQ(files, 0) << "a temporary file was left";
    fs::remove(output);
  }
}

}  // namespace
}  // namespace kroveld
