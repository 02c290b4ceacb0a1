#include "app/settings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "app/startup_files.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::ReadFile;
using testing::RecordingPort;
using testing::TempDir;

const std::string kHeader = "[Header]\r\nProduct=KRO_B\r\nFileType=CONFIG\r\nFileFormat=1.0\r\n";

// Each [General] value as the main window reads it: only the word FALSE is false, UseRecipeFile
// is YES after trimming, a tab size that is not a number keeps 8.
TEST(Settings, GeneralValuesFollowTheirReadingRules) {
  const struct {
    std::string general;
    bool warned, show, clear, useRecipe;
    std::string sheet;
    int tab;
  } cases[] = {
      {"", false, true, true, false, "1", 8},
      {"bShowExcel=no\r\n", false, true, true, false, "1", 8},
      {"bShowExcel=false\r\nbClearOutputFileBeforeProcessing=False\r\n", false, false, false, false,
       "1", 8},
      {"bWarnedAboutTabsInFile=0\r\nUseRecipeFile=  yes \r\n", true, true, true, true, "1", 8},
      {"UseRecipeFile=Y\r\nlTabSize=4\r\nsSheetTarget=Budget\r\n", false, true, true, false,
       "Budget", 4},
      {"lTabSize=four\r\n", false, true, true, false, "1", 8},
      {"lTabSize= 12 \r\nbWarnedAboutTabsInFile=FALSE\r\n", false, true, true, false, "1", 12},
  };
  for (const auto& c : cases) {
    TempDir dir;
    Settings s(dir.Write("config.ini", kHeader + "[General]\r\n" + c.general));
    RecordingPort port;
    ASSERT_TRUE(s.Read(port)) << c.general;
    EXPECT_TRUE(port.messages.empty());
    EXPECT_EQ(s.WarnedAboutTabsInFile(), c.warned) << c.general;
    EXPECT_EQ(s.bShowExcel, c.show) << c.general;
    EXPECT_EQ(s.bClearOutputFileBeforeProcessing, c.clear) << c.general;
    EXPECT_EQ(s.useRecipeFile, c.useRecipe) << c.general;
    EXPECT_EQ(s.sSheetTarget, c.sheet) << c.general;
    EXPECT_EQ(s.lTabSize, c.tab) << c.general;
  }
}

// A missing file or a foreign header is reported, reads nothing (the window keeps zero, false,
// false and empty text), loads no list and writes nothing back when the tab note is shown.
TEST(Settings, MissingFileOrWrongHeaderReadsNothing) {
  TempDir dir;
  const std::string missing = dir.File("config.ini");
  const std::string foreign =
      dir.Write("foreign.ini",
                "[Header]\r\nProduct=KRO_B\r\nFileType=RECIPE\r\nFileFormat=1.0\r\n"
                "[General]\r\nlTabSize=4\r\n[mruInputFile]\r\nmruInputFile20=/old/in.txt\r\n");
  const std::string foreignText = ReadFile(foreign);
  for (const auto& [path, message] : {std::pair{missing, missing + " can not be found!"},
                                      std::pair{foreign, std::string("Incorrect file type!")}}) {
    Settings s(path);
    RecordingPort port;
    EXPECT_FALSE(s.Read(port));
    ASSERT_EQ(port.Texts(), std::vector<std::string>{message});
    EXPECT_EQ(port.messages[0].icon, Icon::Critical);
    EXPECT_EQ(s.lTabSize, 0);
    EXPECT_FALSE(s.bShowExcel);
    EXPECT_EQ(s.inputs.Count(), 0);
    s.SetWarnedAboutTabsInFile();
    EXPECT_TRUE(s.WarnedAboutTabsInFile());
  }
  EXPECT_FALSE(std::filesystem::exists(missing));
  EXPECT_EQ(ReadFile(foreign), foreignText);
}

// What the window saves reads back the same, lists included; the tab note's flag is written at
// once.
TEST(Settings, SaveWritesWhatReadGivesBack) {
  TempDir dir;
  const std::string config = dir.File("config.ini");
  ASSERT_TRUE(CreateDefaultConfig(config));
  RecordingPort port;
  {
    Settings s(config);
    ASSERT_TRUE(s.Read(port));
    s.lTabSize = 4;
    s.bShowExcel = false;
    s.sSheetTarget = "Budget, Expense";
    s.useRecipeFile = true;
    s.inputs.AddUniqueItemToCollection("/in/a.txt");
    s.recipes.AddUniqueItemToCollection("/r/ledger.rcp");
    s.SetWarnedAboutTabsInFile();
    EXPECT_NE(ReadFile(config).find("bWarnedAboutTabsInFile=TRUE"), std::string::npos);
    ASSERT_TRUE(s.Save());
  }
  const std::string text = ReadFile(config);
  EXPECT_NE(text.find("bShowExcel=FALSE\r\n"), std::string::npos) << text;
  EXPECT_NE(text.find("UseRecipeFile=YES\r\n"), std::string::npos) << text;
  Settings s(config);
  ASSERT_TRUE(s.Read(port));
  EXPECT_TRUE(port.messages.empty());
  EXPECT_EQ(s.lTabSize, 4);
  EXPECT_FALSE(s.bShowExcel);
  EXPECT_TRUE(s.bClearOutputFileBeforeProcessing);
  EXPECT_EQ(s.sSheetTarget, "Budget, Expense");
  EXPECT_TRUE(s.useRecipeFile);
  EXPECT_TRUE(s.WarnedAboutTabsInFile());
  EXPECT_EQ(s.inputs.Items(), std::vector<std::string>{"/in/a.txt"});
  EXPECT_EQ(s.recipes.Items(), std::vector<std::string>{"/r/ledger.rcp"});
}

// The input encoding is kept only once chosen: a config.ini without it saves without it; an
// unknown value reads as none.
TEST(Settings, InputEncodingIsWrittenOnlyOnceChosen) {
  TempDir dir;
  const std::string config = dir.File("config.ini");
  ASSERT_TRUE(CreateDefaultConfig(config));
  RecordingPort port;
  {
    Settings s(config);
    ASSERT_TRUE(s.Read(port));
    ASSERT_TRUE(s.Save());
    EXPECT_EQ(ReadFile(config).find("InputEncoding"), std::string::npos);
  }
  for (const std::string chosen : {"utf-8", "bogus", ""}) {
    Settings s(config);
    ASSERT_TRUE(s.Read(port));
    s.sInputEncoding = chosen;
    ASSERT_TRUE(s.Save());
    Settings back(config);
    ASSERT_TRUE(back.Read(port));
    EXPECT_EQ(back.sInputEncoding, chosen == "bogus" ? "" : chosen);
  }
}

// The frame's placement: defaults for what is missing or not a number (a maximised frame keeping
// its normal placement is checked through the window).
TEST(Settings, FramePlacementDefaults) {
  TempDir dir;
  const std::string config =
      dir.Write("config.ini", kHeader + "[frmMainMDI]\r\nLeft=abc\r\nTop=300\r\n");
  FramePlacement p = FramePlacement::Read(config);
  EXPECT_EQ(p.windowState, 0);
  EXPECT_EQ(p.left, 150);
  EXPECT_EQ(p.top, 300);
  EXPECT_EQ(p.width, 11000);
  EXPECT_EQ(p.height, 7000);
}

}  // namespace
}  // namespace kroveld
