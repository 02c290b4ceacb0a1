// Start-up (Main): the options, the error log, config.ini, then the command line of either
// syntax and the batch conversion it asks for. Returns the process exit status.
#pragma once

#include <string>

namespace kroveld {

class Context;

int RunMain(int argc, char** argv);

// The steps both lifetimes share: the error log rewritten with its header, command-line mode off,
// tab size 8, config.ini created when missing. Returns the path of config.ini.
std::string PrepareApplicationFolder(Context& ctx);

// True when a window can be opened: an X11 or Wayland display, or a Qt platform chosen by
// QT_QPA_PLATFORM (offscreen in tests).
bool DisplayAvailable();

}  // namespace kroveld
