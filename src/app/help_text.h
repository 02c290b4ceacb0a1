// The command-line help (help topic 4), printed by "/?" and "--help"; docs/help/topic-4.html
// shows the same text in the help window.
#pragma once

#include <string>

namespace kroveld {

const std::string& CommandLineHelpText();

}  // namespace kroveld
