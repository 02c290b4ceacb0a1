// The row buffer and the field cutter. Slot 1 is the hot path of every table: it is refilled in
// place (its capacity is kept), and fields are handed out as views into the slots, so cutting a
// field costs no allocation. Sums and averages are built in one reused result buffer.
#include "engine/line_processor.h"

#include <algorithm>

#include "engine/context.h"
#include "util/collections.h"
#include "util/files.h"
#include "util/lines_io.h"
#include "util/numbers.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// Line numbers and file numbers pass through a 16-bit counter when a file is read.
constexpr long long kMaxShortCounter = 32767;

// Columns first..first+width-1 (1-based) of `line`, clipped to the line.
std::string_view Cut(std::string_view line, long long first, long long width) {
  long long from = first - 1;
  long long to = from + width;  // one past the last position
  if (from < 0) from = 0;
  if (to > static_cast<long long>(line.size())) to = static_cast<long long>(line.size());
  if (from >= to) return {};
  return line.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from));
}

template <class CutSlot>
std::string_view Combine(Context& ctx, CutSlot cut, std::string& result, int code, int firstColumn,
                         int lastColumn);

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

clsLineProcessor::clsLineProcessor(Context& ctx) : ctx_(ctx), rows_(kSlots) {}

void clsLineProcessor::ResetRows() {
  // Every slot back to the empty string; the slots keep their capacity for the next lines.
  rows_.resize(kSlots);
  for (auto& slot : rows_) slot.clear();
  by_columns_.fill(false);
}

void clsLineProcessor::SetSlot(int i, std::string_view text) {
  if (i < 1 || i > kSlots) {
    CollectionItemSet(ctx_.ui, rows_, i, std::string(text));
    return;
  }
  const auto k = static_cast<std::size_t>(i - 1);
  rows_[k].assign(text);
  by_columns_[k] = utf8_ && !IsAscii(text);
  indexed_[k] = false;
}

void clsLineProcessor::SetUtf8(bool utf8) {
  utf8_ = utf8;
  by_columns_.fill(false);
  noted_files_.clear();
}

void clsLineProcessor::PutUtf8Line(int i, std::string_view line, bool period1, int tabSize) {
  const auto k = static_cast<std::size_t>(i - 1);
  // Many UTF-8 files open with a byte order mark; it is no part of the first line's text.
  if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  const bool addBlank = period1 && !line.empty() && line.back() != ' ';
  if (RepairUtf8(line, repaired_) > 0) {
    std::string name = ctx_.recipe.InputFilePath(i);
    if (std::find(noted_files_.begin(), noted_files_.end(), name) == noted_files_.end()) {
      ctx_.ui.Note("The report " + name +
                   " is not valid UTF-8 throughout: each invalid byte counts as one character "
                   "and is written as U+FFFD");
      noted_files_.push_back(std::move(name));
    }
  }
  if (addBlank) repaired_.push_back(' ');
  std::string& slot = rows_[k];
  if (tabSize > 0 && repaired_.find('\t') != std::string::npos) {
    ExpandTabsByColumns(repaired_, tabSize, slot);
  } else {
    slot.swap(repaired_);  // both keep their capacity for the next lines
  }
  by_columns_[k] = true;
  indexed_[k] = false;
}

std::string_view clsLineProcessor::CutSlot(int i, long long first, long long width) {
  const auto k = static_cast<std::size_t>(i - 1);
  if (!by_columns_[k]) return Cut(rows_[k], first, width);
  if (!indexed_[k]) {
    columns_[k].Build(rows_[k]);
    indexed_[k] = true;
  }
  return columns_[k].Cut(rows_[k], first, width);
}

void clsLineProcessor::ReadRowPeriod1Only(TextFile* file, int tabSize) {
  if (file == nullptr) return;
  std::string_view line;
  if (!file->ReadLine(line)) line = {};  // every line past the end of the file reads as empty
  SetPeriod1Line(line, tabSize);
}

void clsLineProcessor::SetPeriod1Line(std::string_view line, int tabSize) {
  if (utf8_) {
    if (!IsAscii(line)) {
      PutUtf8Line(1, line, true, tabSize);
      return;
    }
    by_columns_[0] = false;
  }
  std::string& slot = rows_[0];
  if (line.empty()) {
    // An empty line stays empty. (The view of an empty line may carry no data pointer at all: it
    // is never handed to memchr or memcpy.)
    slot.clear();
    return;
  }

  // The blank goes on before the tabs are expanded (a field ending at the line's last character
  // then still sees a trailing blank).
  const bool addBlank = line.back() != ' ';
  if (ExpandsTabs(line, tabSize)) {
    raw_.assign(line);
    if (addBlank) raw_.push_back(' ');
    ExpandTabs(raw_, tabSize, slot);
    return;
  }
  slot.assign(line);
  if (addBlank) slot.push_back(' ');
}

