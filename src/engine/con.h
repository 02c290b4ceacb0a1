// A consolidate section: merges the accounts of several departments of one written table into one
// block on sheet 2 - every distinct account once, in order of first appearance, later departments'
// rows of the same account added into it cell by cell. Moves sheet 2's write pointer below it.
#pragma once

#include <string>
#include <vector>

#include "engine/department.h"
#include "util/private_profile.h"
#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;
class SectionMap;

class clsCon {
 public:
  int FirstRowWritten = 0;
  int Table = 0;
  int ReadAccountsColumn = 0;
  int TotalDepartments = 0;
  std::vector<clsDepartment> Departments;
  std::vector<std::string> AccNames;
  std::vector<int> AccReadRowNumbers;
  std::vector<int> DupAccReadRowNumbers;
  std::vector<int> DupAccTargetRows;

  // `tableCount` is the number of table sections of the export specification (to report a table
  // number that names none).
  bool ReadFromFile(UiPort& ui, const std::string& path, int number, int tableCount);
  bool ReadFromFileSequentially(UiPort& ui, TextFile& file, int number, int tableCount,
                                const SectionMap* keys = nullptr);
  void WriteToFile(PrivateProfile& file, int number) const;
  std::string PropertyPrint() const;
  void Process(Context& ctx);
};

}  // namespace kroveld
