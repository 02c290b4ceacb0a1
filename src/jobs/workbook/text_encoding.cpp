// The Windows-1252 decoder.
#include "jobs/workbook/text_encoding.h"

#include <cstdint>

namespace kroveld {
namespace {

// Windows-1252 bytes 0x80..0x9F; the five unassigned ones keep their C1 code points.
constexpr std::uint16_t kHighControls[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

void AppendAsUtf8(std::string_view bytes, std::string& out) {
  if (IsValidUtf8(bytes)) {
    out.append(bytes);
    return;
  }
  for (char ch : bytes) {
    const auto c = static_cast<unsigned char>(ch);
    if (c < 0x80) {
      out += ch;
    } else if (c < 0xA0) {
      AppendCodePoint(kHighControls[c - 0x80], out);
    } else {
      AppendCodePoint(c, out);
    }
  }
}

std::string AsUtf8(std::string_view bytes) {
  std::string out;
  AppendAsUtf8(bytes, out);
  return out;
}

}  // namespace kroveld
