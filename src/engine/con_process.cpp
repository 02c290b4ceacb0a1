// PLACEHOLDER: replaced by the consolidation work.
#include "engine/con.h"
#include "engine/context.h"
namespace kroveld {
void clsCon::Process(Context&) {}
void clsDepartment::Process(Context&, int, int, const std::string&) {}
void clsDepartment::ReadAccountNames(Context&, int, int, const std::string&) {}
}  // namespace kroveld
