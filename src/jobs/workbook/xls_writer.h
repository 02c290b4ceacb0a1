// Saves a workbook as an Excel 97-2003 .xls file: BIFF8 records in the "Workbook" stream of an
// OLE2 compound file (written by libgsf). Texts go to the shared string table in UTF-16 (or
// 8-bit when every character fits), numbers carry the built-in formats General, 0, 0.00, #,##0
// and #,##0.00, and the standard font is the workbook's default font. A sheet over 65,536 rows or
// 256 columns cannot be stored in the format: the save is refused and the old file is untouched.
#pragma once

#include <string>

#include "jobs/workbook/workbook.h"

namespace kroveld {

inline constexpr int kXlsMaxRows = 65536;
inline constexpr int kXlsMaxColumns = 256;

// False with `error` (path and reason); the old file at `path` then stays as it was.
// `tick`, when given, is told the progress and can stop the save (the old file stays).
bool WriteXls(const Workbook& book, const std::string& path, std::string& error,
              const SaveTick& tick = {});

// The complete "Workbook" stream (exposed for tests). False with `error` when a sheet is too big.
bool BuildBiff8Stream(const Workbook& book, std::string& stream, std::string& error);

}  // namespace kroveld
