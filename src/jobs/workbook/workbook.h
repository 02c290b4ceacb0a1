// The in-memory workbook the sink writes into and the codecs save and load: numbered sheets with
// names, 1-based cells holding text or a number with a number format, and the standard font.
// Compact: a cell takes 16 bytes in its row; texts live in one arena per sheet.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

enum class CellType : std::uint8_t { kEmpty, kNumber, kText };

// Number formats a cell can carry. kGeneral shows the number as it is.
enum class NumberFormat : std::uint8_t {
  kGeneral,
  kInteger,          // "0"
  kDecimal2,         // "0.00"
  kGroupedInteger,   // "#,##0"
  kGroupedDecimal2,  // "#,##0.00"
  kDate              // "yyyy-mm-dd": the number is a serial day (days since 1899-12-30)
};
std::string_view NumberFormatCode(NumberFormat f);
// The format whose code is `code`; kGeneral for any code outside the list.
NumberFormat NumberFormatFromCode(std::string_view code);
// The format of a built-in number format id shared by BIFF8 and OOXML (1 "0", 2 "0.00",
// 3 "#,##0", 4 "#,##0.00"); any other id is General.
NumberFormat BuiltInNumberFormat(int id);

// Told how far a save has come (rows written of the rows the workbook holds) now and then;
// false asks the save to stop, leaving the file on disk as it was.
using SaveTick = std::function<bool(std::int64_t rowsWritten, std::int64_t rowsHeld)>;
// The rows of all sheets of a workbook, for SaveTick.
class Workbook;
std::int64_t RowsHeld(const Workbook& book);

// The size of the standard font, in points, in every workbook format.
inline constexpr double kStandardFontSize = 10;

// The largest sheet any workbook file can hold; cells beyond are not kept.
inline constexpr int kMaxSheetRows = 1048576;
inline constexpr int kMaxSheetColumns = 16384;

struct CellView {
  CellType type = CellType::kEmpty;
  double number = 0;
  NumberFormat format = NumberFormat::kGeneral;
  std::string_view text;
};

class Sheet {
 public:
  explicit Sheet(std::string name) : name_(std::move(name)) {}

  const std::string& Name() const { return name_; }
  void SetName(std::string name) { name_ = std::move(name); }

  // Text is UTF-8. A cell outside 1..kMaxSheetRows x 1..kMaxSheetColumns is not kept: false.
  bool SetText(int row, int column, std::string_view text);
  bool SetNumber(int row, int column, double value, NumberFormat format = NumberFormat::kGeneral);
  void ClearCell(int row, int column);
  CellView Get(int row, int column) const;
  // Empties every cell.
  void Clear();
  // Whether a cell was given the date format since the sheet was made or cleared (the writers
  // then add the date format to the file; files without dates stay as they always were).
  bool HasDates() const { return has_dates_; }

  // Highest row and column holding a cell (0 when the sheet is empty).
  int MaxRow() const { return static_cast<int>(rows_.size()); }
  int MaxColumn() const { return max_column_; }
  std::size_t CellCount() const;
  // Cells of a row in column order (row 1-based); empty cells are skipped by callers.
  int RowLength(int row) const;

  // While a file is read into the sheet: refuse a cell that would make the sheet hold far more
  // empty places than cells (rows are stored densely, so a few cells far to the right on many
  // rows would take gigabytes). Overflowed() then tells, and the reader gives the file up.
  void LimitSparseness(bool on) { limit_sparseness_ = on; }
  bool Overflowed() const { return overflowed_; }

  // Column widths, in characters of the standard font, that an existing file gave its columns;
  // 0 where it gave none. Clear() forgets them with the cells.
  void SetKeptWidth(int column, double width);
  double KeptWidth(int column) const;

 private:
  struct Cell {
    CellType type = CellType::kEmpty;
    NumberFormat format = NumberFormat::kGeneral;
    std::uint32_t length = 0;
    union {
      double number;
      std::uint64_t offset;
    };
    Cell() : offset(0) {}
  };
  Cell* Slot(int row, int column);

  std::string name_;
  std::vector<std::vector<Cell>> rows_;
  void TrimTrailingRows();

  // Places in the rows (cells and the empty places before them) may exceed the cells that hold
  // something by this much: ample for any real sheet, small for a hostile one.
  static constexpr std::size_t kSlotAllowance = std::size_t{4} << 20;
  static constexpr std::size_t kSlotsPerCell = 16;
  std::size_t slots_ = 0;
  std::size_t filled_ = 0;
  bool limit_sparseness_ = false;
  bool overflowed_ = false;
  std::vector<double> kept_widths_;
  std::string arena_;
  std::size_t arena_garbage_ = 0;  // bytes of texts that were overwritten
  int max_column_ = 0;
  bool has_dates_ = false;
};

class Workbook {
 public:
  // A new workbook has two sheets, "Sheet1" and "Sheet2", and the font "Calibri".
  Workbook();

  int SheetCount() const { return static_cast<int>(sheets_.size()); }
  // Sheet n (1-based); sheets are added as needed so that n exists.
  Sheet& GetSheet(int n);
  const Sheet& GetSheet(int n) const { return sheets_.at(n - 1); }
  void AddSheet(std::string name) { sheets_.emplace_back(std::move(name)); }
  // Removes every sheet (readers start from an empty list and add what the file holds).
  void RemoveAllSheets() { sheets_.clear(); }

  const std::string& StandardFont() const { return font_; }
  void SetStandardFont(std::string font) { font_ = std::move(font); }

 private:
  std::vector<Sheet> sheets_;
  std::string font_ = "Calibri";
};

// A sheet name every workbook format accepts, made from `wanted` (UTF-8): at most 31 characters,
// none of []:*?/\ (each becomes '_'), no control characters, no apostrophe at either end, not
// empty, and different (ignoring ASCII case) from the names of the other sheets of `book`
// ("Name (2)", "Name (3)", ... when it is taken). `sheet` is the 1-based number being named.
std::string MakeSheetName(std::string_view wanted, const Workbook& book, int sheet);

}  // namespace kroveld
