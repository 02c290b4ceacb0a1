// Cutting CSV rows straight from the line as read. A line is looked over once, sixteen bytes at a
// time, for the bytes that decide how its fields are written (commas, double quotes, equal signs,
// tabs, bytes beyond ASCII); each field is then a copy, enclosed in quotes when its part of the
// line holds one.
#include "engine/fast_csv_rows.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "engine/context.h"
#include "engine/row_rules.h"
#include "util/byte_scan.h"
#include "util/utf8_text.h"

namespace kroveld {

// Bit i of a mask stands for byte i of the line.
struct FastCsvRows::LineMarks {
  static constexpr std::size_t kMaxBytes = 1024;  // longer lines are looked at field by field
  static constexpr std::size_t kWords = kMaxBytes / 64;
  std::uint64_t special[kWords];  // a comma or a double quote: the field goes in quotes
  std::uint64_t quote[kWords];    // a double quote: doubled in the field
  bool equalSign = false;         // the line holds an "=" somewhere
  bool tab = false;               // the line holds a tab somewhere
  bool beyondAscii = false;       // the line holds a byte above 127 somewhere

  // Marks the `n` bytes at p; n at most kMaxBytes.
  void Mark(const char* p, std::size_t n) {
    unsigned others = 0;  // equal signs, tabs, bytes above 127
    std::size_t i = 0;
    for (; i + 16 <= n; i += 16) others |= Chunk(p + i, i, 0);
    if (i < n) {
      if (n >= 16) {
        // The last sixteen bytes of the line, of which those before i are marked already.
        others |= Chunk(p + n - 16, i, 16 - (n - i));
      } else {
        others |= Bytes(p, n);
      }
    }
    equalSign = (others & 1u) != 0;
    tab = (others & 2u) != 0;
    beyondAscii = (others & 4u) != 0;
  }

  // Whether any bit of `mask` in [from, to) is set; from < to <= the marked length.
  static bool Any(const std::uint64_t* mask, std::size_t from, std::size_t to) {
    const std::size_t first = from / 64;
    const std::size_t last = (to - 1) / 64;
    const std::uint64_t low = ~std::uint64_t{0} << (from % 64);
    const std::uint64_t high = ~std::uint64_t{0} >> (63 - (to - 1) % 64);
    if (first == last) return (mask[first] & low & high) != 0;
    if ((mask[first] & low) != 0) return true;
    for (std::size_t w = first + 1; w < last; ++w) {
      if (mask[w] != 0) return true;
    }
    return (mask[last] & high) != 0;
  }

 private:
  // Marks the sixteen bytes at c but the first `skip` of them as bytes at, at + 1, ... of the
  // line; returns bit 0 for an equal sign among them, bit 1 for a tab, bit 2 for a byte above 127.
  [[gnu::always_inline]] unsigned Chunk(const char* c, std::size_t at, unsigned skip) {
    unsigned commas = 0, quotes = 0, equals = 0, tabs = 0, high = 0;
#if defined(__SSE2__)
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(c));
    const auto bits = [&v](char b) {
      return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(b))));
    };
    commas = bits(',');
    quotes = bits('"');
    equals = bits('=');
    tabs = bits('\t');
    high = static_cast<unsigned>(_mm_movemask_epi8(v));
#else
    for (unsigned k = 0; k < 16; ++k) {
      commas |= (c[k] == ',' ? 1u : 0u) << k;
      quotes |= (c[k] == '"' ? 1u : 0u) << k;
      equals |= (c[k] == '=' ? 1u : 0u) << k;
      tabs |= (c[k] == '\t' ? 1u : 0u) << k;
      high |= (static_cast<unsigned char>(c[k]) > 127 ? 1u : 0u) << k;
    }
#endif
    Place(commas >> skip, quotes >> skip, at);
    return ((equals >> skip) != 0 ? 1u : 0u) | ((tabs >> skip) != 0 ? 2u : 0u) |
           ((high >> skip) != 0 ? 4u : 0u);
  }

  // Marks a line shorter than sixteen bytes.
  unsigned Bytes(const char* c, std::size_t n) {
    unsigned commas = 0, quotes = 0, others = 0;
    for (std::size_t k = 0; k < n; ++k) {
      commas |= (c[k] == ',' ? 1u : 0u) << k;
      quotes |= (c[k] == '"' ? 1u : 0u) << k;
      others |= (c[k] == '=' ? 1u : 0u) | (c[k] == '\t' ? 2u : 0u) |
                (static_cast<unsigned char>(c[k]) > 127 ? 4u : 0u);
    }
    Place(commas, quotes, 0);
    return others;
  }

  // Puts the marks of up to sixteen bytes from byte `at` on (a multiple of sixteen) in place.
  [[gnu::always_inline]] void Place(std::uint64_t commas, std::uint64_t quotes, std::size_t at) {
    const std::size_t word = at / 64;
    const unsigned shift = static_cast<unsigned>(at % 64);
    if (shift == 0) special[word] = quote[word] = 0;
    special[word] |= (commas | quotes) << shift;
    quote[word] |= quotes << shift;
  }
};

