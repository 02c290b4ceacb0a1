// A stop while a big .xlsx is packed into its zip: the packing runs in a child process and the
// tick is asked all along, so the save ends there and then.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cerrno>
#include <string>
#include <vector>

#include "jobs/workbook/workbook.h"
#include "jobs/workbook/xlsx_writer.h"
#include "support/test_support.h"
#include "util/files.h"

namespace kroveld {
namespace {

// Nothing of the stopped save is left behind: no file and no process.
TEST(XlsxPacking, AStopWhileABigWorkbookIsPackedEndsItAtOnce) {
  testing::TempDir dir;
  const std::string path = dir.File("kept.xlsx");
  testing::WriteFile(path, "the previous output");
  Workbook book;
  for (int r = 1; r <= 400000; ++r) {
    book.GetSheet(1).SetText(r, 1, "row " + std::to_string(r));
    book.GetSheet(1).SetNumber(r, 2, r * 1.25);
  }
  int packingTurns = 0;
  const SaveTick stopWhilePacking = [&](std::int64_t written, std::int64_t held) {
    if (written < held) return true;
    return ++packingTurns < 3;  // the third turn during the packing asks to stop
  };
  std::string error;
  EXPECT_FALSE(WriteXlsx(book, path, error, stopWhilePacking));
  // Packed in place, the tick would be asked once, after the packing, and the save would stand.
  EXPECT_EQ(packingTurns, 3);
  EXPECT_NE(error.find("was stopped; the file there is kept as it was"), std::string::npos);
  EXPECT_TRUE(testing::ReadFile(path) == "the previous output");  // (no dump of a workbook)
  FolderListing listing;
  ASSERT_TRUE(ListFolder(dir.path(), listing));
  EXPECT_EQ(listing.files, std::vector<std::string>{"kept.xlsx"});
  errno = 0;
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);  // no child left, not even a finished one
  EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace kroveld
