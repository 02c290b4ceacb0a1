// Helpers of the short-format recipes that tests reach directly: the line-span search that
// finds the template blocks of a marked-up report.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "util/text_file.h"

namespace kroveld {

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

}  // namespace kroveld
