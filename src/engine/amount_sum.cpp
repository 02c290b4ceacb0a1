// Summing a column's amounts: digits counted by place for the usual printed form, the numeric test
// for the rest.
#include "engine/amount_sum.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kroveld {

namespace {

constexpr std::uint64_t kMaxRaw =
    static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());

std::uint64_t Magnitude(std::int64_t raw) {
  return raw < 0 ? 0 - static_cast<std::uint64_t>(raw) : static_cast<std::uint64_t>(raw);
}

std::int64_t Power10(int n) {
  std::int64_t p = 1;
  for (int i = 0; i < n; ++i) p *= 10;
  return p;
}

// Characters that mean something else to the counting by place.
bool Plain(char c) {
  return c != ' ' && c != '-' && c != '(' && c != ')' && (c < '0' || c > '9');
}

}  // namespace

bool QuickFixed(std::string_view text, Fixed4& out, const NumberLocale& loc) {
  std::size_t i = 0;
  std::size_t n = text.size();
  while (i < n && text[i] == ' ') ++i;
  while (n > i && text[n - 1] == ' ') --n;
  if (i == n) return false;
  bool negative = false;
  if (text[i] == '-') {
    negative = true;
    ++i;
  } else if (text[i] == '(') {
    if (text[n - 1] != ')') return false;
    negative = true;
    ++i;
    --n;
  }
  std::int64_t whole = 0;
  int digits = 0;       // whole digits
  int groupDigits = 0;  // digits since the last separator
  bool grouped = false;
  for (; i < n; ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      whole = whole * 10 + (c - '0');
      ++digits;
      ++groupDigits;
      if (digits > 14) return false;  // near the end of the fixed-point range: the general test
    } else if (c == loc.thousands_sep && loc.thousands_sep != loc.decimal_point) {
      // Groups of three after a first group of one to three digits.
      if (grouped ? groupDigits != 3 : (groupDigits < 1 || groupDigits > 3)) return false;
      grouped = true;
      groupDigits = 0;
    } else {
      break;
    }
  }
  if (digits == 0 || (grouped && groupDigits != 3)) return false;
  std::int64_t fraction = 0;
  if (i < n) {
    if (text[i] != loc.decimal_point) return false;
    ++i;
    int decimals = 0;
    for (; i < n; ++i) {
      const char c = text[i];
      if (c < '0' || c > '9' || ++decimals > 4) return false;
      fraction = fraction * 10 + (c - '0');
    }
    if (decimals == 0) return false;
    for (int d = decimals; d < 4; ++d) fraction *= 10;
  }
  const std::int64_t raw = whole * Fixed4::kScale + fraction;
  out.raw = negative ? -raw : raw;
  return true;
}

AmountSum::AmountSum(const NumberLocale& loc)
    : loc_(&loc),
      point_(loc.decimal_point),
      separator_(loc.thousands_sep),
      countable_(loc.decimal_point != loc.thousands_sep && Plain(loc.decimal_point) &&
                 Plain(loc.thousands_sep)) {
  for (int n = 0; n <= kPlaces; ++n) {
    for (int p = 0; p < kPlaces; ++p) laneInField_[n][p] = static_cast<char>(p < n ? 0xFF : 0);
  }
}

// A field that Add did not count: one too near the end of the line for a load of sixteen bytes
// is counted from a copy, any other read.
void AmountSum::AddOtherwise(std::string_view field, std::size_t readable) {
  if (readable < kPlaceBytes && field.size() <= kPlaceBytes && countable_ && !inOrder_) {
    char padded[kPlaces];
    std::memset(padded, ' ', sizeof padded);
    if (!field.empty()) std::memcpy(padded, field.data(), field.size());
    if (Counted<false>(padded, field.size())) return;
  }
  Fixed4 value;
  if (!QuickFixed(field, value, *loc_) && ParseFixed(field, value, *loc_) != NumberParse::kOk) {
    return;
  }
  numeric_ = true;
  AddValue(value);
}

