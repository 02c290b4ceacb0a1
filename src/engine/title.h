// A title section: a block of literal lines copied into one column of a sheet, one line per row,
// from that sheet's write pointer; the pointer then moves below the block.
#pragma once

#include <string>
#include <vector>

#include "util/private_profile.h"
#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;

class clsTitle {
 public:
  int WriteSheet = 0;
  std::string WriteColumn;
  // The literal lines; Lines.size() is TotalLines (empty lines write nothing but take a row).
  std::vector<std::string> Lines;

  bool ReadFromFile(UiPort& ui, const std::string& path, int number);
  bool ReadFromFileSequentially(UiPort& ui, TextFile& file, int number);
  void WriteToFile(PrivateProfile& file, int number) const;
  std::string PropertyPrint() const;
  void Process(Context& ctx);

  // Parses a "sheet,row,column" code such as "2,10,C". A sheet or row below 1 shows
  // "Incorrect SheetRowColumn code!" and becomes 1; a column outside A..Z shows it and becomes "A".
  // The system's named interface; no caller yet.
  static void ParseSheetRowColumn(UiPort& ui, std::string_view code, int& sheet, int& row,
                                  std::string& column);
};

}  // namespace kroveld
