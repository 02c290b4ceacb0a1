// The options dialog frmKROOptions: the main window's conversion settings on three tabs (tab
// size and input encoding on the input page).
// Apply writes them back to the owner's settings (no file is written); Cancel leaves them.
#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QTabWidget;

namespace kroveld {

class QtPort;
class Settings;

class OptionsDialog : public QDialog {
  Q_OBJECT
 public:
  OptionsDialog(Settings& owner, QtPort& port, QWidget* parent = nullptr);

  // cmdApply: refuses a tab size that is not a whole number (the dialog stays open).
  void Apply();

 private:
  Settings& owner_;
  QtPort& port_;
  QTabWidget* tabs_;
  QLineEdit* tab_size_;
  QLineEdit* sheet_target_;
  QCheckBox* clear_output_;
  QCheckBox* show_excel_;
  QComboBox* input_encoding_;  // item data: the setting's text
};

}  // namespace kroveld
