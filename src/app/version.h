// The program's name and version as shown by --version and in the help text.
#pragma once

namespace kroveld {

inline constexpr const char* kProgramName = "kroveld";
const char* VersionText();

}  // namespace kroveld
