// The detail ledger of the generated report (report_gen.cpp) as a recipe held in memory, for the
// benchmarks that convert it in-process.
#pragma once
#include <string>
#include <utility>
#include <vector>

#include "engine/context.h"

namespace bench {

inline kroveld::clsColumn Column(int start, int end, const char* letter) {
  kroveld::clsColumn c;
  c.ReadColumnStart = start;
  c.ReadColumnEnd = end;
  c.WriteColumn = letter;
  return c;
}

// Sets `ctx` to convert `report`: one table between the detail ledger's key lines, whose columns
// are `first` and then the six amount columns A-F. Returns the table, for rules or types.
inline kroveld::clsTable& UseDetailLedger(kroveld::Context& ctx, const std::string& report,
                                          std::vector<kroveld::clsColumn> first = {}) {
  ctx.recipe.InputFileNames[0] = report;
  ctx.recipe.InputFileFirst = 1;
  ctx.recipe.InputFileLast = 1;
  ctx.statusPrefix = "Converting";
  kroveld::clsTable table;
  table.Number = 1;
  table.ReadStartLine = "*** DETAIL LEDGER BEGIN ***";
  table.ReadStartLineOffset = 1;
  table.ReadEndLine = "*** DETAIL LEDGER END ***";
  table.ReadEndLineOffset = -1;
  table.Columns = std::move(first);
  const char* letters[] = {"A", "B", "C", "D", "E", "F"};
  for (int c = 0; c < 6; ++c) table.Columns.push_back(Column(43 + 16 * c, 58 + 16 * c, letters[c]));
  table.TotalColumns = static_cast<int>(table.Columns.size());
  auto& specs = ctx.recipe.ExportSpecs;
  specs.Tables.push_back(std::move(table));
  specs.TableCount = 1;
  specs.SectionSequenceCollection = {"Table"};
  return specs.Tables.back();
}

}  // namespace bench