namespace {

// The bytes of a line (`size` long, `slotSize` with the blank slot 1 appends) that a cut of
// `width` from byte `from` takes, and whether it reaches into that appended blank. False for an
// empty field.
struct Piece {
  const char* data = nullptr;
  std::size_t size = 0;
  bool blankAfter = false;
};
[[gnu::always_inline]] inline bool CutPiece(const char* line, long long size, long long slotSize,
                                            long long from, long long width, Piece& piece) {
  long long to = from + width;
  if (from < 0) from = 0;
  if (to > slotSize) to = slotSize;
  if (from >= to) return false;
  const long long inLine = to < size ? to : size;
  piece.size = from < inLine ? static_cast<std::size_t>(inLine - from) : 0;
  piece.data = line + (piece.size > 0 ? static_cast<std::size_t>(from) : 0);
  piece.blankAfter = to > size;
  return true;
}

}  // namespace

FastCsvRows::FastCsvRows() : marks_(std::make_unique<LineMarks>()) {}
FastCsvRows::~FastCsvRows() = default;

// The cuts of every column, or false when some column must go through the line processor (an
// operator that reads another slot, sums, or is unknown and reported per field).
bool FastCsvRows::Plan(const Context& ctx, std::vector<clsColumn>& columns, const RowRules* rules) {
  cuts_.clear();
  carriedCut_ = false;
  widest_ = 0;
  typed_room_ = 0;
  carries_ = false;
  for (std::size_t c = 0; c < columns.size(); ++c) {
    clsColumn& column = columns[c];
    if (column.SingleFileSlot(ctx) != 1) return false;
    const long long width =
        static_cast<long long>(column.ReadColumnEnd) - column.ReadColumnStart + 1;
    const bool carried = rules != nullptr && rules->Carries(c);
    cuts_.push_back(ColumnCut{column.ReadColumnStart - 1LL, width < 1 ? 0 : width,
                              column.IsTyped() ? &column : nullptr, carried});
    widest_ += width < 1 ? 0 : width;
    carries_ = carries_ || carried;
    // A converted value may be longer than its field ("1E5" -> "100000", a date in ISO form).
    if (column.IsTyped()) typed_room_ += 2 * kLongestTypedCsv + 4;
  }
  return true;
}

// The untyped carried columns as their rows write them, from the carried lines as they are now.
void FastCsvRows::CutCarried(const RowRules& rules) {
  carried_.resize(cuts_.size());
  std::string buffer;
  for (std::size_t c = 0; c < cuts_.size(); ++c) {
    const ColumnCut& cut = cuts_[c];
    CarriedField& field = carried_[c];
    field.text.clear();
    field.equalSign = false;
    if (!cut.carried || cut.typed != nullptr) continue;
    const std::string_view line = rules.CarriedLine(c);
    const long long size = static_cast<long long>(line.size());
    const long long slotSize = size + (size > 0 && line.back() != ' ' ? 1 : 0);
    Piece piece;
    if (!CutPiece(line.data(), size, slotSize, cut.from, cut.width, piece)) continue;
    buffer.resize(2 * (piece.size + 1) + 4);
    char* const end = clsColumn::PutCsvValue(std::string_view(piece.data, piece.size),
                                             piece.blankAfter, buffer.data(), field.equalSign);
    field.text.assign(buffer.data(), end);
  }
  carriedVersion_ = rules.CarriedVersion();
  carriedCut_ = true;
}

