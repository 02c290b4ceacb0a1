// .xls input through FreeXL, plus a walk over the BIFF8 records for the number formats of number
// cells, which FreeXL does not report.
#include "jobs/workbook/xls_reader.h"

#include <freexl.h>
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-stdio.h>
#include <gsf/gsf-input.h>

#include <unordered_map>
#include <vector>

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

std::uint16_t Get16(std::string_view d, std::size_t at) {
  return at + 2 > d.size() ? 0
                           : static_cast<std::uint16_t>(static_cast<unsigned char>(d[at]) |
                                                        static_cast<unsigned char>(d[at + 1]) << 8);
}
std::uint32_t Get32(std::string_view d, std::size_t at) {
  return Get16(d, at) | static_cast<std::uint32_t>(Get16(d, at + 2)) << 16;
}

// The workbook stream of the compound file ("Workbook", or "Book" in older files); empty when
// there is none.
std::string ReadWorkbookStream(const std::string& native) {
  std::string stream;
  GsfInput* input = gsf_input_stdio_new(native.c_str(), nullptr);
  if (!input) return stream;
  GsfInfile* ole = gsf_infile_msole_new(input, nullptr);
  g_object_unref(input);
  if (!ole) return stream;
  GsfInput* child = gsf_infile_child_by_name(ole, "Workbook");
  if (!child) child = gsf_infile_child_by_name(ole, "Book");
  if (child) {
    const gsf_off_t size = gsf_input_size(child);
    if (size > 0) {
      stream.resize(static_cast<std::size_t>(size));
      if (!gsf_input_read(child, stream.size(), reinterpret_cast<guint8*>(stream.data()))) {
        stream.clear();
      }
    }
    g_object_unref(child);
  }
  g_object_unref(ole);
  return stream;
}

// A FORMAT record's code (an XLUnicodeString after the format index).
std::string FormatCode(std::string_view d) {
  const std::uint16_t chars = Get16(d, 2);
  const bool wide = d.size() > 4 && (d[4] & 1);
  std::string code;
  for (std::size_t i = 0, at = 5; i < chars && at < d.size(); ++i, at += wide ? 2 : 1) {
    const std::uint16_t u = wide ? Get16(d, at) : static_cast<unsigned char>(d[at]);
    code += u < 0x80 ? static_cast<char>(u) : '?';  // the known codes are ASCII
  }
  return code;
}

// Gives the number cells of `book` the formats the XF records of the workbook stream `all` name.
// Sheets are matched by their order among the worksheets of the stream; nothing is changed when
// the stream does not look like the one FreeXL read.
void ApplyNumberFormats(std::string_view all, Workbook& book) {
  std::unordered_map<std::uint16_t, NumberFormat> custom;
  std::vector<NumberFormat> xfs;
  std::vector<std::uint32_t> sheets;
  std::size_t at = 0;
  while (at + 4 <= all.size()) {
    const std::uint16_t id = Get16(all, at);
    const std::uint16_t length = Get16(all, at + 2);
    const std::string_view d = all.substr(at + 4, length);
    at += 4 + length;
    if (id == 0x000A) break;  // EOF of the globals
    if (id == 0x041E) {
      custom[Get16(d, 0)] = NumberFormatFromCode(FormatCode(d));
    } else if (id == 0x00E0) {
      const std::uint16_t format = Get16(d, 2);
      const auto it = custom.find(format);
      xfs.push_back(it != custom.end() ? it->second : BuiltInNumberFormat(format));
    } else if (id == 0x0085 && d.size() > 5 && d[5] == 0) {
      sheets.push_back(Get32(d, 0));  // a worksheet (not a chart or macro sheet)
    }
  }
  if (static_cast<int>(sheets.size()) != book.SheetCount()) return;
  for (std::size_t s = 0; s < sheets.size(); ++s) {
    Sheet& sheet = book.GetSheet(static_cast<int>(s) + 1);
    auto apply = [&](std::uint16_t row, std::uint16_t column, std::uint16_t xf) {
      if (xf >= xfs.size()) return;
      const CellView cell = sheet.Get(row + 1, column + 1);
      if (cell.type == CellType::kNumber)
        sheet.SetNumber(row + 1, column + 1, cell.number, xfs[xf]);
    };
    at = sheets[s];
    while (at + 4 <= all.size()) {
      const std::uint16_t id = Get16(all, at);
      const std::uint16_t length = Get16(all, at + 2);
      const std::string_view d = all.substr(at + 4, length);
      at += 4 + length;
      if (id == 0x000A) break;
      if ((id == 0x0203 || id == 0x027E) && d.size() >= 6) {  // NUMBER, RK
        apply(Get16(d, 0), Get16(d, 2), Get16(d, 4));
      } else if (id == 0x00BD && d.size() >= 6) {  // MULRK: xf and value per column
        const std::uint16_t row = Get16(d, 0);
        const std::uint16_t first = Get16(d, 2);
        for (std::size_t i = 0; 4 + i * 6 + 6 <= d.size() - 2; ++i) {
          apply(row, static_cast<std::uint16_t>(first + i), Get16(d, 4 + i * 6));
        }
      }
    }
  }
}

}  // namespace

bool ReadXls(const std::string& path, Workbook& book, std::string& error) {
  // FreeXL 1.0.6 writes outside a stack buffer on some broken compound files that libgsf reads
  // safely, so a file whose workbook stream libgsf cannot read is refused before FreeXL sees it.
  // The same stream then gives the number formats.
  const std::string native = NativePath(path);
  const std::string stream = ReadWorkbookStream(native);
  if (stream.empty()) {
    error = path + ": not a readable .xls file (no workbook stream)";
    return false;
  }
  FreeXlHandle xls;
  const int opened = freexl_open(native.c_str(), xls.Out());
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
  ApplyNumberFormats(stream, result);
  book = std::move(result);
  return true;
}

}  // namespace kroveld
