// The one context of a run: everything a run shares (conversion options, line
// processor, current recipe with its export specification, output sink, run state, application
// folder) lives here, created at start-up and handed down by reference. Tests make one per case.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "engine/conversion_options.h"
#include "engine/line_processor.h"
#include "engine/output_sink.h"
#include "engine/pass_observer.h"
#include "engine/recipe.h"
#include "util/ui_port.h"

namespace kroveld {

// What a job did, for the summary of a verbose command-line run.
struct RunTally {
  std::uint64_t filesConverted = 0;
  std::uint64_t filesFailed = 0;  // files whose conversion showed a message
  std::uint64_t rowsWritten = 0;  // table rows, to sheet 1 or as CSV lines
  std::uint64_t bytesRead = 0;    // the sizes of the reports converted
  // Printed totals compared with the sum of their rows, and how many of them differed.
  std::uint64_t totalsChecked = 0;
  std::uint64_t totalsDiffering = 0;
};

struct RunState {
  // True from the start of a whole job (BeginProcessing, batch included) to its end.
  bool running = false;
  std::atomic<bool> stopRequested{false};
  // A batch leaves its new outputs to one flush to the disk at its end, rather than one per file.
  bool syncAtEnd = false;
  std::uint64_t jobStartTick = 0;
  RunTally tally;
  RunProgress progress;  // told to the port with the status texts
};

class Context {
 public:
  Context(UiPort& ui, std::string appFolder);
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  UiPort& ui;
  std::string appFolder;  // without a trailing separator
  clsConversionOptions options;
  RunState run;
  clsRecipe recipe;
  clsLineProcessor lineProcessor;
  // Where sections write; never null (a NullSink when no output is open).
  OutputSink* sink;
  // Told what the pass does, section by section; null (nothing told) unless a preview watches.
  PassObserver* observer = nullptr;

  // Job state of the conversion under way.
  int tabSize = 8;           // global tab size; 0 or less switches expansion off
  std::string currentInput;  // the report being converted (input file 1 of the recipe)
  std::string currentOutput;
  std::string currentRecipe;
  std::string periodLabel = "1";  // "first" or "first-last" for sheet names
  // The status text of the section being run ("Exporting Table n:"), which the table's row
  // count and the short-format scan extend.
  std::string statusPrefix;

  // Application-folder files.
  std::string AppFile(std::string_view name) const;  // appFolder + "/" + name

 private:
  NullSink null_sink_;
};

// Points the context at a sink for the length of a scope and back at the previous one after it,
// however the scope ends.
class SinkScope {
 public:
  SinkScope(Context& ctx, OutputSink& sink) : ctx_(ctx), saved_(ctx.sink) { ctx.sink = &sink; }
  ~SinkScope() { ctx_.sink = saved_; }
  SinkScope(const SinkScope&) = delete;
  SinkScope& operator=(const SinkScope&) = delete;

 private:
  Context& ctx_;
  OutputSink* saved_;
};

}  // namespace kroveld
