// Choosing how the report of a conversion is read: the run's choice when it names one, else the
// recipe's InputEncoding, else 8-bit text as always. "auto" reads the whole report first and
// takes UTF-8 when it is valid UTF-8 with characters beyond ASCII, 8-bit text otherwise.
#pragma once

#include <string_view>

#include "engine/context.h"

namespace kroveld {

// Whether the report at `path` is read as UTF-8 under `encoding`.
bool ReadsAsUtf8(InputEncoding encoding, const std::string& path);

// Tells ctx.lineProcessor how ctx.currentInput is read, from ctx.options and `recipeChoice` (a
// recipe's InputEncoding text, "" for none). False, and 8-bit text, when the run names none and
// the recipe's text is not a known encoding (the recipe's loading has reported it).
bool ApplyInputEncoding(Context& ctx, std::string_view recipeChoice);

}  // namespace kroveld
