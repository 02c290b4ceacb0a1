// PLACEHOLDER: replaced by the extraction work.
#include "engine/column.h"
#include "engine/context.h"
namespace kroveld {
void clsColumn::Process(Context&, int) {}
void clsColumn::AppendCsvValue(Context&, std::string&) {}
std::string clsColumn::GetCsvValue(Context&) { return {}; }
int clsColumn::OperatorCode(UiPort&, std::string&) { return 0; }
std::string_view clsColumn::Value(Context&) { return {}; }
}  // namespace kroveld
