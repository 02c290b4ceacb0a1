// Column widths that make a sheet readable when it is opened: each used column as wide as the
// longest value it shows, in characters of the standard font, between the spreadsheet default
// and a cap; a width an existing file gave a column is kept as it was.
#pragma once

#include <vector>

#include "jobs/workbook/workbook.h"

namespace kroveld {

inline constexpr double kDefaultColumnWidth = 8.43;
// Workbook files store a width with the cell padding of the standard font added (5 pixels of a
// 7-pixel digit): 8.43 characters are stored as 9.14. Readers take it off, writers add it.
inline constexpr double kColumnPadding = 5.0 / 7.0;
inline constexpr double kMaxColumnWidth = 60;

// Widths of columns 1..MaxColumn() (index 0 is column 1); 0 for a column that holds no cell and
// was given no width, which keeps the default.
std::vector<double> ColumnWidths(const Sheet& sheet);

}  // namespace kroveld
