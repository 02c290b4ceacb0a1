// The preview's watcher of a conversion pass: keeps where each table found its keys and block,
// its column spans, and where each title landed, and points the collecting port at the section
// being run so that messages are filed under it.
#pragma once

#include <string>

#include "engine/pass_observer.h"
#include "jobs/preview/collecting_port.h"
#include "jobs/preview/preview_result.h"

namespace kroveld {

class PreviewRecorder final : public PassObserver {
 public:
  PreviewRecorder(CollectingPort& port, PreviewResult& result) : port_(port), result_(result) {}

  void SectionStarts(std::string_view kind, int number) override;
  void TableKeysSearched(const clsTable& table, const TableBlock& block) override;
  void TableRowsWritten(const clsTable& table, int firstRow, int lastRow) override;
  void TableLinesFiltered(const clsTable& table, std::int64_t lines) override;
  void TitleWritten(const clsTitle& title, int firstRow) override;

 private:
  CollectingPort& port_;
  PreviewResult& result_;
  int number_ = 0;  // number of the section being run
};

}  // namespace kroveld
