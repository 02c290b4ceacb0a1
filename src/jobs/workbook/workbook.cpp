// The in-memory workbook: rows of 16-byte cells, texts in one arena per sheet.
#include "jobs/workbook/workbook.h"

#include <algorithm>

namespace kroveld {

std::string_view NumberFormatCode(NumberFormat f) {
  switch (f) {
    case NumberFormat::kGeneral:
      return "General";
    case NumberFormat::kInteger:
      return "0";
    case NumberFormat::kDecimal2:
      return "0.00";
    case NumberFormat::kGroupedInteger:
      return "#,##0";
    case NumberFormat::kGroupedDecimal2:
      return "#,##0.00";
    case NumberFormat::kDate:
      return "yyyy-mm-dd";
  }
  return "General";
}

NumberFormat NumberFormatFromCode(std::string_view code) {
  for (NumberFormat f :
       {NumberFormat::kInteger, NumberFormat::kDecimal2, NumberFormat::kGroupedInteger,
        NumberFormat::kGroupedDecimal2, NumberFormat::kDate}) {
    if (code == NumberFormatCode(f)) return f;
  }
  return NumberFormat::kGeneral;
}

NumberFormat BuiltInNumberFormat(int id) {
  switch (id) {
    case 1:
      return NumberFormat::kInteger;
    case 2:
      return NumberFormat::kDecimal2;
    case 3:
      return NumberFormat::kGroupedInteger;
    case 4:
      return NumberFormat::kGroupedDecimal2;
    default:
      return NumberFormat::kGeneral;
  }
}

Sheet::Cell* Sheet::Slot(int row, int column) {
  if (row < 1 || column < 1 || row > kMaxSheetRows || column > kMaxSheetColumns) return nullptr;
  if (static_cast<std::size_t>(row) > rows_.size()) rows_.resize(row);
  std::vector<Cell>& cells = rows_[row - 1];
  if (static_cast<std::size_t>(column) > cells.size()) {
    // Rows are stored densely: a few cells far to the right on many rows would take gigabytes.
    const std::size_t growth = static_cast<std::size_t>(column) - cells.size();
    if (limit_sparseness_ && slots_ + growth > kSlotAllowance + kSlotsPerCell * (filled_ + 1)) {
      overflowed_ = true;
      return nullptr;
    }
    slots_ += growth;
    if (cells.capacity() < static_cast<std::size_t>(column)) {
      // Rows usually grow left to right one cell at a time: reserve a little ahead.
      cells.reserve(std::max<std::size_t>(column, std::min<std::size_t>(cells.size() * 2, 64)));
    }
    cells.resize(column);
  }
  max_column_ = std::max(max_column_, column);
  Cell& cell = cells[column - 1];
  if (cell.type == CellType::kText) arena_garbage_ += cell.length;
  return &cell;
}

bool Sheet::SetText(int row, int column, std::string_view text) {
  Cell* cell = Slot(row, column);
  if (!cell) return false;
  // Overwritten texts stay in the arena; compact it when they are most of it.
  if (arena_garbage_ > 4096 && arena_garbage_ > arena_.size() / 2) {
    cell->type = CellType::kEmpty;
    std::string fresh;
    fresh.reserve(arena_.size() - arena_garbage_ + text.size());
    for (auto& r : rows_) {
      for (Cell& c : r) {
        if (c.type != CellType::kText) continue;
        const std::uint64_t at = fresh.size();
        fresh.append(arena_, c.offset, c.length);
        c.offset = at;
      }
    }
    arena_.swap(fresh);
    arena_garbage_ = 0;
  }
  if (cell->type == CellType::kEmpty) ++filled_;
  cell->type = CellType::kText;
  cell->format = NumberFormat::kGeneral;
  cell->length = static_cast<std::uint32_t>(text.size());
  cell->offset = arena_.size();
  arena_.append(text);
  return true;
}

bool Sheet::SetNumber(int row, int column, double value, NumberFormat format) {
  Cell* cell = Slot(row, column);
  if (!cell) return false;
  if (cell->type == CellType::kEmpty) ++filled_;
  cell->type = CellType::kNumber;
  cell->format = format;
  if (format == NumberFormat::kDate) has_dates_ = true;
  cell->length = 0;
  cell->number = value;
  return true;
}

void Sheet::ClearCell(int row, int column) {
  if (row < 1 || column < 1 || static_cast<std::size_t>(row) > rows_.size()) return;
  std::vector<Cell>& cells = rows_[row - 1];
  if (static_cast<std::size_t>(column) > cells.size()) return;
  Cell& cell = cells[column - 1];
  if (cell.type == CellType::kText) arena_garbage_ += cell.length;
  if (cell.type != CellType::kEmpty) --filled_;
  cell = Cell();
  while (!cells.empty() && cells.back().type == CellType::kEmpty) {
    cells.pop_back();
    --slots_;
  }
  TrimTrailingRows();
}

void Sheet::TrimTrailingRows() {
  while (!rows_.empty()) {
    const auto& last = rows_.back();
    const bool empty = std::all_of(last.begin(), last.end(),
                                   [](const Cell& c) { return c.type == CellType::kEmpty; });
    if (!empty) break;
    rows_.pop_back();
  }
}

CellView Sheet::Get(int row, int column) const {
  CellView view;
  if (row < 1 || column < 1 || static_cast<std::size_t>(row) > rows_.size()) return view;
  const std::vector<Cell>& cells = rows_[row - 1];
  if (static_cast<std::size_t>(column) > cells.size()) return view;
  const Cell& cell = cells[column - 1];
  view.type = cell.type;
  view.format = cell.format;
  if (cell.type == CellType::kNumber) {
    view.number = cell.number;
  } else if (cell.type == CellType::kText) {
    view.text = std::string_view(arena_).substr(cell.offset, cell.length);
  }
  return view;
}

void Sheet::SetKeptWidth(int column, double width) {
  if (column < 1 || column > kMaxSheetColumns || !(width > 0)) return;
  if (kept_widths_.size() < static_cast<std::size_t>(column)) kept_widths_.resize(column);
  kept_widths_[column - 1] = width;
}

double Sheet::KeptWidth(int column) const {
  return column >= 1 && static_cast<std::size_t>(column) <= kept_widths_.size()
             ? kept_widths_[column - 1]
             : 0;
}

void Sheet::Clear() {
  slots_ = filled_ = 0;
  overflowed_ = false;
  std::vector<double>().swap(kept_widths_);
  std::vector<std::vector<Cell>>().swap(rows_);
  std::string().swap(arena_);
  arena_garbage_ = 0;
  max_column_ = 0;
  has_dates_ = false;
}

std::size_t Sheet::CellCount() const {
  std::size_t n = 0;
  for (const auto& r : rows_) {
    for (const Cell& c : r) n += c.type != CellType::kEmpty;
  }
  return n;
}

int Sheet::RowLength(int row) const {
  if (row < 1 || static_cast<std::size_t>(row) > rows_.size()) return 0;
  return static_cast<int>(rows_[row - 1].size());
}

Workbook::Workbook() {
  sheets_.emplace_back("Sheet1");
  sheets_.emplace_back("Sheet2");
}

Sheet& Workbook::GetSheet(int n) {
  while (SheetCount() < n) {
    const int number = SheetCount() + 1;
    AddSheet(MakeSheetName("Sheet" + std::to_string(number), *this, number));
  }
  return sheets_.at(n - 1);
}

namespace {

constexpr std::size_t kMaxSheetNameChars = 31;

bool IsContinuation(unsigned char c) {
  return (c & 0xC0) == 0x80;
}

// Cuts UTF-8 text after `chars` characters, never inside a character.
std::string CutChars(std::string_view text, std::size_t chars) {
  std::size_t count = 0;
  std::size_t i = 0;
  while (i < text.size()) {
    if (!IsContinuation(static_cast<unsigned char>(text[i]))) {
      if (count == chars) break;
      ++count;
    }
    ++i;
  }
  return std::string(text.substr(0, i));
}

bool SameNameNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

}  // namespace

std::string MakeSheetName(std::string_view wanted, const Workbook& book, int sheet) {
  std::string name;
  for (char c : wanted) {
    const auto u = static_cast<unsigned char>(c);
    if (u < 0x20 || u == 0x7F) continue;
    if (std::string_view("[]:*?/\\").find(c) != std::string_view::npos) c = '_';
    name += c;
  }
  name = CutChars(name, kMaxSheetNameChars);
  if (!name.empty() && name.front() == '\'') name.front() = '_';
  if (!name.empty() && name.back() == '\'') name.back() = '_';
  if (name.empty()) name = "Sheet" + std::to_string(sheet);

  auto taken = [&](std::string_view candidate) {
    for (int i = 1; i <= book.SheetCount(); ++i) {
      if (i != sheet && SameNameNoCase(book.GetSheet(i).Name(), candidate)) return true;
    }
    return false;
  };
  if (!taken(name)) return name;
  for (int n = 2;; ++n) {
    const std::string suffix = " (" + std::to_string(n) + ")";
    std::string candidate = CutChars(name, kMaxSheetNameChars - suffix.size());
    // The cut must not leave an apostrophe or blank just before the suffix.
    while (!candidate.empty() && (candidate.back() == '\'' || candidate.back() == ' ')) {
      candidate.pop_back();
    }
    candidate += suffix;
    if (!taken(candidate)) return candidate;
  }
}

std::int64_t RowsHeld(const Workbook& book) {
  std::int64_t rows = 0;
  for (int s = 1; s <= book.SheetCount(); ++s) rows += book.GetSheet(s).MaxRow();
  return rows;
}

}  // namespace kroveld
