// Reads an existing Excel 97-2003 .xls file into a workbook: sheet names, the text and number
// cells, numbers with their formats ("#,##0.00" and the other formats the model knows; any other
// format reads as General) and column widths. Formula cells give the result the file keeps;
// dates and times come back as text ("2024-06-30", "2024-06-30 08:15:00", "08:15:00"); fonts
// are not read.
#pragma once

#include <string>

#include "jobs/workbook/workbook.h"

namespace kroveld {

// Replaces `book`'s sheets with the file's. False with `error` when the file is not a readable
// .xls workbook.
bool ReadXls(const std::string& path, Workbook& book, std::string& error);

}  // namespace kroveld
