// Start-up (Main): the options, the error log, config.ini, then the command line of either
// syntax and the batch conversion it asks for. Returns the process exit status.
#pragma once

namespace kroveld {

int RunMain(int argc, char** argv);

}  // namespace kroveld
