// Line searches on text files: the system's FindNextLine with its signed result, and the fast
// whole-file key search used to find tables.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "util/text_file.h"

namespace kroveld {

// Reads forward from the current position of `file` and returns the ordinal (from 1, counted
// from the line after the current position) of the first line that matches: +n when it contains
// text1, -n when text2 (non-empty) occurs, n + 10000000 when text3 (non-empty) occurs. A line that
// also contains the non-empty exclusion text is passed over. With compareLength > 0 only that many
// characters from the 1-based startPos of each line are compared. End of file gives 0.
std::int64_t FindNextLine(TextFile& file, std::string_view text1, std::string_view text2 = {},
                          std::string_view text3 = {}, std::string_view exclusion = {},
                          int startPos = 1, int compareLength = 0);

// Number (from 1) of the first line of the file at `path` that contains `key` as a substring
// (case-sensitive). An empty key matches the first non-empty line. 0 when no line matches or the
// file cannot be read. Reads with large buffers and memmem; the file is never held whole.
std::int64_t FindFirstLineContaining(const std::string& path, std::string_view key);

}  // namespace kroveld
