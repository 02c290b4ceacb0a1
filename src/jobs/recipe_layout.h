// The layout of recipe files as the loaders read them: the keys of each kind of section in the
// order they are looked up, the parsing of numbered section names ("Table 3 Col 2"), and the
// proper name of a heading written in another case or numbering ("table 01" -> "Table 1").
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

enum class RecipeFileKind { Recipe, ExportSpec, ShortRecipe };

extern const std::vector<std::string> kHeaderKeys;
extern const std::vector<std::string> kOutputKeys;  // [Output File], Sheet1Name/Sheet2Name last
extern const std::vector<std::string> kTitleKeys;   // then 1Text, 2Text, ...
extern const std::vector<std::string> kTableKeys;
extern const std::vector<std::string> kColKeys;
extern const std::vector<std::string> kConKeys;
extern const std::vector<std::string> kDeptKeys;
// Keys that may follow the fixed keys of tables, columns and departments (looked up by name).
extern const std::vector<std::string> kTableOptionalKeys;
extern const std::vector<std::string> kColOptionalKeys;
extern const std::vector<std::string> kDeptOptionalKeys;
extern const std::vector<std::string> kShortTableKeys;
// Keys whose values are free text, where a ";" is more likely part of the text than a comment.
extern const std::vector<std::string> kTextKeys;

bool Contains(const std::vector<std::string>& list, std::string_view s);
// "a, b, c"
std::string Joined(const std::vector<std::string>& keys);
// Keys of the form number + text ("12Text", "3FileName"): the number and the rest.
bool NumberedKey(std::string_view key, int& number, std::string_view& rest);

// An exact section name of the numbered kinds: "Title 2", "Table 3", "Table 3 Col 2",
// "Consolidate 1", "Con 1 Dept 2". `kind` is "Title", "Table", "Col", "Consolidate", "Dept", or
// empty for any other name.
struct ParsedName {
  std::string kind;
  int a = 0, b = 0;
};
ParsedName ParseName(std::string_view name);

// The section name that a heading means when it differs from one only in case, blanks or the
// writing of numbers, for this kind of file; "" when it means none.
std::string SuggestedSectionName(std::string_view name, RecipeFileKind kind);

}  // namespace kroveld
