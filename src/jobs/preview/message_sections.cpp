#include "jobs/preview/message_sections.h"

#include <cctype>
#include <vector>

#include "util/strings.h"

namespace kroveld {

namespace {

bool IsDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Reads `word` + " " + digits at `at`; advances `at` past them. False (at unchanged) otherwise.
bool ReadNumbered(std::string_view text, std::size_t& at, std::string_view word) {
  if (text.substr(at, word.size()) != word) return false;
  std::size_t p = at + word.size();
  if (p >= text.size() || text[p] != ' ') return false;
  ++p;
  const std::size_t digits = p;
  while (p < text.size() && IsDigit(text[p])) ++p;
  if (p == digits) return false;
  at = p;
  return true;
}

// A section name at the start of `text`: kind and number, then " Col n" or " Dept n".
std::string SectionAt(std::string_view text) {
  std::size_t at = 0;
  if (ReadNumbered(text, at, "Table")) {
    std::size_t more = at;
    if (ReadNumbered(text, more, " Col")) at = more;
    return std::string(text.substr(0, at));
  }
  if (ReadNumbered(text, at, "Con")) {
    std::size_t more = at;
    if (ReadNumbered(text, more, " Dept")) at = more;
    return std::string(text.substr(0, at));
  }
  for (std::string_view kind : {"Title", "Consolidate"}) {
    if (ReadNumbered(text, at, kind)) return std::string(text.substr(0, at));
  }
  return {};
}

// Which key of a section a message is about, by what it says; "" when it does not tell.
std::string_view KeyOfMessage(std::string_view message) {
  static const struct {
    std::string_view says;
    std::string_view key;
  } kHints[] = {
      {"ReadStartLineOffset", "ReadStartLineOffset"},
      {"ReadEndLineOffset", "ReadEndLineOffset"},
      {"ReadStartLine", "ReadStartLine"},
      {"ReadEndLine", "ReadEndLine"},
      {"Write sheet", "WriteSheet"},
      {"Write Column", "WriteColumn"},
      {"Number of lines", "TotalLines"},
      {"Number of Columns", "TotalColumns"},
      {"Read Column start", "ReadColumnStart"},
      {"Read Column end", "ReadColumnEnd"},
      {"ReadColumnStart", "ReadColumnStart"},
      {"operator", "PeriodOperator"},
      {"Table number", "Table"},
      {"Accounts Column", "ReadAccountsColumn"},
      {"Export Specs file", "ExportSpecFileName"},
      {"product code", "Product"},
      {"file type", "FileType"},
      {"file format", "FileFormat"},
      {"not found!", "Parsing"},
  };
  for (const auto& hint : kHints) {
    if (message.find(hint.says) != std::string_view::npos) return hint.key;
  }
  return {};
}

std::vector<std::string_view> SplitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  std::size_t begin = 0;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    if (i == text.size() || text[i] == '\n' || text[i] == '\r') {
      lines.push_back(text.substr(begin, i - begin));
      if (i + 1 < text.size() && text[i] == '\r' && text[i + 1] == '\n') ++i;
      begin = i + 1;
    }
  }
  return lines;
}

// The name inside "[...]" on a heading line, trimmed; "" when the line is no heading.
std::string_view HeadingName(std::string_view line) {
  const std::size_t open = line.find('[');
  if (open == std::string_view::npos) return {};
  const std::size_t close = line.find(']', open + 1);
  if (close == std::string_view::npos) return {};
  return Trim(line.substr(open + 1, close - open - 1));
}

bool IsKeyLine(std::string_view line, std::string_view key) {
  const std::size_t eq = line.find('=');
  return eq != std::string_view::npos && Trim(line.substr(0, eq)) == key;
}

// Index of the first line in [from, to) holding `key`, or -1.
long FindKey(const std::vector<std::string_view>& lines, std::size_t from, std::size_t to,
             std::string_view key) {
  for (std::size_t i = from; i < to; ++i) {
    if (IsKeyLine(lines[i], key)) return static_cast<long>(i);
  }
  return -1;
}

}  // namespace

std::string SectionNamedIn(std::string_view message) {
  constexpr std::string_view kErrorIn = "Error in ";
  if (message.starts_with(kErrorIn)) return SectionAt(message.substr(kErrorIn.size()));
  if (message.find(" not found!") != std::string_view::npos) return SectionAt(message);
  return {};
}

int RecipeLineFor(std::string_view recipeText, std::string_view section, std::string_view message) {
  const std::vector<std::string_view> lines = SplitLines(recipeText);
  const std::string_view key = KeyOfMessage(message);
  if (!section.empty()) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (lines[i].find('[') == std::string_view::npos || HeadingName(lines[i]) != section)
        continue;
      std::size_t end = i + 1;
      while (end < lines.size() && lines[end].find('[') == std::string_view::npos) ++end;
      const long at = key.empty() ? -1 : FindKey(lines, i + 1, end, key);
      return static_cast<int>(at >= 0 ? at : static_cast<long>(i)) + 1;
    }
  } else if (!key.empty()) {
    const long at = FindKey(lines, 0, lines.size(), key);
    if (at >= 0) return static_cast<int>(at) + 1;
  }
  // The sections are in the export definition the recipe names.
  const long spec = FindKey(lines, 0, lines.size(), "ExportSpecFileName");
  return spec >= 0 ? static_cast<int>(spec) + 1 : 0;
}

}  // namespace kroveld
