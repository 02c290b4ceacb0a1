#include <gtest/gtest.h>

#include "app/cli_command_line.h"
#include "app/help_text.h"
#include "app/slash_command_line.h"

namespace kroveld {
namespace {

const std::string kApp = "/opt/kroveld";

struct SlashCase {
  const char* name;
  const char* text;
  void (*check)(const clsConversionOptions&);
};

TEST(SlashCommandLine, EachSwitchSetsItsField) {
  const SlashCase cases[] = {
      {"subfolders", "/S", [](const clsConversionOptions& o) { EXPECT_TRUE(o.bDoSubfolders); }},
      {"beside input", "/G",
       [](const clsConversionOptions& o) { EXPECT_TRUE(o.bSaveInOriginalFolder); }},
      {"show", "/E", [](const clsConversionOptions& o) { EXPECT_TRUE(o.bShowExcel); }},
      {"no clear", "/C",
       [](const clsConversionOptions& o) { EXPECT_FALSE(o.bClearOutputFileBeforeProcessing); }},
      {"verbose", "/V", [](const clsConversionOptions& o) { EXPECT_TRUE(o.bVerbose); }},
      {"lower-case switch", "/i\\a.txt /s",
       [](const clsConversionOptions& o) {
         EXPECT_EQ(o.sInputFile, "\\a.txt");
         EXPECT_TRUE(o.bDoSubfolders);
       }},
      {"sheet quotes removed", "/W \"Budget, Expense\"",
       [](const clsConversionOptions& o) { EXPECT_EQ(o.sSheetTarget, "Budget, Expense"); }},
      {"quotes and backslash: quotes removed", "/I\"\\my data\\in.txt\"",
       [](const clsConversionOptions& o) { EXPECT_EQ(o.sInputFile, "\\my data\\in.txt"); }},
      {"bare quoted name keeps its quotes", "/I\"in.txt\"",
       [](const clsConversionOptions& o) { EXPECT_EQ(o.sInputFile, kApp + "\\\"in.txt\""); }},
      {"inner blanks kept", "/I \\my reports\\june 2024.txt  ",
       [](const clsConversionOptions& o) {
         EXPECT_EQ(o.sInputFile, "\\my reports\\june 2024.txt");
       }},
      {"later switch wins", "/Tx /T4 /T6",
       [](const clsConversionOptions& o) { EXPECT_EQ(o.lTabSize, 6); }},
      {"unknown switch ignored", "/X\\nothing /Q",
       [](const clsConversionOptions& o) {
         EXPECT_TRUE(o.sInputFile.empty());
         EXPECT_EQ(o.lTabSize, 8);
       }},
      {"text before the first slash ignored", "in.txt /S",
       [](const clsConversionOptions& o) {
         EXPECT_TRUE(o.sInputFile.empty());
         EXPECT_TRUE(o.bDoSubfolders);
       }},
      {"blank after the slash is no switch", "/ S",
       [](const clsConversionOptions& o) { EXPECT_FALSE(o.bDoSubfolders); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    clsConversionOptions options;
    const SlashParseResult r = ParseCommandLine(c.text, options, kApp);
    EXPECT_TRUE(r.job);
    EXPECT_TRUE(r.commandLineMode);
    EXPECT_FALSE(r.helpRequested);
    c.check(options);
  }
}

TEST(SlashCommandLine, EmptyTextIsNoJobAndBlanksAreAJob) {
  clsConversionOptions options;
  SlashParseResult r = ParseCommandLine("", options, kApp);
  EXPECT_FALSE(r.job);
  EXPECT_FALSE(r.commandLineMode);

  r = ParseCommandLine("   ", options, kApp);
  EXPECT_TRUE(r.job);
  EXPECT_TRUE(r.commandLineMode);
  EXPECT_TRUE(options.sInputFile.empty());
  EXPECT_EQ(options.sSheetTarget, "1");
  EXPECT_TRUE(options.bClearOutputFileBeforeProcessing);
}

// Paths, -r, -s and -g are checked through the binary, whose messages name absolute paths.
TEST(ConventionalCommandLine, FlagsApply) {
  clsConversionOptions options;
  const auto r = ParseConventionalCommandLine(
      {"-i", "a", "-o", "b.csv", "-e", "--no-clear", "-w", "Budget", "-t", "4", "-v"}, options);
  ASSERT_TRUE(r.job) << r.err;
  EXPECT_TRUE(options.bShowExcel);
  EXPECT_FALSE(options.bClearOutputFileBeforeProcessing);
  EXPECT_EQ(options.sSheetTarget, "Budget");
  EXPECT_EQ(options.lTabSize, 4);
  EXPECT_TRUE(options.bVerbose);
}

// An unknown option is named, with the nearest known one, before CLI11 could complain about a
// missing required option; values of options are never taken for options.
TEST(ConventionalCommandLine, UnknownOptionsAreNamedWithTheNearestKnownOne) {
  const struct {
    std::vector<std::string> args;
    std::string err;  // empty: the line is a job
  } cases[] = {
      {{"--frobnicate"}, "unknown option '--frobnicate'\n"},
      {{"-V"}, "unknown option '-V'; did you mean '-v'?\n"},
      {{"-i", "a", "-o", "b.csv", "--recpie", "x.rcp"},
       "unknown option '--recpie'; did you mean '--recipe'?\n"},
      {{"-i", "a", "-o", "b.csv", "--tab-size=4", "--subfolder"},
       "unknown option '--subfolder'; did you mean '--subfolders'?\n"},
      {{"-sgx", "-i", "a", "-o", "b.csv"}, "unknown option '-x'\n"},
      {{"-i", "-odd-name.txt", "-o", "b.csv"}, ""},
      {{"-t4", "-sg", "--input=a", "-o", "b.csv"}, ""},
  };
  for (const auto& c : cases) {
    clsConversionOptions options;
    const auto r = ParseConventionalCommandLine(c.args, options);
    if (c.err.empty()) {
      EXPECT_TRUE(r.job) << c.args[0] << ": " << r.err;
      continue;
    }
    EXPECT_FALSE(r.job) << c.args[0];
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err, "kroveld: " + c.err + "Run with --help for more information.\n");
  }
}

// "/?" prints the text of the page the help window shows, entities decoded.
TEST(HelpText, PlainTextOfTheHelpPage) {
  EXPECT_EQ(PlainTextOfHelpPage("<h1>x</h1><pre>a &lt;b&gt; &quot;c&quot; &amp;amp; d&</pre>z"),
            "a <b> \"c\" &amp; d&");
  EXPECT_EQ(PlainTextOfHelpPage("<p>no block</p>"), "");
  const std::string& text = CommandLineHelpText();
  EXPECT_EQ(text.rfind("Using the Command Line\n", 0), 0u);
  EXPECT_NE(text.find("SLASH SYNTAX (the first argument begins with \"/\")"), std::string::npos);
  EXPECT_EQ(text.find("</"), std::string::npos);      // no markup left
  EXPECT_EQ(text.find("&quot;"), std::string::npos);  // no entity left
}

}  // namespace
}  // namespace kroveld
