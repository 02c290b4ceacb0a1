// Everything config.ini holds for the main window: the six [General] settings with their reading
// rules, the three most-recently-used lists and the frame window's placement. The window reads
// them when it loads and writes them when it unloads; a command-line run reads them and writes
// back only the tab note's flag.
#pragma once

#include <string>

#include "app/mru.h"

namespace kroveld {

class PrivateProfile;
class UiPort;

// The frame window's placement in twips (1/1440 inch); WindowState 0 normal, 1 minimised,
// 2 maximised.
struct FramePlacement {
  int windowState = 0;
  int left = 150;
  int top = 150;
  int width = 11000;
  int height = 7000;

  // [frmMainMDI] of the file; each key missing or not a number keeps its default.
  static FramePlacement Read(const std::string& configPath);
  // Writes WindowState, and Left/Top/Width/Height only in the normal state. False when the file
  // cannot be written.
  bool Write(const std::string& configPath) const;
};

class Settings final {
 public:
  explicit Settings(std::string configPath) : path_(std::move(configPath)) {}

  // The main window's settings hold zero, false, false and empty text until a file is read.
  int lTabSize = 0;
  bool bShowExcel = false;
  bool bClearOutputFileBeforeProcessing = false;
  std::string sSheetTarget;
  bool useRecipeFile = false;
  // How reports are read: "auto", "utf-8", "cp1252", "latin1", or "" to leave it to the recipe.
  // Kept in config.ini only once it has been set.
  std::string sInputEncoding;
  clsMRU inputs, outputs, recipes;

  // ReadIniFile: a missing file shows path + " can not be found!", a wrong header the header
  // check's message, and then nothing is read (false). Otherwise the six [General] keys (only
  // "FALSE" in any case is false; UseRecipeFile is YES after trimming and upper-casing; a tab
  // size that is not a number keeps 8) and the three lists, capacity 20.
  bool Read(UiPort& ui);
  // SaveIniFile: the [General] keys as "TRUE"/"FALSE", text, number and "YES"/"NO", then each
  // list writes itself. False when the file cannot be written.
  bool Save();
  const std::string& Path() const { return path_; }

  // bWarnedAboutTabsInFile. Set, it is written to the file at once, so the note is shown once
  // even if the window never closes.
  bool WarnedAboutTabsInFile() const { return warned_; }
  void SetWarnedAboutTabsInFile();

 private:
  std::string path_;
  bool warned_ = false;
  bool read_ = false;
};

}  // namespace kroveld
