// .xls input: the workbook stream is taken out of the compound file by our own reader
// (compound_file.h) and its BIFF8 records are read here. Only the records that carry sheets,
// cells, number formats and column widths are looked at; every read is bounds-checked, so a
// broken or hostile file is refused or read partly, never read outside its bytes.
#include "jobs/workbook/xls_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <unordered_map>
#include <vector>

#include "jobs/workbook/column_widths.h"
#include "jobs/workbook/compound_file.h"
#include "jobs/workbook/text_encoding.h"
#include "util/files.h"

namespace kroveld {
namespace {

// A workbook stream larger than this is not an output this program could have written or kept.
constexpr std::uint64_t kMaxStreamBytes = std::uint64_t{1} << 30;

enum : std::uint16_t {
  kFormula = 0x0006,
  kEof = 0x000A,
  kDateMode = 0x0022,
  kContinue = 0x003C,
  kColInfo = 0x007D,
  kBoundSheet = 0x0085,
  kMulRk = 0x00BD,
  kSst = 0x00FC,
  kLabelSst = 0x00FD,
  kXf = 0x00E0,
  kNumber = 0x0203,
  kLabel = 0x0204,
  kString = 0x0207,
  kRk = 0x027E,
  kFormat = 0x041E,
  kBof = 0x0809,
};

std::uint16_t Get16(std::string_view d, std::size_t at) {
  return at + 2 > d.size() ? 0
                           : static_cast<std::uint16_t>(static_cast<unsigned char>(d[at]) |
                                                        static_cast<unsigned char>(d[at + 1]) << 8);
}
std::uint32_t Get32(std::string_view d, std::size_t at) {
  return Get16(d, at) | static_cast<std::uint32_t>(Get16(d, at + 2)) << 16;
}
double GetDouble(std::string_view d, std::size_t at) {
  const std::uint64_t bits = Get32(d, at) | static_cast<std::uint64_t>(Get32(d, at + 4)) << 32;
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

// An RK value: a 30-bit integer or the high 30 bits of a double, optionally divided by 100.
double RkValue(std::uint32_t rk) {
  double v;
  if (rk & 2) {
    v = static_cast<double>(static_cast<std::int32_t>(rk) >> 2);
  } else {
    const std::uint64_t bits = static_cast<std::uint64_t>(rk & 0xFFFFFFFCu) << 32;
    std::memcpy(&v, &bits, sizeof v);
  }
  return (rk & 1) ? v / 100 : v;
}

struct RecordView {
  std::uint16_t id = 0;
  std::string_view data;
};

// Walks the records of a stream from an offset; stops at the end of the bytes.
class Records {
 public:
  Records(std::string_view all, std::size_t at) : all_(all), at_(at) {}
  bool Next(RecordView& r) {
    if (at_ + 4 > all_.size()) return false;
    r.id = Get16(all_, at_);
    const std::size_t length = Get16(all_, at_ + 2);
    r.data = all_.substr(at_ + 4, std::min(length, all_.size() - at_ - 4));
    at_ += 4 + length;
    return true;
  }
  // The record that follows, without moving (id 0 at the end).
  std::uint16_t PeekId() const { return at_ + 4 <= all_.size() ? Get16(all_, at_) : 0; }

 private:
  std::string_view all_;
  std::size_t at_;
};

// Reads a BIFF8 string (XLUnicodeString and the strings of the shared-string table) from a record
// and the CONTINUE records that follow it. At a record boundary inside the characters, the next
// record starts with a fresh compression flag.
class StringReader {
 public:
  explicit StringReader(std::vector<std::string_view> parts) : parts_(std::move(parts)) {}

  bool AtEnd() const { return part_ >= parts_.size(); }

  // A string with a two-byte character count (`short_count` false) or a one-byte one; false
  // when the bytes end first.
  bool Read(std::string& out, bool short_count = false) {
    out.clear();
    std::uint32_t chars = 0;
    if (short_count) {
      std::uint8_t c;
      if (!Byte(c)) return false;
      chars = c;
    } else {
      std::uint16_t c;
      if (!Word(c)) return false;
      chars = c;
    }
    std::uint8_t flags;
    if (!Byte(flags)) return false;
    std::uint16_t runs = 0;
    std::uint32_t ext = 0;
    if ((flags & 0x08) && !Word(runs)) return false;
    if ((flags & 0x04) && !DWord(ext)) return false;
    bool wide = flags & 1;
    std::uint32_t pending_high = 0;
    for (std::uint32_t i = 0; i < chars; ++i) {
      if (!InPart()) {
        // The characters go on in the next record, after a new compression flag.
        if (++part_ >= parts_.size()) return false;
        pos_ = 0;
        std::uint8_t f;
        if (!Byte(f)) return false;
        wide = f & 1;
      }
      std::uint32_t unit;
      if (wide) {
        std::uint16_t u;
        if (!Word(u)) return false;
        unit = u;
      } else {
        std::uint8_t b;
        if (!Byte(b)) return false;
        unit = b;
      }
      if (unit >= 0xD800 && unit < 0xDC00) {
        if (pending_high) AppendCodePoint(0xFFFD, out);
        pending_high = unit;
        continue;
      }
      const bool low = unit >= 0xDC00 && unit < 0xE000;
      if (pending_high && !low) AppendCodePoint(0xFFFD, out);  // a high surrogate alone
      if (low) {
        unit = pending_high ? 0x10000 + ((pending_high - 0xD800) << 10) + (unit - 0xDC00) : 0xFFFD;
      }
      pending_high = 0;
      AppendCodePoint(unit, out);
    }
    if (pending_high) AppendCodePoint(0xFFFD, out);
    return Skip(4u * runs + ext);
  }

 private:
  bool InPart() const { return part_ < parts_.size() && pos_ < parts_[part_].size(); }
  // Moves to the next record when the current one is used up (between strings and fields).
  bool Ensure() {
    while (part_ < parts_.size() && pos_ >= parts_[part_].size()) {
      ++part_;
      pos_ = 0;
    }
    return part_ < parts_.size();
  }
  bool Byte(std::uint8_t& v) {
    if (!Ensure()) return false;
    v = static_cast<std::uint8_t>(parts_[part_][pos_++]);
    return true;
  }
  bool Word(std::uint16_t& v) {
    std::uint8_t lo, hi;
    if (!Byte(lo) || !Byte(hi)) return false;
    v = static_cast<std::uint16_t>(lo | hi << 8);
    return true;
  }
  bool DWord(std::uint32_t& v) {
    std::uint16_t lo, hi;
    if (!Word(lo) || !Word(hi)) return false;
    v = lo | static_cast<std::uint32_t>(hi) << 16;
    return true;
  }
  bool Skip(std::uint64_t n) {
    while (n > 0) {
      if (!Ensure()) return false;
      const std::uint64_t here = std::min<std::uint64_t>(n, parts_[part_].size() - pos_);
      pos_ += here;
      n -= here;
    }
    return true;
  }

  std::vector<std::string_view> parts_;
  std::size_t part_ = 0;
  std::size_t pos_ = 0;
};

// A record's data and the data of the CONTINUE records right after it.
std::vector<std::string_view> WithContinues(const RecordView& first, Records& records) {
  std::vector<std::string_view> parts{first.data};
  RecordView r;
  while (records.PeekId() == kContinue && records.Next(r)) parts.push_back(r.data);
  return parts;
}

// The workbook stream of the compound file ("Workbook", or "Book" in older files); empty when
// there is none or it cannot be read.
std::string ReadWorkbookStream(const std::string& native) {
  std::string stream;
  ReadCompoundFileStream(native, {"Workbook", "Book"}, stream, kMaxStreamBytes);
  return stream;
}

// Whether a number format shows a date or a time: the built-in date and time formats, or a code
// with a date or time letter outside quotes and brackets.
bool IsDateCode(std::string_view code) {
  bool quoted = false;
  bool bracket = false;
  for (std::size_t i = 0; i < code.size(); ++i) {
    const char c = code[i];
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '\\' || c == '_' || c == '*') {
      ++i;
      continue;
    }
    if (c == '[') bracket = true;
    if (c == ']') bracket = false;
    if (bracket) continue;
    switch (c) {
      case 'd':
      case 'D':
      case 'm':
      case 'M':
      case 'y':
      case 'Y':
      case 'h':
      case 'H':
      case 's':
      case 'S':
        return true;
      default:
        break;
    }
  }
  return false;
}
bool IsBuiltInDate(std::uint16_t id) {
  return (id >= 14 && id <= 22) || (id >= 45 && id <= 47);
}

// How a number cell of an XF is kept: with one of the model's formats, or as a date or time text.
struct XfKind {
  NumberFormat format = NumberFormat::kGeneral;
  bool date = false;
};

// A serial date as text: "YYYY-MM-DD", "YYYY-MM-DD HH:MM:SS", or "HH:MM:SS" below one day.
std::string DateText(double serial, bool base1904) {
  const double whole = std::floor(serial);
  int seconds = static_cast<int>(std::lround((serial - whole) * 86400.0));
  long days = static_cast<long>(whole);
  if (seconds >= 86400) {
    seconds -= 86400;
    ++days;
  }
  char time[16];
  std::snprintf(time, sizeof time, "%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60,
                seconds % 60);
  if (days == 0 && !base1904) return time;
  // Days since 1970-01-01; the 1900 system counts a 29 February 1900 that never was.
  long z = base1904 ? days - 24107 : days - 25569 + (days < 60 ? 1 : 0);
  z += 719468;  // civil-from-days (proleptic Gregorian)
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const long doe = z - era * 146097;
  const long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const long mp = (5 * doy + 2) / 153;
  const long d = doy - (153 * mp + 2) / 5 + 1;
  const long m = mp < 10 ? mp + 3 : mp - 9;
  const long y = yoe + era * 400 + (m <= 2 ? 1 : 0);
  char date[96];
  if (seconds == 0) {
    std::snprintf(date, sizeof date, "%04ld-%02ld-%02ld", y, m, d);
  } else {
    std::snprintf(date, sizeof date, "%04ld-%02ld-%02ld %s", y, m, d, time);
  }
  return date;
}

struct Globals {
  std::vector<std::string> shared;
  std::vector<XfKind> xfs;
  bool base1904 = false;
  struct SheetEntry {
    std::uint32_t offset;
    std::string name;
  };
  std::vector<SheetEntry> sheets;
};

bool ReadGlobals(std::string_view all, Globals& g) {
  std::unordered_map<std::uint16_t, XfKind> custom;
  Records records(all, 0);
  RecordView r;
  if (!records.Next(r) || r.id != kBof || Get16(r.data, 0) != 0x0600) return false;
  while (records.Next(r)) {
    if (r.id == kEof) return true;
    switch (r.id) {
      case kFormat: {
        StringReader s({r.data.substr(std::min<std::size_t>(2, r.data.size()))});
        std::string code;
        s.Read(code);
        custom[Get16(r.data, 0)] = {NumberFormatFromCode(code), IsDateCode(code)};
        break;
      }
      case kXf: {
        const std::uint16_t format = Get16(r.data, 2);
        const auto it = custom.find(format);
        g.xfs.push_back(it != custom.end()
                            ? it->second
                            : XfKind{BuiltInNumberFormat(format), IsBuiltInDate(format)});
        break;
      }
      case kDateMode:
        g.base1904 = Get16(r.data, 0) == 1;
        break;
      case kBoundSheet:
        if (r.data.size() > 6 && r.data[5] == 0) {  // a worksheet, not a chart or macro sheet
          StringReader s({r.data.substr(6)});
          std::string name;
          s.Read(name, true);
          g.sheets.push_back({Get32(r.data, 0), std::move(name)});
        }
        break;
      case kSst: {
        const std::vector<std::string_view> parts = WithContinues(r, records);
        const std::uint32_t unique = Get32(r.data, 4);
        std::vector<std::string_view> strings = parts;
        strings[0] = strings[0].substr(std::min<std::size_t>(8, strings[0].size()));
        StringReader s(std::move(strings));
        // The count comes from the file: grow as strings are really read, never reserve it.
        std::string text;
        for (std::uint32_t i = 0; i < unique && s.Read(text); ++i) g.shared.push_back(text);
        break;
      }
      default:
        break;
    }
  }
  return false;
}

// Reads one worksheet's cells and column widths from its BOF at `offset`.
void ReadSheet(std::string_view all, std::uint32_t offset, const Globals& g, Sheet& sheet) {
  Records records(all, offset);
  RecordView r;
  if (!records.Next(r) || r.id != kBof) return;
  auto number = [&](std::uint16_t row, std::uint16_t column, std::uint16_t xf, double v) {
    const XfKind kind = xf < g.xfs.size() ? g.xfs[xf] : XfKind{};
    if (kind.format == NumberFormat::kDate && !g.base1904) {
      sheet.SetNumber(row + 1, column + 1, v, kind.format);  // our own date format: kept a date
    } else if (kind.date) {
      sheet.SetText(row + 1, column + 1, DateText(v, g.base1904));
    } else {
      sheet.SetNumber(row + 1, column + 1, v, kind.format);
    }
  };
  auto text = [&](std::uint16_t row, std::uint16_t column, const std::string& value) {
    if (!value.empty()) sheet.SetText(row + 1, column + 1, value);
  };
  std::string value;
  while (records.Next(r)) {
    const std::string_view d = r.data;
    const std::uint16_t row = Get16(d, 0);
    const std::uint16_t column = Get16(d, 2);
    switch (r.id) {
      case kEof:
        return;
      case kNumber:
        if (d.size() >= 14) number(row, column, Get16(d, 4), GetDouble(d, 6));
        break;
      case kRk:
        if (d.size() >= 10) number(row, column, Get16(d, 4), RkValue(Get32(d, 6)));
        break;
      case kMulRk:
        // (xf, rk) pairs from the first column on; the last two bytes give the last column.
        for (std::size_t at = 4, c = column; d.size() >= 6 && at + 6 <= d.size() - 2;
             at += 6, ++c) {
          number(row, static_cast<std::uint16_t>(c), Get16(d, at), RkValue(Get32(d, at + 2)));
        }
        break;
      case kLabelSst: {
        const std::uint32_t index = Get32(d, 6);
        if (d.size() >= 10 && index < g.shared.size()) text(row, column, g.shared[index]);
        break;
      }
      case kLabel: {
        StringReader s({d.substr(std::min<std::size_t>(6, d.size()))});
        if (s.Read(value)) text(row, column, value);
        break;
      }
      case kFormula:
        // The result the file keeps: a number, or a text in the STRING record that follows.
        if (d.size() >= 14) {
          if (Get16(d, 12) != 0xFFFF) {
            number(row, column, Get16(d, 4), GetDouble(d, 6));
          } else if (d[6] == 0 && records.PeekId() == kString && records.Next(r)) {
            StringReader s(WithContinues(r, records));
            if (s.Read(value)) text(row, column, value);
          }
        }
        break;
      case kColInfo: {
        const double width = Get16(d, 4) / 256.0 - kColumnPadding;
        for (int c = Get16(d, 0); c <= Get16(d, 2) && c < kMaxSheetColumns && d.size() >= 6; ++c) {
          sheet.SetKeptWidth(c + 1, width);
        }
        break;
      }
      default:
        break;
    }
  }
}

}  // namespace

bool ReadXls(const std::string& path, Workbook& book, std::string& error) {
  const std::string stream = ReadWorkbookStream(NativePath(path));
  if (stream.empty()) {
    error = path + ": not a readable .xls file (no workbook stream)";
    return false;
  }
  Globals globals;
  if (!ReadGlobals(stream, globals)) {
    error = path + ": not a readable .xls file (not an Excel 97-2003 workbook)";
    return false;
  }
  if (globals.sheets.empty()) {
    error = path + ": the workbook has no sheets";
    return false;
  }
  Workbook result;
  result.RemoveAllSheets();
  for (const Globals::SheetEntry& entry : globals.sheets) {
    result.AddSheet(MakeSheetName(entry.name, result, result.SheetCount() + 1));
    Sheet& sheet = result.GetSheet(result.SheetCount());
    sheet.LimitSparseness(true);
    ReadSheet(stream, entry.offset, globals, sheet);
    sheet.LimitSparseness(false);
    if (sheet.Overflowed()) {
      error = path + ": sheet \"" + sheet.Name() + "\" holds cells too far apart to be read back";
      return false;
    }
  }
  book = std::move(result);
  return true;
}

}  // namespace kroveld
