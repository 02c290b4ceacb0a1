// .xlsx output through libxlsxwriter in constant-memory mode (rows in ascending order).
#include "jobs/workbook/xlsx_writer.h"

#include <xlsxwriter.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>

#include "jobs/workbook/column_widths.h"
#include "util/files.h"

namespace kroveld {
namespace {

constexpr std::size_t kMaxCellChars = 32767;

// Characters XML 1.0 cannot carry (controls other than tab, line feed and carriage return, and
// U+FFFE, U+FFFF) become "_xHHHH_", as spreadsheet programs write them; a "_x" that would read as
// such an escape is itself protected as "_x005F_". Everything else is copied.
void EscapeForXml(std::string_view text, std::string& out) {
  out.clear();
  auto escape = [&out](unsigned cp) {
    char buf[8];
    std::snprintf(buf, sizeof buf, "_x%04X_", cp);
    out += buf;
  };
  auto is_hex = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') {
      escape(c);
    } else if (c == 0xEF && i + 2 < text.size() &&
               static_cast<unsigned char>(text[i + 1]) == 0xBF &&
               (static_cast<unsigned char>(text[i + 2]) & 0xFE) == 0xBE) {
      escape(static_cast<unsigned char>(text[i + 2]) == 0xBE ? 0xFFFE : 0xFFFF);
      i += 2;
    } else if (c == '_' && i + 6 < text.size() && text[i + 1] == 'x' && text[i + 6] == '_' &&
               is_hex(text[i + 2]) && is_hex(text[i + 3]) && is_hex(text[i + 4]) &&
               is_hex(text[i + 5])) {
      escape('_');
    } else {
      out += static_cast<char>(c);
    }
  }
}

// The longest prefix of UTF-8 text with at most kMaxCellChars UTF-16 units.
std::string_view CutToCellLimit(std::string_view text) {
  if (text.size() <= kMaxCellChars) return text;
  std::size_t units = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if ((c & 0xC0) == 0x80) continue;
    const std::size_t add = c >= 0xF0 ? 2 : 1;
    if (units + add > kMaxCellChars) return text.substr(0, i);
    units += add;
  }
  return text;
}

// libxlsxwriter prints its own "[ERROR] ..." lines to stderr. While a workbook is written they go
// to a scratch file instead, and the reason they give becomes part of our one message.
class LibraryErrors {
 public:
  LibraryErrors() {
    std::fflush(stderr);
    scratch_ = std::tmpfile();
    saved_ = scratch_ ? ::dup(STDERR_FILENO) : -1;
    if (saved_ >= 0) ::dup2(::fileno(scratch_), STDERR_FILENO);
  }
  ~LibraryErrors() {
    Restore();
    if (scratch_) std::fclose(scratch_);
  }
  // The system error libxlsxwriter quoted ("No space left on device"), or "" when none.
  std::string SystemError() {
    Restore();
    if (!scratch_) return {};
    std::string text;
    std::rewind(scratch_);
    char buf[4096];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, scratch_)) > 0 && text.size() < 65536) {
      text.append(buf, n);
    }
    const std::string_view mark = "System error = ";
    const std::size_t at = text.find(mark);
    if (at == std::string::npos) return {};
    const std::size_t end = text.find_first_of("\r\n", at);
    return text.substr(at + mark.size(), end == std::string::npos ? end : end - at - mark.size());
  }

 private:
  void Restore() {
    if (saved_ < 0) return;
    std::fflush(stderr);
    ::dup2(saved_, STDERR_FILENO);
    ::close(saved_);
    saved_ = -1;
  }
  std::FILE* scratch_ = nullptr;
  int saved_ = -1;
};

// Packing the parts into the zip (workbook_close) takes seconds for a big sheet and gives no turn
// in between, so with a tick it runs in a child process while this one asks the tick about every
// 30 ms: a stop ends the child at once and the file there stays as it was. The library's result,
// or nothing when stopped. Without a tick, or when no process can be made, it packs here.
std::optional<lxw_error> PackWorkbook(lxw_workbook* wb, const SaveTick& tick, std::int64_t held) {
  int done[2];
  if (!tick || ::pipe2(done, O_CLOEXEC) != 0) return workbook_close(wb);
  const pid_t child = ::fork();
  if (child < 0) {
    ::close(done[0]);
    ::close(done[1]);
    return workbook_close(wb);
  }
  if (child == 0) {
    // The end of the pipe held here closes when this process ends, however it ends.
    ::_exit(static_cast<int>(workbook_close(wb)));
  }
  ::close(done[1]);
  bool stopped = false;
  for (;;) {
    pollfd end{done[0], POLLIN, 0};
    const int ready = ::poll(&end, 1, 30);
    if (ready > 0) break;
    if (ready < 0 && errno != EINTR) break;
    if (!tick(held, held)) {
      stopped = true;
      ::kill(child, SIGKILL);
      break;
    }
  }
  ::close(done[0]);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  // The child wrote the file; this copy of the workbook only has its memory given back.
  lxw_workbook_free(wb);
  if (stopped) return std::nullopt;
  if (WIFEXITED(status)) return static_cast<lxw_error>(WEXITSTATUS(status));
  return LXW_ERROR_CREATING_XLSX_FILE;
}

}  // namespace

