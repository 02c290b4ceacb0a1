// A recipe (.rcp): the output name and options, up to twelve input files (periods) with the range
// taking part, and the export specification (.krs) it names, which the recipe owns once loaded.
#pragma once

#include <array>
#include <string>

#include "engine/export_specs.h"
#include "util/numbers.h"
#include "util/ui_port.h"

namespace kroveld {

class Context;

class clsRecipe {
 public:
  static constexpr int kInputSlots = 12;

  std::string OutputFileTitle;
  std::string OutputFileName;
  int InputFileFirst = 1;
  int InputFileLast = 1;
  std::string ExportSpecFileName;
  std::string WriteDataFormat;  // "NearestCent", "NearestDollar" or ""
  std::string Sheet1Name;
  std::string Sheet2Name;
  // How its reports are read: "auto", "utf-8", "cp1252" or "latin1" as written in the recipe,
  // "" when it says nothing (8-bit text). A value outside these is reported when loading.
  std::string InputEncoding;
  std::array<std::string, kInputSlots> InputFileTitles;  // index 0 is input file 1
  std::array<std::string, kInputSlots> InputFileNames;
  clsExportSpecs ExportSpecs;
  // The path the recipe was loaded from; relative names inside it are taken from its folder.
  std::string Path;

  // Loads a long-form recipe and its export specification, reporting problems through the port.
  void LoadFromFile(UiPort& ui, const std::string& path);
  // The same on a copy of a recipe: the text is read from `path`, but the recipe stands for
  // `standsFor`, whose folder relative names are taken from and which messages name.
  void LoadFromFile(UiPort& ui, const std::string& path, const std::string& standsFor);
  // A short-format recipe is loaded by LoadFromFileShort (engine/short_format.h).
  // Writes the recipe and asks the export specification to write itself. False on failure.
  // The system's named interface; no caller yet.
  bool SaveToFile(UiPort& ui, const std::string& path) const;
  void Reset();

  // Input file n (1..12) as stored, and as a path usable on disk (relative names resolved
  // against the recipe's folder). Out of range gives "".
  const std::string& InputFileName(int n) const;
  std::string InputFilePath(int n) const;
  std::string ExportSpecPath() const;
};

// Appends a summed number as the recipe's WriteDataFormat asks: "#,##0" for "NearestDollar",
// "#,##0.00" for "NearestCent" (exact case), the shortest plain form otherwise.
void AppendInWriteDataFormat(std::string& out, Fixed4 value, std::string_view writeDataFormat);

// Resolves `name` against the folder of `owner` when it is relative (neither '/' nor '\' first,
// no drive letter); otherwise returns it unchanged. An empty name stays empty.
std::string ResolveRelativeTo(const std::string& owner, const std::string& name);

}  // namespace kroveld
