#include "jobs/preview/preview_recorder.h"

#include "engine/table.h"
#include "engine/title.h"
#include "util/strings.h"

namespace kroveld {

void PreviewRecorder::SectionStarts(std::string_view kind, int number) {
  number_ = number;
  port_.SetSection(std::string(kind) + " " + ToText(number));
}

void PreviewRecorder::TableKeysSearched(const clsTable& table, const TableBlock& block) {
  PreviewTable found;
  found.number = number_;
  found.topKeyLine = block.topKeyLine;
  found.bottomKeyLine = block.bottomKeyLine;
  found.startLine = block.startLine;
  found.endLine = block.endLine;
  found.columns.reserve(table.Columns.size());
  int n = 0;
  for (const clsColumn& column : table.Columns) {
    found.columns.push_back(
        PreviewColumn{++n, column.ReadColumnStart, column.ReadColumnEnd, column.WriteColumn});
  }
  result_.tables.push_back(std::move(found));
}

void PreviewRecorder::TableRowsWritten(const clsTable&, int firstRow, int lastRow) {
  if (result_.tables.empty() || result_.tables.back().number != number_) return;
  result_.tables.back().firstRow = firstRow;
  result_.tables.back().lastRow = lastRow;
}

void PreviewRecorder::TableLinesFiltered(const clsTable&, std::int64_t lines) {
  if (result_.tables.empty() || result_.tables.back().number != number_) return;
  result_.tables.back().linesFiltered = lines;
}

void PreviewRecorder::TitleWritten(const clsTitle& title, int firstRow) {
  PreviewTitle written;
  written.number = number_;
  written.sheet = title.WriteSheet;
  written.writeColumn = title.WriteColumn;
  written.firstRow = firstRow;
  written.lines = title.Lines;
  result_.titles.push_back(std::move(written));
}

}  // namespace kroveld