// An amount read by the numeric test.
void AmountSum::AddValue(Fixed4 value) {
  const std::uint64_t magnitude = Magnitude(value.raw);
  if (!inOrder_ && magnitude > kMaxRaw - bound_) {
    // From here on some order of adding could leave the range: what is summed so far (which no
    // order could) becomes the running sum, and the rest is added as it comes.
    running_.raw = CountedSum() + added_;
    inOrder_ = true;
  }
  if (inOrder_) {
    if (!AddFixed(running_, value, running_)) overflow_ = true;
    return;
  }
  bound_ += magnitude;
  added_ += value.raw;
}

#if defined(__SSE2__)

// Counts the field's digits by place when the field holds an amount laid out as the counted ones
// are (or, with nothing counted yet, lays the counting out by it). False when it does not: the
// caller reads it.
template <bool full>
[[gnu::always_inline]] inline bool AmountSum::Counted(const char* field, std::size_t length) {
  __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(field));
  if (!full) {
    // Bytes beyond the field count as blanks.
    const __m128i in = _mm_load_si128(reinterpret_cast<const __m128i*>(laneInField_[length]));
    v = _mm_or_si128(_mm_and_si128(in, v), _mm_andnot_si128(in, _mm_set1_epi8(' ')));
  }
  const __m128i fromZero = _mm_sub_epi8(v, _mm_set1_epi8('0'));
  const __m128i isDigit = _mm_cmpeq_epi8(_mm_min_epu8(fromZero, _mm_set1_epi8(9)), fromZero);
  const __m128i d = _mm_and_si128(fromZero, isDigit);
  const unsigned digits = static_cast<unsigned>(_mm_movemask_epi8(isDigit));
  const unsigned points =
      static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(point_))));
  if (points != pointPlace_) [[unlikely]] {
    if (!Relearn(digits, points)) return false;
  }
  const unsigned whole = digits & beforePoint_;
  if (whole == 0) return false;
  const int first = std::countr_zero(whole);
  // A minus or an opening parenthesis just before the first digit makes the amount negative.
  // Worked out without a branch, as is where its digits go: signs fall at random among the rows.
  const auto before = [&v, first](char c) {
    const unsigned at =
        static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(c))));
    return static_cast<int>((at << 1) >> first & 1u);
  };
  const int sign = before('-') | before('(') << 1;
  // Every byte in its place: the field, its digits made '0', is the shape of an amount of the
  // layout with this sign and first digit.
  const __m128i shape = _mm_sub_epi8(v, d);
  const __m128i expected = _mm_load_si128(reinterpret_cast<const __m128i*>(shape_[sign][first]));
  if (_mm_movemask_epi8(_mm_cmpeq_epi8(shape, expected)) != 0xFFFF ||
      (shaped_[sign] >> first & 1u) == 0) {
    return false;
  }

  const std::uint64_t most = most_[first];
  if (most > kMaxRaw - bound_) return false;  // the numeric test adds it, in order from here on
  bound_ += most;
  numeric_ = true;
  counted_ = true;
  const __m128i negative = _mm_set1_epi8(static_cast<char>(sign != 0 ? -1 : 0));
  __m128i* const plus = reinterpret_cast<__m128i*>(plus_);
  __m128i* const minus = reinterpret_cast<__m128i*>(minus_);
  _mm_store_si128(plus, _mm_add_epi8(_mm_load_si128(plus), _mm_andnot_si128(negative, d)));
  _mm_store_si128(minus, _mm_add_epi8(_mm_load_si128(minus), _mm_and_si128(negative, d)));
  if (++byteRows_ == kRowsPerByte) Flush();
  return true;
}

#else

template <bool full>
bool AmountSum::Counted(const char*, std::size_t) {
  return false;
}

#endif

// Add, inline where a row's fields are added.
[[gnu::always_inline]] inline void AmountSum::AddHere(std::string_view field,
                                                      std::size_t readable) {
  if (readable >= kPlaceBytes && countable_ && !inOrder_) {
    if (field.size() == kPlaceBytes
            ? Counted<true>(field.data(), kPlaceBytes)
            : field.size() < kPlaceBytes && Counted<false>(field.data(), field.size())) {
      return;
    }
  }
  AddOtherwise(field, readable);
}

void AmountSum::Add(std::string_view field, std::size_t readable) {
  AddHere(field, readable);
}

