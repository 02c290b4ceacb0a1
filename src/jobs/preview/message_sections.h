// Where a message of a run belongs: the section it names ("Error in Table 2 : ...", "Table 3 not
// found!") and the line of the recipe text that shows the trouble, the heading of that section or
// better the line of the key the message is about.
#pragma once

#include <string>
#include <string_view>

namespace kroveld {

// The section a message names itself: "Title 1", "Table 2", "Table 2 Col 3", "Consolidate 1",
// "Con 1 Dept 2"; "" when it names none ("Error in Table specs: ..." names none).
std::string SectionNamedIn(std::string_view message);

// The line (from 1) of `recipeText` to show for `message` of `section`: the line of the key the
// message is about within that section, else the section's heading, else (the sections living in
// another file) the line naming the export definition; 0 when the text has none of these.
int RecipeLineFor(std::string_view recipeText, std::string_view section, std::string_view message);

}  // namespace kroveld
