// .xls input through FreeXL.
#include "jobs/workbook/xls_reader.h"

#include <freexl.h>

#include "util/files.h"

namespace kroveld {
namespace {

class FreeXlHandle {
 public:
  ~FreeXlHandle() {
    if (handle_) freexl_close(handle_);
  }
  const void** Out() { return &handle_; }
  const void* Get() const { return handle_; }

 private:
  const void* handle_ = nullptr;
};

}  // namespace

bool ReadXls(const std::string& path, Workbook& book, std::string& error) {
  FreeXlHandle xls;
  const int opened = freexl_open(NativePath(path).c_str(), xls.Out());
  // FreeXL can report success without a handle: it cannot read a text that spans more than two
  // BIFF records (cell texts of more than about 8,000 characters).
  if (opened != FREEXL_OK) {
    error = path + ": not a readable .xls file (FreeXL error " + std::to_string(opened) + ")";
    return false;
  }
  if (!xls.Get()) {
    error =
        path +
        ": the .xls file holds a cell text too long to be read back (over about 8,000 characters)";
    return false;
  }
  unsigned int sheets = 0;
  if (freexl_get_info(xls.Get(), FREEXL_BIFF_SHEET_COUNT, &sheets) != FREEXL_OK || sheets == 0) {
    error = path + ": the workbook has no sheets";
    return false;
  }
  Workbook result;
  result.RemoveAllSheets();
  for (unsigned short s = 0; s < sheets; ++s) {
    const char* name = nullptr;
    if (freexl_get_worksheet_name(xls.Get(), s, &name) != FREEXL_OK || !name) name = "";
    result.AddSheet(MakeSheetName(name, result, result.SheetCount() + 1));
    Sheet& sheet = result.GetSheet(result.SheetCount());
    unsigned int rows = 0;
    unsigned short columns = 0;
    if (freexl_select_active_worksheet(xls.Get(), s) != FREEXL_OK ||
        freexl_worksheet_dimensions(xls.Get(), &rows, &columns) != FREEXL_OK) {
      error = path + ": sheet \"" + sheet.Name() + "\" cannot be read";
      return false;
    }
    for (unsigned int r = 0; r < rows; ++r) {
      for (unsigned short c = 0; c < columns; ++c) {
        FreeXL_CellValue cell;
        if (freexl_get_cell_value(xls.Get(), r, c, &cell) != FREEXL_OK) continue;
        const int row = static_cast<int>(r) + 1;
        const int column = c + 1;
        switch (cell.type) {
          case FREEXL_CELL_INT:
            sheet.SetNumber(row, column, cell.value.int_value);
            break;
          case FREEXL_CELL_DOUBLE:
            sheet.SetNumber(row, column, cell.value.double_value);
            break;
          case FREEXL_CELL_TEXT:
          case FREEXL_CELL_SST_TEXT:
          case FREEXL_CELL_DATE:
          case FREEXL_CELL_DATETIME:
          case FREEXL_CELL_TIME:
            if (cell.value.text_value && *cell.value.text_value) {
              sheet.SetText(row, column, cell.value.text_value);
            }
            break;
          default:
            break;
        }
      }
    }
  }
  book = std::move(result);
  return true;
}

}  // namespace kroveld
