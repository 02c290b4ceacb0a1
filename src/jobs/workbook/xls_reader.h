// Reads an existing Excel 97-2003 .xls file into a workbook through FreeXL: sheet names and the
// text and number cells, numbers with their formats ("#,##0.00" and the other formats the model
// knows; any other format reads as General). Fonts and formulas are not read: formula cells are
// skipped, dates and times come back as text.
#pragma once

#include <string>

#include "jobs/workbook/workbook.h"

namespace kroveld {

// Replaces `book`'s sheets with the file's. False with `error` when the file is not a readable
// .xls workbook.
bool ReadXls(const std::string& path, Workbook& book, std::string& error);

}  // namespace kroveld
