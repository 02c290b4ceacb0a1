// The text viewer frmTextDisplay: the lines of a text file, read-only, one per list entry, in a
// fixed-pitch font with tabs expanded so columns line up as the converter sees them. The recipe
// editor opens it on the main window's input report.
#pragma once

#include <QDialog>
#include <QString>

class QListWidget;

namespace kroveld {

class UiPort;

// Very long reports are shown up to this many lines, with a last entry saying so.
inline constexpr int kViewerMaxLines = 200000;

class TextDisplay : public QDialog {
  Q_OBJECT
 public:
  TextDisplay(UiPort& ui, QString path, QWidget* mainWindow, QWidget* parent = nullptr);

  QString FilePath() const { return path_; }
  // Places the window beside the main window and fills the list; a path that is not a file is
  // reported ("Help file ... does not exist!") and leaves the list empty.
  void Load();
  QListWidget* List() const { return list_; }

 private:
  UiPort& ui_;
  QString path_;
  QWidget* main_window_;
  QListWidget* list_;
};

}  // namespace kroveld
