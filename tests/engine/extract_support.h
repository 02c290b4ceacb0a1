// Helpers of the extraction tests: a sink that keeps every cell and CSV row it is given, and a
// context whose recipe names one report file, built in code (no recipe file is read).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "engine/column.h"
#include "engine/context.h"
#include "engine/output_sink.h"
#include "engine/table.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld::testing {

class CellSink final : public OutputSink {
 public:
  bool HoldsCells() const override { return holdsCells; }
  void SetCell(int sheet, int row, int column, std::string_view value) override {
    cells[{sheet, row, column}] = std::string(value);
    ++cellWrites;
  }
  std::string GetCell(int sheet, int row, int column) override {
    auto it = cells.find({sheet, row, column});
    return it == cells.end() ? std::string() : it->second;
  }
  void RenameSheet(int, std::string_view) override {}
  void SetStandardFont(std::string_view) override {}
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
  int fullFrom = 0;

  // Cell text of sheet 1, "" when never written.
  std::string At(int row, int column) { return GetCell(1, row, column); }
  // Whether sheet 1 holds anything at this row.
  bool RowWritten(int row) const {
    for (const auto& [key, value] : cells) {
      if (std::get<0>(key) == 1 && std::get<1>(key) == row) return true;
    }
    return false;
  }

  std::map<std::tuple<int, int, int>, std::string> cells;
  std::vector<std::string> rows;
  int cellWrites = 0;
  bool holdsCells = true;
};

inline clsColumn MakeColumn(int start, int end, std::string letter = "A", std::string op = "") {
  clsColumn c;
  c.ReadColumnStart = start;
  c.ReadColumnEnd = end;
  c.WriteColumn = std::move(letter);
  c.PeriodOperator = std::move(op);
  return c;
}

inline clsTable MakeTable(std::string top, int topOffset, std::string bottom, int bottomOffset,
                          std::vector<clsColumn> columns) {
  clsTable t;
  t.ReadStartLine = std::move(top);
  t.ReadStartLineOffset = topOffset;
  t.ReadEndLine = std::move(bottom);
  t.ReadEndLineOffset = bottomOffset;
  t.TotalColumns = static_cast<int>(columns.size());
  t.Columns = std::move(columns);
  return t;
}

// A context converting `report` (input file 1) into a CellSink.
struct ExtractFixture {
  RecordingPort ui;
  TempDir dir;
  std::unique_ptr<Context> ctx = std::make_unique<Context>(ui, dir.path());
  CellSink sink;

  ExtractFixture() { ctx->sink = &sink; }

  // Writes the report and names it as input file 1 (and the only one taking part).
  std::string UseReport(std::string_view content, std::string_view name = "report.txt") {
    std::string path = dir.Write(name, content);
    ctx->recipe.InputFileNames[0] = path;
    ctx->recipe.InputFileFirst = 1;
    ctx->recipe.InputFileLast = 1;
    return path;
  }
  // Runs the table into the sheet (csv false) or as CSV rows (csv true).
  void Run(clsTable& table, bool csv = false) {
    sink.holdsCells = !csv;
    table.Process(*ctx);
  }
  int Pointer() const { return ctx->recipe.ExportSpecs.WritePointer1; }
  bool Failed() const { return ctx->recipe.ExportSpecs.Failed; }
};

// Lines "line 1" .. "line n" joined with CR LF, with some lines replaced.
inline std::string NumberedLines(int n, const std::map<int, std::string>& replaced = {}) {
  std::string s;
  for (int i = 1; i <= n; ++i) {
    auto it = replaced.find(i);
    s += it != replaced.end() ? it->second : "line " + std::to_string(i);
    s += "\r\n";
  }
  return s;
}

}  // namespace kroveld::testing
