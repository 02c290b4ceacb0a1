#include <gtest/gtest.h>

#include <filesystem>

#include "engine/context.h"
#include "jobs/csv/csv_conversion.h"
#include "jobs/csv/csv_sink.h"
#include "support/extract_support.h"
#include "util/files.h"

namespace kroveld::testing {
namespace {

std::vector<std::string> FolderEntries(const std::string& folder) {
  FolderListing listing;
  EXPECT_TRUE(ListFolder(folder, listing));
  return listing.files;
}

// Replacing an existing file whole (not appending) is checked by ConvertToCsv below, a sink
// dropped without Commit by the AtomicFile tests and a stopped run end to end.
TEST(CsvSink, WritesRowsWithCrLfAndTheBytesUnchangedOnlyOnCommit) {
  TempDir dir;
  const std::string old = "old row 1\r\nold row 2\r\n";
  const std::string path = dir.Write("out.csv", old);
  CsvSink sink;
  ASSERT_TRUE(sink.Open(path)) << sink.Error();
  sink.WriteCsvRow("a,b");
  sink.WriteCsvRow("");
  sink.WriteCsvRow(std::string("\x80\xff\0;\"", 5));
  sink.SetCell(1, 1, 1, "dropped");  // titles and consolidations have no CSV form
  EXPECT_EQ("", sink.GetCell(1, 1, 1));
  EXPECT_EQ(old, ReadFile(path));  // nothing where the output goes until committed
  ASSERT_TRUE(sink.Commit()) << sink.Error();
  EXPECT_EQ(std::string("a,b\r\n\r\n\x80\xff\0;\"\r\n", 14), ReadFile(path));
  EXPECT_EQ(std::vector<std::string>{"out.csv"}, FolderEntries(dir.path()));  // no temp file left
}

// A recipe of one table over report.txt, built in code.
struct CsvJob : ExtractFixture {
  CsvJob() {
    UseReport(CrLf({"Ledger", "Account      Amount", "Cash         1,234.50",
                    "Bank, main   (12.00)", "\"Petty\"      7", "End of ledger"}));
    auto& specs = ctx->recipe.ExportSpecs;
    specs.Tables.push_back(
        MakeTable("Account", 1, "End of ledger", -1, {MakeColumn(1, 12), MakeColumn(14, 21)}));
    specs.TableCount = 1;
    specs.SectionSequenceCollection = {"Table"};
  }
};

TEST(ConvertToCsv, WritesTheTableRowsAndPutsTheSinkBack) {
  CsvJob job;
  const std::string out = job.dir.Write("out.csv", "stale content that must go\r\n");
  std::string error;
  ASSERT_TRUE(ConvertToCsv(*job.ctx, out, &error)) << error;
  EXPECT_EQ(
      CrLf({"Cash        ,\"1,234.50\"", "\"Bank, main  \",(12.00) ", "\"\"\"Petty\"\"     \",7 "}),
      ReadFile(out));
  EXPECT_EQ(&job.sink, job.ctx->sink);
  EXPECT_TRUE(job.ui.messages.empty());
  EXPECT_TRUE(job.sink.cells.empty());
}

TEST(ConvertToCsv, AnUnwritableOutputIsReportedWithPathAndReason) {
  CsvJob job;
  const std::string notAFolder = job.dir.Write("plain.txt", "x");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {job.dir.File("no/such/folder/out.csv"), "No such file or directory"},
      {notAFolder + "/out.csv", "Not a directory"},
  };
  for (const auto& [out, reason] : cases) {
    std::string error;
    EXPECT_FALSE(ConvertToCsv(*job.ctx, out, &error));
    EXPECT_NE(std::string::npos, error.find(out)) << error;
    EXPECT_NE(std::string::npos, error.find(reason)) << error;
    EXPECT_EQ(&job.sink, job.ctx->sink);
    EXPECT_FALSE(std::filesystem::exists(out));
  }
}

}  // namespace
}  // namespace kroveld::testing
