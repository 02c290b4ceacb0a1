// An output sink for the recipe-model tests: keeps cells in a map and records sheet renames,
// standard fonts and CSV rows, so a test can look at everything a pass did.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "engine/output_sink.h"

namespace kroveld::testing {

class MapSink : public OutputSink {
 public:
  bool HoldsCells() const override { return holdsCells; }
  void SetCell(int sheet, int row, int column, std::string_view value) override {
    cells[{sheet, row, column}] = std::string(value);
    ++writes;
  }
  std::string GetCell(int sheet, int row, int column) override { return Cell(sheet, row, column); }
  void RenameSheet(int sheet, std::string_view name) override {
    renames.emplace_back(sheet, std::string(name));
  }
  void SetStandardFont(std::string_view font) override { fonts.emplace_back(font); }
  void ClearOutput() override {}
  void WriteCsvRow(std::string_view row) override { csvRows.emplace_back(row); }

  std::string Cell(int sheet, int row, int column) const {
    auto it = cells.find({sheet, row, column});
    return it == cells.end() ? std::string() : it->second;
  }

  std::map<std::tuple<int, int, int>, std::string> cells;
  std::vector<std::pair<int, std::string>> renames;
  std::vector<std::string> fonts;
  std::vector<std::string> csvRows;
  int writes = 0;
  bool holdsCells = true;
};

}  // namespace kroveld::testing
