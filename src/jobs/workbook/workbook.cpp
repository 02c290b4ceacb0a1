// PLACEHOLDER: replaced by the workbook work.
#include "jobs/workbook/workbook.h"
namespace kroveld {
Workbook::Workbook() { sheets_.emplace_back("Sheet1"); sheets_.emplace_back("Sheet2"); }
Sheet& Workbook::GetSheet(int n) { while (SheetCount() < n) AddSheet("Sheet" + std::to_string(SheetCount() + 1)); return sheets_[n - 1]; }
}  // namespace kroveld
