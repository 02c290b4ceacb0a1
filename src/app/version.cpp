#include "app/version.h"

namespace kroveld {

const char* VersionText() {
  return KROVELD_VERSION;
}

}  // namespace kroveld
