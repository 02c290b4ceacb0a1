// The list helper that replaces an item at a 1-based position.
#include "util/collections.h"

namespace kroveld {

bool CollectionItemSet(UiPort& ui, std::vector<std::string>& list, int i, std::string value) {
  if (i < 1 || static_cast<std::size_t>(i) > list.size()) {
    ui.Message("Invalid Index in CollectionItemSet!", Icon::Critical);
    return false;
  }
  list[static_cast<std::size_t>(i) - 1] = std::move(value);
  return true;
}

}  // namespace kroveld
