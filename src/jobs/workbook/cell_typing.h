// How a text handed to a cell is stored, the way a spreadsheet types what is typed into it:
// numeric text becomes a number with a matching format ("1,234.50" -> 1234.5 as "#,##0.00",
// "1,234" -> "#,##0", "12.50" -> "0.00", "12" and "(12)" -> General), codes with leading zeros
// ("00123") stay text, "" is an empty cell, and everything else (blank-only text and text
// beginning with "=" included) is text.
#pragma once

#include <string_view>

#include "jobs/workbook/workbook.h"
#include "util/numbers.h"

namespace kroveld {

struct TypedCell {
  CellType type = CellType::kEmpty;
  double number = 0;
  NumberFormat format = NumberFormat::kGeneral;
};

TypedCell TypeCellText(std::string_view text, const NumberLocale& loc = NumberLocale::Current());

// The format a number printed as `text` (numeric by the same test) is shown with, by its look.
NumberFormat FormatOfNumberText(std::string_view text,
                                const NumberLocale& loc = NumberLocale::Current());

}  // namespace kroveld
