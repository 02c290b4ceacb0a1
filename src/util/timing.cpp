// Millisecond ticks and the elapsed-seconds text.
#include "util/timing.h"

#include <chrono>

#include "util/strings.h"

namespace kroveld {

std::uint64_t TickCount() {
  using namespace std::chrono;
  return static_cast<std::uint64_t>(
      duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

std::string FormatSeconds(std::uint64_t milliseconds) {
  // Tenths of a second, rounded half up.
  const std::uint64_t tenths = (milliseconds + 50) / 100;
  std::string s;
  AppendInt(s, static_cast<long long>(tenths / 10));
  s.push_back('.');
  s.push_back(static_cast<char>('0' + tenths % 10));
  return s;
}

}  // namespace kroveld
