// Line searches on text files: FindNextLine with its signed result, the fast whole-file key search
// used to find tables (on a file, or on a file mapped into memory), and the step back over lines
// from a key line.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

// Where a key was found: the number (from 1) of the first line containing it, 0 when none does,
// and the byte offset at which that line begins.
struct KeyLine {
  std::int64_t line = 0;
  std::int64_t offset = 0;
};

// One pass over the file at `path` for several keys at once: for each key, the first line that
// contains it as a substring (case-sensitive; an empty key matches the first non-empty line), as
// FindFirstLineContaining would find it. Reading stops as soon as every key is found. All lines
// 0 when the file cannot be read. `afterBlock`, when given, is called after each block of a few
// megabytes, so that a long search can let the user interface breathe.
std::vector<KeyLine> FindFirstLinesContaining(const std::string& path,
                                              std::span<const std::string_view> keys,
                                              const std::function<void()>& afterBlock = {});

// The same search over bytes in memory (a mapped file): nothing is copied. `afterBlock`, when
// given, is told after each block the offset before which the search will not look again.
std::vector<KeyLine> FindFirstLinesContaining(std::string_view bytes,
                                              std::span<const std::string_view> keys,
                                              const std::function<void(std::int64_t)>& afterBlock);

// The byte offset at which the line `count` lines before the line beginning at `offset` begins,
// found by reading `bytes` backwards; line ends as TextFile reads them (CR LF, LF, a lone CR).
// -1 when the text begins first (or `offset` lies outside it).
std::int64_t StartOfLineBefore(std::string_view bytes, std::int64_t offset, std::int64_t count);

// Number (from 1) of the first line of the file at `path` that contains `key` as a substring
// (case-sensitive). An empty key matches the first non-empty line. 0 when no line matches or the
// file cannot be read. Reads with large buffers and memmem; the file is never held whole.
std::int64_t FindFirstLineContaining(const std::string& path, std::string_view key);

}  // namespace kroveld
