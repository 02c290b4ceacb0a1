// The recipe check: loads a recipe and its export definition exactly as a conversion does, the
// loaders' messages going through the port as usual, and adds notes on what the files say that
// the loaders read differently from what their writer meant. With a report, the conversion pass
// runs as well, into a workbook kept in memory and never saved. Nothing of the application
// folder is touched: a short recipe is converted in a private temporary folder.
#pragma once

#include <string>
#include <vector>

#include "jobs/recipe_note.h"
#include "util/ui_port.h"

namespace kroveld {

struct RecipeCheckRequest {
  std::string recipe;  // the recipe file, long or short form
  std::string report;  // a report to run the recipe on; may be empty
  int tabSize = 8;
};

// The notes, in file order (the recipe's, then its export definition's). An empty list and no
// message shown means there is nothing to say about the recipe.
std::vector<RecipeNote> CheckRecipe(UiPort& ui, const RecipeCheckRequest& request);

}  // namespace kroveld
