// BIFF8 writer. Globals: BOF, CODEPAGE, WINDOW1, FONT, XF, STYLE, BOUNDSHEET, SST (+CONTINUE),
// EXTSST, EOF; per sheet: BOF, DIMENSIONS, LABELSST / NUMBER cells, WINDOW2, EOF.
#include "jobs/workbook/xls_writer.h"

#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-outfile.h>
#include <gsf/gsf-output-stdio.h>
#include <gsf/gsf-output.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "jobs/workbook/column_widths.h"
#include "util/files.h"

namespace kroveld {
namespace {

constexpr std::size_t kMaxRecordData = 8224;
constexpr std::size_t kMaxStringUnits = 32767;
constexpr std::uint16_t kFirstCellXf = 15;       // XFs 0..14 are styles, 15.. cell formats
constexpr std::uint16_t kDateFormatIndex = 164;  // the first index of a workbook's own formats

enum : std::uint16_t {
  kBof = 0x0809,
  kEof = 0x000A,
  kCodepage = 0x0042,
  kWindow1 = 0x003D,
  kFont = 0x0031,
  kFormat = 0x041E,
  kXf = 0x00E0,
  kStyle = 0x0293,
  kBoundSheet = 0x0085,
  kSst = 0x00FC,
  kContinue = 0x003C,
  kExtSst = 0x00FF,
  kDimensions = 0x0200,
  kWindow2 = 0x023E,
  kLabelSst = 0x00FD,
  kNumber = 0x0203,
  kColInfo = 0x007D,
};

void Put8(std::string& out, std::uint8_t v) {
  out += static_cast<char>(v);
}
void Put16(std::string& out, std::uint16_t v) {
  out += static_cast<char>(v & 0xFF);
  out += static_cast<char>(v >> 8);
}
void Put32(std::string& out, std::uint32_t v) {
  Put16(out, static_cast<std::uint16_t>(v & 0xFFFF));
  Put16(out, static_cast<std::uint16_t>(v >> 16));
}
void PutDouble(std::string& out, double v) {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  Put32(out, static_cast<std::uint32_t>(bits));
  Put32(out, static_cast<std::uint32_t>(bits >> 32));
}
void Patch16(std::string& out, std::size_t at, std::uint16_t v) {
  out[at] = static_cast<char>(v & 0xFF);
  out[at + 1] = static_cast<char>(v >> 8);
}
void Patch32(std::string& out, std::size_t at, std::uint32_t v) {
  Patch16(out, at, static_cast<std::uint16_t>(v & 0xFFFF));
  Patch16(out, at + 2, static_cast<std::uint16_t>(v >> 16));
}

void Record(std::string& out, std::uint16_t id, std::string_view data) {
  Put16(out, id);
  Put16(out, static_cast<std::uint16_t>(data.size()));
  out.append(data);
}

// UTF-8 to UTF-16 units (invalid bytes become U+FFFD), at most kMaxStringUnits.
void ToUtf16(std::string_view text, std::vector<std::uint16_t>& units) {
  units.clear();
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const auto* end = p + text.size();
  while (p < end && units.size() < kMaxStringUnits) {
    std::uint32_t cp = *p;
    int extra = 0;
    if (cp >= 0xF0) {
      extra = 3;
      cp &= 0x07;
    } else if (cp >= 0xE0) {
      extra = 2;
      cp &= 0x0F;
    } else if (cp >= 0xC0) {
      extra = 1;
      cp &= 0x1F;
    } else if (cp >= 0x80) {
      cp = 0xFFFD;
    }
    ++p;
    for (int i = 0; i < extra; ++i) {
      if (p >= end || (*p & 0xC0) != 0x80) {
        cp = 0xFFFD;
        break;
      }
      cp = (cp << 6) | (*p++ & 0x3F);
    }
    if (cp >= 0x10000) {
      if (units.size() + 2 > kMaxStringUnits) break;
      cp -= 0x10000;
      units.push_back(static_cast<std::uint16_t>(0xD800 | (cp >> 10)));
      units.push_back(static_cast<std::uint16_t>(0xDC00 | (cp & 0x3FF)));
    } else {
      units.push_back(static_cast<std::uint16_t>(cp));
    }
  }
}

bool FitsEightBit(const std::vector<std::uint16_t>& units) {
  for (std::uint16_t u : units) {
    if (u > 0xFF) return false;
  }
  return true;
}

// A string with a one-byte length (sheet and font names).
void PutShortString(std::string& out, std::string_view text) {
  std::vector<std::uint16_t> units;
  ToUtf16(text, units);
  if (units.size() > 255) units.resize(255);
  Put8(out, static_cast<std::uint8_t>(units.size()));
  Put8(out, 1);  // UTF-16
  for (std::uint16_t u : units) Put16(out, u);
}

// Writes the SST and its CONTINUE records, respecting the rule that a string's header never
// splits and a continued string starts its next record with its flag byte.
class SstWriter {
 public:
  explicit SstWriter(std::string& out) : out_(out) {}

