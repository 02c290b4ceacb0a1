// PLACEHOLDER: replaced by the extraction work.
#include "engine/line_processor.h"
#include "engine/context.h"
namespace kroveld {
clsLineProcessor::clsLineProcessor(Context& ctx) : ctx_(ctx), rows_(kSlots) {}
void clsLineProcessor::ReadRowPeriod1Only(TextFile*, int) {}
bool clsLineProcessor::ReadRow(long long, int) { return false; }
std::string_view clsLineProcessor::ProcessField(int, int, int) { return {}; }
void clsLineProcessor::SetSlot(int i, std::string_view text) { rows_[i - 1] = text; }
std::string clsLineProcessor::get_text_line(const std::string&, long long) { return {}; }
void clsLineProcessor::ResetRows() {}
}  // namespace kroveld
