#include "jobs/write_report.h"

#include "jobs/csv/csv_conversion.h"
#include "jobs/workbook/workbook_sink.h"
#include "util/files.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// Replaces the caption and puts the old one back at the end of the scope.
class CaptionScope {
 public:
  CaptionScope(UiPort& ui, const char* text) : ui_(ui), saved_(ui.Caption()) {
    ui.SetCaption(text);
  }
  ~CaptionScope() { ui_.SetCaption(saved_); }
  CaptionScope(const CaptionScope&) = delete;
  CaptionScope& operator=(const CaptionScope&) = delete;

 private:
  UiPort& ui_;
  std::string saved_;
};

// The sink's own text names the path and the reason; a bare fallback keeps the report from
// ever being empty.
std::string FailureText(const std::string& error, const std::string& path) {
  return error.empty() ? "Cannot write " + path : error;
}

// An existing output marked read-only is not replaced.
bool ReadOnlyOutput(Context& ctx) {
  const std::string native = NativePath(ctx.currentOutput);
  if (!FileExists(ctx.currentOutput) || ::access(native.c_str(), W_OK) == 0) return false;
  ctx.ui.Message("Cannot write " + ctx.currentOutput + ": " + LastErrorText(), Icon::Critical);
  return true;
}

void WriteCsv(Context& ctx) {
  std::string error;
  bool written;
  {
    CaptionScope caption(ctx.ui, kCsvCaption);
    written = ConvertToCsv(ctx, ctx.currentOutput, &error);
  }
  if (!written) ctx.ui.Message(FailureText(error, ctx.currentOutput), Icon::Critical);
}

void WriteWorkbook(Context& ctx) {
  std::string failure;
  std::string backup;
  {
    CaptionScope caption(ctx.ui, kWorkbookCaption);
    WorkbookSink sink;
    sink.Open(ctx.currentOutput, ctx.options.bShowExcel);
    {
      SinkScope scope(ctx, sink);
      if (ctx.options.bClearOutputFileBeforeProcessing) sink.ClearOutput();
      ctx.recipe.ExportSpecs.Process(ctx);
    }
    // The save is a phase of its own: its progress in status panel 3, and a stop asked for
    // while it runs ends it with the old file kept (a stop the table already honoured does not).
    const bool stopBefore = ctx.run.stopRequested.load();
    std::string status;
    const SaveTick tick = [&](std::int64_t written, std::int64_t held) {
      if (ctx.ui.Due()) {
        ctx.ui.ProcessEvents();
        status = "Saving the workbook: row ";
        AppendInt(status, written);
        status += " of ";
        AppendInt(status, held);
        ctx.ui.Status(3, status);
        RunProgress& progress = ctx.run.progress;
        progress.row = written;
        progress.rows = held;
        progress.phase = "saving";
        ctx.ui.Progress(progress);
      }
      return stopBefore || !ctx.run.stopRequested.load();
    };
    if (!sink.Save(tick)) failure = FailureText(sink.Error(), ctx.currentOutput);
    backup = sink.BackupNote();
    sink.Close();
  }
  if (!backup.empty()) ctx.ui.Message(backup, Icon::Exclamation);
  if (!failure.empty()) ctx.ui.Message(failure, Icon::Critical);
}

}  // namespace

void SyncOutputs(const std::string& anyOutput) {
  SyncFolderOf(anyOutput, true);
}

void WriteReport(Context& ctx, bool csv) {
  if (!csv && WorkbookSink::IsOpenInSpreadsheetApp(ctx.currentOutput)) {
    ctx.ui.Message(kExcelAlreadyOpen, Icon::Information);
    return;
  }
  if (ReadOnlyOutput(ctx)) return;
  if (csv) {
    WriteCsv(ctx);
  } else {
    WriteWorkbook(ctx);
  }
}

}  // namespace kroveld
