#include <gtest/gtest.h>

#include <filesystem>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::WriteFile;

struct Work : testing::ExampleWork {
  Work() : ExampleWork("trial-balance") {}
  // Replaces the first `from` of the example's file `name` by `to`.
  void Edit(const std::string& name, const std::string& from, const std::string& to) const {
    testing::ReplaceInFile(F(name), from, to);
  }
  std::vector<std::string> HomeFiles() const { return testing::FileNames(home); }
};

// The shipped examples are clean.
TEST(Check, CleanRecipeSaysNothingAndExitsZero) {
  Work w;
  w.CopyExample("departments");
  for (const std::string name : {"trial-balance", "departments"}) {
    for (const auto& args : {std::vector<std::string>{"--check", "-r", name + ".rcp"},
                             {"--check", "-r", name + ".rcp", "-i", name + ".txt"}}) {
      const auto r = w.Run(args);
      EXPECT_EQ(r.status, 0) << r.err;
      EXPECT_EQ(r.err, "");
      EXPECT_EQ(r.out, "");
    }
  }
  // Nothing in the application folder, not even config.ini, and nothing beside the recipes.
  EXPECT_TRUE(w.HomeFiles().empty());
  EXPECT_EQ(std::distance(fs::directory_iterator(w.dir.path()), {}), 7);  // 6 files and home
}

// The slips of the issue, each with the note that names its line and section.
TEST(Check, EachSlipGetsItsNoteAndExitOne) {
  const struct {
    const char* file;
    std::string from, to;
    std::string note;  // the whole note line, after "FILE:"
  } cases[] = {
      {"trial-balance.krs", "ReadColumnStart=10", "ReadColumStart=10",
       "30: [Table 1 Col 2]: unknown key 'ReadColumStart'; did you mean 'ReadColumnStart'?"},
      {"trial-balance.krs", "ReadStartLineOffset=2\r\nReadEndLine=TOTAL",
       "ReadStartLineOfset=2\r\nReadEndLine=TOTAL",
       "18: [Table 1]: unknown key 'ReadStartLineOfset'; did you mean 'ReadStartLineOffset'?"},
      {"trial-balance.krs", "[Table 1]", "[table 1]",
       "16: [table 1]: [table 1] is not read: section names are exact (case, blanks and numbers "
       "count); did you mean [Table 1]? As written it does not count as a table, so nothing of "
       "it is converted"},
      {"trial-balance.rcp", "Sheet1Name=", "Sheet1Name=Ledger",
       "13: [Output File]: Sheet1Name under [Output File] is ignored: the sheet names are read "
       "only above the first section heading; move it to the top of the file, before [Header]"},
      {"trial-balance.rcp", "WriteDataFormat=", "WriteDataFormat=NearestCents",
       "12: [Output File]: WriteDataFormat \"NearestCents\" means no rounding: only NearestCent "
       "and NearestDollar (in exactly that case) round the numbers written; did you mean "
       "'NearestCent'?"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.to);
    Work w;
    w.Edit(c.file, c.from, c.to);
    const auto r = w.Run({"--check", "-r", "trial-balance.rcp"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("kroveld: note: " + w.F(c.file) + ":" + c.note + "\n"), std::string::npos)
        << r.err;
  }
}

// A table that would start before line 1 is skipped without a message; a verbose run says so in
// a note, and so does a check (which then has something to say).
TEST(Check, ATableStartingBeforeLineOneIsNotedByVerboseRunsAndChecksOnly) {
  Work w;
  w.Edit("trial-balance.krs", "ReadStartLineOffset=2\r\nReadEndLine=TOTAL",
         "ReadStartLineOffset=-2000000000\r\nReadEndLine=TOTAL");
  const std::string note =
      "Table 1 skipped: it would start on line -1999999994, before the first line of the report "
      "(ReadStartLine found on line 6, ReadStartLineOffset -2000000000)\n";
  const auto plain = w.Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(plain.status, 0) << plain.err;
  EXPECT_EQ(plain.err.find("skipped"), std::string::npos) << plain.err;
  const auto verbose =
      w.Run({"-i", "trial-balance.txt", "-o", "out.csv", "-r", "trial-balance.rcp", "-v"});
  EXPECT_EQ(verbose.status, 0) << verbose.err;
  EXPECT_NE(verbose.err.find("kroveld: note: " + note), std::string::npos) << verbose.err;
  const auto check = w.Run({"--check", "-r", "trial-balance.rcp", "-i", "trial-balance.txt"});
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.err.find("kroveld: note: " + w.F("trial-balance.krs") + ": " + note),
            std::string::npos)
      << check.err;
}

