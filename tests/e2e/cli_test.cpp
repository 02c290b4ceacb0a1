#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

namespace fs = std::filesystem;
using testing::Backslashed;
using testing::ReadFile;
using testing::RunKroveld;

// A work folder with the shipped example and an application folder of its own.
struct Work : testing::ExampleWork {
  Work() : ExampleWork("trial-balance") {}
};

const std::string& ExpectedCsv() {
  static const std::string csv = ReadFile(testing::DataFile("e2e/trial-balance.csv"));
  return csv;
}

const std::string kDefaultConfig =
    "[Header]\r\nProduct=KRO_B\r\nFileType=CONFIG\r\nFileFormat=1.0\r\n\r\n[General]\r\n"
    "DefaultInputFile=\r\nDefaultOutputFile=\r\nUseRecipeFile=\r\nDefaultRecipeFile=\r\n\r\n";

const char* kTabNote =
    "kroveld: note: NOTE: The text in the Input File contains tab characters. To specify the tab "
    "stop, change the options.\n";

TEST(Cli, SingleConversionThroughTheConventionalSyntax) {
  Work w;
  auto r = w.Run({"-i", "trial-balance.txt", "-o", "out/../tb.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, kTabNote);  // a note only: the run still succeeds
  EXPECT_EQ(ReadFile(w.F("tb.csv")), ExpectedCsv());
  // The note is shown once per config.ini; a log's folders are made.
  r = w.Run({"-i", "trial-balance.txt", "-o", "tb2.csv", "-r", "trial-balance.rcp", "-l",
             "logs/a/k.log"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err, "");
  EXPECT_TRUE(fs::is_directory(w.F("logs/a")));
  EXPECT_EQ(ReadFile(w.F("tb2.csv")), ExpectedCsv());
  // Absolute paths typed with backslashes are the same paths.
  r = w.Run({"-i", Backslashed(w.F("trial-balance.txt")), "-o", Backslashed(w.F("tb3.csv")), "-r",
             Backslashed(w.F("trial-balance.rcp"))});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFile(w.F("tb3.csv")), ExpectedCsv());
}

// A large report is searched for tabs while the conversion runs; the note still comes before
// anything else the run shows, and once.
TEST(Cli, TabNoteOfALargeReportComesFirst) {
  Work w;
  {
    std::ofstream report(w.F("trial-balance.txt"), std::ios::app | std::ios::binary);
    const std::string filler(99, ' ');
    for (int i = 0; i < 60000; ++i) report << filler << '\n';  // 6 MB after the table
  }
  auto r = w.Run({"-i", "trial-balance.txt", "-o", "tb.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, kTabNote);
  EXPECT_EQ(ReadFile(w.F("tb.csv")), ExpectedCsv());

  Work v;
  fs::copy_file(w.F("trial-balance.txt"), v.F("big.txt"));
  fs::remove(v.F("trial-balance.krs"));
  r = v.Run({"-i", "big.txt", "-o", "tb.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err.rfind(std::string(kTabNote) + "kroveld: Cannot find Export Specs file: ", 0), 0u)
      << r.err;
}

TEST(Cli, BareNamesOfTheSlashSyntaxAreInTheApplicationFolder) {
  Work w;
  for (const char* f : {"trial-balance.txt", "trial-balance.rcp", "trial-balance.krs"}) {
    fs::copy_file(w.F(f), w.home + "/" + f);
  }
  const auto r = w.Run({"/Itrial-balance.txt", "/Otb.csv", "/Rtrial-balance.rcp"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFile(w.home + "/tb.csv"), ExpectedCsv());
}

struct TreeWork : Work {
  TreeWork() {
    const std::string report = ReadFile(F("trial-balance.txt"));
    for (const char* f : {"in/jan.txt", "in/feb.TXT", "in/notes.md", "in/east/mar.txt",
                          "in/east/north/apr.txt", "in/west/may.txt"}) {
      fs::create_directories(fs::path(F(f)).parent_path());
      testing::WriteFile(F(f), report);
    }
  }
};

TEST(Cli, WildcardTreeWithAndWithoutSubfolders) {
  {
    TreeWork w;
    const auto r = w.Run({"/I" + Backslashed(w.F("in/*.txt")), "/O" + Backslashed(w.F("out/*.CSV")),
                          "/R" + Backslashed(w.F("trial-balance.rcp"))});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(ReadFile(w.F("out/jan.CSV")), ExpectedCsv());
    EXPECT_TRUE(fs::exists(w.F("out/feb.CSV")));
    EXPECT_FALSE(fs::exists(w.F("out/east")));
  }
  {
    TreeWork w;
    const auto r =
        w.Run({"-i", "in/*.txt", "-o", "out/*.csv", "-r", "trial-balance.rcp", "-s", "-g"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(ReadFile(w.F("in/east/north/apr.csv")), ExpectedCsv());
    EXPECT_EQ(ReadFile(w.F("in/jan.csv")), ExpectedCsv());
    EXPECT_FALSE(fs::exists(w.F("out")));
  }
}

TEST(Cli, EachRefusalIsOneLineOnStderrWithExitStatusOne) {
  Work w;
  fs::create_directories(w.F("recipe-folder.rcp"));
  testing::WriteFile(w.F("plain-file"), "x");
  struct Case {
    std::vector<std::string> args;
    std::string err;
  } cases[] = {
      {{"-i", "nope.txt", "-o", "a.csv", "-r", "trial-balance.rcp"},
       "kroveld: warning: Input file: " + w.F("nope.txt") + " does not exist!\n"},
      {{"-i", "nope.txt", "-o", "a.csv"},
       "kroveld: warning: Input file: " + w.F("nope.txt") + " does not exist!\n"},
      {{"-i", "trial-balance.txt", "-o", "a.csv", "-r", "none.rcp"},
       "kroveld: warning: Recipe file " + w.F("none.rcp") + " does not exist!\n"},
      {{"-i", "trial-balance.txt", "-o", "a.csv", "-r", "recipe-folder.rcp"},
       "kroveld: warning: Recipe file " + w.F("recipe-folder.rcp") + " does not exist!\n"},
      {{"-i", "trial-balance.txt", "-o", "a.csv", "-r", "/dev/zero"},
       "kroveld: warning: Recipe file /dev/zero does not exist!\n"},
      // What stands at an input path that is not a report is said after the system's message.
      {{"-i", "recipe-folder.rcp", "-o", "a.csv", "-r", "trial-balance.rcp"},
       "kroveld: warning: Input file: " + w.F("recipe-folder.rcp") +
           " does not exist!\nkroveld: note: " + w.F("recipe-folder.rcp") + " is a folder; '" +
           w.F("recipe-folder.rcp") + "/*.txt' converts the reports in it\n"},
      {{"-i", "/dev/urandom", "-o", "a.csv"},
       "kroveld: warning: Input file: /dev/urandom does not exist!\nkroveld: note: /dev/urandom "
       "is not a regular file (a pipe or a device), so it is not read\n"},
      {{"-i", "missing/*.txt", "-o", "out/*.csv"}, "kroveld: Unable to create file list\n"},
      {{"-i", "*.txt", "-o", "out/all.csv"},
       "kroveld: note: You must specify a proper output file which includes the wild card "
       "For example: C:\\Output\\*.CSV\n"},
      {{"-i", "trial-balance.txt", "-o", "a.txt", "-r", "trial-balance.rcp"},
       "kroveld: warning: Output File must be of type XLS or CSV\n"},
  };
  for (const auto& c : cases) {
    const auto r = w.Run(c.args);
    EXPECT_EQ(r.status, 1) << c.err;
    EXPECT_EQ(r.err, c.err);
  }
  EXPECT_FALSE(fs::exists(w.F("a.csv")));
  EXPECT_FALSE(fs::exists(w.F("out")));
}

TEST(Cli, OutputFolderThatCannotBeCreated) {
  TreeWork w;
  testing::WriteFile(w.F("blocker"), "a file where a folder should be");
  const auto r = w.Run({"-i", "in/*.txt", "-o", "blocker/*.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 1);
  // One error per file, each naming its output; the batch goes on after the first.
  EXPECT_NE(r.err.find("kroveld: error: "), std::string::npos) << r.err;
  EXPECT_NE(r.err.find(w.F("blocker/jan.csv")), std::string::npos) << r.err;
  EXPECT_NE(r.err.find(w.F("blocker/feb.csv")), std::string::npos) << r.err;
}

TEST(Cli, ReadOnlyOutputIsNotReplaced) {
  if (geteuid() == 0) GTEST_SKIP() << "root writes read-only files";
  Work w;
  testing::WriteFile(w.F("tb.csv"), "keep me\r\n");
  fs::permissions(w.F("tb.csv"), fs::perms::owner_read);
  const auto r = w.Run({"-i", "trial-balance.txt", "-o", "tb.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("kroveld: error: Cannot write " + w.F("tb.csv")), std::string::npos);
  EXPECT_EQ(ReadFile(w.F("tb.csv")), "keep me\r\n");
}

TEST(Cli, ConfigAndErrorLogInTheApplicationFolder) {
  Work w;
  auto r = w.Run({"--version"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out.rfind("kroveld ", 0), 0u) << r.out;
  EXPECT_EQ(ReadFile(w.home + "/config.ini"), kDefaultConfig);
  const std::regex header(R"(Kroveld Error Log \[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\]\r\n)");
  EXPECT_TRUE(std::regex_match(ReadFile(w.home + "/ErrorLog.txt"), header));
  testing::WriteFile(w.home + "/ErrorLog.txt", "stale\r\n");
  r = w.Run({"-i", "x", "-o", "y.txt"});
  EXPECT_TRUE(std::regex_match(ReadFile(w.home + "/ErrorLog.txt"), header));
}

TEST(Cli, HelpAndRejectedCommandLines) {
  Work w;
  // "/?" prints the help and is still a job: alone, the conversion finds no output name.
  auto r = w.Run({"/?"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("Using the Command Line"), std::string::npos);
  EXPECT_EQ(r.err, "kroveld: warning: Output File must be of type XLS or CSV\n");
  const std::string help = r.out;
  r = w.Run({"/I" + Backslashed(w.F("trial-balance.txt")), "/O" + Backslashed(w.F("tb.csv")),
             "/R" + Backslashed(w.F("trial-balance.rcp")), "/?"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, help);
  EXPECT_EQ(ReadFile(w.F("tb.csv")), ExpectedCsv());
  // --help prints the same help and ends there.
  r = w.Run({"--help"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, help);
  EXPECT_EQ(r.err, "");
  // Rejected lines: exit status 2 and the reason on stderr (unknown options: the parser's test).
  const std::pair<std::vector<std::string>, std::string> bad[] = {
      {{"report.txt", "out.csv"}, "The following arguments were not expected: out.csv report.txt"},
      {{"-o", "b.csv"}, "--input is required"},
      {{"-i", "a.txt"}, "--output is required"},
      {{"-i", "a.txt", "-o", "a.csv", "-t", "x"}, "Could not convert: --tab-size = x"},
  };
  for (const auto& [args, reason] : bad) {
    r = w.Run(args);
    EXPECT_EQ(r.status, 2) << reason;
    EXPECT_EQ(r.err, "kroveld: " + reason + "\nRun with --help for more information.\n");
  }
}

// Without a display the window is not attempted: one error line, exit status 1; a conversion on
// the command line needs no display at all.
TEST(Cli, NoDisplayNeededOnTheCommandLineAndSaidForTheWindow) {
  Work w;
  std::vector<std::pair<std::string, std::string>> saved;
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    if (const char* value = std::getenv(name)) saved.emplace_back(name, value);
    unsetenv(name);
  }
  auto r = w.Run({});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err.rfind("kroveld: error: no display found", 0), 0u) << r.err;
  EXPECT_NE(r.err.find("kroveld --help"), std::string::npos) << r.err;
  EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
  r = w.Run({"-i", w.F("trial-balance.txt"), "-o", w.F("tb.csv"), "-r", w.F("trial-balance.rcp")});
  for (const auto& [name, value] : saved) setenv(name.c_str(), value.c_str(), 1);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFile(w.F("tb.csv")), ExpectedCsv());
}

TEST(Cli, LogSwitchCreatesFoldersAndTabAndSheetSwitchesParse) {
  Work w;
  auto r = w.Run({"/I" + Backslashed(w.F("trial-balance.txt")), "/O" + Backslashed(w.F("t2.csv")),
                  "/R" + Backslashed(w.F("trial-balance.rcp")),
                  "/L" + Backslashed(w.F("logs/2024/june/run.log")), "/W \"Sheet, one\"", "/t2",
                  "/V", "/X"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(fs::is_directory(w.F("logs/2024/june")));
  EXPECT_FALSE(fs::exists(w.F("logs/2024/june/run.log")));
  // A tab stop of 2 moves the payroll rows, which hold a tab, and leaves the others.
  const std::string t2 = ReadFile(w.F("t2.csv"));
  EXPECT_NE(t2, ExpectedCsv());
  EXPECT_EQ(t2.substr(0, 60), ExpectedCsv().substr(0, 60));
  r = w.Run({"/I" + Backslashed(w.F("trial-balance.txt")), "/O" + Backslashed(w.F("tx.csv")),
             "/R" + Backslashed(w.F("trial-balance.rcp")), "/Tx"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(ReadFile(w.F("tx.csv")), ExpectedCsv());
}

// Every file under `root`, with its content.
std::map<std::string, std::string> Snapshot(const std::string& root) {
  std::map<std::string, std::string> files;
  for (const auto& e : fs::recursive_directory_iterator(root)) {
    if (e.is_regular_file()) files[e.path().string()] = ReadFile(e.path().string());
  }
  return files;
}

// After a run the work folder differs from before only by the outputs, and the application
// folder holds config.ini, ErrorLog.txt and, on the automatic road, the two automatic files.
TEST(Cli, NothingIsWrittenBesideTheOutputsAndTheApplicationFiles) {
  struct Case {
    std::vector<std::string> args;
    std::vector<std::string> outputs;  // relative to the work folder
    bool automatic;
  } cases[] = {
      {{"-i", "in/*.txt", "-o", "out/*.csv", "-r", "trial-balance.rcp", "-s"},
       {"out/jan.csv", "out/feb.csv", "out/east/mar.csv", "out/east/north/apr.csv",
        "out/west/may.csv"},
       false},
      {{"-i", "marked.txt", "-o", "stock.xls"}, {"stock.xls"}, true},
      {{"-i", "marked.txt", "-o", "stock.csv"}, {"stock.csv"}, true},
  };
  for (const auto& c : cases) {
    TreeWork w;
    testing::WriteFile(w.F("marked.txt"),
                       testing::CrLf({"STOCK LIST", ">>1", "Item       Qty", "apple       12",
                                      "pear         7", "<<1", "XXXXX     XXXX", ">>end"}));
    const auto before = Snapshot(w.dir.path());
    const auto r = w.Run(c.args);
    EXPECT_EQ(r.status, 0) << r.err;
    std::map<std::string, std::string> expected = before;
    if (c.outputs[0] == "stock.csv") {
      EXPECT_EQ(ReadFile(w.F("stock.csv")), "apple ,      12\r\npear  ,       7\r\n");
    }
    for (const auto& out : c.outputs) {
      ASSERT_TRUE(fs::exists(w.F(out))) << out;
      expected[w.F(out)] = ReadFile(w.F(out));
    }
    std::vector<std::string> homeFiles = {"ErrorLog.txt", "config.ini"};
    if (c.automatic)
      homeFiles = {"ErrorLog.txt", "_AutoRecipe.rcp", "_ExportSpecs.krs", "config.ini"};
    for (const auto& f : homeFiles) expected[w.home + "/" + f] = ReadFile(w.home + "/" + f);
    EXPECT_EQ(Snapshot(w.dir.path()), expected);
  }
}

// A command-line job ends without saving settings or lists; only the tab note's flag is kept.
TEST(Cli, AJobLeavesConfigIniAsItWasSaveTheTabNoteFlag) {
  TreeWork w;
  const std::string lists = "[mruInputFile]\r\nmruInputFile20=/earlier/in.txt\r\n";
  testing::WriteFile(w.home + "/config.ini", kDefaultConfig + lists);
  auto r = w.Run({"-i", "in/*.txt", "-o", "out/*.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 0) << r.err;
  std::string expected = kDefaultConfig;
  expected.insert(expected.find("DefaultRecipeFile=\r\n") + 20, "bWarnedAboutTabsInFile=TRUE\r\n");
  expected += lists;
  EXPECT_EQ(ReadFile(w.home + "/config.ini"), expected);
  r = w.Run({"-i", "in/jan.txt", "-o", "jan.xlsx", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(ReadFile(w.home + "/config.ini"), expected);
}

// The hidden main window checks config.ini's header; a foreign one is reported, nothing is read
// from it or written to it, and the conversion still runs.
TEST(Cli, ForeignConfigHeaderIsReportedAndLeftAlone) {
  Work w;
  const std::string foreign =
      "[Header]\r\nProduct=KRO_B\r\nFileType=RECIPE\r\nFileFormat=1.0\r\n"
      "[General]\r\nbWarnedAboutTabsInFile=TRUE\r\n";
  testing::WriteFile(w.home + "/config.ini", foreign);
  const auto r = w.Run({"-i", "trial-balance.txt", "-o", "tb.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "kroveld: error: Incorrect file type!\n" + std::string(kTabNote));
  EXPECT_EQ(ReadFile(w.F("tb.csv")), ExpectedCsv());
  EXPECT_EQ(ReadFile(w.home + "/config.ini"), foreign);
}

// Ctrl-C, a polite kill and a closed terminal stop a batch alike.
class CliStop : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Signals, CliStop, ::testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_P(CliStop, StopsABatchBetweenFilesAndLeavesNoTemporaryFile) {
  Work w;
  const std::string report = ReadFile(w.F("trial-balance.txt"));
  constexpr int kFiles = 1500;
  fs::create_directories(w.F("many"));
  for (int i = 0; i < kFiles; ++i) {
    testing::WriteFile(w.F("many/r" + std::to_string(10000 + i) + ".txt"), report);
  }
  const auto r = RunKroveld(
      w.home, {"-i", "many/*.txt", "-o", "out/*.csv", "-r", "trial-balance.rcp"}, w.dir.path(),
      [&](pid_t pid) {
        // Interrupt once the first outputs are there.
        for (int tries = 0; tries < 2000 && !fs::exists(w.F("out/r10001.csv")); ++tries) {
          std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        kill(pid, GetParam());
      });
  // The stop is said on stderr (the terminate question answered Yes, once per table still to
  // run in the file under way, or one line for a stop between files), so the status is 1.
  EXPECT_EQ(r.status, 1) << r.err;
  // A stop inside a file comes after the line naming that file; a stop between files belongs to
  // none.
  const std::regex stopped(
      R"((kroveld: converting .*/many/r\d+\.txt \(file \d+ of 1500\):\n)"
      R"((kroveld: Do you want to terminate the process\? Yes\n)+)|)"
      R"(kroveld: warning: Conversion stopped by the user before file \d+ of 1500\n)");
  const std::string first =
      "kroveld: converting " + w.F("many/r10000.txt") + " (file 1 of 1500):\n" + kTabNote;
  ASSERT_TRUE(r.err.starts_with(first)) << r.err;
  EXPECT_TRUE(std::regex_match(r.err.substr(first.size()), stopped)) << r.err;
  std::vector<std::string> outputs;
  for (const auto& e : fs::directory_iterator(w.F("out"))) outputs.push_back(e.path().string());
  std::sort(outputs.begin(), outputs.end());
  const int written = static_cast<int>(outputs.size());
  // The file under way when the interrupt came may have been cut short at a row (the terminate
  // question is answered Yes); every earlier one is complete.
  for (int i = 0; i < written; ++i) {
    const std::string csv = ReadFile(outputs[i]);
    if (i + 1 < written) {
      EXPECT_EQ(csv, ExpectedCsv()) << outputs[i];
    } else {
      EXPECT_EQ(ExpectedCsv().substr(0, csv.size()), csv) << outputs[i];
    }
  }
  EXPECT_GE(written, 2);
  EXPECT_LT(written, kFiles);
  for (const std::string& output : outputs) {
    EXPECT_EQ(output.find(".kroveld-"), std::string::npos) << output;
  }
}

}  // namespace
}  // namespace kroveld
