// What a preview run is asked to do and what it found: the recipe text as typed with the path it
// stands for, the sample report, and in return the blocks each table found, the column spans, the
// titles written, the messages the run would have shown (each with its section) and the workbook
// the pass filled in memory, which is never saved.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jobs/workbook/workbook.h"
#include "util/ui_port.h"

namespace kroveld {

inline constexpr std::int64_t kPreviewMaxLines = 10000;

struct PreviewRequest {
  std::string recipeText;  // as typed, saved or not: long form, short form or an export definition
  std::string recipePath;  // where the recipe is (or will be) saved; relative names start there
  std::string reportPath;  // the sample report, converted as input file 1
  int tabSize = 8;
  std::int64_t maxLines = kPreviewMaxLines;  // a longer report is previewed on its first lines
};

struct PreviewColumn {
  int number = 0;  // from 1, in recipe order
  int start = 0;   // ReadColumnStart: first character position, from 1
  int end = 0;     // ReadColumnEnd
  std::string writeColumn;
};

struct PreviewTable {
  int number = 0;
  std::int64_t topKeyLine = 0;  // lines of the report from 1; 0: not found (or not searched)
  std::int64_t bottomKeyLine = 0;
  std::int64_t startLine = 0;  // the block after the offsets; 0 unless both keys were found
  std::int64_t endLine = 0;
  int firstRow = 0;  // rows of sheet 1 written; lastRow < firstRow when none
  int lastRow = -1;
  std::int64_t linesFiltered = 0;  // lines of the block the row filters kept from being rows
  std::vector<PreviewColumn> columns;
};

struct PreviewTitle {
  int number = 0;
  int sheet = 0;
  std::string writeColumn;
  int firstRow = 0;
  std::vector<std::string> lines;  // the literal lines written
  // Report lines (from 1) whose text, without surrounding blanks, is one of the title's lines:
  // the lines the title repeats.
  std::vector<std::int64_t> reportLines;
};

struct PreviewMessage {
  std::string text;
  Icon icon = Icon::None;
  bool note = false;    // an informational note, not counted as a failure
  std::string section;  // "Table 2", "Title 1", "Table 1 Col 3", ... or "" (the recipe)
  int recipeLine = 0;   // line of the recipe text to show for it (from 1), 0 when none
};

struct PreviewResult {
  std::vector<PreviewTable> tables;  // in the order the pass ran them
  std::vector<PreviewTitle> titles;
  std::vector<PreviewMessage> messages;
  std::vector<std::string> notes;  // about the preview itself (a report cut short, ...)
  Workbook workbook;               // sheets 1 and 2 as the pass left them
  std::int64_t linesPreviewed = 0;
  bool truncated = false;  // the report has more lines than were previewed

  // Whether the run would have shown any message (notes aside).
  bool HasMessages() const;
};

}  // namespace kroveld
