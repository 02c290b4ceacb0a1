// One export specification in memory: its title, table and consolidate sections in file order,
// and one write pointer per target sheet (1 and 2). Reads and writes the .krs file and runs one
// conversion pass over the sections; a section that fails sets Failed and the pass ends after it.
#pragma once

#include <string>
#include <vector>

#include "engine/con.h"
#include "engine/table.h"
#include "engine/title.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;

class clsExportSpecs {
 public:
  std::string Product = "KRO";
  std::string FileType = "EXPORT SPEC";
  std::string FileFormat = "1.1";
  std::string Name;
  std::vector<std::string> SectionSequenceCollection;  // "Title", "Table", "Consolidate"
  std::vector<clsTitle> Titles;
  std::vector<clsTable> Tables;
  std::vector<clsCon> Consolidates;
  int TitleCount = 0;
  int TableCount = 0;
  int ConsolidateCount = 0;
  int WritePointer1 = 1;
  int WritePointer2 = 1;
  int TablesProcessed = 0;
  bool Failed = false;

  // Sheet 1 or 2; any other shows "Invalid sheet number in clsExportSpecs.getWritePointer!" and
  // gives 0 (set: "...setWritePointer!" and nothing changes).
  int getWritePointer(UiPort& ui, int sheet) const;
  void setWritePointer(UiPort& ui, int sheet, int row);

  // Empties the object, then reads the file (header, name, counts, sequence, sections).
  void ReadFromFile(UiPort& ui, const std::string& path);
  // Writes the header, the name and every section in sequence order, renumbered per kind.
  // False (after a message) when the file cannot be written. The system's named interface; its
  // one caller, clsRecipe::SaveToFile, has none yet.
  bool WriteToFile(UiPort& ui, const std::string& path) const;
  // One pass into ctx.sink. A sink that holds cells also gets its sheets renamed and its font
  // set, and consolidations run; a sink of rows gets the table rows only.
  void Process(Context& ctx);
  // Listings of the sections: the system's named interface, no caller yet.
  std::string PropertyPrintCons() const;
  std::string PropertyPrintTables() const;

  // Empties the sections, the sequence and the counts; pointers back to 1.
  void Clear();
};

}  // namespace kroveld