// One CSV row from `line` as slot 1 would hold it after ReadRowPeriod1Only (the line and, when it
// is not empty and does not end in a blank, one blank more), without copying the line first.
// `marks` is the line marked, or null for a line too long for that. Columns that carry are cut
// from their carried lines (`rules`), field by field. `warned` is set when an equal-sign warning
// was shown.
std::string_view FastCsvRows::WriteRow(Context& ctx, std::string_view current,
                                       std::int64_t lineNumber, const LineMarks* marks,
                                       const RowRules* rules, bool& warned) {
  const long long currentSize = static_cast<long long>(current.size());
  const long long currentSlot = currentSize + (currentSize > 0 && current.back() != ' ' ? 1 : 0);
  // Each field holds at most its width of the slot, doubled quotes, two quotes and a comma: a
  // long line asks for room by its columns, not by its length times the columns.
  const long long cut =
      carries_ ? widest_ : std::min(widest_, static_cast<long long>(cuts_.size()) * currentSlot);
  const std::size_t room = 2 * static_cast<std::size_t>(cut) + 3 * cuts_.size() + typed_room_;
  if (row_.size() < room) row_.resize(std::max(room, 2 * row_.size()));
  char* const begin = row_.data();
  char* out = begin;
  warned = false;
  if (carries_ && (!carriedCut_ || carriedVersion_ != rules->CarriedVersion())) {
    CutCarried(*rules);
  }
  // A line with an equal sign has its fields looked at one by one for the warning.
  const bool byField = marks == nullptr || marks->equalSign;
  bool placed = false;  // a typed column keeps its place in the row, empty or not
  for (std::size_t c = 0; c < cuts_.size(); ++c) {
    const ColumnCut& cut = cuts_[c];
    const std::string_view line = cut.carried ? rules->CarriedLine(c) : current;
    const long long size = cut.carried ? static_cast<long long>(line.size()) : currentSize;
    const long long slotSize =
        cut.carried ? size + (size > 0 && line.back() != ' ' ? 1 : 0) : currentSlot;
    if (out != begin || placed) *out++ = ',';
    placed = placed || cut.typed != nullptr;
    if (cut.carried && cut.typed == nullptr) {
      const CarriedField& field = carried_[c];
      out = scan::PutField(out, field.text.data(), field.text.size());
      if (field.equalSign) {
        ctx.lineProcessor.SetPeriod1Line(current, ctx.tabSize);
        clsColumn::WarnEqualSign(ctx.ui);
        warned = true;
      }
      continue;
    }
    Piece cutPiece;
    if (!CutPiece(line.data(), size, slotSize, cut.from, cut.width, cutPiece)) continue;
    const char* const piece = cutPiece.data;
    const std::size_t n = cutPiece.size;
    const std::size_t a = static_cast<std::size_t>(piece - line.data());
    const bool blankAfter = cutPiece.blankAfter;
    if (cut.typed != nullptr) {
      // Converted from the field as it stands (the appended blank is trimmed away anyway).
      const std::string_view field(piece, n);
      if ((byField || cut.carried) && scan::ScanCsvField(field).firstNonBlank == '=') {
        ctx.lineProcessor.SetPeriod1Line(current, ctx.tabSize);
        clsColumn::WarnEqualSign(ctx.ui);
        warned = true;
      }
      bool unused = false;
      out = clsColumn::PutCsvValue(cut.typed->TypedCsv(field, lineNumber), false, out, unused);
      continue;
    }
    if (byField || cut.carried) {
      bool equalSign = false;
      out = clsColumn::PutCsvValue(std::string_view(piece, n), blankAfter, out, equalSign);
      if (equalSign) {
        ctx.lineProcessor.SetPeriod1Line(current, ctx.tabSize);
        clsColumn::WarnEqualSign(ctx.ui);
        warned = true;
      }
      continue;
    }
    const bool quoted = n > 0 && LineMarks::Any(marks->special, a, a + n);
    if (quoted && LineMarks::Any(marks->quote, a, a + n)) {
      *out++ = '"';
      for (std::size_t k = 0; k < n; ++k) {
        *out++ = piece[k];
        if (piece[k] == '"') *out++ = '"';
      }
    } else {
      if (quoted) *out++ = '"';
      out = scan::PutField(out, piece, n);
    }
    if (blankAfter) *out++ = ' ';
    if (quoted) *out++ = '"';
  }
  return std::string_view(begin, static_cast<std::size_t>(out - begin));
}

bool FastCsvRows::Cut(Context& ctx, std::vector<clsColumn>& columns, std::string_view line,
                      std::int64_t lineNumber, std::string_view& row, const RowRules* rules) {
  if (!planned_) {
    fast_ = Plan(ctx, columns, rules);
    planned_ = true;
  }
  const bool marked = fast_ && line.size() <= LineMarks::kMaxBytes;
  if (marked) marks_->Mark(line.data(), line.size());
  // A tab is expanded by the line processor, and a UTF-8 line beyond ASCII is cut there by
  // printed columns.
  const bool tabs =
      marked ? ctx.tabSize > 0 && marks_->tab : clsLineProcessor::ExpandsTabs(line, ctx.tabSize);
  // So is a carried line that needs either.
  if (!fast_ || tabs ||
      (ctx.lineProcessor.Utf8() && (marked ? marks_->beyondAscii : !IsAscii(line))) ||
      (carries_ &&
       (rules->CarriedTabs() || (ctx.lineProcessor.Utf8() && !rules->CarriedAscii())))) {
    planned_ = false;  // AppendCsvValue works the operators out again
    return false;
  }
  pending_ = line;
  has_pending_ = true;
  bool warned = false;
  row = WriteRow(ctx, line, lineNumber, marked ? marks_.get() : nullptr, rules, warned);
  if (warned) planned_ = false;  // the user interface had its turn
  return true;
}

void FastCsvRows::Settle(Context& ctx) {
  if (has_pending_) ctx.lineProcessor.SetPeriod1Line(pending_, ctx.tabSize);
  has_pending_ = false;
  planned_ = false;
}

}  // namespace kroveld
