#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "engine/context.h"
#include "jobs/batch.h"
#include "support/job_support.h"
#include "support/recording_port.h"

namespace kroveld {
namespace {

using testing::ReadFile;
using testing::RecordingHost;
using testing::RecordingPort;
using testing::TempDir;

TEST(PatternMatch, StarDotStarOrExactlyStarDotExtension) {
  struct Case {
    const char* pattern;
    const char* ext;
    bool match;
  } cases[] = {
      {"*.*", "txt", true},   {"*.*", "", true},        {"*.TXT", "txt", true},
      {"*.txt", "Txt", true}, {"*.txt", "csv", false},  {"*.tx", "txt", false},
      {"*.txt", "tx", false}, {"a*.txt", "txt", false}, {"*", "txt", false},
      {"*.", "", true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(PatternMatches(c.pattern, c.ext), c.match) << c.pattern << " / " << c.ext;
  }
}

struct Tree {
  TempDir dir;
  RecordingPort port;
  Context ctx{port, dir.path()};
  Tree() {
    for (const char* f : {"in/b.txt", "in/a.TXT", "in/skip.csv", "in/noext", "in/z/y.txt",
                          "in/sub/x.txt", "in/sub/deep/w.txt"}) {
      dir.Write(f, testing::SmallReport());
    }
  }
  std::string In(const std::string& rel) const { return dir.File("in/" + rel); }
};

TEST(FileList, DepthFirstFilesBeforeSubfoldersSortedByName) {
  Tree t;
  std::vector<std::string> list;
  std::string error;
  ASSERT_TRUE(CreateFileList(t.ctx, t.dir.File("in/*.txt"), true, list, error));
  EXPECT_EQ(list, (std::vector<std::string>{t.In("a.TXT"), t.In("b.txt"), t.In("sub/x.txt"),
                                            t.In("sub/deep/w.txt"), t.In("z/y.txt")}));
  list.clear();
  ASSERT_TRUE(CreateFileList(t.ctx, t.dir.File("in/*.txt"), false, list, error));
  EXPECT_EQ(list, (std::vector<std::string>{t.In("a.TXT"), t.In("b.txt")}));
  list.clear();
  ASSERT_TRUE(CreateFileList(t.ctx, t.dir.File("in/*.*"), false, list, error));
  EXPECT_EQ(list.size(), 4u);  // the file without an extension included
}

TEST(FileList, MissingFolderOrFileFails) {
  Tree t;
  std::vector<std::string> list;
  std::string error;
  EXPECT_FALSE(CreateFileList(t.ctx, t.dir.File("in/ab*.txt"), false, list, error));
  EXPECT_EQ(error, "Folder: " + t.dir.File("in/ab") + " does not exist");
  EXPECT_FALSE(CreateFileList(t.ctx, t.dir.File("in/none.txt"), false, list, error));
  EXPECT_EQ(error, "File: " + t.dir.File("in/none.txt") + " does not exist");
  EXPECT_TRUE(list.empty());
}

TEST(FileList, StopRequestEndsTheWalk) {
  Tree t;
  t.port.onProcessEvents = [&] { t.ctx.run.stopRequested = true; };
  std::vector<std::string> list;
  std::string error;
  EXPECT_TRUE(CreateFileList(t.ctx, t.dir.File("in/*.txt"), true, list, error));
  EXPECT_TRUE(list.empty());
}

// The mirrored tree, outputs beside their reports and backslash paths are checked end to end; a
// name with several dots keeps all but its extension, and the folder to create is named.
TEST(OutputName, KeepsEveryDotButTheExtensionsAndNamesTheFolderToCreate) {
  std::string folder;
  const BatchTarget mirrored = MakeBatchTarget("/in/*.txt", "/out/*.CSV", false);
  EXPECT_EQ(OutputNameFor(mirrored, "/in/a/b/x.report.txt", &folder), "/out/a/b/x.report.CSV");
  EXPECT_EQ(folder, "/out/a/b/");
  const BatchTarget beside = MakeBatchTarget("/in/*.txt", "/out/*.CSV", true);
  EXPECT_EQ(OutputNameFor(beside, "/in/a/b/x.txt", &folder), "/in/a/b/x.CSV");
  EXPECT_EQ(folder, "");
}

struct BatchFixture : Tree {
  RecordingHost host;
  BatchFixture() {
    ctx.options.bUseRecipe = true;
    ctx.options.sRecipeFile = testing::SmallRecipe(dir);
    host.recipeBoxText = ctx.options.sRecipeFile;
  }
};

TEST(BeginProcessing, WildcardTreeIsMirroredBelowTheOutputFolder) {
  BatchFixture b;
  b.ctx.options.sInputFile = b.dir.File("in/*.txt");
  b.ctx.options.sOutputFile = b.dir.File("out/*.csv");
  b.ctx.options.bDoSubfolders = true;
  BeginProcessing(b.ctx, b.host);
  EXPECT_TRUE(b.port.messages.empty()) << b.port.Texts().front();
  for (const char* out :
       {"out/a.csv", "out/b.csv", "out/sub/deep/w.csv", "out/sub/x.csv", "out/z/y.csv"}) {
    EXPECT_EQ(ReadFile(b.dir.File(out)), testing::SmallCsv()) << out;
  }
  EXPECT_EQ(b.host.mruUpdates, 5);
  // Per-file status, then the end of the run.
  std::vector<std::string> panel3;
  for (const auto& [panel, text] : b.port.statuses) {
    if (panel == 3 && text.find(" files]") != std::string::npos) panel3.push_back(text);
  }
  ASSERT_EQ(panel3.size(), 5u);
  EXPECT_EQ(panel3[3], b.In("sub/deep/w.txt") + "   [4 of 5 files]");
  ASSERT_GE(b.port.statuses.size(), 2u);
  EXPECT_EQ(b.port.statuses[b.port.statuses.size() - 2],
            std::make_pair(3, std::string("Conversion Complete")));
  EXPECT_EQ(b.port.statuses.back().first, 2);
}

TEST(BeginProcessing, SingleFileShowsTheOneOfZeroQuirk) {
  BatchFixture b;
  b.ctx.options.sInputFile = b.In("b.txt");
  b.ctx.options.sOutputFile = b.dir.File("single.csv");
  BeginProcessing(b.ctx, b.host);
  ASSERT_FALSE(b.port.statuses.empty());
  EXPECT_EQ(b.port.statuses.front(), std::make_pair(3, b.In("b.txt") + "   [1 of 0 files]"));
  EXPECT_EQ(ReadFile(b.dir.File("single.csv")), testing::SmallCsv());
}

// "Unable to create file list" is in the end-to-end refusal table; the box's title is only here.
TEST(BeginProcessing, OutputWithoutWildcardIsRefused) {
  BatchFixture b;
  b.ctx.options.sInputFile = b.dir.File("in/*.txt");
  b.ctx.options.sOutputFile = b.dir.File("out/all.csv");
  BeginProcessing(b.ctx, b.host);
  ASSERT_EQ(b.port.messages.size(), 1u);
  EXPECT_EQ(b.port.messages[0].text,
            "You must specify a proper output file which includes the wild card\r\n\r\n"
            "For example: C:\\Output\\*.CSV");
  EXPECT_EQ(b.port.messages[0].title, "Invalid Target Folder");
  EXPECT_EQ(b.port.messages[0].icon, Icon::Information);
  EXPECT_EQ(b.host.mruUpdates, 0);
}

TEST(BeginProcessing, TheWholeJobIsMarkedRunning) {
  BatchFixture b;
  b.ctx.options.sInputFile = b.dir.File("in/*.txt");
  b.ctx.options.sOutputFile = b.dir.File("out/*.csv");
  std::vector<bool> running;  // at every yield, between the files too
  b.port.onProcessEvents = [&] { running.push_back(b.ctx.run.running); };
  BeginProcessing(b.ctx, b.host);
  EXPECT_EQ(b.host.mruUpdates, 2);
  ASSERT_GE(running.size(), 2u);
  EXPECT_EQ(std::count(running.begin(), running.end(), false), 0);
  EXPECT_FALSE(b.ctx.run.running);
  EXPECT_EQ(std::make_pair(b.host.started, b.host.finished), std::make_pair(1, 1));
}

}  // namespace
}  // namespace kroveld