bool WriteXlsx(const Workbook& book, const std::string& path, std::string& error,
               const SaveTick& tick) {
  AtomicFile temp;
  if (!temp.Open(path)) {
    error = temp.Error();
    return false;
  }

  LibraryErrors library_errors;
  lxw_workbook_options options{};
  options.constant_memory = LXW_TRUE;
  lxw_workbook* wb = workbook_new_opt(temp.TempPath().c_str(), &options);
  if (!wb) {
    error = path + ": the workbook could not be created";
    return false;
  }
  const std::string font = book.StandardFont();
  // The first format of a new workbook is its "Normal" style: its font is the default font.
  lxw_format* normal = STAILQ_FIRST(wb->formats);
  if (normal) {
    format_set_font_name(normal, font.c_str());
    format_set_font_size(normal, kStandardFontSize);
  }
  lxw_format* formats[6] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
  for (int f = 1; f < 5; ++f) {
    formats[f] = workbook_add_format(wb);
    format_set_font_name(formats[f], font.c_str());
    format_set_font_size(formats[f], kStandardFontSize);
    format_set_num_format_index(formats[f], static_cast<uint8_t>(f));  // built-in 1..4
  }
  // The date format only where a sheet holds dates, so other workbooks keep their styles as they
  // were.
  bool dates = false;
  for (int s = 1; s <= book.SheetCount(); ++s) dates = dates || book.GetSheet(s).HasDates();
  if (dates) {
    const int f = static_cast<int>(NumberFormat::kDate);
    formats[f] = workbook_add_format(wb);
    format_set_font_name(formats[f], font.c_str());
    format_set_font_size(formats[f], kStandardFontSize);
    format_set_num_format(formats[f], std::string(NumberFormatCode(NumberFormat::kDate)).c_str());
  }

  std::string text;  // NUL-terminated copy of a cell text
  lxw_error failure = LXW_NO_ERROR;
  bool stopped = false;
  const std::int64_t held = tick ? RowsHeld(book) : 0;
  std::int64_t written = 0;
  for (int s = 1; s <= book.SheetCount() && failure == LXW_NO_ERROR && !stopped; ++s) {
    const Sheet& sheet = book.GetSheet(s);
    lxw_worksheet* ws = workbook_add_worksheet(wb, sheet.Name().c_str());
    if (!ws) ws = workbook_add_worksheet(wb, nullptr);
    if (!ws) {
      failure = LXW_ERROR_SHEETNAME_ALREADY_USED;
      break;
    }
    const std::vector<double> widths = ColumnWidths(sheet);
    for (std::size_t c = 0; c < widths.size(); ++c) {
      if (widths[c] > 0) {
        worksheet_set_column(ws, static_cast<lxw_col_t>(c), static_cast<lxw_col_t>(c), widths[c],
                             nullptr);
      }
    }
    for (int r = 1; r <= sheet.MaxRow() && failure == LXW_NO_ERROR; ++r) {
      if (tick && (++written & 63) == 0 && !tick(written, held)) {
        stopped = true;
        break;
      }
      const int length = sheet.RowLength(r);
      for (int c = 1; c <= length; ++c) {
        const CellView cell = sheet.Get(r, c);
        lxw_error e = LXW_NO_ERROR;
        if (cell.type == CellType::kNumber) {
          e = worksheet_write_number(ws, r - 1, static_cast<lxw_col_t>(c - 1), cell.number,
                                     formats[static_cast<int>(cell.format)]);
        } else if (cell.type == CellType::kText && !cell.text.empty()) {
          EscapeForXml(CutToCellLimit(cell.text), text);
          e = worksheet_write_string(ws, r - 1, static_cast<lxw_col_t>(c - 1), text.c_str(),
                                     nullptr);
        }
        if (e != LXW_NO_ERROR && e != LXW_ERROR_WORKSHEET_INDEX_OUT_OF_RANGE) {
          failure = e;
          break;
        }
      }
    }
  }
  std::optional<lxw_error> packed;
  if (stopped) {
    lxw_workbook_free(wb);  // nothing to pack
  } else {
    packed = PackWorkbook(wb, tick, held);
    // A stop asked for during the packing, or in its last moments, keeps the file there.
    stopped = !packed || (tick && !tick(held, held));
  }
  if (stopped) {
    error = "Saving " + path + " was stopped; the file there is kept as it was";
    return false;
  }
  if (failure == LXW_NO_ERROR) failure = *packed;
  if (failure != LXW_NO_ERROR) {
    const std::string system = library_errors.SystemError();
    error = "Cannot write " + path + ": " + (system.empty() ? lxw_strerror(failure) : system);
    return false;
  }
  if (temp.Commit()) return true;
  error = temp.Error();
  return false;
}

}  // namespace kroveld
