// Cell texts arrive as the 8-bit bytes of a report; workbook files carry Unicode. A text that is
// valid UTF-8 is taken as it is, any other is decoded as Windows-1252.
#pragma once

#include <string>
#include <string_view>

#include "util/utf8_text.h"  // IsValidUtf8, AppendCodePoint

namespace kroveld {

// Appends `bytes` to `out` as UTF-8 (unchanged when already valid UTF-8, else from Windows-1252).
void AppendAsUtf8(std::string_view bytes, std::string& out);
std::string AsUtf8(std::string_view bytes);

}  // namespace kroveld
