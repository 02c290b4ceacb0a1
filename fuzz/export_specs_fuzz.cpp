// Fuzzes the export definition reader: the input is a .krs file, read and then run once over a
// small fixed report into a sink that drops everything, as a workbook pass and as a CSV pass.
// export_specs.dict and seeds/export_specs/ hold the keys and some patterns to start from.
#include <cstdint>
#include <string>

#include "engine/context.h"
#include "engine/export_specs.h"
#include "fuzz_support.h"

using namespace kroveld;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string report = [] {
    const std::string text =
        "Ledger\r\nAccount      Amount\r\nDept: 10 Sales\r\nCash         1,234.50\r\n\f\r\n"
        "Bank\tmain   (12.00)\r\n\r\nTotal        1,222.50\r\nEnd of ledger\r\n";
    return fuzz::WriteScratch("report.txt", reinterpret_cast<const std::uint8_t*>(text.data()),
                              text.size());
  }();
  const std::string krs = fuzz::WriteScratch("fuzz.krs", data, size);
  fuzz::QuietPort ui;
  Context ctx(ui, fuzz::ScratchFolder());
  fuzz::UseReport(ctx, report);
  ctx.recipe.ExportSpecs.ReadFromFile(ui, krs);
  {
    NullSink cells(true);
    SinkScope scope(ctx, cells);
    ctx.recipe.ExportSpecs.Process(ctx);
  }
  ctx.recipe.ExportSpecs.Failed = false;
  ctx.recipe.ExportSpecs.WritePointer1 = ctx.recipe.ExportSpecs.WritePointer2 = 1;
  NullSink rows(false);
  SinkScope scope(ctx, rows);
  ctx.recipe.ExportSpecs.Process(ctx);
  return 0;
}
