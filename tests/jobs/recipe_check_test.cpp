#include <gtest/gtest.h>

#include "jobs/recipe_lint.h"

namespace kroveld {
namespace {

const std::string kSpecHeader = "[Header]\nProduct=KRO\nFileType=EXPORT SPEC\nFileFormat=1.1\n";
// Lines 5-11: a table with one column (the column heading is line 11).
const std::string kTable1 =
    "[Table 1]\nReadStartLine=ITEMS\nReadStartLineOffset=1\nReadEndLine=END\n"
    "ReadEndLineOffset=-1\nTotalColumns=1\n";
const std::string kCol1 =
    "[Table 1 Col 1]\nReadColumnStart=1\nReadColumnEnd=5\nWriteColumn=A\nPeriodOperator=\n";
const std::string kRecipeTop =
    "[Header]\nProduct=KRO\nFileType=RECIPE\nFileFormat=1.1\n[Output File]\n"
    "ExportSpecFileName=x.krs\n";

struct Expected {
  int line;
  std::string section;
  std::string text;  // a part of the note's text
};

struct LintCase {
  const char* what;
  RecipeFileKind kind;
  std::string text;
  std::vector<Expected> notes;  // all the notes, in order
};

// One case per kind of note: the exact set of notes, each on its line and section.
TEST(RecipeLint, EachKindOfNoteOnItsLine) {
  const RecipeFileKind krs = RecipeFileKind::ExportSpec;
  const LintCase cases[] = {
      {"misspelt column key hides the columns after it",
       krs,
       kSpecHeader +
           "[Table 1]\nReadStartLine=A\nReadStartLineOffset=1\nReadEndLine=B\n"
           "ReadEndLineOffset=-1\nTotalColumns=3\n" +
           "[Table 1 Col 1]\nReadColumStart=1\nReadColumnEnd=5\nWriteColumn=A\n" +
           "[Table 1 Col 2]\nReadColumnStart=6\nReadColumnEnd=9\nWriteColumn=B\n" +
           "[Table 1 Col 3]\nReadColumnStart=10\nReadColumnEnd=12\nWriteColumn=C\n",
       {{12, "Table 1 Col 1", "did you mean 'ReadColumnStart'?"},
        {15, "Table 1 Col 2",
         "not read: the search for ReadColumnStart of [Table 1 Col 1], which is not there, ran "
         "on to this heading and past it"}}},
      {"key before the one it shadows",
       krs,
       kSpecHeader +
           "[Table 1]\nReadStartLineOffset=1\nReadStartLine=ITEMS\nReadEndLine=END\n"
           "TotalColumns=1\n" +
           kCol1,
       {{5, "Table 1", "Can not find ReadStartLine: -999999"},
        {6, "Table 1", "put ReadStartLine above ReadStartLineOffset"},
        {7, "Table 1", "line 6 mentions it first"}}},
      {"an optional key left out takes the column heading with it",
       krs,
       kSpecHeader +
           "[Table 1]\nReadStartLine=ITEMS\nReadStartLineOffset=1\nReadEndLine=END\n"
           "TotalColumns=1\n" +
           kCol1,
       {{9, "Table 1",
         "'TotalColumns' is not read: ReadEndLineOffset, looked for before it, is "
         "not in the section"}}},
      {"heading in lower case, its column and a table read in its place",
       krs,
       kSpecHeader + "[table 1]\nReadStartLine=ITEMS\n" + kCol1 + "[Table 2]\nReadStartLine=X\n" +
           "[Table 2 Col 1]\nReadColumnStart=1\n",
       {{0, "Table 1",
         "no heading [Table 1] is found though the file counts 1 table heading, so every key of "
         "Table 1 reads as missing; a conversion says \"Error in Table specs: Can not find "
         "ReadStartLine: -999999\""},
        {5, "table 1", "did you mean [Table 1]? As written it does not count as a table"},
        {12, "Table 2", "Table 2 is not read: the file has 1 table heading"}}},
      {"heading with a leading zero",
       krs,
       kSpecHeader + "[Table 01]\nReadStartLine=ITEMS\n",
       {{0, "Table 1", "no heading [Table 1] is found though the file counts 1 table heading"},
        {5, "Table 01", "did you mean [Table 1]?"}}},
      {"column of a table that does not exist",
       krs,
       kSpecHeader + kTable1 + kCol1 + "[Table 3 Col 1]\nReadColumnStart=1\n",
       {{16, "Table 3 Col 1", "there is no [Table 3] (the file has 1 table heading)"}}},
      {"column beyond TotalColumns",
       krs,
       kSpecHeader + kTable1 + kCol1 + "[Table 1 Col 2]\nReadColumnStart=6\n",
       {{16, "Table 1 Col 2", "column 2 is beyond TotalColumns=1 of [Table 1]"}}},
      {"columns out of order",
       krs,
       kSpecHeader +
           "[Table 1]\nReadStartLine=A\nReadStartLineOffset=1\nReadEndLine=B\n"
           "ReadEndLineOffset=-1\nTotalColumns=2\n" +
           "[Table 1 Col 2]\nReadColumnStart=6\nReadColumnEnd=9\nWriteColumn=B\n" + kCol1,
       {{11, "Table 1 Col 2", "not read: it stands out of order"}}},
      {"title line beyond TotalLines, and a value that ends the section",
       krs,
       kSpecHeader + "[Title 1]\nWriteSheet=1\nWriteColumn=A\nTotalLines=2\n1Text=[Draft]\n"
                     "2Text=  Indented\n3Text=More\n",
       {{9, "Title 1",
         "the \"[\" in this value ends the section for the key lookup, so 1Text reads as missing"},
        {10, "Title 1", "the leading blanks of 2Text are dropped"},
        {11, "Title 1", "3Text is beyond TotalLines=2"}}},
      {"titles numbered with a gap",
       krs,
       kSpecHeader + "[Title 1]\nWriteSheet=1\nWriteColumn=A\nTotalLines=1\n1Text=a\n" +
           "[Title 3]\nWriteSheet=1\nWriteColumn=A\nTotalLines=1\n1Text=b\n",
       {{0, "Title 2", "no heading [Title 2]"},
        {10, "Title 3", "the file has 2 title headings, read as [Title 1] to [Title 2]"}}},
      {"duplicate key, misplaced key, operator, comment",
       krs,
       kSpecHeader +
           "[Table 1]\nReadStartLine=Net; total\nReadStartLineOffset=1\nReadEndLine=END\n"
           "ReadEndLineOffset=-1\nTotalColumns=1\n" +
           "[Table 1 Col 1]\nReadColumnStart=1\nReadColumnStart=2\nReadColumnEnd=5\n"
           "WriteColumn=A\nPeriodOperator=DUPLICATE\nTotalColumns=3\n",
       {{6, "Table 1", "the \";\" starts a comment: ReadStartLine is read as \"Net\""},
        {13, "Table 1 Col 1", "'ReadColumnStart' is given again: only the first one (line 12)"},
        {16, "Table 1 Col 1", "PeriodOperator DUPLICATE is accepted but combines nothing"},
        {17, "Table 1 Col 1", "'TotalColumns' is not read here: it is a key of [Table n]"}}},
      {"department without its bottom key",
       krs,
       kSpecHeader + kTable1 + kCol1 +
           "[Consolidate 1]\nTable=1\nReadAccountsColumn=1\nTotalDepartments=1\n"
           "[Con 1 Dept 1]\nReadStartLine=D1\nReadStartLineOffset=1\n",
       {{20, "Con 1 Dept 1", "\"Error in Department specs: Can not find ReadEndLine: -999999\""}}},
      {"recipe: a bracket in a value loses the keys looked up past it",
       RecipeFileKind::Recipe,
       kRecipeTop.substr(0, kRecipeTop.find("ExportSpecFileName")) +
           "OutputFileTitle=Ledger [draft]\nExportSpecFileName=x.krs\n",
       {{6, "Output File",
         "ends the section for the key lookup, so OutputFileTitle, OutputFileName, InputFileFirst, "
         "InputFileLast, ExportSpecFileName, WriteDataFormat read as missing"},
        {7, "Output File", "'ExportSpecFileName' is not read: the \"[\" on line 6 ends"}}},
      {"recipe: rounding misspelt, sheet name under a section, bad period",
       RecipeFileKind::Recipe,
       "Sheet2Name=Totals\n" + kRecipeTop +
           "InputFileFirst=one\nWriteDataFormat=NearestCents\nSheet1Name=Ledger\n"
           "[output files]\n",
       {{8, "Output File", "\"one\" is not a whole number and is ignored: 1 is used"},
        {9, "Output File", "\"NearestCents\" means no rounding"},
        {9, "Output File", "did you mean 'NearestCent'?"},
        {10, "Output File", "Sheet1Name under [Output File] is ignored"},
        {11, "output files", "unknown section [output files]"}}},
      {"short recipe",
       RecipeFileKind::ShortRecipe,
       "[Header]\nProduct=KRO-B\n[Table 1]\nReadStartLine=A\nReadEndLine=B\nParsing=xx  yy\n"
       "WriteColum=B\n[table 2]\n",
       {{7, "Table 1", "did you mean 'WriteColumn'?"}, {8, "table 2", "did you mean [Table 2]?"}}},
  };
  for (const LintCase& c : cases) {
    SCOPED_TRACE(c.what);
    const std::vector<RecipeNote> notes = LintRecipeText(c.text, "f", c.kind);
    std::vector<Expected> expected = c.notes;
    // Two expectations on the same note (same line) check two parts of its text.
    std::size_t distinct = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      if (i == 0 || expected[i].line != expected[i - 1].line) ++distinct;
    }
    std::string all;
    for (const RecipeNote& n : notes) all += FormatRecipeNote(n) + "\n";
    ASSERT_EQ(notes.size(), distinct) << all;
    for (const Expected& e : expected) {
      bool found = false;
      for (const RecipeNote& n : notes) {
        if (n.line == e.line && n.section == e.section && n.file == "f" &&
            n.text.find(e.text) != std::string::npos) {
          found = true;
        }
      }
      EXPECT_TRUE(found) << "line " << e.line << " [" << e.section << "] " << e.text << "\n" << all;
    }
  }
}

TEST(RecipeLint, NoteFormat) {
  EXPECT_EQ(FormatRecipeNote({"a.krs", 12, "Table 1", "text"}), "a.krs:12: [Table 1]: text");
  EXPECT_EQ(FormatRecipeNote({"a.krs", 0, "Title 2", "text"}), "a.krs: [Title 2]: text");
  EXPECT_EQ(FormatRecipeNote({"a.rcp", 3, "", "text"}), "a.rcp:3: text");
}

}  // namespace
}  // namespace kroveld
