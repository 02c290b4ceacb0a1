// PLACEHOLDER: replaced by the short-format work.
#include "engine/context.h"
#include "engine/export_specs.h"
#include "engine/recipe.h"
namespace kroveld {
void clsExportSpecs::FileConvertShortToLong(Context&, const std::string&, const std::string&, const std::string&) {}
void clsExportSpecs::FileCreateShort(Context&, const std::string&, const std::string&) {}
void clsRecipe::LoadFromFileShort(Context&, const std::string&) {}
}  // namespace kroveld
