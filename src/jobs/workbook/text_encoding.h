// Cell texts arrive as the 8-bit bytes of a report; workbook files carry Unicode. A text that is
// valid UTF-8 is taken as it is, any other is decoded as Windows-1252.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kroveld {

bool IsValidUtf8(std::string_view text);
// Appends the UTF-8 form of a code point.
void AppendCodePoint(std::uint32_t cp, std::string& out);
// Appends `bytes` to `out` as UTF-8 (unchanged when already valid UTF-8, else from Windows-1252).
void AppendAsUtf8(std::string_view bytes, std::string& out);
std::string AsUtf8(std::string_view bytes);

}  // namespace kroveld
