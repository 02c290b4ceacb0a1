// The main window frmMain: the three STEP frames where the user names the input, chooses the
// conversion method and the recipe, and names the output; its menus and the toolbar tbMain
// (Convert, Pause, Options), which the frame window shows as its own. Conversions run on the
// user-interface thread through the jobs layer, yielding through the Qt port.
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <string>

#include "jobs/conversion_job.h"

class QAction;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QMenuBar;
class QPushButton;
class QRadioButton;
class QToolBar;

namespace kroveld {

class Context;
class HelpWindow;
class QtPort;
class RecipeEditor;
class Settings;
class clsMRU;

// It is the host of the conversions it starts: Convert and Pause follow the job, the recipe box
// text is quoted by the messages, the lists take the field texts.
class MainWindow : public QWidget, public ConversionHost {
  Q_OBJECT
 public:
  MainWindow(Context& ctx, QtPort& port, Settings& settings, QWidget* parent = nullptr);
  ~MainWindow() override;

  QMenuBar* MenuBar() const { return menu_bar_; }
  QToolBar* ToolBar() const { return toolbar_; }

  // Form_Load: reads the settings, fills the three drop-downs, applies the enable rules.
  void Load();
  // Form_Unload: during a conversion, a stop request and a one-second wait, nothing saved;
  // otherwise the settings and the lists are saved.
  void Unload();

  // The toolbar's button keys, compared exactly: "keyConvert", "keyPause", "KeyOptions".
  void ToolbarButtonClick(const QString& key);
  // BeginProcessing with the options filled from the window; not re-entered while running.
  void Convert();
  bool Running() const;
  // ConversionJobPause: a stop request while a conversion runs.
  void Pause();
  void ConfigureKROOptions();
  // Adds the three field texts to their lists and refills the drop-downs.
  void UpdateMRUs() override;
  bool WarnedAboutTabsInFile() override;
  void SetWarnedAboutTabsInFile() override;
  std::string RecipeBoxText() override { return recipe_box_text_; }
  // Convert off, Pause on and a busy cursor while a job runs; back at its end.
  void JobStarted() override;
  void JobFinished() override;
  // Opens a file with its program or a folder in the file manager; says so when neither exists.
  void LaunchFile(const QString& path);
  // The enable rules for the current input text and check boxes.
  void UpdateControls();
  // Puts a report (or a folder, as folder + "/*.TXT") dropped on the window into the input field.
  void TakeDroppedPath(const QString& path);

  // Opens the recipe editor on a recipe path (an empty path starts a new recipe); an editor
  // already open is brought to the front as it stands.
  std::function<void(const QString& recipePath)> openRecipeEditor;
  // The open recipe editor, or null.
  RecipeEditor* RecipeEditorWindow() const;
  // Closes the recipe editor, which asks about unsaved edits; false when it stays open.
  bool CloseRecipeEditor();

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void BuildStep1();
  void BuildStep2();
  void BuildStep3();
  void BuildMenusAndToolbar();
  void FillList(QComboBox* box, const clsMRU& list);
  void ShowMethodPanel();
  void ShowHelp(int topic);
  void OpenRecipeEditor(const QString& recipePath);
  void AttachPreview(RecipeEditor* editor);
  void BrowseFile(QComboBox* field, const char* title, const char* filter, bool save);
  void ChooseInputFolder();
  void ChooseOutputFolder();
  QString StartFolder(const QComboBox* field) const;

  Context& ctx_;
  QtPort& port_;
  Settings& settings_;
  HelpWindow* help_ = nullptr;
  QPointer<RecipeEditor> editor_;
  bool list_being_filled_ = false;
  std::string recipe_box_text_;  // the recipe text as Convert took it

  QMenuBar* menu_bar_;
  QToolBar* toolbar_;
  QAction* convert_ = nullptr;
  QAction* pause_ = nullptr;
  QGroupBox* step_[3] = {};
  QComboBox* input_ = nullptr;
  QComboBox* output_ = nullptr;
  QComboBox* recipe_ = nullptr;
  QCheckBox* do_subfolders_ = nullptr;
  QCheckBox* save_to_original_ = nullptr;
  QRadioButton* use_recipe_[2] = {};
  QGroupBox* inner_[2] = {};
  QPushButton* edit_input_ = nullptr;
  QWidget* output_browse_[3] = {};  // cmdOutputBrowse, picSelectOutput, cmdEditOutput
  QWidget* output_folder_[2] = {};  // cmdSelectOutputFolder, picSelectOutputFolder
};

}  // namespace kroveld
