// The recipe lint on the optional keys of tables, columns and departments: read by name after the
// fixed keys, so a pattern holding "[" or a table without its key text is no slip; misspelt,
// repeated and refused values are.
#include <gtest/gtest.h>

#include "jobs/recipe_lint.h"

namespace kroveld {
namespace {

const std::string kHeader = "[Header]\nProduct=KRO\nFileType=EXPORT SPEC\nFileFormat=1.1\n";

std::string AllNotes(const std::vector<RecipeNote>& notes) {
  std::string all;
  for (const RecipeNote& n : notes) all += FormatRecipeNote(n) + "\n";
  return all;
}

TEST(RecipeLintKeys, PatternsAndSwitchesAfterTheFixedKeysAreClean) {
  const std::string text = kHeader +
                           "[Table 1]\nReadStartLineOffset=1\nReadEndLine=END\n"
                           "ReadEndLineOffset=-1\nTotalColumns=2\nReadStartPattern=^[A-Z]+ +DESC\n"
                           "SkipBlankLines=true\nSkipLinesMatching=^[-=]+$\n"
                           "KeepLinesMatching=^[0-9]{4}\nTotalLinesMatching=TOTAL\n"
                           "[Table 1 Col 1]\nReadColumnStart=1\nReadColumnEnd=4\nWriteColumn=A\n"
                           "PeriodOperator=\n[Table 1 Col 2]\nReadColumnStart=7\n"
                           "ReadColumnEnd=9\nWriteColumn=B\nCarryFrom=^DEPT: [0-9]\n"
                           "[Consolidate 1]\nTable=1\nReadAccountsColumn=1\nTotalDepartments=1\n"
                           "[Con 1 Dept 1]\nReadStartLineOffset=0\nReadEndLine=2000\n"
                           "ReadEndLineOffset=0\nReadStartPattern=^1[0-9]\n";
  const std::vector<RecipeNote> notes = LintRecipeText(text, "f", RecipeFileKind::ExportSpec);
  EXPECT_TRUE(notes.empty()) << AllNotes(notes);
}

TEST(RecipeLintKeys, SlipsInTheOptionalKeysAreNoted) {
  // Lines 5-10 hold the table's fixed keys; its optional keys start on line 11.
  const std::string text = kHeader +
                           "[Table 1]\nReadStartLine=A\nReadStartLineOffset=1\nReadEndLine=END\n"
                           "ReadEndLineOffset=-1\nTotalColumns=1\n"
                           "SkipLinesMatching=([0-9]\n"  // 11
                           "SkipBlankLines=yes\n"        // 12
                           "KeepLinesMatching=^A\n"      // 13
                           "KeepLinesMatching=^B\n"      // 14
                           "SkipLineMatching=x\n"        // 15
                           "ReadEndPattern=\n"           // 16
                           "[Table 1 Col 1]\nReadColumnStart=1\nReadColumnEnd=4\nWriteColumn=A\n"
                           "CarryForm=^DEPT\n";  // 21
  const std::vector<RecipeNote> notes = LintRecipeText(text, "f", RecipeFileKind::ExportSpec);
  const struct {
    int line;
    std::string text;
  } expected[] = {
      {11, "the SkipLinesMatching pattern does not compile: missing )"},
      {12, "SkipBlankLines must be TRUE or FALSE, not 'yes'"},
      {14, "'KeepLinesMatching' is given again: only the first one (line 13) is read"},
      {15, "did you mean 'SkipLinesMatching'?"},
      {16, "'ReadEndPattern' is blank"},
      {21, "did you mean 'CarryFrom'?"},
  };
  ASSERT_EQ(notes.size(), std::size(expected)) << AllNotes(notes);
  for (std::size_t i = 0; i < notes.size(); ++i) {
    EXPECT_EQ(notes[i].line, expected[i].line) << AllNotes(notes);
    EXPECT_NE(notes[i].text.find(expected[i].text), std::string::npos) << notes[i].text;
  }
}

}  // namespace
}  // namespace kroveld
