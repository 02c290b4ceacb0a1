// The template line parser: the first step of the table template analyzer. A parsing template is
// one line in which every run of non-blank characters marks a field; the parser lists where each
// field starts, where it ends and whether it is summed across input files ("+" as first mark).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "util/ui_port.h"

namespace kroveld {

// Splits `tmpl` (taken as it is: no trimming, a tab is a field character, only ' ' is a blank)
// into fields, filling three parallel lists that are emptied first. Positions are 1-based.
//
// End entries follow two conventions: a field closed by a blank ends on that blank (one past its
// last character); a field that reaches the end of the template ends on its last character.
// Operators are "Sum" when the field's first character is '+', otherwise "".
//
// True when at least one field was found. A last field that starts on the very last position
// gets its end appended after the scan and the result is false although the lists are complete.
// Any other disagreement between starts and ends shows "unexpected error in template analyzer!"
// (critical), empties the lists and gives false.
bool ParseTemplateLine(UiPort& ui, std::string_view tmpl, std::vector<int>& starts,
                       std::vector<int>& ends, std::vector<std::string>& operators);

}  // namespace kroveld
