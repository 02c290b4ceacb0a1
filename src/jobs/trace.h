// Progress marks ("MainModule.Main 1", "frmMain.cmdRunRecipe_Click 4", ...): routines hand a mark
// to Trace before each step. By design it records nothing and costs nothing.
#pragma once

#include <string_view>

namespace kroveld {

inline void Trace(std::string_view /*mark*/) {}

}  // namespace kroveld