  void Begin(std::uint32_t total, std::uint32_t unique) {
    StartRecord(kSst);
    Put32(out_, total);
    Put32(out_, unique);
  }

  // Adds one string; remembers where it begins (stream offset, offset in its record).
  void Add(const std::vector<std::uint16_t>& units, std::uint32_t& at, std::uint16_t& in_record) {
    const bool wide = !FitsEightBit(units);
    const std::size_t unit_size = wide ? 2 : 1;
    if (Room() < 3 + (units.empty() ? 0 : unit_size)) StartRecord(kContinue);
    at = static_cast<std::uint32_t>(out_.size());
    in_record = static_cast<std::uint16_t>(out_.size() - record_start_);
    Put16(out_, static_cast<std::uint16_t>(units.size()));
    Put8(out_, wide ? 1 : 0);
    std::size_t done = 0;
    while (done < units.size()) {
      std::size_t n = std::min(units.size() - done, Room() / unit_size);
      if (n == 0) {
        StartRecord(kContinue);
        Put8(out_, wide ? 1 : 0);
        continue;
      }
      for (std::size_t i = done; i < done + n; ++i) {
        if (wide) {
          Put16(out_, units[i]);
        } else {
          Put8(out_, static_cast<std::uint8_t>(units[i]));
        }
      }
      done += n;
    }
  }

  void End() { FinishRecord(); }

 private:
  std::size_t Room() const { return kMaxRecordData - (out_.size() - record_start_ - 4); }
  void StartRecord(std::uint16_t id) {
    FinishRecord();
    record_start_ = out_.size();
    Put16(out_, id);
    Put16(out_, 0);
    open_ = true;
  }
  void FinishRecord() {
    if (!open_) return;
    Patch16(out_, record_start_ + 2, static_cast<std::uint16_t>(out_.size() - record_start_ - 4));
    open_ = false;
  }

