#include "engine/title.h"

#include <algorithm>
#include <cstdint>

#include "engine/context.h"
#include "engine/section_keys.h"
#include "util/column_letters.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

bool clsTitle::ReadFromFile(UiPort& ui, const std::string& path, int number) {
  TextFile file;
  file.Open(path);  // a file that cannot be read gives every key its default
  return ReadFromFileSequentially(ui, file, number);
}

bool clsTitle::ReadFromFileSequentially(UiPort& ui, TextFile& file, int number) {
  const std::string section = "Title " + ToText(number);

  WriteSheet = ValidatedNumber(GetProfileValue(file, section, "WriteSheet", kMissing));
  if (WriteSheet < 1) {
    ShowSectionError(ui, section, " : Write sheet number must be > 0!");
    return false;
  }
  WriteColumn = GetProfileValue(file, "", "WriteColumn", kMissing);
  if (BadWriteColumn(WriteColumn)) {
    ShowSectionError(ui, section, " : Write Column must be (A-Z)!");
    return false;
  }
  const int totalLines = ValidatedNumber(GetProfileValue(file, "", "TotalLines", kMissing));
  if (totalLines < 1) {
    ShowSectionError(ui, section, " : Number of lines must be > 0!");
    return false;
  }
  if (totalLines > kMaxTitleLines) {
    ShowSectionError(ui, section,
                     " : Number of lines must be at most " + ToText(kMaxTitleLines) + "!");
    return false;
  }

  Lines.clear();
  Lines.reserve(static_cast<std::size_t>(totalLines));
  std::string key;
  for (int n = 1; n <= totalLines; ++n) {
    key.clear();
    AppendInt(key, n);
    key += "Text";
    Lines.push_back(GetProfileValue(file, "", key, ""));
  }
  return true;
}

void clsTitle::WriteToFile(PrivateProfile& file, int number) const {
  const std::string section = "Title " + ToText(number);
  file.Set(section, "WriteSheet", ToText(WriteSheet));
  file.Set(section, "WriteColumn", WriteColumn);
  file.Set(section, "TotalLines", ToText(static_cast<long long>(Lines.size())));
  std::string key;
  for (std::size_t i = 0; i < Lines.size(); ++i) {
    key.clear();
    AppendInt(key, static_cast<long long>(i + 1));
    key += "Text";
    file.Set(section, key, Lines[i]);
  }
}

std::string clsTitle::PropertyPrint() const {
  std::string out = "Title Object Properties: \n";
  out += "WriteSheet = " + ToText(WriteSheet) + "\n";
  out += "WriteColumn = " + WriteColumn + "\n";
  out += "TotalLines = " + ToText(static_cast<long long>(Lines.size())) + "\n";
  for (std::size_t i = 0; i < Lines.size(); ++i) {
    out += ToText(static_cast<long long>(i + 1)) + "Text = " + Lines[i] + "\n";
  }
  return out;
}

void clsTitle::Process(Context& ctx) {
  clsExportSpecs& specs = ctx.recipe.ExportSpecs;
  const int first = specs.getWritePointer(ctx.ui, WriteSheet);
  // An invalid sheet has already been reported by getWritePointer; nothing is written to it.
  const int column = first > 0 && !Lines.empty() ? AlphaToNum2(ctx.ui, WriteColumn) : 0;
  if (column > 0) {
    for (std::size_t i = 0; i < Lines.size(); ++i) {
      if (Lines[i].empty()) continue;  // an empty line takes its row but writes nothing
      const long long row = first + static_cast<long long>(i);
      if (row > kMaxSheetRow) break;
      ctx.sink->SetCell(WriteSheet, static_cast<int>(row), column, Lines[i]);
    }
  }
  if (ctx.observer != nullptr) ctx.observer->TitleWritten(*this, first);
  const long long next = static_cast<long long>(first) + static_cast<long long>(Lines.size());
  specs.setWritePointer(ctx.ui, WriteSheet, static_cast<int>(std::min<long long>(next, INT32_MAX)));
}

void clsTitle::ParseSheetRowColumn(UiPort& ui, std::string_view code, int& sheet, int& row,
                                   std::string& column) {
  const std::size_t comma1 = code.find(',');
  const std::string_view sheetText = code.substr(0, comma1);
  std::string_view rowText;
  std::string_view columnText;
  if (comma1 != std::string_view::npos) {
    const std::string_view rest = code.substr(comma1 + 1);
    const std::size_t comma2 = rest.find(',');
    rowText = rest.substr(0, comma2);
    if (comma2 != std::string_view::npos) columnText = rest.substr(comma2 + 1);
  }
  const std::string_view kMessage = "Incorrect SheetRowColumn code!";

  int value = 0;
  sheet = ParseLong(sheetText, value) ? value : 0;
  if (sheet < 1) {
    ui.Message(kMessage, Icon::Critical);
    sheet = 1;
  }
  row = ParseLong(rowText, value) ? value : 0;
  if (row < 1) {
    ui.Message(kMessage, Icon::Critical);
    row = 1;
  }
  column = std::string(Trim(columnText));
  if (column < "A" || column > "Z") {
    ui.Message(kMessage, Icon::Critical);
    column = "A";
  }
}

}  // namespace kroveld
