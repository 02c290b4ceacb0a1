// Reading, writing and listing of consolidate sections ("Consolidate n") and their departments
// ("Con n Dept m").
#include <algorithm>

#include "engine/con.h"
#include "engine/optional_keys.h"
#include "engine/section_keys.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

namespace {

std::string DepartmentSection(int conNumber, int deptNumber) {
  return "Con " + ToText(conNumber) + " Dept " + ToText(deptNumber);
}

}  // namespace

bool clsCon::ReadFromFile(UiPort& ui, const std::string& path, int number, int tableCount) {
  TextFile file;
  file.Open(path);  // a file that cannot be read gives every key its default
  return ReadFromFileSequentially(ui, file, number, tableCount);
}

bool clsCon::ReadFromFileSequentially(UiPort& ui, TextFile& file, int number, int tableCount,
                                      const SectionMap* keys) {
  const std::string section = "Consolidate " + ToText(number);
  Departments.clear();

  Table = ValidatedNumber(GetProfileValue(file, section, "Table", kMissing));
  if (Table < 1) {
    ShowSectionError(ui, section, " : Table number must be > 0!");
    return false;
  }
  if (Table > tableCount) {
    ShowSectionError(ui, section, " : Table number " + ToText(Table) + " does not exist!");
    return false;
  }
  ReadAccountsColumn = ValidatedNumber(GetProfileValue(file, "", "ReadAccountsColumn", kMissing));
  if (ReadAccountsColumn < 1) {
    ShowSectionError(ui, section, " : Accounts Column Number must be > 0!");
    return false;
  }
  // No departments (missing or not above 0) is reported when the section is processed.
  TotalDepartments = ValidatedNumber(GetProfileValue(file, "", "TotalDepartments", kMissing));
  if (TotalDepartments > kMaxDepartments) {
    ShowSectionError(ui, section,
                     " : Number of departments must be at most " + ToText(kMaxDepartments) + "!");
    return false;
  }

  return ReadSubSections(std::max(TotalDepartments, 0), Departments,
                         [&](clsDepartment& department, int d) {
                           return department.ReadFromFileSequentially(ui, file, number, d, keys);
                         });
}

void clsCon::WriteToFile(PrivateProfile& file, int number) const {
  const std::string section = "Consolidate " + ToText(number);
  file.Set(section, "Table", ToText(Table));
  file.Set(section, "ReadAccountsColumn", ToText(ReadAccountsColumn));
  file.Set(section, "TotalDepartments", ToText(static_cast<long long>(Departments.size())));
  for (std::size_t d = 0; d < Departments.size(); ++d) {
    Departments[d].WriteToFile(file, number, static_cast<int>(d + 1));
  }
}

std::string clsCon::PropertyPrint() const {
  std::string out = "Consolidate Object Properties: \n";
  out += "ReadAccountsColumn = " + ToText(ReadAccountsColumn) + "\n";
  out += "TotalDepartments = " + ToText(TotalDepartments) + "\n";
  out += "now printing the department collection:\n";
  for (const clsDepartment& department : Departments) out += department.PropertyPrint();
  out += "now printing the AccNames collection:\n";
  for (const std::string& name : AccNames) out += name + "\n";
  out += "now printing the AccReadRowNumbers collection:\n";
  for (int row : AccReadRowNumbers) out += ToText(row) + "\n";
  out += "now printing the DupAccReadRowNumbers collection:\n";
  for (int row : DupAccReadRowNumbers) out += ToText(row) + "\n";
  return out;
}

bool clsDepartment::ReadFromFileSequentially(UiPort& ui, TextFile& file, int conNumber,
                                             int deptNumber, const SectionMap* keys) {
  const std::string section = DepartmentSection(conNumber, deptNumber);
  // A department found by a pattern may leave out the key text: its fixed keys are then looked up
  // by name, since the sequential lookup would run past the missing one.
  if (!ReadPatternKey(ui, keys, section, "ReadStartPattern", ReadStartPattern) ||
      !ReadPatternKey(ui, keys, section, "ReadEndPattern", ReadEndPattern)) {
    return false;
  }
  FixedKeys fixed(file, keys, section, !ReadStartPattern.empty() || !ReadEndPattern.empty());
  ReadStartLine = fixed.Get("ReadStartLine", kMissing);
  if (ReadStartLine == kMissing) {
    if (ReadStartPattern.empty()) {
      ShowSectionError(ui, section, " : Missing ReadStartLine text!");
      return false;
    }
    ReadStartLine.clear();
  }
  if (!fixed.Offset(ui, "ReadStartLineOffset", ReadStartLineOffset)) return false;
  ReadEndLine = fixed.Get("ReadEndLine", kMissing);
  if (ReadEndLine == kMissing) {
    if (ReadEndPattern.empty()) {
      ShowSectionError(ui, section, " : Missing ReadEndLine text!");
      return false;
    }
    ReadEndLine.clear();
  }
  return fixed.Offset(ui, "ReadEndLineOffset", ReadEndLineOffset);
}

void clsDepartment::WriteToFile(PrivateProfile& file, int conNumber, int deptNumber) const {
  const std::string section = DepartmentSection(conNumber, deptNumber);
  // A key text left out for a pattern stays out; the patterns follow the fixed keys when set.
  if (!ReadStartLine.empty() || ReadStartPattern.empty())
    file.Set(section, "ReadStartLine", ReadStartLine);
  file.Set(section, "ReadStartLineOffset", ToText(ReadStartLineOffset));
  if (!ReadEndLine.empty() || ReadEndPattern.empty()) file.Set(section, "ReadEndLine", ReadEndLine);
  file.Set(section, "ReadEndLineOffset", ToText(ReadEndLineOffset));
  if (!ReadStartPattern.empty()) file.Set(section, "ReadStartPattern", ReadStartPattern);
  if (!ReadEndPattern.empty()) file.Set(section, "ReadEndPattern", ReadEndPattern);
}

std::string clsDepartment::PropertyPrint() const {
  std::string out = "Department Object Properties: \n";
  out += "ReadStartLine = " + ReadStartLine + "\n";
  out += "ReadStartLineOffset = " + ToText(ReadStartLineOffset) + "\n";
  out += "ReadEndLine = " + ReadEndLine + "\n";
  out += "ReadEndLineOffset = " + ToText(ReadEndLineOffset) + "\n";
  if (!ReadStartPattern.empty()) out += "ReadStartPattern = " + ReadStartPattern + "\n";
  if (!ReadEndPattern.empty()) out += "ReadEndPattern = " + ReadEndPattern + "\n";
  for (std::size_t i = 0; i < AccountNames.size() && i < AccountRows.size(); ++i) {
    out += ToText(AccountRows[i]) + " " + AccountNames[i] + "\n";
  }
  return out;
}

}  // namespace kroveld
