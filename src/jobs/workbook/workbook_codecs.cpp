#include "jobs/workbook/workbook_codecs.h"

#include "jobs/workbook/xls_reader.h"
#include "jobs/workbook/xls_writer.h"
#include "jobs/workbook/xlsx_reader.h"
#include "jobs/workbook/xlsx_writer.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// Excel 97-2003 (BIFF8 in an OLE2 compound file), then OOXML (a zip archive), the default.
constexpr WorkbookCodec kCodecs[] = {
    {".xls", std::string_view("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8), ReadXls, WriteXls,
     kXlsMaxRows, kXlsMaxColumns, " (save as .xlsx for more)"},
    {".xlsx", std::string_view("PK\x03\x04", 4), ReadXlsx, WriteXlsx, kMaxSheetRows,
     kMaxSheetColumns, ""},
};
constexpr const WorkbookCodec& kDefaultCodec = kCodecs[1];

bool EndsWithNoCase(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() &&
         EqualsNoCase(text.substr(text.size() - suffix.size()), suffix);
}

}  // namespace

std::span<const WorkbookCodec> WorkbookCodecs() {
  return kCodecs;
}

const WorkbookCodec& CodecForSaving(std::string_view path) {
  for (const WorkbookCodec& codec : kCodecs) {
    if (EndsWithNoCase(path, codec.suffix)) return codec;
  }
  return kDefaultCodec;
}

const WorkbookCodec* CodecForSignature(std::string_view head) {
  for (const WorkbookCodec& codec : kCodecs) {
    if (head.starts_with(codec.signature)) return &codec;
  }
  return nullptr;
}

bool NamesWorkbook(std::string_view path) {
  for (const WorkbookCodec& codec : kCodecs) {
    if (FindNoCase(path, codec.suffix) != std::string_view::npos) return true;
  }
  return false;
}

}  // namespace kroveld
