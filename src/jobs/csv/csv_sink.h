// CSV output: table rows written straight to the file, CR LF after each, no header, no byte-order
// mark, bytes passed through unchanged. The file is written to a temporary file beside the target
// and renamed over it by Commit, so an existing CSV is replaced whole or not at all. Cell writes
// (titles, consolidations) are accepted and dropped.
#pragma once

#include <string>

#include "engine/output_sink.h"
#include "util/files.h"

namespace kroveld {

class CsvSink final : public OutputSink {
 public:
  // Creates the temporary file beside `path`. False with Error() naming the path and the reason.
  bool Open(const std::string& path);
  // Flushes and renames over the target. False with Error() naming the path and the reason.
  bool Commit();
  void Abort();
  // With durable off, Commit() skips flushing the data to the disk before the rename (a batch
  // syncs once at its end instead).
  void SetDurable(bool durable) { file_.SetDurable(durable); }
  bool IsOpen() const { return file_.IsOpen(); }
  const std::string& Error() const { return file_.Error(); }

  bool HoldsCells() const override { return false; }
  void SetCell(int, int, int, std::string_view) override {}
  std::string GetCell(int, int, int) override { return {}; }
  void RenameSheet(int, std::string_view) override {}
  void SetStandardFont(std::string_view) override {}
  void ClearOutput() override {}
  void WriteCsvRow(std::string_view row) override;

 private:
  AtomicFile file_;
};

}  // namespace kroveld
