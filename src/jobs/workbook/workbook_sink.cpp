// Workbook output: reads the existing output into the model, types and stores cell texts, and
// saves with the codec the file name chooses.
#include "jobs/workbook/workbook_sink.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "engine/column_type.h"
#include "jobs/workbook/cell_typing.h"
#include "jobs/workbook/text_encoding.h"
#include "jobs/workbook/workbook_codecs.h"
#include "util/files.h"
#include "util/numbers.h"
#include "util/strings.h"

namespace kroveld {
namespace {

// Sheets beyond this number are not made on demand (the engine writes to sheets 1 and 2).
constexpr int kMaxSheets = 255;

// The first bytes of the file at `native`, as many as the longest codec signature; false when
// the file cannot be opened (it is missing).
bool ReadHead(const std::string& native, std::string& head) {
  std::ifstream in(native, std::ios::binary);
  if (!in) return false;
  std::size_t longest = 0;
  for (const WorkbookCodec& codec : WorkbookCodecs()) {
    longest = std::max(longest, codec.signature.size());
  }
  head.assign(longest, '\0');
  in.read(head.data(), static_cast<std::streamsize>(longest));
  head.resize(static_cast<std::size_t>(in.gcount()));
  return true;
}

}  // namespace

bool WorkbookSink::IsOpenInSpreadsheetApp(const std::string& path) {
  const std::string native = NativePath(path);
  const std::string folder = FolderOfPath(native);
  const std::string name = FileName(native);
  if (name.empty()) return false;
  if (FileExists(folder + ".~lock." + name + "#")) return true;  // LibreOffice
  if (FileExists(folder + "~$" + name)) return true;             // Excel
  // Office cuts the first two characters of long names: "~$port.xlsx" for "report.xlsx".
  return name.size() > 2 && FileExists(folder + "~$" + name.substr(2));
}

void WorkbookSink::Open(const std::string& path, bool /*show: no window to show*/) {
  path_ = path;
  error_.clear();
  backup_note_.clear();
  keep_backup_ = false;
  dropped_ = 0;
  codec_ = &CodecForSaving(path);
  refused_sheet_ = refused_row_ = refused_column_ = 0;
  book_ = Workbook();
  std::string head;
  if (!ReadHead(NativePath(path), head)) return;
  const WorkbookCodec* codec = CodecForSignature(head);
  std::string why;
  if (codec == nullptr || !codec->read(path, book_, why)) {
    // Not a workbook we can read: start afresh and keep the old file as NAME.bak on saving.
    book_ = Workbook();
    keep_backup_ = true;
    unreadable_why_ = why.empty() ? path + ": not a workbook" : why;
    return;
  }
  book_.GetSheet(2);  // two sheets always exist
}

bool WorkbookSink::SaveBackupOfCorruptOutput() {
  const std::string native = NativePath(path_);
  const std::string backup = native + ".bak";
  if (!FileExists(native)) return true;
  // The original stays in place until the new file is renamed over it.
  if (!SecondName(native, backup)) {
    error_ = path_ + ": the unreadable old file could not be kept as " + backup + " (" +
             LastErrorText() + ")";
    return false;
  }
  return true;
}

bool WorkbookSink::Save(const SaveTick& tick) {
  error_.clear();
  if (path_.empty()) {
    error_ = "no output workbook is open";
    return false;
  }
  const WorkbookCodec& codec = CodecForSaving(path_);
  if (dropped_ > 0) {
    // Refused before anything is written: the old file stays as it was.
    const bool row = refused_row_ > codec.maxRows;
    const int limit = row ? codec.maxRows : codec.maxColumns;
    error_ =
        "Cannot write " + path_ + ": sheet " + std::to_string(refused_sheet_) + " would need " +
        (row ? "row " + FormatGroupedCount(refused_row_)
             : "column " + FormatGroupedCount(refused_column_)) +
        "; a " + std::string(codec.suffix) + " sheet holds at most " + FormatGroupedCount(limit) +
        (row ? " rows" : " columns") + std::string(codec.whenTooLarge) + ". Nothing was written";
    return false;
  }
  if (keep_backup_ && !SaveBackupOfCorruptOutput()) return false;
  if (!codec.write(book_, path_, error_, tick)) {
    // The writers leave the old file as it was; the backup of it is not needed then.
    if (keep_backup_) ::unlink((NativePath(path_) + ".bak").c_str());
    return false;
  }
  if (keep_backup_ && FileExists(path_ + ".bak")) {
    backup_note_ = "The existing output could not be read (" + unreadable_why_ +
                   "); it was kept as " + path_ + ".bak and a new workbook was written";
  }
  keep_backup_ = false;
  return true;
}

void WorkbookSink::Close() {
  book_ = Workbook();
  path_.clear();
  keep_backup_ = false;
  dropped_ = 0;
  codec_ = nullptr;
}

Sheet* WorkbookSink::Target(int sheet, int row, int column) {
  if (sheet < 1 || sheet > kMaxSheets) return nullptr;
  if (codec_ != nullptr && (row > codec_->maxRows || column > codec_->maxColumns)) {
    if (dropped_++ == 0) {
      refused_sheet_ = sheet;
      refused_row_ = row;
      refused_column_ = column;
    }
    return nullptr;
  }
  return &book_.GetSheet(sheet);
}

bool WorkbookSink::SetTextCell(Sheet& target, int row, int column, std::string_view text) {
  if (IsValidUtf8(text)) return target.SetText(row, column, text);
  scratch_.clear();
  AppendAsUtf8(text, scratch_);
  return target.SetText(row, column, scratch_);
}

void WorkbookSink::SetValue(int sheet, int row, int column, const CellValue& value) {
  Sheet* target = Target(sheet, row, column);
  if (target == nullptr) return;
  bool kept = true;
  switch (value.kind) {
    case CellValue::Kind::kEmpty:
      target->ClearCell(row, column);
      break;
    case CellValue::Kind::kNumber:
      kept = target->SetNumber(row, column, value.number, FormatOfNumberText(value.text));
      break;
    case CellValue::Kind::kDate:
      kept = target->SetNumber(row, column, value.number, NumberFormat::kDate);
      break;
    case CellValue::Kind::kText:
      kept = SetTextCell(*target, row, column, value.text);
      break;
  }
  if (!kept) ++dropped_;
}

void WorkbookSink::SetCell(int sheet, int row, int column, std::string_view value) {
  Sheet* sheetPtr = Target(sheet, row, column);
  if (sheetPtr == nullptr) return;
  Sheet& target = *sheetPtr;
  const TypedCell typed = TypeCellText(value);
  bool kept = true;
  switch (typed.type) {
    case CellType::kEmpty:
      target.ClearCell(row, column);
      break;
    case CellType::kNumber:
      kept = target.SetNumber(row, column, typed.number, typed.format);
      break;
    case CellType::kText:
      kept = SetTextCell(target, row, column, value);
      break;
  }
  if (!kept) ++dropped_;
}

std::string WorkbookSink::GetCell(int sheet, int row, int column) {
  if (sheet < 1 || sheet > book_.SheetCount()) return {};
  const CellView cell = book_.GetSheet(sheet).Get(row, column);
  switch (cell.type) {
    case CellType::kNumber: {
      CivilDate date;
      if (cell.format == NumberFormat::kDate && DateOfSerial(cell.number, date)) {
        std::string text;
        AppendIsoDate(text, date);
        return text;
      }
      return FormatPlainDouble(cell.number);
    }
    case CellType::kText:
      return std::string(cell.text);
    case CellType::kEmpty:
      break;
  }
  return {};
}

void WorkbookSink::RenameSheet(int sheet, std::string_view name) {
  if (sheet < 1 || sheet > kMaxSheets) return;
  Sheet& target = book_.GetSheet(sheet);  // made first, so the name is checked against the rest
  target.SetName(MakeSheetName(AsUtf8(name), book_, sheet));
}

void WorkbookSink::SetStandardFont(std::string_view font) {
  const std::string_view name = Trim(font);
  if (!name.empty()) book_.SetStandardFont(AsUtf8(name));
}

void WorkbookSink::ClearOutput() {
  book_.GetSheet(1).Clear();
}

}  // namespace kroveld
