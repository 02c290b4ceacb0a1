// What sections do to the output: set and get cells, rename sheets, set the standard font, clear
// sheet 1, and append CSV rows. CSV output writes rows straight to its file and drops cell writes;
// workbook output keeps an in-memory workbook and drops CSV rows. The engine asks the sink which
// of the two it is (HoldsCells) and writes accordingly.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kroveld {

// A value that already knows what it is (a typed column's): stored as such, not typed from its
// text.
struct CellValue {
  enum class Kind : std::uint8_t { kEmpty, kNumber, kDate, kText };
  Kind kind = Kind::kEmpty;
  double number = 0;      // kNumber: the value; kDate: the spreadsheet's serial day number
  std::string_view text;  // kNumber: as printed, whose look chooses the number format;
                          // kDate: "YYYY-MM-DD"; kText: the text
};

class OutputSink {
 public:
  virtual ~OutputSink() = default;

  // True for an output of cells (a workbook: tables fill sheet 1, sheets are renamed, the font is
  // set, consolidations run); false for an output of rows (CSV: tables append rows, nothing else
  // contributes).
  virtual bool HoldsCells() const = 0;
  // True once a cell fell beyond the largest sheet the output can hold: the output will not be
  // written, so the table under way stops at once instead of filling rows nobody gets.
  virtual bool Full() const { return false; }

  // Sheets are 1-based; rows and columns are 1-based. The value is text as the section computed
  // it; a workbook sink decides how the spreadsheet stores it (number or text).
  virtual void SetCell(int sheet, int row, int column, std::string_view value) = 0;
  // A typed value. A sink without types of its own takes its text as SetCell does.
  virtual void SetValue(int sheet, int row, int column, const CellValue& value) {
    SetCell(sheet, row, column, value.text);
  }
  // The cell's value as text ("" when empty). Numbers come back in plain form.
  virtual std::string GetCell(int sheet, int row, int column) = 0;
  virtual void RenameSheet(int sheet, std::string_view name) = 0;
  virtual void SetStandardFont(std::string_view font) = 0;
  // Empties sheet 1's used range.
  virtual void ClearOutput() = 0;
  // Appends one CSV row (the line end is added by the sink).
  virtual void WriteCsvRow(std::string_view row) = 0;
};

// A sink that accepts and drops everything: used when a pass runs without an output. It answers
// HoldsCells as it was made, so a pass can be run down either road without an output.
class NullSink final : public OutputSink {
 public:
  explicit NullSink(bool holdsCells = true) : holds_cells_(holdsCells) {}
  bool HoldsCells() const override { return holds_cells_; }
  void SetCell(int, int, int, std::string_view) override {}
  std::string GetCell(int, int, int) override { return {}; }
  void RenameSheet(int, std::string_view) override {}
  void SetStandardFont(std::string_view) override {}
  void ClearOutput() override {}
  void WriteCsvRow(std::string_view) override {}

 private:
  bool holds_cells_;
};

}  // namespace kroveld