// The misspelt offset: the loader's messages as a conversion shows them, then the notes that
// explain them, the placeholder one included.
TEST(Check, MessagesFirstThenNotesInFileOrder) {
  Work w;
  w.Edit("trial-balance.krs", "ReadStartLineOffset=2\r\nReadEndLine=TOTAL",
         "ReadStartLineOfset=2\r\nReadEndLine=TOTAL");
  const auto r = w.Run({"--check", "-r", "trial-balance.rcp", "-i", "trial-balance.txt"});
  EXPECT_EQ(r.status, 1);
  const std::string krs = "kroveld: note: " + w.F("trial-balance.krs");
  EXPECT_EQ(r.err,
            "kroveld: error: Error in Table 1 : Invalid ReadEndLine!\n"
            "kroveld: error: Error in Table 1 : Invalid ReadEndLine!\n"
            "kroveld: error: Error in Table specs: Can not find ReadEndLine: -999999\n"
            "kroveld: note: Table 1 has no ReadEndLine key (or it stands after a key that is "
            "read later): -999999 is the stand-in for a missing key\n" +
                krs +
                ":16: [Table 1]: ReadEndLine is missing from this section as it is read, so a "
                "conversion looks for the placeholder text \"-999999\" in the report and says "
                "\"Error in Table specs: Can not find ReadEndLine: -999999\"\n" +
                krs +
                ":18: [Table 1]: unknown key 'ReadStartLineOfset'; did you mean "
                "'ReadStartLineOffset'?\n" +
                krs +
                ":19: [Table 1]: 'ReadEndLine' is not read: ReadStartLineOffset, looked for "
                "before it, is not in the section, and its search ran on past this line to the "
                "end of the section (keys are read forwards only), so ReadEndLine reads as "
                "missing\n");
  EXPECT_TRUE(w.HomeFiles().empty());
}

TEST(Check, ShortRecipeIsConvertedAwayFromTheApplicationFolder) {
  Work w;
  WriteFile(w.F("short.rcp"),
            "[Header]\r\nProduct=KRO-B\r\nFileType=RECIPE\r\nFileFormat=1.0\r\n[Table 1]\r\n"
            "ReadStartLine=Account  Description\r\nReadStartLineOffset=2\r\n"
            "ReadEndLine=TOTAL    SECTION A\r\nReadEndLineOffset=-2\r\nParsing==L\r\n"
            "WriteColumn=A\r\n");
  auto r = w.Run({"--check", "-r", "short.rcp", "-i", "trial-balance.txt"});
  EXPECT_EQ(r.status, 0) << r.err;
  r = w.Run({"--check", "-r", "short.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "kroveld: note: " + w.F("short.rcp") +
                       ": [Table 1]: the columns of this table are worked out from the report; "
                       "give one with --input to check the recipe\n");
  EXPECT_TRUE(w.HomeFiles().empty());
}

TEST(Check, NeedsARecipe) {
  Work w;
  auto r = w.Run({"--check"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "kroveld: --check needs --recipe\nRun with --help for more information.\n");
  r = w.Run({"--check", "-r", "trial-balance.rcp", "-o", "x.csv"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err,
            "kroveld: --check writes nothing: leave out --output\nRun with --help for more "
            "information.\n");
  r = w.Run({"--check", "-r", "none.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "kroveld: warning: Recipe file " + w.F("none.rcp") + " does not exist!\n");
}

// In a batch, the first message met while converting a file is preceded once by a line naming it.
TEST(Check, BatchNamesTheFileBeforeItsFirstMessage) {
  Work w;
  fs::create_directories(w.F("in"));
  WriteFile(w.F("in/a.txt"), ReadFile(w.F("trial-balance.txt")));
  WriteFile(w.F("in/b.txt"), "a report of another kind\r\n");
  const auto r = w.Run({"-i", "in/*.txt", "-o", "out/*.csv", "-r", "trial-balance.rcp"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err,
            "kroveld: converting " + w.F("in/a.txt") + " (file 1 of 2):\n" +
                "kroveld: note: NOTE: The text in the Input File contains tab characters. To "
                "specify the tab stop, change the options.\n" +
                "kroveld: converting " + w.F("in/b.txt") + " (file 2 of 2):\n" +
                "kroveld: error: Error in Table specs: Can not find ReadStartLine: Account  "
                "Description\n");
}

}  // namespace
}  // namespace kroveld
