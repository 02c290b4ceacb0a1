// Row filters proposed for the tables of a report (--suggest): each table is located as the
// automatic recipe or a short-format recipe locates it, its block is surveyed against the table's
// template, and the recipe keys that keep blank lines, rules and repeated headings out of its
// rows are written as text ready to paste under the table's heading. Nothing is written to disk
// but a private temporary folder, removed at the end.
#pragma once

#include <string>

#include "util/ui_port.h"

namespace kroveld {

struct FilterSuggestRequest {
  std::string report;  // the report (marked up, for the automatic recipe)
  std::string recipe;  // a short-format recipe; empty for the automatic recipe
  int tabSize = 8;
};

// The suggestions, per table: "[Table N]", a comment line naming the lines the keys skip, and
// the keys; or one comment line when the table has nothing to skip. Messages (a missing file, a
// table not found) go through the port as a conversion shows them.
std::string SuggestFilters(UiPort& ui, const FilterSuggestRequest& request);

}  // namespace kroveld
