// Reading, writing and listing of column fields ("Table t Col c" sections).
#include "engine/column.h"
#include "engine/optional_keys.h"
#include "engine/section_keys.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

bool clsColumn::ReadFromFileSequentially(UiPort& ui, TextFile& file, int tableNumber,
                                         int columnNumber, const SectionMap* keys) {
  const std::string section = "Table " + ToText(tableNumber) + " Col " + ToText(columnNumber);
  write_column_number_ = 0;

  ReadColumnStart = ValidatedNumber(GetProfileValue(file, section, "ReadColumnStart", kMissing));
  if (ReadColumnStart < 1) {
    ui.Message("Invalid Read Column start position!", Icon::Critical);
    return false;
  }
  ReadColumnEnd = ValidatedNumber(GetProfileValue(file, "", "ReadColumnEnd", kMissing));
  if (ReadColumnEnd < 1) {
    ui.Message("Invalid Read Column end position!", Icon::Critical);
    return false;
  }
  WriteColumn = GetProfileValue(file, "", "WriteColumn", kMissing);
  if (BadWriteColumn(WriteColumn)) {
    ShowSectionError(ui, section, " : Write Column must be (A-Z)!");
    return false;
  }
  const std::string op = GetProfileValue(file, "", "PeriodOperator", "");
  const std::string upper = UpperAscii(op);
  if (!op.empty() && upper != "SUM" && upper != "DUPLICATE") {
    ui.Message("Invalid Multi-file operator!", Icon::Critical);
    return false;
  }
  PeriodOperator = op;
  if (!ReadPatternKey(ui, keys, section, "CarryFrom", CarryFrom)) return false;
  // The optional keys after the fixed ones come from the map of the whole file.
  if (keys != nullptr && !ReadTypeKeys(ui, *keys, section)) return false;
  return true;
}

void clsColumn::WriteToFile(PrivateProfile& file, int tableNumber, int columnNumber) const {
  const std::string section = "Table " + ToText(tableNumber) + " Col " + ToText(columnNumber);
  file.Set(section, "ReadColumnStart", ToText(ReadColumnStart));
  file.Set(section, "ReadColumnEnd", ToText(ReadColumnEnd));
  file.Set(section, "WriteColumn", WriteColumn);
  file.Set(section, "PeriodOperator", PeriodOperator);
  if (!CarryFrom.empty()) file.Set(section, "CarryFrom", CarryFrom);
  WriteTypeKeys(file, section);
}

std::string clsColumn::PropertyPrint() const {
  std::string out = "Column Object Properties: \n";
  out += "ReadColumnStart = " + ToText(ReadColumnStart) + "\n";
  out += "ReadColumnEnd = " + ToText(ReadColumnEnd) + "\n";
  out += "WriteColumn = " + WriteColumn + "\n";
  out += "PeriodOperator = " + PeriodOperator + "\n";
  if (!CarryFrom.empty()) out += "CarryFrom = " + CarryFrom + "\n";
  PrintTypeKeys(out);
  return out;
}

}  // namespace kroveld
