// UTF-8 decoding, printed widths and column cutting of report lines.
#include "util/utf8_text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "util/files.h"
#include "util/strings.h"

namespace kroveld {

namespace {

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// East Asian Wide and Fullwidth characters: the CJK, Hangul, kana and fullwidth-form blocks and
// the emoji that terminals and printers draw two columns wide.
constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},
    {0x23F0, 0x23F0},   {0x23F3, 0x23F3},   {0x25FD, 0x25FE},   {0x2614, 0x2615},
    {0x2648, 0x2653},   {0x267F, 0x267F},   {0x2693, 0x2693},   {0x26A1, 0x26A1},
    {0x26AA, 0x26AB},   {0x26BD, 0x26BE},   {0x26C4, 0x26C5},   {0x26CE, 0x26CE},
    {0x26D4, 0x26D4},   {0x26EA, 0x26EA},   {0x26F2, 0x26F3},   {0x26F5, 0x26F5},
    {0x26FA, 0x26FA},   {0x26FD, 0x26FD},   {0x2705, 0x2705},   {0x270A, 0x270B},
    {0x2728, 0x2728},   {0x274C, 0x274C},   {0x274E, 0x274E},   {0x2753, 0x2755},
    {0x2757, 0x2757},   {0x2795, 0x2797},   {0x27B0, 0x27B0},   {0x27BF, 0x27BF},
    {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},   {0x2E80, 0x303E},
    {0x3041, 0x3096},   {0x309B, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF},   {0xA960, 0xA97F},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},
    {0xFE10, 0xFE19},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},
    {0x16FE0, 0x16FE4}, {0x17000, 0x18CFF}, {0x1B000, 0x1B2FF}, {0x1F004, 0x1F004},
    {0x1F0CF, 0x1F0CF}, {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F200, 0x1F251},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F7E0, 0x1F7EB}, {0x1F90C, 0x1F9FF},
    {0x1FA70, 0x1FAFF}, {0x20000, 0x2FFFD}, {0x30000, 0x3FFFD},
};

// Characters that print on top of the one before them, or not at all: combining marks of the
// common scripts, Hangul vowel and final jamo, zero-width spaces and joiners, variation
// selectors, the byte order mark.
constexpr Range kZeroWidth[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x05BF, 0x05BF},   {0x05C1, 0x05C2},
    {0x05C4, 0x05C5}, {0x05C7, 0x05C7}, {0x0610, 0x061A}, {0x064B, 0x065F},   {0x0670, 0x0670},
    {0x06D6, 0x06DC}, {0x06DF, 0x06E4}, {0x06E7, 0x06E8}, {0x06EA, 0x06ED},   {0x0E31, 0x0E31},
    {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x1160, 0x11FF}, {0x1AB0, 0x1AFF},   {0x1DC0, 0x1DFF},
    {0x200B, 0x200F}, {0x2060, 0x2064}, {0x20D0, 0x20FF}, {0x302A, 0x302D},   {0x3099, 0x309A},
    {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF},
};

template <std::size_t N>
bool InRanges(const Range (&ranges)[N], std::uint32_t cp) {
  const Range* end = ranges + N;
  const Range* r = std::upper_bound(ranges, end, cp,
                                    [](std::uint32_t c, const Range& x) { return c < x.first; });
  return r != ranges && cp <= (r - 1)->last;
}

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD

}  // namespace

bool ParseInputEncoding(std::string_view text, InputEncoding& encoding) {
  const std::string name = LowerAscii(Trim(text));
  if (name.empty()) {
    encoding = InputEncoding::kUnset;
  } else if (name == "auto") {
    encoding = InputEncoding::kAuto;
  } else if (name == "utf-8") {
    encoding = InputEncoding::kUtf8;
  } else if (name == "cp1252") {
    encoding = InputEncoding::kCp1252;
  } else if (name == "latin1") {
    encoding = InputEncoding::kLatin1;
  } else {
    return false;
  }
  return true;
}

bool IsAscii(std::string_view text) {
  const char* p = text.data();
  std::size_t n = text.size();
  // Eight bytes at a time: a report line is almost always ASCII and looked at whole.
  std::uint64_t any = 0;
  for (; n >= 8; p += 8, n -= 8) {
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    any |= word;
  }
  for (; n > 0; ++p, --n) any |= static_cast<unsigned char>(*p);
  return (any & 0x8080808080808080ULL) == 0;
}

Utf8Char DecodeUtf8(const char* p, const char* end) {
  const auto* s = reinterpret_cast<const unsigned char*>(p);
  const unsigned char c = s[0];
  if (c < 0x80) return {c, 1, true};
  const Utf8Char bad{0xFFFD, 1, false};
  int extra;
  std::uint32_t cp;
  if (c >= 0xC2 && c <= 0xDF) {
    extra = 1;
    cp = c & 0x1Fu;
  } else if (c >= 0xE0 && c <= 0xEF) {
    extra = 2;
    cp = c & 0x0Fu;
  } else if (c >= 0xF0 && c <= 0xF4) {
    extra = 3;
    cp = c & 0x07u;
  } else {
    return bad;
  }
  if (end - p <= extra) return bad;
  for (int i = 1; i <= extra; ++i) {
    if ((s[i] & 0xC0) != 0x80) return bad;
    cp = (cp << 6) | (s[i] & 0x3Fu);
  }
  // Overlong forms, surrogates and code points past U+10FFFF are not UTF-8.
  if ((extra == 2 && cp < 0x800) || (extra == 3 && cp < 0x10000) || cp > 0x10FFFF ||
      (cp >= 0xD800 && cp <= 0xDFFF)) {
    return bad;
  }
  return {cp, extra + 1, true};
}

