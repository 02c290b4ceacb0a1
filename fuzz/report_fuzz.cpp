// Fuzzes the report side: the input is the text of a report. It goes through ConvertToCsv with a
// fixed recipe (one table between two key texts, three columns), the same table with row filters,
// a carried column, pattern keys and a totals check, and through the automatic road
// of the table template analyzer (short recipe written from the report, loaded, the export
// definition it made read and run), in a scratch application folder.
#include <cstdint>
#include <string>

#include "engine/context.h"
#include "engine/export_specs.h"
#include "engine/short_format.h"
#include "fuzz_support.h"
#include "jobs/csv/csv_conversion.h"

using namespace kroveld;

namespace {

clsColumn Column(int start, int end, const char* letter, const char* op) {
  clsColumn c;
  c.ReadColumnStart = start;
  c.ReadColumnEnd = end;
  c.WriteColumn = letter;
  c.PeriodOperator = op;
  return c;
}

void FixedRecipe(const std::string& report) {
  fuzz::QuietPort ui;
  Context ctx(ui, fuzz::ScratchFolder());
  fuzz::UseReport(ctx, report);
  auto& specs = ctx.recipe.ExportSpecs;
  clsTable t;
  t.ReadStartLine = "Account";
  t.ReadStartLineOffset = 1;
  t.ReadEndLine = "Total";
  t.ReadEndLineOffset = -1;
  t.Columns = {Column(1, 12, "A", ""), Column(14, 21, "B", "SUM"), Column(22, 40, "C", "")};
  t.TotalColumns = 3;
  specs.Tables.push_back(t);
  specs.TableCount = 1;
  specs.SectionSequenceCollection = {"Table"};
  std::string error;
  ConvertToCsv(ctx, fuzz::ScratchFolder() + "/out.csv", &error);
}

// The same table with every row rule: blank and pattern filters, a carried column, pattern keys
// and the totals check, as CSV and into cells.
void RuledRecipe(const std::string& report) {
  for (const bool csv : {true, false}) {
    fuzz::QuietPort ui;
    Context ctx(ui, fuzz::ScratchFolder());
    fuzz::UseReport(ctx, report);
    auto& specs = ctx.recipe.ExportSpecs;
    clsTable t;
    t.ReadStartPattern = "^(Account|Dept)";
    t.ReadStartLineOffset = 1;
    t.ReadEndLine = "Total";
    t.ReadEndPattern = "^[ =-]*End";
    t.ReadEndLineOffset = -1;
    clsColumn carried = Column(6, 30, "D", "");
    carried.CarryFrom = "^Dept[.:] ";
    t.Columns = {Column(1, 12, "A", ""), carried, Column(14, 21, "B", ""), Column(22, 40, "C", "")};
    t.TotalColumns = 4;
    t.SkipBlankLines = true;
    t.SkipLinesMatching = "^-+$|Page \\d+";
    t.KeepLinesMatching = "[0-9]";
    t.TotalLinesMatching = "(?i)sub-?total";
    specs.Tables.push_back(t);
    specs.TableCount = 1;
    specs.SectionSequenceCollection = {"Table"};
    if (csv) {
      std::string error;
      ConvertToCsv(ctx, fuzz::ScratchFolder() + "/ruled.csv", &error);
    } else {
      NullSink cells(true);
      SinkScope scope(ctx, cells);
      specs.Process(ctx);
    }
  }
}

void AutomaticRoad(const std::string& report) {
  fuzz::QuietPort ui;
  Context ctx(ui, fuzz::ScratchFolder());
  ctx.currentInput = report;
  const std::string autoPath = ctx.AppFile("_AutoRecipe.rcp");
  std::remove(autoPath.c_str());
  FileCreateShort(ctx, report, autoPath);
  LoadFromFileShort(ctx, ctx.recipe, autoPath);
  const std::string krs = ctx.recipe.ExportSpecPath();
  if (std::FILE* f = std::fopen(krs.c_str(), "rb")) {
    std::fclose(f);
    ctx.recipe.ExportSpecs.ReadFromFile(ui, krs);
  }
  NullSink rows(false);
  SinkScope scope(ctx, rows);
  ctx.recipe.ExportSpecs.Process(ctx);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string report = fuzz::WriteScratch("report.txt", data, size);
  FixedRecipe(report);
  RuledRecipe(report);
  AutomaticRoad(report);
  return 0;
}