  std::string& out_;
  std::size_t record_start_ = 0;
  bool open_ = false;
};

void PutBof(std::string& out, std::uint16_t kind) {
  std::string d;
  Put16(d, 0x0600);  // BIFF8
  Put16(d, kind);    // 0x0005 workbook globals, 0x0010 worksheet
  Put16(d, 0x0DBB);  // build
  Put16(d, 0x07CC);  // year
  Put32(d, 0);       // file history
  Put32(d, 0x0006);  // lowest BIFF version
  Record(out, kBof, d);
}

void PutXf(std::string& out, std::uint16_t format, bool style) {
  std::string d;
  Put16(d, 0);                               // font 0
  Put16(d, format);                          // number format index
  Put16(d, style ? 0xFFF5 : 0x0001);         // locked; style XF: parent 0xFFF; cell XF: parent 0
  Put8(d, 0x20);                             // general alignment, bottom
  Put8(d, 0);                                // rotation
  Put8(d, 0);                                // indent, shrink
  Put8(d, style || format == 0 ? 0 : 0x04);  // cell XF: own number format
  Put32(d, 0);                               // borders
  Put32(d, 0);                               // border colours
  Put16(d, 0x20C0);                          // pattern colours: automatic
  Record(out, kXf, d);
}

void PutGlobalsHead(std::string& out, const Workbook& book) {
  PutBof(out, 0x0005);
  {
    std::string d;
    Put16(d, 1200);  // UTF-16
    Record(out, kCodepage, d);
  }
  {
    std::string d;
    Put16(d, 0);       // x
    Put16(d, 0);       // y
    Put16(d, 0x3000);  // width
    Put16(d, 0x2000);  // height
    Put16(d, 0x0038);  // horizontal and vertical scroll bars, tabs
    Put16(d, 0);       // active sheet
    Put16(d, 0);       // first visible tab
    Put16(d, 1);       // selected tabs
    Put16(d, 0x0258);  // tab bar width ratio
    Record(out, kWindow1, d);
  }
  // Font records 0..3 all describe the standard font (index 4 does not exist in BIFF).
  for (int i = 0; i < 4; ++i) {
    std::string d;
    Put16(d, static_cast<std::uint16_t>(kStandardFontSize * 20));  // in twips
    Put16(d, 0);                                                   // no italic, strike-out
    Put16(d, 0x7FFF);                                              // automatic colour
    Put16(d, 400);                                                 // normal weight
    Put16(d, 0);                                                   // no super/subscript
    Put8(d, 0);                                                    // no underline
    Put8(d, 0);                                                    // family
    Put8(d, 0);                                                    // character set
    Put8(d, 0);
    PutShortString(d, book.StandardFont());
    Record(out, kFont, d);
  }
  // The date format (and its cell XF after the built-in ones) only where a sheet holds dates, so
  // other workbooks stay as they were.
  bool dates = false;
  for (int s = 1; s <= book.SheetCount(); ++s) dates = dates || book.GetSheet(s).HasDates();
  if (dates) {
    const std::string_view code = NumberFormatCode(NumberFormat::kDate);
    std::string d;
    Put16(d, kDateFormatIndex);
    Put16(d, static_cast<std::uint16_t>(code.size()));
    Put8(d, 0);  // 8-bit characters
    d += code;
    Record(out, kFormat, d);
  }
  for (int i = 0; i < kFirstCellXf; ++i) PutXf(out, 0, true);
  for (std::uint16_t f = 0; f <= 4; ++f) PutXf(out, f, false);  // built-in formats 0..4
  static_assert(static_cast<int>(NumberFormat::kDate) == 5);
  if (dates) PutXf(out, kDateFormatIndex, false);  // XF kFirstCellXf + 5
  {
    std::string d;
    Put16(d, 0x8000);  // built-in style of XF 0
    Put8(d, 0);        // "Normal"
    Put8(d, 0xFF);
    Record(out, kStyle, d);
  }
}

struct SheetInfo {
  std::size_t boundsheet_offset_at = 0;  // where BOUNDSHEET's stream offset is patched
};

bool CheckSize(const Sheet& sheet, std::string& error) {
  if (sheet.MaxRow() > kXlsMaxRows) {
    error = "sheet \"" + sheet.Name() + "\" has " + std::to_string(sheet.MaxRow()) +
            " rows; an .xls sheet holds at most 65,536 rows (save as .xlsx for more)";
    return false;
  }
  if (sheet.MaxColumn() > kXlsMaxColumns) {
    error = "sheet \"" + sheet.Name() + "\" has " + std::to_string(sheet.MaxColumn()) +
            " columns; an .xls sheet holds at most 256 columns (save as .xlsx for more)";
    return false;
  }
  return true;
}

// `next_text` walks the shared-string indexes of the text cells, in the order the cells are
// written.
void PutSheet(std::string& out, const Sheet& sheet, bool first, const std::uint32_t*& next_text) {
  PutBof(out, 0x0010);
  const std::vector<double> widths = ColumnWidths(sheet);
  for (std::size_t c = 0; c < widths.size(); ++c) {
    if (widths[c] <= 0) continue;
    std::string d;
    Put16(d, static_cast<std::uint16_t>(c));  // first and last column
    Put16(d, static_cast<std::uint16_t>(c));
    Put16(d, static_cast<std::uint16_t>(std::min(255.0, widths[c] + kColumnPadding) * 256));
    Put16(d, kFirstCellXf);
    Put16(d, 0);  // options
    Put16(d, 0);
    Record(out, kColInfo, d);
  }
  {
    std::string d;
    const bool empty = sheet.MaxRow() == 0;
    Put32(d, 0);
    Put32(d, empty ? 0 : static_cast<std::uint32_t>(sheet.MaxRow()));
    Put16(d, 0);
    Put16(d, empty ? 0 : static_cast<std::uint16_t>(sheet.MaxColumn()));
    Put16(d, 0);
    Record(out, kDimensions, d);
  }
  std::string d;
  for (int r = 1; r <= sheet.MaxRow(); ++r) {
    const int length = sheet.RowLength(r);
    for (int c = 1; c <= length; ++c) {
      const CellView cell = sheet.Get(r, c);
      if (cell.type == CellType::kEmpty || (cell.type == CellType::kText && cell.text.empty())) {
        continue;
      }
      d.clear();
      Put16(d, static_cast<std::uint16_t>(r - 1));
      Put16(d, static_cast<std::uint16_t>(c - 1));
      if (cell.type == CellType::kNumber) {
        Put16(d, static_cast<std::uint16_t>(kFirstCellXf + static_cast<int>(cell.format)));
        PutDouble(d, cell.number);
        Record(out, kNumber, d);
      } else {
        Put16(d, kFirstCellXf);
        Put32(d, *next_text++);
        Record(out, kLabelSst, d);
      }
    }
  }
  {
    std::string w;
    Put16(w, first ? 0x06B6 : 0x00B6);  // grid, headers, zeros, outline; first sheet selected
    Put16(w, 0);                        // top row
    Put16(w, 0);                        // left column
    Put32(w, 0x40);                     // grid colour: automatic
    Put16(w, 0);
    Put16(w, 0);
    Put32(w, 0);
    Record(out, kWindow2, w);
  }
  Record(out, kEof, {});
}

}  // namespace

bool BuildBiff8Stream(const Workbook& book, std::string& stream, std::string& error) {
  for (int s = 1; s <= book.SheetCount(); ++s) {
    if (!CheckSize(book.GetSheet(s), error)) return false;
  }
  stream.clear();
  PutGlobalsHead(stream, book);

  std::vector<std::size_t> offset_at;
  for (int s = 1; s <= book.SheetCount(); ++s) {
    std::string d;
    Put32(d, 0);  // patched below
    Put16(d, 0);  // visible worksheet
    PutShortString(d, book.GetSheet(s).Name());
    offset_at.push_back(stream.size() + 4);
    Record(stream, kBoundSheet, d);
  }

  // Shared strings: each distinct text once, in order of first use; the index of every text cell
  // is kept in cell order for the sheets written below.
  std::unordered_map<std::string_view, std::uint32_t> sst_index;
  std::vector<std::string_view> unique;
  std::vector<std::uint32_t> text_cells;
  for (int s = 1; s <= book.SheetCount(); ++s) {
    const Sheet& sheet = book.GetSheet(s);
    for (int r = 1; r <= sheet.MaxRow(); ++r) {
      const int length = sheet.RowLength(r);
      for (int c = 1; c <= length; ++c) {
        const CellView cell = sheet.Get(r, c);
        if (cell.type != CellType::kText || cell.text.empty()) continue;
        const auto [it, added] =
            sst_index.emplace(cell.text, static_cast<std::uint32_t>(unique.size()));
        if (added) unique.push_back(cell.text);
        text_cells.push_back(it->second);
      }
    }
  }
  const std::uint32_t per_bucket =
      std::max<std::uint32_t>(8, static_cast<std::uint32_t>((unique.size() + 127) / 128));
  std::string ext;
  Put16(ext, static_cast<std::uint16_t>(per_bucket));
  {
    SstWriter sst(stream);
    sst.Begin(static_cast<std::uint32_t>(text_cells.size()),
              static_cast<std::uint32_t>(unique.size()));
    std::vector<std::uint16_t> units;
    for (std::size_t i = 0; i < unique.size(); ++i) {
      ToUtf16(unique[i], units);
      std::uint32_t at = 0;
      std::uint16_t in_record = 0;
      sst.Add(units, at, in_record);
      if (i % per_bucket == 0) {
        Put32(ext, at);
        Put16(ext, in_record);
        Put16(ext, 0);
      }
    }
    sst.End();
  }
  Record(stream, kExtSst, ext);
  Record(stream, kEof, {});

  const std::uint32_t* next_text = text_cells.data();
  for (int s = 1; s <= book.SheetCount(); ++s) {
    Patch32(stream, offset_at[s - 1], static_cast<std::uint32_t>(stream.size()));
    PutSheet(stream, book.GetSheet(s), s == 1, next_text);
  }
  // A stream under 4096 bytes would live in the OLE mini-stream, which some readers mishandle.
  if (stream.size() < 4096) stream.resize(4096, '\0');
  return true;
}

bool WriteXls(const Workbook& book, const std::string& path, std::string& error,
              const SaveTick& tick) {
  std::string stream;
  std::string reason;
  if (!BuildBiff8Stream(book, stream, reason)) {
    error = path + ": " + reason;
    return false;
  }
  // An .xls sheet is small enough to build in one go: the progress is told once it is built.
  if (tick && !tick(RowsHeld(book), RowsHeld(book))) {
    error = "Saving " + path + " was stopped; the file there is kept as it was";
    return false;
  }
  AtomicFile temp;
  if (!temp.Open(path)) {
    error = temp.Error();
    return false;
  }
  std::FILE* file = std::fopen(temp.TempPath().c_str(), "wb");
  if (!file) {
    error = path + ": the temporary file could not be opened";
    return false;
  }
  GsfOutput* out = gsf_output_stdio_new_FILE(temp.TempPath().c_str(), file, FALSE);
  GsfOutfile* ole = out ? gsf_outfile_msole_new(out) : nullptr;
  GsfOutput* child = ole ? gsf_outfile_new_child(ole, "Workbook", FALSE) : nullptr;
  // The first failure's reason, taken from the output that failed while errno still tells it.
  std::string why;
  auto failed = [&why](GsfOutput* o) {
    if (why.empty()) {
      const GError* e = o ? gsf_output_error(o) : nullptr;
      why = e && e->message && *e->message ? e->message : LastErrorText();
    }
    return false;
  };
  bool ok = child != nullptr || failed(nullptr);
  ok = ok &&
       (gsf_output_write(child, stream.size(), reinterpret_cast<const guint8*>(stream.data())) ||
        failed(child));
  if (child) {
    ok = (gsf_output_close(child) || failed(child)) && ok;
    g_object_unref(child);
  }
  if (ole) {
    ok = (gsf_output_close(GSF_OUTPUT(ole)) || failed(GSF_OUTPUT(ole))) && ok;
    g_object_unref(ole);
  }
  if (out) {
    // Closing the compound file closes its sink too; close it here only if it is still open.
    if (!gsf_output_is_closed(out)) ok = (gsf_output_close(out) || failed(out)) && ok;
    g_object_unref(out);
  } else {
    std::fclose(file);
  }
  if (!ok) {
    error = "Cannot write " + path + ": " + why;
    return false;
  }
  if (temp.Commit()) return true;
  error = temp.Error();
  return false;
}

}  // namespace kroveld
