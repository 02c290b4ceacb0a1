// Reads a recipe (.rcp), an export definition (.krs) or a short recipe the way the loaders read
// them, key lookup rules and all, and says line by line what a person writing one by hand would
// want to know: keys that no section reads (with the nearest known key), keys that read as
// missing because of where they stand, headings that are not the expected ones, sections beyond
// the counts that are read, and values that are quietly ignored. Text analysis only: it shows no
// message and writes nothing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "jobs/recipe_layout.h"
#include "jobs/recipe_note.h"

namespace kroveld {

// `file` is the name the notes carry.
std::vector<RecipeNote> LintRecipeText(std::string_view text, const std::string& file,
                                       RecipeFileKind kind);
// Reads `path` (CR LF, LF or CR line ends); a file that cannot be read gives no notes.
std::vector<RecipeNote> LintRecipeFile(const std::string& path, RecipeFileKind kind);

}  // namespace kroveld