void AmountSum::AddFields(std::vector<AmountSum>& sums, const std::vector<Bytes>& fields,
                          std::string_view line) {
  for (std::size_t c = 0; c < sums.size(); ++c) {
    const Bytes& at = fields[c];
    AmountSum& sum = sums[c];
    if (at.from >= line.size()) {
      sum.AddOtherwise({}, 0);
      continue;
    }
    const std::size_t readable = line.size() - at.from;
    sum.AddHere(std::string_view(line.data() + at.from, std::min(at.width, readable)), readable);
  }
}

// A field whose point is not where the counted amounts have theirs: a new layout, but only while
// nothing is counted by the old one. Kept out of the counting's way.
[[gnu::noinline]] bool AmountSum::Relearn(unsigned digits, unsigned points) {
  return !counted_ && Learn(digits, points);
}

// Lays the counting out by an amount with one decimal point followed by one to four digits: the
// point's place, the decimals, the places of the whole digits and separators (every fourth place
// before the point), the shapes of the amounts so laid out, and the weights of the places.
bool AmountSum::Learn(unsigned digits, unsigned points) {
  if (std::popcount(points) != 1) return false;
  const int at = std::countr_zero(points);
  int decimals = 0;
  while (at + decimals + 1 < kPlaces && (digits >> (at + decimals + 1) & 1u) != 0) ++decimals;
  if (decimals == 0 || decimals > 4) return false;
  pointPlace_ = points;
  const int last = at + decimals;
  beforePoint_ = (1u << at) - 1;
  unsigned separatorPlaces = 0;
  for (int p = at - 4; p >= 0; p -= 4) separatorPlaces |= 1u << p;
  const unsigned wholePlaces = beforePoint_ & ~separatorPlaces;
  // The shapes: blanks up to the first digit (the sign just before it), the whole digits and
  // the separators, the point, the decimals, blanks (the closing parenthesis first).
  for (int sign = 0; sign < 3; ++sign) {
    shaped_[sign] = 0;
    for (int first = 0; first < at; ++first) {
      char* shape = shape_[sign][first];
      for (int p = 0; p < kPlaces; ++p) {
        char c = ' ';
        if (p >= first && p < at) c = (separatorPlaces >> p & 1u) != 0 ? separator_ : '0';
        if (p == at) c = point_;
        if (p > at && p <= last) c = '0';
        shape[p] = c;
      }
      if (sign != 0 && first == 0) continue;
      if (sign != 0) shape[first - 1] = sign == 1 ? '-' : '(';
      if (sign == 2 && last + 1 >= kPlaces) continue;
      if (sign == 2) shape[last + 1] = ')';
      shaped_[sign] |= 1u << first;
    }
  }
  for (int p = 0; p < kPlaces; ++p) {
    weight_[p] = 0;
    most_[p] = 0;
  }
  int place = 4;  // the digit before the point counts 10^4 units of 1/10000
  for (int p = at - 1; p >= 0; --p) {
    if ((wholePlaces >> p & 1u) == 0) continue;
    weight_[p] = Power10(place);
    most_[p] = static_cast<std::uint64_t>(weight_[p]) * 10;
    ++place;
  }
  for (int d = 1; d <= decimals; ++d) weight_[at + d] = Power10(4 - d);
  return true;
}

void AmountSum::Flush() {
  for (int p = 0; p < kPlaces; ++p) {
    counts_[p] += static_cast<std::int64_t>(plus_[p]) - minus_[p];
    plus_[p] = minus_[p] = 0;
  }
  byteRows_ = 0;
}

// What the counted digits are worth. No more than the bound, which fits the range.
std::int64_t AmountSum::CountedSum() {
  if (!counted_) return 0;
  Flush();
  __int128 sum = 0;
  for (int p = 0; p < kPlaces; ++p) {
    sum += static_cast<__int128>(counts_[p]) * weight_[p];
    counts_[p] = 0;
  }
  counted_ = false;
  return static_cast<std::int64_t>(sum);
}

AmountSum::Result AmountSum::Take() {
  Result result;
  if (inOrder_) {
    result.total = running_;
    result.overflow = overflow_;
  } else {
    result.total.raw = CountedSum() + added_;
  }
  added_ = 0;
  bound_ = 0;
  inOrder_ = false;
  running_ = Fixed4{};
  overflow_ = false;
  return result;
}

}  // namespace kroveld
