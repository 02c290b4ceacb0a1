// Workbook output: an in-memory workbook filled by the sections and saved with the codec the file
// name chooses (workbook_codecs.h: a name ending in ".xls" gets BIFF8, every other one OOXML). An
// existing output is read in first so cells this run does not write keep their values. Text handed
// to a cell is typed the way a spreadsheet types what is typed into it: numeric text becomes a
// number with a matching format, leading-zero codes stay text, "=" is never a formula.
#pragma once

#include <string>

#include "engine/output_sink.h"
#include "jobs/workbook/workbook.h"
#include "jobs/workbook/workbook_codecs.h"
#include "util/ui_port.h"

namespace kroveld {

class WorkbookSink final : public OutputSink {
 public:
  // True when the workbook at `path` is open in a spreadsheet program right now, seen by its lock
  // file beside it (".~lock.NAME#" of LibreOffice, "~$NAME" of Excel).
  static bool IsOpenInSpreadsheetApp(const std::string& path);

  // Reads the existing workbook at `path`, or starts a new one with two sheets when it is missing
  // or cannot be read (a corrupt file is then kept as NAME.bak when the new one is saved).
  void Open(const std::string& path, bool show);
  // Saves with the codec of the name, atomically. False with Error() (path and reason).
  bool Save(const SaveTick& tick = {});
  void Close();
  const std::string& Error() const { return error_; }
  // After a Save that kept an unreadable old file as NAME.bak: what could not be read and where
  // the file was kept ("" otherwise).
  const std::string& BackupNote() const { return backup_note_; }
  Workbook& Model() { return book_; }

  bool HoldsCells() const override { return true; }
  void SetCell(int sheet, int row, int column, std::string_view value) override;
  // A number keeps the format its printed look gives it (as SetCell would), a date is shown as
  // yyyy-mm-dd, and text stays text even when it looks like a number.
  void SetValue(int sheet, int row, int column, const CellValue& value) override;
  std::string GetCell(int sheet, int row, int column) override;
  void RenameSheet(int sheet, std::string_view name) override;
  void SetStandardFont(std::string_view font) override;
  void ClearOutput() override;
  void WriteCsvRow(std::string_view) override {}
  bool Full() const override { return dropped_ > 0; }

 private:
  bool SaveBackupOfCorruptOutput();
  // The sheet a cell write goes to, or null when the cell is refused (counted as dropped).
  Sheet* Target(int sheet, int row, int column);
  bool SetTextCell(Sheet& target, int row, int column, std::string_view text);

  Workbook book_;
  std::string path_;
  std::string error_;
  bool keep_backup_ = false;
  std::string unreadable_why_;  // the reader's reason, while keep_backup_ is set
  std::string backup_note_;
  std::string scratch_;      // UTF-8 form of a Windows-1252 cell text being set
  std::size_t dropped_ = 0;  // cells beyond the largest sheet, not kept
  // The sheet the output's format holds, and the first cell that fell outside it.
  const WorkbookCodec* codec_ = nullptr;
  int refused_sheet_ = 0;
  int refused_row_ = 0;
  int refused_column_ = 0;
};

}  // namespace kroveld