bool IsValidUtf8(std::string_view text) {
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    if (static_cast<unsigned char>(*p) < 0x80) {
      ++p;
      continue;
    }
    const Utf8Char ch = DecodeUtf8(p, end);
    if (!ch.valid) return false;
    p += ch.length;
  }
  return true;
}

void AppendCodePoint(std::uint32_t cp, std::string& out) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

int PrintedColumns(std::uint32_t cp) {
  if (cp < 0x300) return 1;
  if (InRanges(kZeroWidth, cp)) return 0;
  if (cp >= 0x1100 && InRanges(kWide, cp)) return 2;
  return 1;
}

std::size_t RepairUtf8(std::string_view text, std::string& out) {
  out.clear();
  out.reserve(text.size() + 8);
  std::size_t replaced = 0;
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    const Utf8Char ch = DecodeUtf8(p, end);
    if (ch.valid) {
      out.append(p, static_cast<std::size_t>(ch.length));
    } else {
      out += kReplacement;
      ++replaced;
    }
    p += ch.length;
  }
  return replaced;
}

void ExpandTabsByColumns(std::string_view text, int tabSize, std::string& out) {
  out.clear();
  if (text.empty() || tabSize < 1) return;
  if (std::memchr(text.data(), '\t', text.size()) == nullptr) {
    out.assign(text);
    return;
  }
  out.reserve(text.size() + 16);
  long long stop = 1;
  long long columns = 0;
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    if (*p != '\t') {
      const Utf8Char ch = DecodeUtf8(p, end);
      out.append(p, static_cast<std::size_t>(ch.length));
      columns += PrintedColumns(ch.cp);
      p += ch.length;
      continue;
    }
    ++p;
    stop += tabSize;
    while (columns >= stop) stop += tabSize;
    const long long blanks = stop - columns - 1;
    if (blanks > 0) {
      out.append(static_cast<std::size_t>(blanks), ' ');
      columns += blanks;
    }
  }
}

std::string ColumnPicture(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    const Utf8Char ch = DecodeUtf8(p, end);
    if (ch.cp < 0x80 && ch.valid) {
      out += static_cast<char>(ch.cp);
    } else {
      out.append(static_cast<std::size_t>(PrintedColumns(ch.cp)), '#');
    }
    p += ch.length;
  }
  return out;
}

void LineColumns::Build(std::string_view line) {
  starts_.clear();
  const char* const begin = line.data();
  const char* p = begin;
  const char* const end = p + line.size();
  long long column = 0;  // columns taken by the characters before p
  while (p < end) {
    const Utf8Char ch = DecodeUtf8(p, end);
    const int width = PrintedColumns(ch.cp);
    if (width > 0 || starts_.empty()) {
      // This character starts in column `column + 1`: every column up to it not yet given a
      // start begins here. (A mark before any character belongs to column 1.)
      starts_.resize(static_cast<std::size_t>(column + 1), static_cast<std::uint32_t>(p - begin));
      column += width;
    }
    p += ch.length;
  }
  starts_.resize(static_cast<std::size_t>(column + 1), static_cast<std::uint32_t>(line.size()));
  starts_.back() = static_cast<std::uint32_t>(line.size());
}

std::string_view LineColumns::Cut(std::string_view line, long long first, long long width) const {
  const long long columns = Columns();
  long long from = first - 1;
  long long to = from + width;
  if (from < 0) from = 0;
  if (to > columns) to = columns;
  if (from >= to) return {};
  const std::uint32_t a = starts_[static_cast<std::size_t>(from)];
  const std::uint32_t b = starts_[static_cast<std::size_t>(to)];
  return line.substr(a, b - a);
}

FileText ClassifyFileText(const std::string& path) {
  std::FILE* file = std::fopen(NativePath(path).c_str(), "rb");
  if (file == nullptr) return FileText::kUnreadable;
  std::vector<char> buffer(std::size_t{1} << 20);
  std::size_t carried = 0;  // bytes of a sequence cut by the end of the previous block
  bool beyondAscii = false;
  FileText result = FileText::kAscii;
  for (;;) {
    const std::size_t got = std::fread(buffer.data() + carried, 1, buffer.size() - carried, file);
    const bool last = got < buffer.size() - carried;
    const char* p = buffer.data();
    const char* const end = p + carried + got;
    while (p < end) {
      // Whole words of ASCII are passed over first.
      if (end - p >= 8) {
        std::uint64_t word;
        std::memcpy(&word, p, 8);
        if ((word & 0x8080808080808080ULL) == 0) {
          p += 8;
          continue;
        }
      }
      if (static_cast<unsigned char>(*p) < 0x80) {
        ++p;
        continue;
      }
      // A sequence that may be cut by the end of the block is carried to the next one.
      if (!last && end - p < 4) break;
      const Utf8Char ch = DecodeUtf8(p, end);
      if (!ch.valid) {
        result = FileText::kEightBit;
        break;
      }
      beyondAscii = true;
      p += ch.length;
    }
    if (result == FileText::kEightBit || std::ferror(file)) break;
    carried = static_cast<std::size_t>(end - p);
    if (last) break;
    std::memmove(buffer.data(), p, carried);
  }
  const bool failed = std::ferror(file) != 0;
  std::fclose(file);
  if (failed) return FileText::kUnreadable;
  if (result == FileText::kEightBit) return result;
  return beyondAscii ? FileText::kUtf8 : FileText::kAscii;
}

}  // namespace kroveld
