// One CSV pass: the sink is put in place for the pass only and the file is committed after it,
// whatever the sections reported (rows written before a failing section stay, as they would in a
// file written line by line).
#include "jobs/csv/csv_conversion.h"

#include "jobs/csv/csv_sink.h"
#include "util/files.h"

namespace kroveld {

bool ConvertToCsv(Context& ctx, const std::string& outputPath, std::string* error) {
  CsvSink sink;
  // A file that replaces an existing one is flushed to the disk before the rename, so a crash
  // never leaves a truncated file where a good one stood; a batch leaves its new files to the
  // one sync at its end.
  const bool replacing = FileExists(outputPath);
  if (!sink.Open(outputPath)) {
    if (error != nullptr) *error = sink.Error();
    return false;
  }
  sink.SetDurable(replacing || !ctx.run.syncAtEnd);
  {
    SinkScope scope(ctx, sink);
    ctx.recipe.ExportSpecs.Process(ctx);
  }
  if (!sink.Commit()) {
    if (error != nullptr) *error = sink.Error();
    return false;
  }
  return true;
}

}  // namespace kroveld
