// Where kroveld keeps config.ini, ErrorLog.txt and its automatic recipe files: the folder of the
// executable, unless KROVELD_HOME names another; when that folder is not writable, or is the
// system's /usr/bin or /usr/local/bin, $XDG_CONFIG_HOME/kroveld (default ~/.config/kroveld),
// created when missing.
#pragma once

#include <string>

namespace kroveld {

// Without a trailing separator.
std::string FindAppFolder();

}  // namespace kroveld
