// The interactive start-up: the splash frmPleaseWait, then the frame window with the main window,
// until the frame is closed. Without a display, one error line and exit status 1.
#pragma once

namespace kroveld {

int RunWindow(int argc, char** argv);

}  // namespace kroveld
