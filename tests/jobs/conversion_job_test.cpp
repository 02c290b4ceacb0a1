#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>

#include "engine/context.h"
#include "jobs/auto_recipe_lock.h"
#include "jobs/conversion_job.h"
#include "jobs/write_report.h"
#include "support/job_support.h"
#include "support/recording_port.h"

namespace kroveld {
namespace {

using testing::ReadFile;
using testing::RecordingHost;
using testing::RecordingPort;
using testing::TempDir;

struct JobFixture {
  TempDir dir;
  RecordingPort port;
  Context ctx{port, dir.path()};
  RecordingHost host;

  void UseRecipe(const std::string& recipe, const std::string& input, const std::string& output) {
    ctx.options.bUseRecipe = true;
    ctx.options.sRecipeFile = recipe;
    host.recipeBoxText = recipe;
    ctx.options.sInputFile = input;
    ctx.options.sOutputFile = output;
  }
};

TEST(OutputKind, DecidedBySubstringCsvFirst) {
  const std::pair<const char*, OutputKind> cases[] = {
      {"/o/report.csv", OutputKind::Csv},
      {"/o/report.CSV.xls", OutputKind::Csv},
      {"/o/data.csv/report.xls", OutputKind::Csv},
      {"/o/report.Xls", OutputKind::Workbook},
      {"", OutputKind::None},
  };
  for (const auto& [path, kind] : cases) EXPECT_EQ(OutputKindOf(path), kind) << path;
}

// Each refusal is one exclamation message; only the output kind is checked before the lists
// are updated. The automatic road leaves the older automatic recipe as it was.
TEST(RunRecipe, RefusalsBeforeAnyConversion) {
  enum Setup { kBadOutput, kNoRecipe, kRecipeIsFolder, kNoInput, kNoInputAutomatic, kHugeTab };
  for (Setup setup :
       {kBadOutput, kNoRecipe, kRecipeIsFolder, kNoInput, kNoInputAutomatic, kHugeTab}) {
    SCOPED_TRACE(setup);
    JobFixture f;
    const std::string input = f.dir.File("nope.txt"), output = f.dir.File("out.csv");
    const std::string autoRecipe = f.dir.Write("_AutoRecipe.rcp", "older automatic recipe\r\n");
    std::string expected = "Input file: " + input + " does not exist!";
    if (setup == kBadOutput) {
      f.UseRecipe(f.dir.File("missing.rcp"), input, f.dir.File("out.doc"));
      expected = "Output File must be of type XLS or CSV";
    } else if (setup == kNoRecipe || setup == kRecipeIsFolder) {
      const std::string recipe = f.dir.File("ledger.rcp");
      if (setup == kRecipeIsFolder) std::filesystem::create_directory(recipe);
      f.UseRecipe(recipe, f.dir.Write("in.txt", testing::SmallReport()), output);
      f.host.recipeBoxText = "ledger as typed";
      expected = "Recipe file ledger as typed does not exist!";
    } else if (setup == kNoInput) {
      f.UseRecipe(testing::SmallRecipe(f.dir), input, output);
    } else if (setup == kHugeTab) {
      f.UseRecipe(testing::SmallRecipe(f.dir), f.dir.Write("in.txt", "a\tb\r\n"), output);
      f.ctx.options.lTabSize = 2000000000;
      expected = "Tab size 2000000000 is too large: a tab stop is at most 1000 characters";
    } else {
      f.ctx.options.sInputFile = input;
      f.ctx.options.sOutputFile = output;
    }
    RunRecipe(f.ctx, f.host);
    ASSERT_EQ(f.port.Texts(), std::vector<std::string>{expected});
    EXPECT_EQ(f.port.messages[0].icon, Icon::Exclamation);
    EXPECT_EQ(f.host.mruUpdates, setup == kBadOutput ? 0 : 1);
    EXPECT_FALSE(std::filesystem::exists(output));
    EXPECT_EQ(ReadFile(autoRecipe), "older automatic recipe\r\n");
  }
}

TEST(RunRecipe, ConvertsTheJobsInputNotTheRecipesInputFileOne) {
  JobFixture f;
  f.dir.Write("elsewhere.txt", testing::SmallReport("wrong", "wrong"));
  const std::string input = f.dir.Write("sub/today.txt", testing::SmallReport("fig", "plum"));
  f.UseRecipe(testing::SmallRecipe(f.dir), input, f.dir.File("out.csv"));
  RunRecipe(f.ctx, f.host);
  EXPECT_TRUE(f.port.messages.empty()) << f.port.Texts().front();
  EXPECT_EQ(ReadFile(f.dir.File("out.csv")), testing::SmallCsv("fig", "plum"));
  EXPECT_EQ(f.ctx.recipe.InputFileNames[0], input);
  EXPECT_EQ(f.ctx.periodLabel, "1");
  EXPECT_EQ(f.host.mruUpdates, 1);
  // The caption shows the CSV text while writing and is put back.
  ASSERT_EQ(f.port.captions.size(), 2u);
  EXPECT_EQ(f.port.captions[0], kCsvCaption);
  EXPECT_EQ(f.port.captions[1], "Kroveld - Document To CSV/XLS Conversion");
}

TEST(RunRecipe, MissingExportDefinitionIsReportedAndTheOutputPhaseStillRuns) {
  JobFixture f;
  const std::string recipe = testing::SmallRecipe(f.dir);
  std::filesystem::remove(f.dir.File("stock.krs"));
  f.UseRecipe(recipe, f.dir.Write("in.txt", testing::SmallReport()), f.dir.File("out.csv"));
  RunRecipe(f.ctx, f.host);
  ASSERT_FALSE(f.port.messages.empty());
  for (const auto& m : f.port.messages) {
    EXPECT_EQ(m.text, "Cannot find Export Specs file: stock.krs");
    EXPECT_EQ(m.icon, Icon::None);
  }
  EXPECT_TRUE(std::filesystem::exists(f.dir.File("out.csv")));
  EXPECT_EQ(ReadFile(f.dir.File("out.csv")), "");
}

TEST(WriteReport, WorkbookIsWrittenWithItsCaption) {
  JobFixture f;
  const std::string output = f.dir.File("book.xlsx");
  f.UseRecipe(testing::SmallRecipe(f.dir), f.dir.Write("in.txt", testing::SmallReport()), output);
  RunRecipe(f.ctx, f.host);
  EXPECT_TRUE(f.port.messages.empty());
  EXPECT_TRUE(std::filesystem::exists(output));
  ASSERT_EQ(f.port.captions.size(), 2u);
  EXPECT_EQ(f.port.captions[0], kWorkbookCaption);
}

TEST(AutoRecipeLock, HeldExclusivelyOnTheFolderUntilReleased) {
  TempDir dir;
  auto tryLock = [&] {
    const int fd = ::open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
    const bool got = fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    if (fd >= 0) ::close(fd);
    return got;
  };
  RecordingPort port;
  std::atomic<bool> stop{false};
  {
    AutoRecipeLock lock(dir.path(), port, stop);
    ASSERT_TRUE(lock.Held());
    EXPECT_FALSE(tryLock());
    lock.Release();
    EXPECT_TRUE(tryLock());
  }
  AutoRecipeLock again(dir.path(), port, stop);
  EXPECT_TRUE(again.Held());
  EXPECT_FALSE(tryLock());
  EXPECT_EQ(port.events, 0);  // taken at once: no waiting
  // No lock file is left in the folder.
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));

  // While it is held, a second wait keeps the events flowing until a stop request ends it.
  port.onProcessEvents = [&] {
    if (port.events == 3) stop = true;
  };
  AutoRecipeLock waiting(dir.path(), port, stop);
  EXPECT_FALSE(waiting.Held());
  EXPECT_TRUE(waiting.Stopped());
  EXPECT_EQ(port.events, 3);
}

}  // namespace
}  // namespace kroveld
