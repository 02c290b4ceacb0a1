// The recipe editor window frmExportBuilder: a recipe file as plain text in a fixed-pitch text
// box, its table sections counted in the caption, read from and saved to files the user chooses,
// and table sections added through the table definition dialog. It knows the main window only
// through RecipeEditorHost. Beside the text there is room for a preview pane, shown or hidden
// with the Preview button; the pane itself is supplied from outside (SetPreviewPane).
#pragma once

#include <QString>
#include <QWidget>
#include <functional>

#include "editor/table_builder.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QSplitter;
class QVBoxLayout;

namespace kroveld {

class HelpWindow;
class UiPort;

inline constexpr const char* kEditorCaption = "Recipe Editor - Tables = ";
// Larger files are refused by LoadRecipeIntoEditor: recipes are a few kilobytes, and a text box
// holding tens of megabytes stops answering.
inline constexpr qint64 kMaxRecipeBytes = 16 * 1024 * 1024;
// Longer lines (a file that is not text) are shown broken into lines of this length.
inline constexpr int kMaxLineChars = 10000;

// What the editor needs from the window that opens it. Every member may be left empty.
struct RecipeEditorHost {
  QWidget* mainWindow = nullptr;                       // placement of the editor and viewer
  QString appFolder;                                   // Save's start folder without a recipe
  std::function<QString()> recipeField;                // the main window's recipe path
  std::function<void(const QString&)> setRecipeField;  // told the path chosen by Save
  std::function<QString()> inputFile;                  // the report "View input report" shows
  std::function<void(int topic)> showHelp;             // else the editor's own help window
};

class RecipeEditor : public QWidget, public TableBuilderHost {
  Q_OBJECT
 public:
  RecipeEditor(UiPort& ui, RecipeEditorHost host, QWidget* parent = nullptr);
  ~RecipeEditor() override;

  // Opening: placed at an offset from the main window; an empty recipe path acts as New,
  // any other is loaded.
  void Open(const QString& recipePath);
  // Loads a recipe file; a missing file (or a folder, or one over kMaxRecipeBytes) is reported
  // and the text stays as it was.
  void LoadRecipeIntoEditor(const QString& path);

  // The buttons' actions.
  void New();
  void ReadFile();
  // Save as: asks for a name, asks before overwriting; false when the dialog was cancelled or
  // the file could not be written.
  bool Save();
  void AddTable();
  void Help();
  void Cancel();
  void ViewInputReport();

  // TableBuilderHost: the count shown in the caption, and text added at the end of the recipe.
  int TableCount() const override { return table_count_; }
  void SetTableCount(int count) override;
  void AppendRecipeText(const QString& text) override;

  QString RecipePath() const { return path_; }
  bool Edited() const { return edited_; }
  // The recipe as it stands in the text box (unsaved edits included), lines ended by CR LF.
  QString RecipeText() const;
  QPlainTextEdit* TextBox() const { return text_; }
  // The report the main window names as its input (empty without one).
  QString SampleReportPath() const;
  // Moves the caret to line `lineNumber` (from 1) of the recipe, selects that line and shows it.
  void SelectRecipeLine(int lineNumber);

  // Puts `pane` (reparented, owned by the editor from then on) into the preview container,
  // replacing an earlier pane; the Preview button shows and hides it.
  void SetPreviewPane(QWidget* pane);
  QWidget* PreviewPane() const { return preview_pane_; }
  bool PreviewShown() const;

  // The file dialogs; tests replace them. Arguments: title, start folder, Qt filter. An empty
  // result means cancelled.
  std::function<QString(const QString&, const QString&, const QString&)> askSavePath;
  std::function<QString(const QString&, const QString&, const QString&)> askOpenPath;

 signals:
  void recipeTextChanged();
  void previewToggled(bool shown);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void UpdateCaption();
  void ShowCaret();
  void SetText(const QString& text);

  UiPort& ui_;
  RecipeEditorHost host_;
  QString path_;
  bool edited_ = false;
  bool closing_without_asking_ = false;
  bool utf8_ = true;  // the encoding the loaded recipe came in
  int table_count_ = 0;

  QPlainTextEdit* text_;
  QSplitter* splitter_;
  QWidget* preview_box_;
  QVBoxLayout* preview_layout_;
  QWidget* preview_pane_ = nullptr;
  QPushButton* preview_button_;
  QLabel* status_path_;
  QLabel* status_caret_;
  HelpWindow* help_ = nullptr;
};

}  // namespace kroveld