bool clsLineProcessor::ReadRow(long long lineNumber, int tabSize) {
  UiPort& ui = ctx_.ui;
  if (lineNumber < 1) {
    ui.Message(" invalid Row number in clsLineProcessor.ReadRow!", Icon::Critical);
    return true;
  }
  const clsRecipe& recipe = ctx_.recipe;
  const int first = recipe.InputFileFirst;
  const int last = recipe.InputFileLast;
  if (lineNumber > kMaxShortCounter) {
    std::string text = "Overflow: line number ";
    AppendInt(text, lineNumber);
    text += " is above 32767 in clsLineProcessor.ReadRow!";
    ui.Message(text, Icon::Critical);
    return false;
  }
  if (first <= last && last > kMaxShortCounter) {
    std::string text = "Overflow: input file number ";
    AppendInt(text, last);
    text += " is above 32767 in clsLineProcessor.ReadRow!";
    ui.Message(text, Icon::Critical);
    return false;
  }

  ResetRows();
  for (int i = first; i <= last; ++i) {
    if (i < 1 || i > kSlots) {
      // The recipe holds input files 1 to 12 only: any other slot is refused with the list
      // helper's own message and the loop goes on.
      CollectionItemSet(ui, rows_, i, std::string());
      continue;
    }
    std::string name = recipe.InputFilePath(i);
    if (!FileExists(name)) {
      ui.Message("Text File: " + name + " does not exist in ReadRow!", Icon::Exclamation);
      continue;  // the slot stays empty
    }
    std::string text = get_text_line(name, lineNumber);
    if (utf8_ && !IsAscii(text)) {
      PutUtf8Line(i, text, false, tabSize);
      continue;
    }
    if (tabSize > 0) text = ExpandTabs(text, tabSize);
    CollectionItemSet(ui, rows_, i, std::move(text));
  }
  return true;
}

std::string clsLineProcessor::get_text_line(const std::string& fileName, long long lineNumber) {
  if (lineNumber < 1) {
    ctx_.ui.Message(" invalid line number in clsLineProcessor.get_text_line!", Icon::Critical);
    return {};
  }
  std::vector<std::string> lines(1);
  file_read(ctx_.ui, lines, fileName, lineNumber, 1);
  return std::move(lines[0]);
}

std::string_view clsLineProcessor::ProcessField(int code, int firstColumn, int lastColumn) {
  const long long width = static_cast<long long>(lastColumn) - firstColumn + 1;
  if (width < 1) return {};

  // Codes 0 and 1 cut one slot: the path of every table field, kept small.
  if (code == 0 || code == 1) {
    const int i = code == 0 ? ctx_.recipe.InputFileLast : ctx_.recipe.InputFileFirst;
    if (i < 1 || i > kSlots) return {};
    return CutSlot(i, firstColumn, width);
  }
  if (code != 2 && code != 3) {
    ctx_.ui.Message("Invalid operator in ProcessField!", Icon::None);
    return {};
  }
  const auto cut = [this, firstColumn, width](long long i) -> std::string_view {
    if (i < 1 || i > kSlots) return {};
    return CutSlot(static_cast<int>(i), firstColumn, width);
  };
  return Combine(ctx_, cut, result_, code, firstColumn, lastColumn);
}

namespace {

// Sum (code 2) or average (code 3) of the field over the slots InputFileFirst..InputFileLast,
// or the last piece that is not a number. Kept out of line so that cutting stays cheap.
template <class CutSlot>
[[gnu::noinline]] std::string_view Combine(Context& ctx, CutSlot cut, std::string& result, int code,
                                           int firstColumn, int lastColumn) {
  const int first = ctx.recipe.InputFileFirst;
  const int last = ctx.recipe.InputFileLast;

  Fixed4 sum;
  long long count = 0;
  bool allNumeric = true;
  std::string_view nonNumeric;
  for (long long i = first; i <= last; ++i) {
    const std::string_view piece = cut(i);
    Fixed4 value;
    const NumberParse parsed = ParseFixed(piece, value);
    if (parsed == NumberParse::kNotNumeric) {
      allNumeric = false;
      nonNumeric = piece;  // a later non-numeric piece replaces an earlier one
      continue;
    }
    if (parsed == NumberParse::kOverflow || !AddFixed(sum, value, sum)) {
      ctx.ui.Message("Overflow: the sum of columns " + ToText(firstColumn) + " to " +
                         ToText(lastColumn) + " is out of range in clsLineProcessor.ProcessField!",
                     Icon::Critical);
      return {};
    }
    ++count;
  }
  if (!allNumeric) return nonNumeric;

  Fixed4 number = sum;
  if (code == 3) {
    if (count == 0) {
      ctx.ui.Message("Division by zero: no input file in the range " + ToText(first) + " to " +
                         ToText(last) + " for the average in clsLineProcessor.ProcessField!",
                     Icon::Critical);
      return {};
    }
    const double average =
        static_cast<double>(sum.raw) / Fixed4::kScale / static_cast<double>(count);
    const std::string& format = ctx.recipe.WriteDataFormat;
    if (format != "NearestDollar" && format != "NearestCent") {
      result = FormatPlainDouble(average);
      return result;
    }
    // Rounded straight from the exact quotient sum / count to the format's decimals (halves away
    // from zero). Going through four decimals first would round twice: 0.0149 / 3 would become
    // 0.0050 and then 0.01 instead of 0.00.
    const std::int64_t unit = format == "NearestDollar" ? Fixed4::kScale : Fixed4::kScale / 100;
    const std::int64_t divisor = unit * count;
    std::int64_t quotient = sum.raw / divisor;
    const std::int64_t remainder = sum.raw % divisor;
    if (remainder >= divisor - remainder) ++quotient;
    if (-remainder >= divisor + remainder) --quotient;
    number.raw = quotient * unit;
  }

  result.clear();
  const std::string& format = ctx.recipe.WriteDataFormat;
  AppendInWriteDataFormat(result, number, format);
  return result;
}

}  // namespace

}  // namespace kroveld
