// The layout of recipe files as the loaders read them.
#include "jobs/recipe_layout.h"

#include <algorithm>
#include <cctype>

namespace kroveld {

const std::vector<std::string> kHeaderKeys = {"Product", "FileType", "FileFormat"};
const std::vector<std::string> kOutputKeys = {
    "OutputFileTitle",    "OutputFileName",  "InputFileFirst", "InputFileLast",
    "ExportSpecFileName", "WriteDataFormat", "Sheet1Name",     "Sheet2Name"};
const std::vector<std::string> kTitleKeys = {"WriteSheet", "WriteColumn", "TotalLines"};
const std::vector<std::string> kTableKeys = {"ReadStartLine", "ReadStartLineOffset", "ReadEndLine",
                                             "ReadEndLineOffset", "TotalColumns"};
const std::vector<std::string> kColKeys = {"ReadColumnStart", "ReadColumnEnd", "WriteColumn",
                                           "PeriodOperator"};
const std::vector<std::string> kConKeys = {"Table", "ReadAccountsColumn", "TotalDepartments"};
const std::vector<std::string> kDeptKeys = {"ReadStartLine", "ReadStartLineOffset", "ReadEndLine",
                                            "ReadEndLineOffset"};
const std::vector<std::string> kTableOptionalKeys = {"ReadStartPattern",  "ReadEndPattern",
                                                     "SkipBlankLines",    "SkipLinesMatching",
                                                     "KeepLinesMatching", "TotalLinesMatching"};
const std::vector<std::string> kColOptionalKeys = {"CarryFrom"};
const std::vector<std::string> kDeptOptionalKeys = {"ReadStartPattern", "ReadEndPattern"};
const std::vector<std::string> kShortTableKeys = {"ReadStartLine", "ReadStartLineOffset",
                                                  "ReadEndLine",   "ReadEndLineOffset",
                                                  "Parsing",       "WriteColumn"};
const std::vector<std::string> kTextKeys = {"ReadStartLine", "ReadEndLine", "OutputFileTitle",
                                            "Name",          "Sheet1Name",  "Sheet2Name",
                                            "Parsing"};

bool Contains(const std::vector<std::string>& list, std::string_view s) {
  return std::find(list.begin(), list.end(), s) != list.end();
}

std::string Joined(const std::vector<std::string>& keys) {
  std::string out;
  for (const std::string& k : keys) {
    if (!out.empty()) out += ", ";
    out += k;
  }
  return out;
}

bool NumberedKey(std::string_view key, int& number, std::string_view& rest) {
  std::size_t i = 0;
  while (i < key.size() && std::isdigit(static_cast<unsigned char>(key[i]))) ++i;
  if (i == 0 || i > 9 || key[0] == '0') return false;
  number = std::stoi(std::string(key.substr(0, i)));
  rest = key.substr(i);
  return true;
}

namespace {

// A section name split into words, lower case, numbers without leading zeros, letters and
// digits apart ("Table01" -> "table 1"): two names that differ only in case, blanks or the
// writing of numbers have the same canonical form.
std::vector<std::string> CanonicalWords(std::string_view name) {
  std::vector<std::string> words;
  std::string word;
  auto flush = [&] {
    if (word.empty()) return;
    if (std::isdigit(static_cast<unsigned char>(word[0]))) {
      const std::size_t nz = word.find_first_not_of('0');
      word = nz == std::string::npos ? "0" : word.substr(nz);
    }
    words.push_back(word);
    word.clear();
  };
  for (char c : name) {
    const bool digit = std::isdigit(static_cast<unsigned char>(c)) != 0;
    if (c == ' ' || c == '\t' || c == '_' || c == '-') {
      flush();
      continue;
    }
    if (!word.empty() && digit != (std::isdigit(static_cast<unsigned char>(word[0])) != 0)) flush();
    word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  flush();
  return words;
}

// The section name a canonical form stands for in this kind of file, or "".
std::string ProperName(const std::vector<std::string>& w, RecipeFileKind kind) {
  auto num = [](const std::string& s) {
    return !s.empty() && std::isdigit(static_cast<unsigned char>(s[0])) != 0;
  };
  const std::size_t n = w.size();
  if (n == 1 && w[0] == "header") return "Header";
  if (kind == RecipeFileKind::Recipe) {
    if (n == 2 && w[0] == "output" && w[1] == "file") return "Output File";
    if (n == 2 && w[0] == "input" && w[1] == "files") return "Input Files";
    return "";
  }
  if (n == 2 && w[0] == "table" && num(w[1])) return "Table " + w[1];
  if (kind == RecipeFileKind::ShortRecipe) return "";
  if (n == 1 && w[0] == "general") return "General";
  if (n == 2 && w[0] == "title" && num(w[1])) return "Title " + w[1];
  if (n == 2 && w[0] == "consolidate" && num(w[1])) return "Consolidate " + w[1];
  if (n == 4 && w[0] == "table" && num(w[1]) && (w[2] == "col" || w[2] == "column") && num(w[3])) {
    return "Table " + w[1] + " Col " + w[3];
  }
  if (n == 4 && w[0] == "con" && num(w[1]) && (w[2] == "dept" || w[2] == "department") &&
      num(w[3])) {
    return "Con " + w[1] + " Dept " + w[3];
  }
  return "";
}

}  // namespace

ParsedName ParseName(std::string_view name) {
  ParsedName p;
  auto number = [](std::string_view s, int& out) {
    if (s.empty() || s.size() > 9 || s[0] == '0') return false;
    for (char c : s) {
      if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    }
    out = std::stoi(std::string(s));
    return true;
  };
  std::vector<std::string_view> parts;
  for (std::size_t at = 0; at <= name.size();) {
    std::size_t blank = name.find(' ', at);
    if (blank == std::string_view::npos) blank = name.size();
    parts.push_back(name.substr(at, blank - at));
    at = blank + 1;
  }
  if (parts.size() == 2 && number(parts[1], p.a)) {
    if (parts[0] == "Title" || parts[0] == "Table" || parts[0] == "Consolidate") p.kind = parts[0];
  } else if (parts.size() == 4 && number(parts[1], p.a) && number(parts[3], p.b)) {
    if (parts[0] == "Table" && parts[2] == "Col") p.kind = "Col";
    if (parts[0] == "Con" && parts[2] == "Dept") p.kind = "Dept";
  }
  return p;
}

std::string SuggestedSectionName(std::string_view name, RecipeFileKind kind) {
  return ProperName(CanonicalWords(name), kind);
}

}  // namespace kroveld
