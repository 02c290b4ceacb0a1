// The two files start-up looks after in the application folder: the error log, rewritten with
// its header line at every start, and config.ini, created with its default lines when missing.
#pragma once

#include <string>
#include <vector>

namespace kroveld {

// The eleven lines of a new config.ini (each written with CR LF).
const std::vector<std::string>& DefaultConfigLines();
// Writes the default lines, replacing any file there. False when the file cannot be written.
bool CreateDefaultConfig(const std::string& path);

// "Kroveld Error Log [YYYY-MM-DD HH:MM:SS]" for the current local time.
std::string ErrorLogHeader();
// Replaces the error log with its one header line.
bool WriteErrorLogHeader(const std::string& path);

}  // namespace kroveld
