#include <gtest/gtest.h>

#include "app/command_line_host.h"
#include "app/startup_files.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::ReadFile;
using testing::RecordingPort;
using testing::TempDir;

// The hidden main window of a command-line run reads the lists, adds the run's texts in memory and
// never writes them back (the e2e test of config.ini checks the one flag a run keeps).
TEST(CommandLineHost, ListsAreReadAndUpdatedInMemoryOnly) {
  TempDir dir;
  const std::string config = dir.File("config.ini");
  ASSERT_TRUE(CreateDefaultConfig(config));
  {
    std::string text = ReadFile(config);
    text += "[mruInputFile]\r\nmruInputFile20=/old/in.txt\r\n";
    testing::WriteFile(config, text);
  }
  const std::string before = ReadFile(config);

  clsConversionOptions typed;
  typed.sInputFile = "/new/*.txt";
  typed.sOutputFile = "/out/*.csv";
  typed.sRecipeFile = "/r/ledger.rcp";
  CommandLineHost host(config, typed);
  RecordingPort port;
  ASSERT_TRUE(host.ReadIniFile(port));
  host.UpdateMRUs();
  host.UpdateMRUs();
  EXPECT_EQ(host.InputList().Items(), (std::vector<std::string>{"/old/in.txt", "/new/*.txt"}));
  EXPECT_EQ(host.OutputList().Items(), std::vector<std::string>{"/out/*.csv"});
  EXPECT_EQ(host.RecipeList().Items(), std::vector<std::string>{"/r/ledger.rcp"});
  EXPECT_EQ(ReadFile(config), before);
}

TEST(CommandLineHost, ForeignConfigHeaderLoadsNoLists) {
  TempDir dir;
  const std::string config =
      dir.Write("config.ini",
                "[Header]\r\nProduct=KRO\r\nFileType=CONFIG\r\nFileFormat=1.0\r\n"
                "[mruInputFile]\r\nmruInputFile20=/old/in.txt\r\n");
  CommandLineHost host(config, clsConversionOptions{});
  RecordingPort port;
  EXPECT_FALSE(host.ReadIniFile(port));
  EXPECT_EQ(port.Texts(), std::vector<std::string>{"Incorrect product code!"});
  EXPECT_EQ(host.InputList().Count(), 0);
}

}  // namespace
}  // namespace kroveld
