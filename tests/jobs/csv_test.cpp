#include <gtest/gtest.h>

#include <filesystem>

#include "engine/context.h"
#include "engine/extract_support.h"
#include "jobs/csv/csv_conversion.h"
#include "jobs/csv/csv_sink.h"

namespace kroveld::testing {
namespace {

std::vector<std::string> FolderEntries(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& e : std::filesystem::directory_iterator(folder)) {
    names.push_back(e.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(CsvSink, WritesRowsWithCrLfAndTheBytesUnchangedOnlyOnCommit) {
  TempDir dir;
  const std::string path = dir.File("out.csv");
  CsvSink sink;
  ASSERT_TRUE(sink.Open(path)) << sink.Error();
  sink.WriteCsvRow("a,b");
  sink.WriteCsvRow("");
  sink.WriteCsvRow(std::string("\x80\xff\0;\"", 5));
  sink.SetCell(1, 1, 1, "dropped");  // titles and consolidations have no CSV form
  EXPECT_EQ("", sink.GetCell(1, 1, 1));
  EXPECT_FALSE(std::filesystem::exists(path));  // nothing where the output goes until committed
  ASSERT_TRUE(sink.Commit()) << sink.Error();
  EXPECT_EQ(3, sink.RowsWritten());
  EXPECT_EQ(std::string("a,b\r\n\r\n\x80\xff\0;\"\r\n", 14), ReadFile(path));
  EXPECT_EQ(std::vector<std::string>{"out.csv"}, FolderEntries(dir.path()));  // no temp file left
}

TEST(CsvSink, AnExistingFileIsReplacedNotAppendedAndKeptOnAbort) {
  TempDir dir;
  const std::string path = dir.Write("out.csv", "old row 1\r\nold row 2\r\nold row 3\r\n");
  {
    CsvSink sink;
    ASSERT_TRUE(sink.Open(path));
    sink.WriteCsvRow("half written");
    sink.Abort();
  }
  EXPECT_EQ("old row 1\r\nold row 2\r\nold row 3\r\n", ReadFile(path));
  {
    CsvSink sink;
    ASSERT_TRUE(sink.Open(path));
    sink.WriteCsvRow("never committed");
  }  // destroyed without Commit
  EXPECT_EQ("old row 1\r\nold row 2\r\nold row 3\r\n", ReadFile(path));

  CsvSink sink;
  ASSERT_TRUE(sink.Open(path));
  sink.WriteCsvRow("new");
  ASSERT_TRUE(sink.Commit());
  EXPECT_EQ("new\r\n", ReadFile(path));
  EXPECT_EQ(std::vector<std::string>{"out.csv"}, FolderEntries(dir.path()));
}

TEST(CsvSink, AnUnwritableFolderIsReportedWithPathAndReason) {
  TempDir dir;
  const std::string notAFolder = dir.Write("plain.txt", "x");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {dir.File("missing/out.csv"), "No such file or directory"},
      {notAFolder + "/out.csv", "Not a directory"},
  };
  for (const auto& [path, reason] : cases) {
    CsvSink sink;
    EXPECT_FALSE(sink.Open(path));
    EXPECT_NE(std::string::npos, sink.Error().find(path)) << sink.Error();
    EXPECT_NE(std::string::npos, sink.Error().find(reason)) << sink.Error();
  }
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
  const std::string out = job.dir.File("no/such/folder/out.csv");
  std::string error;
  EXPECT_FALSE(ConvertToCsv(*job.ctx, out, &error));
  EXPECT_NE(std::string::npos, error.find(out)) << error;
  EXPECT_NE(std::string::npos, error.find("No such file or directory")) << error;
  EXPECT_EQ(&job.sink, job.ctx->sink);
  EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace
}  // namespace kroveld::testing
