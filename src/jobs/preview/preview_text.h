// The preview as plain text for a terminal: each table's key lines and block with its column
// spans, each title's rows, then the first rows of sheets 1 and 2 as aligned tables (numbers
// right-aligned in their format).
#pragma once

#include <string>

#include "jobs/preview/preview_result.h"

namespace kroveld {

std::string PreviewText(const PreviewResult& result, int maxRows);

}  // namespace kroveld
