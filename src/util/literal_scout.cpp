// The running search behind LiteralScout.
#include "util/literal_scout.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "util/byte_scan.h"

namespace kroveld {

namespace {

// The first byte in [s, s + n) that is one of `bytes` (two to four of them), or null. Thirty-two
// bytes at a time: the searches run through whole reports.
const char* FindAnyByte(const char* s, std::size_t n, std::string_view bytes) {
  std::size_t i = 0;
#if defined(__SSE2__)
  const auto wanted = [&bytes](std::size_t k) {
    return _mm_set1_epi8(bytes[k < bytes.size() ? k : 0]);
  };
  const __m128i a = wanted(0), b = wanted(1), c = wanted(2), d = wanted(3);
  const bool two = bytes.size() <= 2;
  const auto hits = [&](const char* p) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    __m128i hit = _mm_or_si128(_mm_cmpeq_epi8(v, a), _mm_cmpeq_epi8(v, b));
    if (!two) hit = _mm_or_si128(hit, _mm_or_si128(_mm_cmpeq_epi8(v, c), _mm_cmpeq_epi8(v, d)));
    return hit;
  };
  for (; i + 32 <= n; i += 32) {
    const __m128i low = hits(s + i);
    const __m128i high = hits(s + i + 16);
    if (_mm_movemask_epi8(_mm_or_si128(low, high)) == 0) continue;
    const unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(low)) |
                          static_cast<unsigned>(_mm_movemask_epi8(high)) << 16;
    return s + i + static_cast<std::size_t>(__builtin_ctz(mask));
  }
#endif
  for (; i < n; ++i) {
    if (bytes.find(s[i]) != std::string_view::npos) return s + i;
  }
  return nullptr;
}

// The first occurrence of `key` (two bytes or more) in [s, s + n), or null: positions where the
// first and the last byte of the key match, thirty-two at a time, are compared whole.
const char* FindLiteral(const char* s, std::size_t n, std::string_view key) {
  const std::size_t k = key.size();
  std::size_t i = 0;
#if defined(__SSE2__)
  const __m128i first = _mm_set1_epi8(key[0]);
  const __m128i last = _mm_set1_epi8(key[k - 1]);
  const auto candidates = [&](const char* p) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + k - 1));
    return _mm_and_si128(_mm_cmpeq_epi8(a, first), _mm_cmpeq_epi8(b, last));
  };
  for (; i + 31 + k <= n; i += 32) {
    const __m128i low = candidates(s + i);
    const __m128i high = candidates(s + i + 16);
    if (_mm_movemask_epi8(_mm_or_si128(low, high)) == 0) continue;
    unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(low)) |
                    static_cast<unsigned>(_mm_movemask_epi8(high)) << 16;
    while (mask != 0) {
      const std::size_t at = i + static_cast<std::size_t>(__builtin_ctz(mask));
      if (std::memcmp(s + at + 1, key.data() + 1, k - 2) == 0) return s + at;
      mask &= mask - 1;
    }
  }
#endif
  return i < n ? scan::FindKey(s + i, n - i, key) : nullptr;
}

}  // namespace

void LiteralScout::Reset(std::string_view block, std::string literal, Kind kind) {
  kind_ = kind;
  if (kind_ == Kind::AnyByte && literal.size() > 4) kind_ = Kind::Literal;  // not meant for more
  if (kind_ == Kind::AnyByte && literal.size() == 1) kind_ = Kind::Literal;
  within_ = nullptr;
  literal_ = std::move(literal);
  begin_ = block.data();
  end_ = block.data() + block.size();
  from_ = reach_ = found_ = nullptr;
}

const char* LiteralScout::FindIn(const char* s, std::size_t n) const {
  if (kind_ == Kind::AnyByte) return FindAnyByte(s, n, literal_);
  if (literal_.size() == 1) return static_cast<const char*>(std::memchr(s, literal_[0], n));
  return FindLiteral(s, n, literal_);
}

bool LiteralScout::Find(const char* s, std::size_t n) const {
  if (literal_.empty()) return true;
  if (n < (kind_ == Kind::Literal ? literal_.size() : 1)) return false;
  return FindIn(s, n) != nullptr;
}

bool LiteralScout::Search(std::string_view line) {
  if (literal_.empty()) return true;
  const std::size_t k = kind_ == Kind::Literal ? literal_.size() : 1;
  if (line.size() < k) return false;  // an empty line may have no bytes at all
  const char* const b = line.data();
  const char* const e = b + line.size();
  const std::less<const char*> before;  // pointers into unrelated memory compare safely
  if (begin_ == end_ || before(b, begin_) || before(end_, e))
    return FindIn(b, line.size()) != nullptr;
  // A new search from the line's start, which answers for the lines after it up to the
  // occurrence it finds or the end of what it looks at (Holds).
  const std::size_t left = static_cast<std::size_t>(end_ - b);
  from_ = b;
  reach_ = b + std::min(left, std::max(kReach, line.size()));
  found_ = FindIn(b, static_cast<std::size_t>(reach_ - b));
  // The first occurrence from the line's start on is in the line when it ends in it; a later
  // one would end later still.
  return found_ != nullptr && !before(e, found_ + k);
}

}  // namespace kroveld
