// Reading, writing and listing of table sections ("Table n" and their column sections).
#include "engine/optional_keys.h"
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

  // A table that finds its block by a pattern may leave out the key text: its fixed keys are then
  // looked up by name, since the sequential lookup would run past the missing one.
  std::string startPattern;
  std::string endPattern;
  if (!ReadPatternKey(ui, keys, section, "ReadStartPattern", startPattern) ||
      !ReadPatternKey(ui, keys, section, "ReadEndPattern", endPattern)) {
    return false;
  }
  FixedKeys fixed(file, keys, section, !startPattern.empty() || !endPattern.empty());
  ReadStartLine = fixed.Get("ReadStartLine", kMissing);
  if (ReadStartLine == kMissing) {
    if (startPattern.empty()) {
      ShowSectionError(ui, section, " : Invalid ReadStartLine!");
      return false;
    }
    ReadStartLine.clear();
  }
  if (!fixed.Offset(ui, "ReadStartLineOffset", ReadStartLineOffset)) return false;
  ReadEndLine = fixed.Get("ReadEndLine", kMissing);
  if (ReadEndLine == kMissing) {
    if (endPattern.empty()) {
      ShowSectionError(ui, section, " : Invalid ReadEndLine!");
      return false;
    }
    ReadEndLine.clear();
  }
  if (!fixed.Offset(ui, "ReadEndLineOffset", ReadEndLineOffset)) return false;
  ReadStartPattern = startPattern;
  ReadEndPattern = endPattern;
  TotalColumns = ValidatedNumber(fixed.Get("TotalColumns", kMissing));
  if (TotalColumns < 1) {
    ShowSectionError(ui, section, "Number of Columns must be > 0!");
    return false;
  }
  if (TotalColumns > kMaxTableColumns) {
    ShowSectionError(ui, section,
                     " : Number of columns must be at most " + ToText(kMaxTableColumns) + "!");
    return false;
  }

  if (!ReadSwitchKey(ui, keys, section, "SkipBlankLines", SkipBlankLines) ||
      !ReadPatternKey(ui, keys, section, "SkipLinesMatching", SkipLinesMatching) ||
      !ReadPatternKey(ui, keys, section, "KeepLinesMatching", KeepLinesMatching) ||
      !ReadPatternKey(ui, keys, section, "TotalLinesMatching", TotalLinesMatching)) {
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
  // A key text left out for a pattern stays out.
  if (!ReadStartLine.empty() || ReadStartPattern.empty())
    file.Set(section, "ReadStartLine", ReadStartLine);
  file.Set(section, "ReadStartLineOffset", ToText(ReadStartLineOffset));
  if (!ReadEndLine.empty() || ReadEndPattern.empty()) file.Set(section, "ReadEndLine", ReadEndLine);
  file.Set(section, "ReadEndLineOffset", ToText(ReadEndLineOffset));
  file.Set(section, "TotalColumns", ToText(static_cast<long long>(Columns.size())));
  // The optional keys only when set, after the fixed ones, so an older recipe writes itself back
  // as it was.
  const auto setIf = [&](std::string_view key, const std::string& value) {
    if (!value.empty()) file.Set(section, std::string(key), value);
  };
  setIf("ReadStartPattern", ReadStartPattern);
  setIf("ReadEndPattern", ReadEndPattern);
  if (SkipBlankLines) file.Set(section, "SkipBlankLines", *SkipBlankLines ? "TRUE" : "FALSE");
  setIf("SkipLinesMatching", SkipLinesMatching);
  setIf("KeepLinesMatching", KeepLinesMatching);
  setIf("TotalLinesMatching", TotalLinesMatching);
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
  const auto printIf = [&out](std::string_view key, const std::string& value) {
    if (!value.empty()) out += std::string(key) + " = " + value + "\n";
  };
  printIf("ReadStartPattern", ReadStartPattern);
  printIf("ReadEndPattern", ReadEndPattern);
  if (SkipBlankLines)
    out += std::string("SkipBlankLines = ") + (*SkipBlankLines ? "TRUE" : "FALSE") + "\n";
  printIf("SkipLinesMatching", SkipLinesMatching);
  printIf("KeepLinesMatching", KeepLinesMatching);
  printIf("TotalLinesMatching", TotalLinesMatching);
  for (const clsColumn& column : Columns) out += column.PropertyPrint();
  return out;
}

}  // namespace kroveld
