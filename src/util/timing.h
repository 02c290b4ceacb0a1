// Millisecond tick count and the elapsed-seconds text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kroveld {

// Milliseconds from an arbitrary fixed point (monotonic).
std::uint64_t TickCount();
// Seconds formatted "##0.0" (at least one digit before the point, one after).
std::string FormatSeconds(std::uint64_t milliseconds);

}  // namespace kroveld
