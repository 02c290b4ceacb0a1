// Every "Key=Value" line of every section of an export definition, gathered in the one pass that
// also counts its headings. The fixed keys of a section are read in their sequential order from
// the open file, as always; the optional keys that may stand after them (row filters, patterns,
// column types) are looked up here by section and name, so where they stand among themselves
// does not matter and a file without them reads exactly as before.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kroveld {

class SectionMap {
 public:
  // Feeds the next line of the file. A line with an "=" whose key part holds no "[" is a key
  // line (so a pattern such as "^[-=]+$" stays a value); otherwise a heading line starts a new
  // section. The value is cut at ";" (a comment, as for every key) and trimmed; blank values and
  // lines before the first heading are not kept.
  void Note(std::string_view line);

  // The value of the first `key` line of section `section` (the name between the brackets,
  // trimmed, exact case), or empty when there is none.
  std::string_view Find(std::string_view section, std::string_view key) const;

 private:
  using Keys = std::vector<std::pair<std::string, std::string>>;
  std::unordered_map<std::string, Keys> sections_;
  Keys* current_ = nullptr;
};

}  // namespace kroveld
