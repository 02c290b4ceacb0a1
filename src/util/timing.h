// Millisecond tick count and the diagnostic timing line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kroveld {

// Milliseconds from an arbitrary fixed point (monotonic).
std::uint64_t TickCount();
// "Time (ms) from [" + label + "] = " + milliseconds. The system's named interface; no caller yet.
std::string TimingLine(std::string_view label, std::uint64_t milliseconds);
// Seconds formatted "##0.0" (at least one digit before the point, one after).
std::string FormatSeconds(std::uint64_t milliseconds);

}  // namespace kroveld
