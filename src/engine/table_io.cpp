// Reading, writing and listing of table sections ("Table n" and their column sections).
#include "engine/section_keys.h"
#include "engine/table.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

bool clsTable::ReadFromFile(UiPort& ui, const std::string& path, int number) {
  TextFile file;
  file.Open(path);  // a file that cannot be read gives every key its default
  return ReadFromFileSequentially(ui, file, number);
}

bool clsTable::ReadFromFileSequentially(UiPort& ui, TextFile& file, int number,
                                        const SectionMap* keys) {
  const std::string section = "Table " + ToText(number);
  Number = number;
  Columns.clear();

  ReadStartLine = GetProfileValue(file, section, "ReadStartLine", kMissing);
  if (ReadStartLine == kMissing) {
    ShowSectionError(ui, section, " : Invalid ReadStartLine!");
    return false;
  }
  if (!ReadOffsetKey(ui, file, section, "ReadStartLineOffset", ReadStartLineOffset)) return false;
  ReadEndLine = GetProfileValue(file, "", "ReadEndLine", kMissing);
  if (ReadEndLine == kMissing) {
    ShowSectionError(ui, section, " : Invalid ReadEndLine!");
    return false;
  }
  if (!ReadOffsetKey(ui, file, section, "ReadEndLineOffset", ReadEndLineOffset)) return false;
  TotalColumns = ValidatedNumber(GetProfileValue(file, "", "TotalColumns", kMissing));
  if (TotalColumns < 1) {
    ShowSectionError(ui, section, "Number of Columns must be > 0!");
    return false;
  }
  if (TotalColumns > kMaxTableColumns) {
    ShowSectionError(ui, section,
                     " : Number of columns must be at most " + ToText(kMaxTableColumns) + "!");
    return false;
  }

  // A column that fails its checks has been reported; it is kept (processing reports it again
  // when it reaches the table) and the remaining columns are still read.
  return ReadSubSections(TotalColumns, Columns, [&](clsColumn& column, int c) {
    return column.ReadFromFileSequentially(ui, file, number, c, keys);
  });
}

void clsTable::WriteToFile(PrivateProfile& file, int number) const {
  const std::string section = "Table " + ToText(number);
  file.Set(section, "ReadStartLine", ReadStartLine);
  file.Set(section, "ReadStartLineOffset", ToText(ReadStartLineOffset));
  file.Set(section, "ReadEndLine", ReadEndLine);
  file.Set(section, "ReadEndLineOffset", ToText(ReadEndLineOffset));
  file.Set(section, "TotalColumns", ToText(static_cast<long long>(Columns.size())));
  for (std::size_t c = 0; c < Columns.size(); ++c) {
    Columns[c].WriteToFile(file, number, static_cast<int>(c + 1));
  }
}

std::string clsTable::PropertyPrint() const {
  std::string out = "Table Object Properties: \n";
  out += "ReadStartLine = " + ReadStartLine + "\n";
  out += "ReadStartLineOffset = " + ToText(ReadStartLineOffset) + "\n";
  out += "ReadEndLine = " + ReadEndLine + "\n";
  out += "ReadEndLineOffset = " + ToText(ReadEndLineOffset) + "\n";
  out += "TotalColumns = " + ToText(TotalColumns) + "\n";
  for (const clsColumn& column : Columns) out += column.PropertyPrint();
  return out;
}

}  // namespace kroveld
