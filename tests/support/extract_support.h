// Helpers of the extraction tests: columns and tables built in code, and a context whose recipe
// names one report file (no recipe file is read).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "engine/column.h"
#include "engine/context.h"
#include "engine/table.h"
#include "support/cell_sink.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld::testing {

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
