// The workbook file formats the program reads and writes, in one table: the name suffix that
// chooses a codec for saving (and makes a name a workbook output), the signature that recognises
// an existing file, and the reader and writer. A new format is one entry here and its own file.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "jobs/workbook/workbook.h"

namespace kroveld {

struct WorkbookCodec {
  // A name ending in this suffix (any case) is saved with this codec; a name containing it
  // anywhere (any case) is a workbook output.
  std::string_view suffix;
  // The first bytes of a file in this format.
  std::string_view signature;
  // Replace the workbook's contents with the file's / save it atomically; false with `error`.
  bool (*read)(const std::string& path, Workbook& book, std::string& error);
  bool (*write)(const Workbook& book, const std::string& path, std::string& error,
                const SaveTick& tick);
  // The largest sheet the format holds, and what to tell a user whose table does not fit.
  int maxRows;
  int maxColumns;
  std::string_view whenTooLarge;
};

// Every codec, most specific suffix first.
std::span<const WorkbookCodec> WorkbookCodecs();
// The codec that saves a workbook named `path`: the first whose suffix ends the name, otherwise
// the default (OOXML), which takes every other workbook name.
const WorkbookCodec& CodecForSaving(std::string_view path);
// The codec whose signature begins `head` (the first bytes of a file); null when none does.
const WorkbookCodec* CodecForSignature(std::string_view head);
// True when some codec's suffix appears anywhere in `path` (any case).
bool NamesWorkbook(std::string_view path);

}  // namespace kroveld
