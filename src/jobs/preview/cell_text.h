// A workbook cell as a spreadsheet shows it: a number in its number format ("#,##0.00" gives
// "12,450.00"), text as it stands. Used wherever the preview lists cells.
#pragma once

#include <string>

#include "jobs/workbook/workbook.h"
#include "util/numbers.h"

namespace kroveld {

std::string CellDisplayText(const CellView& cell,
                            const NumberLocale& loc = NumberLocale::Current());

}  // namespace kroveld
