// Saves a workbook as an .xlsx (OOXML) file through libxlsxwriter: every sheet with its name,
// text and number cells with their number formats, and the standard font as the workbook's
// default font. The file is written beside the target and renamed over it when complete.
#pragma once

#include <string>

#include "jobs/workbook/workbook.h"

namespace kroveld {

// False with `error` (path and reason); the old file at `path` then stays as it was.
// `tick`, when given, is told the progress and can stop the save (the old file stays).
bool WriteXlsx(const Workbook& book, const std::string& path, std::string& error,
               const SaveTick& tick = {});

}  // namespace kroveld
