// Finding a table's block of lines: both key texts searched from line 1 of the first input file
// taking part, each moved by its offset, with the messages for a key that is missing or found in
// the wrong order.
#pragma once

#include <cstdint>
#include <string>

#include "util/line_search.h"
#include "util/text_file.h"

namespace kroveld {

class Context;
class clsTable;

// Where a table's rows lie.
struct LocatedBlock {
  std::string keyFile;  // the file the keys were searched in
  KeyLine top;          // first line holding the top key text (line 0: not found)
  KeyLine bottom;       // first line holding the bottom key text (line 0: not found)
  std::int64_t startLine = 0;
  std::int64_t endLine = 0;
};

// Shows a critical table message and marks the export failed.
void FailTable(Context& ctx, const std::string& text);

// Searches the key texts, tells the observer, and checks the block. The search runs on the bytes
// of `keyText` when it is given mapped (the key file, already open for the rows too), otherwise
// on the key file read from its start; its pages are given back as the search moves on. False
// when the table writes nothing: a key was not found or the end lies before the start (shown, the
// export marked failed), or the block starts before line 1 (no message; a verbose run or a check
// gets a note).
bool LocateTableBlock(Context& ctx, const clsTable& table, TextFile* keyText, LocatedBlock& block);

}  // namespace kroveld
