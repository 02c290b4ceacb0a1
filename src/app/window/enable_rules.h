// The main window's enable rules, decided by whether the input names several files (holds "*")
// and whether "Save to Original folder" is checked. Kept apart from the widgets so the rule table
// can be read and tested on its own.
#pragma once

namespace kroveld {

struct ControlStates {
  bool doSubfoldersEnabled;
  bool editInputEnabled;
  bool saveToOriginalEnabled;
  bool saveToOriginalUnchecked;  // the check box is cleared (one input file)
  bool outputBrowseEnabled;      // cmdOutputBrowse, picSelectOutput, cmdEditOutput
  bool outputFolderEnabled;      // cmdSelectOutputFolder, picSelectOutputFolder
  bool outputFieldEnabled;       // cbOutputFile
};

constexpr ControlStates EnableRules(bool wildcardInput, bool saveToOriginalChecked) {
  if (!wildcardInput) return {false, true, false, true, true, false, true};
  // Several files: with "Save to Original folder" no output location is needed.
  return {true, false, true, false, false, !saveToOriginalChecked, !saveToOriginalChecked};
}

}  // namespace kroveld
