// Splits a block of report text into its lines, as views into the block: lines end with CR LF, LF
// or a lone CR, and a last line without an end counts too.
#pragma once

#include <string_view>
#include <vector>

namespace kroveld::testing {

inline std::vector<std::string_view> LinesOf(std::string_view block) {
  std::vector<std::string_view> lines;
  std::size_t from = 0;
  for (std::size_t i = 0; i < block.size(); ++i) {
    if (block[i] != '\r' && block[i] != '\n') continue;
    lines.push_back(block.substr(from, i - from));
    if (block[i] == '\r' && i + 1 < block.size() && block[i + 1] == '\n') ++i;
    from = i + 1;
  }
  if (from < block.size()) lines.push_back(block.substr(from));
  return lines;
}

}  // namespace kroveld::testing
