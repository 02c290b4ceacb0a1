// The line processor: the row buffer of twelve slots (one per input file, a "period"), filled
// sequentially from an open file or by line number from every input file, and the cutting of a
// character range of the buffered lines into a field value, combined across files by operator.
// Positions are bytes of 8-bit reports; of a report read as UTF-8 they are printed columns.
#pragma once

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "util/text_file.h"
#include "util/ui_port.h"
#include "util/utf8_text.h"

namespace kroveld {

class Context;

class clsLineProcessor {
 public:
  static constexpr int kSlots = 12;

  explicit clsLineProcessor(Context& ctx);

  // Next line of `file` into slot 1: a blank appended when the line is not empty and does not end
  // in one, then tabs expanded when tabSize > 0. A null file does nothing. The system's named
  // interface; no caller yet (the table rows use SetPeriod1Line).
  void ReadRowPeriod1Only(TextFile* file, int tabSize);
  // The same for a line already read: `line` (blank added, tabs expanded) into slot 1.
  void SetPeriod1Line(std::string_view line, int tabSize);
  // Whether SetPeriod1Line expands tabs in `line` (tabSize > 0 and the line holds a tab).
  static bool ExpandsTabs(std::string_view line, int tabSize) {
    return tabSize > 0 && !line.empty() && std::memchr(line.data(), '\t', line.size()) != nullptr;
  }
  // Line n of every input file InputFileFirst..InputFileLast of the recipe into its slot (others
  // emptied). Returns false when the line number overflows the 16-bit counter (after reporting).
  // The system's named interface; no caller yet.
  bool ReadRow(long long lineNumber, int tabSize);
  // The field text for columns first..last under the operator code. The view stays valid until
  // the next call of any member.
  std::string_view ProcessField(int code, int firstColumn, int lastColumn);

  const std::string& Slot(int i) const { return rows_[i - 1]; }
  void SetSlot(int i, std::string_view text);
  // Line n of a file ("" past its end). The system's named interface; no caller but ReadRow.
  std::string get_text_line(const std::string& fileName, long long lineNumber);
  void ResetRows();

  // Whether the lines that come next are UTF-8 (cut by printed columns, an invalid byte kept as
  // U+FFFD and noted once per file) or 8-bit text (cut by bytes). Set for each conversion.
  void SetUtf8(bool utf8);
  bool Utf8() const { return utf8_; }

 private:
  // A line of a UTF-8 report holding characters beyond ASCII into slot i (from 1); `period1`
  // adds the blank that slot 1's lines get.
  void PutUtf8Line(int i, std::string_view line, bool period1, int tabSize);
  std::string_view CutSlot(int i, long long first, long long width);

  Context& ctx_;
  std::vector<std::string> rows_;
  bool utf8_ = false;
  // Per slot, under UTF-8: whether it holds characters beyond ASCII (then cut by columns), and
  // whether its column index is built.
  std::array<bool, kSlots> by_columns_{};
  std::array<bool, kSlots> indexed_{};
  std::array<LineColumns, kSlots> columns_;
  std::vector<std::string> noted_files_;  // files whose invalid bytes have been noted
  std::string repaired_;
  std::string raw_;     // line as read, before tab expansion
  std::string result_;  // computed field text (sums, averages)
};

}  // namespace kroveld
