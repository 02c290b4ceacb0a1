// The preview of a recipe on a sample report: the recipe text as typed (long form, short form, or
// an export definition itself) is converted the way a conversion would convert the report, into a
// workbook held in memory and never saved, with every message collected instead of shown. Nothing
// of the user's is written: the run's application folder is a private temporary folder, removed
// afterwards, so config.ini, _AutoRecipe.rcp and _ExportSpecs.krs stay as they are.
#pragma once

#include "jobs/preview/preview_result.h"

namespace kroveld {

PreviewResult RunPreview(const PreviewRequest& request);

}  // namespace kroveld
