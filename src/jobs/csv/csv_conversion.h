// One conversion pass of the loaded recipe of `ctx` into a CSV file: the library-level entry the
// conversion job, the tests and the benchmarks call.
#pragma once

#include <string>

#include "engine/context.h"

namespace kroveld {

// Opens `outputPath` for CSV output, runs the export specification's pass with it and commits the
// file (flushed to the disk first when it replaces an existing file; a new file is not, so callers
// that write many sync once at the end). False with `error` (path and reason) when the file cannot
// be written; the pass's own messages go through the port.
bool ConvertToCsv(Context& ctx, const std::string& outputPath, std::string* error);

}  // namespace kroveld
