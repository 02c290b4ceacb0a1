// PLACEHOLDER: replaced by the extraction work.
#include "jobs/csv/csv_conversion.h"
namespace kroveld {
bool ConvertToCsv(Context&, const std::string&, std::string*) { return false; }
}  // namespace kroveld
