// PLACEHOLDER: replaced by the workbook work.
#include "jobs/workbook/workbook_sink.h"
namespace kroveld {
bool WorkbookSink::IsOpenInSpreadsheetApp(const std::string&) { return false; }
void WorkbookSink::Open(const std::string&, bool) {}
bool WorkbookSink::Save() { return false; }
void WorkbookSink::Close() {}
void WorkbookSink::SetCell(int, int, int, std::string_view) {}
std::string WorkbookSink::GetCell(int, int, int) { return {}; }
void WorkbookSink::RenameSheet(int, std::string_view) {}
void WorkbookSink::SetStandardFont(std::string_view) {}
void WorkbookSink::ClearOutput() {}
}  // namespace kroveld
