// An output sink for the engine tests: keeps every cell, CSV row, sheet rename and standard font
// it is given, so a test can look at everything a pass did.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "engine/output_sink.h"

namespace kroveld::testing {

class CellSink final : public OutputSink {
 public:
  bool HoldsCells() const override { return holdsCells; }
  void SetCell(int sheet, int row, int column, std::string_view value) override {
    cells[{sheet, row, column}] = std::string(value);
    ++cellWrites;
  }
  // A typed value is kept as its text (as a sink without types would) and its kind and number.
  void SetValue(int sheet, int row, int column, const CellValue& value) override {
    SetCell(sheet, row, column, value.text);
    typed[{sheet, row, column}] = {value.kind, value.number};
  }
  std::string GetCell(int sheet, int row, int column) override { return Cell(sheet, row, column); }
  void RenameSheet(int sheet, std::string_view name) override {
    renames.emplace_back(sheet, std::string(name));
  }
  void SetStandardFont(std::string_view font) override { fonts.emplace_back(font); }
  void ClearOutput() override { cells.clear(); }
  void WriteCsvRow(std::string_view row) override { rows.emplace_back(row); }
  // Full once a cell lands on row `fullFrom` or below (0: never).
  bool Full() const override {
    if (fullFrom == 0) return false;
    for (const auto& [key, value] : cells) {
      if (std::get<1>(key) >= fullFrom) return true;
    }
    return false;
  }

  std::string Cell(int sheet, int row, int column) const {
    auto it = cells.find({sheet, row, column});
    return it == cells.end() ? std::string() : it->second;
  }
  // Cell text of sheet 1, "" when never written.
  std::string At(int row, int column) const { return Cell(1, row, column); }
  // Whether sheet 1 holds anything at this row.
  bool RowWritten(int row) const {
    for (const auto& [key, value] : cells) {
      if (std::get<0>(key) == 1 && std::get<1>(key) == row) return true;
    }
    return false;
  }

  std::map<std::tuple<int, int, int>, std::string> cells;
  std::map<std::tuple<int, int, int>, std::pair<CellValue::Kind, double>> typed;
  std::vector<std::string> rows;
  std::vector<std::pair<int, std::string>> renames;
  std::vector<std::string> fonts;
  int cellWrites = 0;
  int fullFrom = 0;
  bool holdsCells = true;
};

}  // namespace kroveld::testing
