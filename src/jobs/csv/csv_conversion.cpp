// One CSV pass: the sink is put in place for the pass only and the file is committed after it,
// whatever the sections reported (rows written before a failing section stay, as they would in a
// file written line by line).
#include "jobs/csv/csv_conversion.h"

#include "jobs/csv/csv_sink.h"

namespace kroveld {

namespace {

// Puts the context's previous sink back however the pass ends.
class SinkSwap {
 public:
  SinkSwap(Context& ctx, OutputSink* sink) : ctx_(ctx), previous_(ctx.sink) { ctx.sink = sink; }
  ~SinkSwap() { ctx_.sink = previous_; }
  SinkSwap(const SinkSwap&) = delete;
  SinkSwap& operator=(const SinkSwap&) = delete;

 private:
  Context& ctx_;
  OutputSink* previous_;
};

}  // namespace

bool ConvertToCsv(Context& ctx, const std::string& outputPath, std::string* error) {
  CsvSink sink;
  if (!sink.Open(outputPath)) {
    if (error != nullptr) *error = sink.Error();
    return false;
  }
  {
    SinkSwap swap(ctx, &sink);
    ctx.recipe.ExportSpecs.Process(ctx, 1);
  }
  if (!sink.Commit()) {
    if (error != nullptr) *error = sink.Error();
    return false;
  }
  return true;
}

}  // namespace kroveld
