// Byte scans of the extraction hot paths: the next line end, counting line ends (CR LF, LF and a
// lone CR each count once), finding a key in a block and looking a CSV field over. Sixteen bytes
// at a time with SSE2 where the processor has it, byte or word wise otherwise; both give the same
// answers.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kroveld::scan {

// Copies n bytes to out and returns the end; fields are short, so the usual sizes take two
// overlapping fixed-size moves instead of a call.
[[gnu::always_inline]] inline char* PutField(char* out, const char* from, std::size_t n) {
  if (n >= 8 && n <= 32) {
    if (n >= 16) {
      std::memcpy(out, from, 16);
      std::memcpy(out + n - 16, from + n - 16, 16);
    } else {
      std::memcpy(out, from, 8);
      std::memcpy(out + n - 8, from + n - 8, 8);
    }
  } else if (n > 0) {
    std::memcpy(out, from, n);
  }
  return out + n;
}

// The first CR or LF in [p, e), or e.
inline const char* FindCrOrLf(const char* p, const char* e) {
#if defined(__SSE2__)
  const __m128i cr = _mm_set1_epi8('\r');
  const __m128i lf = _mm_set1_epi8('\n');
  for (; e - p >= 16; p += 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const unsigned mask = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, cr), _mm_cmpeq_epi8(v, lf))));
    if (mask != 0) return p + __builtin_ctz(mask);
  }
#endif
  for (; p < e; ++p) {
    if (*p == '\r' || *p == '\n') return p;
  }
  return e;
}

// Counts the line ends in [s, e). `prevCr` says that the byte before s was a CR (so a LF at s is
// the second half of a line end already counted) and is updated for the byte before e. A CR at
// e - 1 counts as a line end even if a LF follows beyond e. `lineStart` is set to the position
// after the last line end found (after the LF of a CR LF), and left alone when there is none.
inline std::int64_t CountLineEnds(const char* s, const char* e, bool& prevCr,
                                  const char*& lineStart) {
  if (s >= e) return 0;
  if (prevCr && *s == '\n') lineStart = ++s;
  prevCr = e[-1] == '\r';
  std::int64_t count = 0;
  const char* p = s;
#if defined(__SSE2__)
  const __m128i crs = _mm_set1_epi8('\r');
  const __m128i lfs = _mm_set1_epi8('\n');
  // A chunk is looked at together with the byte after it, so every chunk needs 17 bytes.
  for (; e - p > 16; p += 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const unsigned cr = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, crs)));
    const unsigned lf = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, lfs)));
    if ((cr | lf) == 0) continue;
    const unsigned lfAfter = (lf >> 1) | (p[16] == '\n' ? 0x8000u : 0u);
    unsigned ends = lf | (cr & ~lfAfter);  // a CR LF counts at its LF
    if (ends == 0) continue;
    lineStart = p + 32 - __builtin_clz(ends);     // after the highest end (clz of a 32-bit value)
    for (; ends != 0; ends &= ends - 1) ++count;  // a line or two per chunk: no popcount needed
  }
#endif
  for (; p < e; ++p) {
    if (*p == '\n' || (*p == '\r' && (p + 1 == e || p[1] != '\n'))) {
      ++count;
      lineStart = p + 1;
    }
  }
  return count;
}

// The first byte of [p, e) that is neither CR nor LF, or e.
inline const char* FindNotCrLf(const char* p, const char* e) {
  for (; p < e; ++p) {
    if (*p != '\r' && *p != '\n') return p;
  }
  return e;
}

// The first occurrence of `key` (not empty) in [s, s + n), or nullptr.
inline const char* FindKey(const char* s, std::size_t n, std::string_view key) {
  const std::size_t k = key.size();
  if (k == 0 || k > n) return nullptr;
  if (k == 1) return static_cast<const char*>(std::memchr(s, key[0], n));
  std::size_t i = 0;
#if defined(__SSE2__)
  // Candidates are positions where both the first and the last byte of the key match.
  const __m128i first = _mm_set1_epi8(key[0]);
  const __m128i last = _mm_set1_epi8(key[k - 1]);
  for (; i + 15 + k <= n; i += 16) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + k - 1));
    unsigned mask = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(a, first), _mm_cmpeq_epi8(b, last))));
    while (mask != 0) {
      const std::size_t at = i + static_cast<std::size_t>(__builtin_ctz(mask));
      if (std::memcmp(s + at + 1, key.data() + 1, k - 2) == 0) return s + at;
      mask &= mask - 1;
    }
  }
#endif
  if (i + k > n) return nullptr;
  return static_cast<const char*>(::memmem(s + i, n - i, key.data(), k));
}

#if !defined(__SSE2__)
namespace detail {
constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
constexpr std::uint64_t kHighs = 0x8080808080808080ULL;

inline std::uint64_t Load8(const char* p) {
  std::uint64_t v;
  std::memcpy(&v, p, 8);
  return v;
}
// Non-zero when some byte of v is zero.
inline std::uint64_t HasZeroByte(std::uint64_t v) {
  return (v - kOnes) & ~v & kHighs;
}
}  // namespace detail
#endif

// What the CSV form of a field depends on: the first character that is not a blank (0 when there
// is none) and whether a double quote or a comma occurs.
struct CsvField {
  char firstNonBlank = 0;
  bool needsQuotes = false;  // a double quote or a comma occurs
  bool hasQuote = false;     // a double quote occurs
};

// Looks `value` over in one pass; runs for every field of every CSV row (eight bytes at a time
// with word tricks where SSE2 is missing).
[[gnu::always_inline]] inline CsvField ScanCsvField(std::string_view value) {
  CsvField result;
  const char* p = value.data();
  std::size_t n = value.size();
  bool seenNonBlank = false;
#if defined(__SSE2__)
  const __m128i blanks = _mm_set1_epi8(' ');
  const __m128i quotes = _mm_set1_epi8('"');
  const __m128i commas = _mm_set1_epi8(',');
  for (; n >= 16; p += 16, n -= 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    if (!seenNonBlank) {
      const unsigned other =
          ~static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, blanks))) & 0xFFFFu;
      if (other != 0) {
        result.firstNonBlank = p[__builtin_ctz(other)];
        seenNonBlank = true;
      }
    }
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(v, quotes))) {
      result.needsQuotes = result.hasQuote = true;
      if (seenNonBlank) return result;
    }
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(v, commas))) result.needsQuotes = true;
  }
#else
  using detail::kOnes;
  for (; n >= 8; p += 8, n -= 8) {
    const std::uint64_t v = detail::Load8(p);
    if (!seenNonBlank) {
      const std::uint64_t other = v ^ (kOnes * ' ');
      if (other != 0) {
        if constexpr (std::endian::native == std::endian::little) {
          result.firstNonBlank = p[std::countr_zero(other) / 8];
          seenNonBlank = true;
        } else {
          break;
        }
      }
    }
    if (detail::HasZeroByte(v ^ (kOnes * '"'))) {
      result.needsQuotes = result.hasQuote = true;
      if (seenNonBlank) return result;
    }
    if (detail::HasZeroByte(v ^ (kOnes * ','))) result.needsQuotes = true;
  }
#endif
  for (; n > 0; ++p, --n) {
    if (!seenNonBlank && *p != ' ') {
      result.firstNonBlank = *p;
      seenNonBlank = true;
    }
    if (*p == '"') {
      result.needsQuotes = result.hasQuote = true;
      if (seenNonBlank) return result;
    }
    if (*p == ',') result.needsQuotes = true;
  }
  return result;
}

}  // namespace kroveld::scan
