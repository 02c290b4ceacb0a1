// `kroveld --preview -i report.txt -r recipe.rcp`: shows what a recipe extracts from a report
// without writing anything. Each table's key lines and block and the first rows of cells go to
// stdout as aligned text, the messages the conversion would show to stderr as the console prints
// them. Exit status 0 when the run would show no message, 1 when it would, 2 for a bad line.
#pragma once

#include <string>
#include <vector>

namespace kroveld {

// Whether the conventional arguments ask for a preview (one of them is "--preview").
bool IsPreviewCommandLine(const std::vector<std::string>& args);

// Runs the preview the arguments (after the program name) describe; returns the exit status.
int RunPreviewCommandLine(const std::vector<std::string>& args);

}  // namespace kroveld
