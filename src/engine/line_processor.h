// The line processor: the row buffer of twelve slots (one per input file, a "period"), filled
// sequentially from an open file or by line number from every input file, and the cutting of a
// character range of the buffered lines into a field value, combined across files by operator.
#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;

class clsLineProcessor {
 public:
  static constexpr int kSlots = 12;

  explicit clsLineProcessor(Context& ctx);

  // Next line of `file` into slot 1: a blank appended when the line is not empty and does not end
  // in one, then tabs expanded when tabSize > 0. A null file does nothing.
  void ReadRowPeriod1Only(TextFile* file, int tabSize);
  // The same for a line already read: `line` (blank added, tabs expanded) into slot 1.
  void SetPeriod1Line(std::string_view line, int tabSize);
  // Whether SetPeriod1Line expands tabs in `line` (tabSize > 0 and the line holds a tab).
  static bool ExpandsTabs(std::string_view line, int tabSize) {
    return tabSize > 0 && !line.empty() && std::memchr(line.data(), '\t', line.size()) != nullptr;
  }
  // Line n of every input file InputFileFirst..InputFileLast of the recipe into its slot (others
  // emptied). Returns false when the line number overflows the 16-bit counter (after reporting).
  bool ReadRow(long long lineNumber, int tabSize);
  // The field text for columns first..last under the operator code. The view stays valid until
  // the next call of any member.
  std::string_view ProcessField(int code, int firstColumn, int lastColumn);

  const std::string& Slot(int i) const { return rows_[i - 1]; }
  void SetSlot(int i, std::string_view text);
  std::string get_text_line(const std::string& fileName, long long lineNumber);
  void ResetRows();

 private:
  Context& ctx_;
  std::vector<std::string> rows_;
  std::string raw_;     // line as read, before tab expansion
  std::string result_;  // computed field text (sums, averages)
};

}  // namespace kroveld
