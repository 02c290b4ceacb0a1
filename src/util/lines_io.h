// Reading a run of lines of a named file, and writing an array of lines to a file.
#pragma once

#include <string>
#include <vector>

#include "util/ui_port.h"

namespace kroveld {

// Stores lines start .. start + count - 1 (1-based) of the file into lines[0 .. count-1]
// (the vector is grown to `count` if smaller). A start below 1 shows
// " invalid start_line in utilities.file_read!" and reads nothing. Reading past the end stops
// quietly; the remaining elements keep their values. A missing file reads nothing. The system's
// named interface; no caller but clsLineProcessor::ReadRow.
void file_read(UiPort& ui, std::vector<std::string>& lines, const std::string& path,
               long long start, long long count);

// Writes the first `count` elements, each followed by CR LF; `append` adds to the end of an
// existing file, otherwise the file is replaced (atomically). False with `error` on failure.
bool WriteLines(const std::string& path, const std::vector<std::string>& lines, int count,
                bool append, std::string* error = nullptr);

}  // namespace kroveld
