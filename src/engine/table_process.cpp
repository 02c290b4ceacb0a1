// PLACEHOLDER: replaced by the extraction work.
#include "engine/table.h"
#include "engine/context.h"
namespace kroveld {
void clsTable::Process(Context&, int) {}
}  // namespace kroveld
