// Short-format recipes: a table given by its two key texts and one parsing template. The
// operations that make one from a marked-up report, turn one into a long-form export definition
// and load one for the report being converted, and the line-span search they use.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "util/text_file.h"

namespace kroveld {

class Context;
class clsRecipe;

struct LineSpan {
  std::int64_t start = 0;  // ordinal of the start line, counted from the current position
  std::int64_t end = 0;    // ordinal of the end line, same count; 0 when not found
  std::string text;        // the line after the start line
};

// Reads forward from the current position of `file` to the first line that begins with
// `startKey` (its first key-length characters equal the key), takes the following line as the
// enclosed text, then reads on to the first line that begins with `endKey`. Ordinals count from
// the line after the current position, from 1. Start and end are 0 when the start key is not
// found; end alone is 0 when only the end key is missing.
LineSpan FindLineSpan(TextFile& file, std::string_view startKey, std::string_view endKey);

// Writes the short recipe of a report marked up with "<<" / ">>" lines to `shortPath`.
void FileCreateShort(Context& ctx, const std::string& templatePath, const std::string& shortPath);
// Turns the short recipe at `shortPath` into a long-form export definition at `longPath`, working
// out the column positions from the report at `inputPath` with the table template analyzer.
void FileConvertShortToLong(Context& ctx, const std::string& shortPath, const std::string& longPath,
                            const std::string& inputPath);
// Loads the short recipe at `path` into `recipe` for the report being converted: its export
// definition becomes the application folder's _ExportSpecs.krs, its input 1 the job's input.
void LoadFromFileShort(Context& ctx, clsRecipe& recipe, const std::string& path);

}  // namespace kroveld
