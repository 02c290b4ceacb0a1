// Spreadsheet column letters and numbers. Two families: the one-letter pair (A..Z = 1..26) and
// the two-letter pair (A..ZZ = 1..702). Bad arguments are reported through the port with the
// routine's own message and give the neutral result.
#pragma once

#include <string>
#include <string_view>

#include "util/ui_port.h"

namespace kroveld {

// 1..26 -> "A".."Z"; otherwise "unexpected number code in utilities.NumToAlpha!" and "".
std::string NumToAlpha(UiPort& ui, int n);
// One letter, any case -> 1..26; `letter` is upper-cased in place (callers see it normalised).
// Otherwise "unexpected Letter code in utilities.AlphaToNum!" and 0.
int AlphaToNum(UiPort& ui, std::string& letter);
// 1..702 -> "A".."ZZ"; otherwise "unexpected number code in xl.NumToAlpha2!" and "".
std::string NumToAlpha2(UiPort& ui, int n);
// Text of length 1 or 2 -> 1..702; otherwise "unexpected letter code in xl.AlphaToNum2!" and 0.
// A letter outside A-Z inside a pair gives AlphaToNum's message and counts as 0.
int AlphaToNum2(UiPort& ui, std::string_view letters);

}  // namespace kroveld
