// A department of a consolidation: a run of sheet-1 rows of a written table, found by key texts
// in the table's account column. Process collects the run's account names and row numbers.
#pragma once

#include <string>
#include <vector>

#include "util/private_profile.h"
#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;
class SectionMap;

class clsDepartment {
 public:
  std::vector<std::string> AccountNames;
  std::vector<int> AccountRows;
  std::string ReadStartLine;
  int ReadStartLineOffset = 0;
  std::string ReadEndLine;
  int ReadEndLineOffset = 0;
  // Optional: patterns that find the key rows in place of the key texts.
  std::string ReadStartPattern;
  std::string ReadEndPattern;

  bool ReadFromFileSequentially(UiPort& ui, TextFile& file, int conNumber, int deptNumber,
                                const SectionMap* keys = nullptr);
  void WriteToFile(PrivateProfile& file, int conNumber, int deptNumber) const;
  std::string PropertyPrint() const;
  // Collects the department's accounts between the table's first and last row written.
  void Process(Context& ctx, int firstRow, int lastRow, const std::string& accountColumn);
  void ReadAccountNames(Context& ctx, int startRow, int endRow, const std::string& accountColumn);
};

}  // namespace kroveld
