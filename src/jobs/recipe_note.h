// A note about a recipe file: what a person writing it by hand would want to know about one of
// its lines (a key nothing reads, a heading that is not the expected one, a value that is quietly
// ignored). The recipe check produces them; the command line prints them and the recipe editor
// lists them.
#pragma once

#include <string>

namespace kroveld {

struct RecipeNote {
  std::string file;     // the file the note is about
  int line = 0;         // 1-based line; 0 when the note is about the file as a whole
  std::string section;  // the section the line stands in ("Table 1"), or empty
  std::string text;
};

// "FILE:LINE: [Section]: text"; the line and the section are left out when they are not known.
inline std::string FormatRecipeNote(const RecipeNote& note) {
  std::string out = note.file;
  if (note.line > 0) out += ":" + std::to_string(note.line);
  out += ": ";
  if (!note.section.empty()) out += "[" + note.section + "]: ";
  out += note.text;
  return out;
}

}  // namespace kroveld
