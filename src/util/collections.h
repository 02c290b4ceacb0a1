// The two list helpers of the recipe code, on ordered lists of text held in a vector (positions
// in the interface are 1-based, as recipe files number their entries).
#pragma once

#include <string>
#include <vector>

#include "util/ui_port.h"

namespace kroveld {

template <class T>
void CollectionClear(std::vector<T>& list) {
  list.clear();
}

// Replaces item i (1-based). i below 1 or above the count shows "Invalid Index in
// CollectionItemSet!" (critical) and changes nothing. Returns true when the item was set.
bool CollectionItemSet(UiPort& ui, std::vector<std::string>& list, int i, std::string value);

}  // namespace kroveld
