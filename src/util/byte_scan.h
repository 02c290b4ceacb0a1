// Byte scans of the extraction hot paths: the next line end, counting line ends (CR LF, LF and a
// lone CR each count once) and finding a key in a block. Sixteen bytes at a time with SSE2 where
// the processor has it, byte by byte otherwise; both give the same answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kroveld::scan {

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

}  // namespace kroveld::scan
