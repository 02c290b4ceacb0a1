#include "app/window/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QThread>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include "app/help/help_window.h"
#include "app/settings.h"
#include "app/version.h"
#include "app/window/enable_rules.h"
#include "app/window/options_dialog.h"
#include "app/window/qt_port.h"
#include "app/window/widget_names.h"
#include "editor/preview/preview_pane.h"
#include "editor/recipe_editor.h"
#include "engine/context.h"
#include "jobs/batch.h"
#include "util/files.h"

namespace kroveld {

namespace {

constexpr const char* kInputFilter = "Text (ASCII) Files (*.txt)|*.txt|All Files (*.*)|*.*";
constexpr const char* kOutputFilter =
    "Excel Files (*.xls)|*.xls|Comma Delimited (*.csv)|*.csv|All Files (*.*)|*.*";
constexpr const char* kRecipeFilter = "Recipe Files (*.rcp)|*.rcp|All Files (*.*)|*.*";

QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

std::string S(const QString& text) {
  return text.toStdString();
}

QComboBox* Field(QWidget* parent, const char* name) {
  auto* box = Named(new QComboBox(parent), name);
  box->setEditable(true);
  box->setInsertPolicy(QComboBox::NoInsert);
  // Screen readers name an editable drop-down by its text field: that field carries the name too.
  box->lineEdit()->setAccessibleName(QString::fromLatin1(name));
  box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  box->setMinimumContentsLength(30);
  return box;
}

QPushButton* Button(QWidget* parent, const char* name, const QString& caption,
                    const QString& tip = {}) {
  auto* button = Named(new QPushButton(caption, parent), name, caption);
  if (!tip.isEmpty()) button->setToolTip(tip);
  return button;
}

QToolButton* Picture(QWidget* parent, const char* name, QStyle::StandardPixmap icon,
                     const QString& tip) {
  auto* button = Named(new QToolButton(parent), name, tip);
  button->setIcon(parent->style()->standardIcon(icon));
  button->setToolTip(tip);
  return button;
}

QToolButton* HelpButton(QWidget* parent, const char* name, const QString& tip = {}) {
  auto* button = Named(new QToolButton(parent), name, tip);
  button->setText(QStringLiteral("?"));
  if (!tip.isEmpty()) button->setToolTip(tip);
  return button;
}

QLabel* Label(QWidget* parent, const char* name, const QString& text) {
  auto* label = Named(new QLabel(text, parent), name, text);
  label->setWordWrap(true);
  return label;
}

}  // namespace

// "Text (ASCII) Files (*.txt)|*.txt|All Files (*.*)|*.*" → "Text (ASCII) Files (*.txt);;All
// Files (*.*)": the same descriptions and patterns, in Qt's form.
QString QtFileFilter(const QString& systemFilter) {
  const QStringList parts = systemFilter.split(QLatin1Char('|'));
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    const QString& description = parts[i];
    const QString pattern = parts[i + 1];
    filters << (description.contains(QLatin1Char('(') + pattern + QLatin1Char(')'))
                    ? description
                    : description + QStringLiteral(" (") + pattern + QLatin1Char(')'));
  }
  return filters.join(QStringLiteral(";;"));
}

MainWindow::MainWindow(Context& ctx, QtPort& port, Settings& settings, QWidget* parent)
    : QWidget(parent),
      ctx_(ctx),
      port_(port),
      settings_(settings),
      menu_bar_(Named(new QMenuBar(this), "mnuMain")),
      toolbar_(Named(new QToolBar(this), "tbMain")) {
  Named(this, "frmMain");
  setAcceptDrops(true);
  auto* layout = new QVBoxLayout(this);
  BuildStep1();
  BuildStep2();
  BuildStep3();
  for (QGroupBox* step : step_) layout->addWidget(step);
  // Frames keep their natural height; spare room goes below the last step.
  for (QGroupBox* box : findChildren<QGroupBox*>()) {
    box->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
  }
  layout->addStretch(1);
  BuildMenusAndToolbar();
}

MainWindow::~MainWindow() = default;

void MainWindow::BuildStep1() {
  auto* frame = step_[0] =
      Named(new QGroupBox(QStringLiteral("STEP 1: Specify the input file(s)"), this), "frameGUI_0");
  auto* grid = new QGridLayout(frame);
  grid->addWidget(Label(frame, "lblInputFile",
                        QStringLiteral("Input File(s) For example: c:\\input\\test.txt or "
                                       "c:\\bills\\*.txt")),
                  0, 0, 1, 6);
  input_ = Field(frame, "cbInputFile");
  auto* browse = Button(frame, "cmdInputBrowse", tr("Browse..."), tr("Select Input File"));
  auto* picture = Picture(frame, "picSelectInputFile", QStyle::SP_FileIcon,
                          QStringLiteral("Select Input File"));
  auto* folder = Button(frame, "cmdSelectInputFolder", tr("Folder..."),
                        QStringLiteral("Select whole folder of files to process"));
  auto* folderPicture = Picture(frame, "picSelectInputFolder", QStyle::SP_DirIcon,
                                QStringLiteral("Select whole folder of files to process"));
  grid->addWidget(input_, 1, 0);
  grid->addWidget(browse, 1, 1);
  grid->addWidget(picture, 1, 2);
  grid->addWidget(folder, 1, 3);
  grid->addWidget(folderPicture, 1, 4);
  do_subfolders_ = Named(new QCheckBox(QStringLiteral("Do Subfolders"), frame), "cbDoSubfolders");
  edit_input_ = Button(frame, "cmdEditInput", QStringLiteral("Edit Input File"),
                       QStringLiteral("Edit input file"));
  auto* help = HelpButton(frame, "cmdHelpInputFile");
  auto* row = new QHBoxLayout;
  row->addWidget(do_subfolders_);
  row->addStretch();
  row->addWidget(edit_input_);
  row->addWidget(help);
  grid->addLayout(row, 2, 0, 1, 6);

  connect(browse, &QPushButton::clicked, this,
          [this] { BrowseFile(input_, "Select Text File to Convert", kInputFilter, false); });
  connect(picture, &QToolButton::clicked, browse, &QPushButton::click);
  connect(folder, &QPushButton::clicked, this, &MainWindow::ChooseInputFolder);
  connect(folderPicture, &QToolButton::clicked, folder, &QPushButton::click);
  connect(edit_input_, &QPushButton::clicked, this, [this] { LaunchFile(input_->currentText()); });
  connect(help, &QToolButton::clicked, this, [this] { ShowHelp(14); });
  connect(input_, &QComboBox::currentTextChanged, this, [this] {
    if (!list_being_filled_) UpdateControls();
  });
}

void MainWindow::BuildStep2() {
  auto* frame = step_[1] =
      Named(new QGroupBox(QStringLiteral("STEP 2: Specify conversion method.  Please select how "
                                         "you want to convert the file."),
                          this),
            "frameGUI_1");
  auto* layout = new QVBoxLayout(frame);
  auto* choice = new QHBoxLayout;
  use_recipe_[0] =
      Named(new QRadioButton(QStringLiteral("Use a Recipe File"), frame), "rbUseRecipe_0");
  use_recipe_[1] =
      Named(new QRadioButton(QStringLiteral("Use a Marked up text file"), frame), "rbUseRecipe_1");
  auto* methodHelp = HelpButton(frame, "cmdHelpConversionMethod", QStringLiteral("Press for help"));
  choice->addWidget(use_recipe_[0]);
  choice->addWidget(use_recipe_[1]);
  choice->addStretch();
  choice->addWidget(methodHelp);
  layout->addLayout(choice);

  auto* recipePanel = inner_[0] =
      Named(new QGroupBox(QStringLiteral("STEP 2B: Create or edit a recipe file."), frame),
            "frameInnerGUI_0");
  auto* grid = new QGridLayout(recipePanel);
  grid->addWidget(Label(recipePanel, "lblRecipeFile", QStringLiteral("Recipe File (*.rcp)")), 0, 0,
                  1, 4);
  recipe_ = Field(recipePanel, "cbRecipeFile");
  auto* browse = Button(recipePanel, "cmdRecipeBrowse", tr("Browse..."), tr("Select Recipe File"));
  auto* picture = Picture(recipePanel, "picSelectRecipe", QStyle::SP_FileIcon,
                          QStringLiteral("Select Recipe File"));
  auto* edit = Button(recipePanel, "cmdEditRecipe", QStringLiteral("Edit Recipe"));
  auto* recipeHelp = HelpButton(recipePanel, "cmdHelpRecipeFile");
  grid->addWidget(recipe_, 1, 0);
  grid->addWidget(browse, 1, 1);
  grid->addWidget(picture, 1, 2);
  auto* row = new QHBoxLayout;
  row->addStretch();
  row->addWidget(edit);
  row->addWidget(recipeHelp);
  grid->addLayout(row, 2, 0, 1, 4);
  layout->addWidget(recipePanel);

  auto* markupPanel = inner_[1] = Named(
      new QGroupBox(QStringLiteral("STEP 2B: Mark up the input file"), frame), "frameInnerGUI_1");
  auto* markupRow = new QHBoxLayout(markupPanel);
  markupRow->addWidget(
      Named(new QLabel(QStringLiteral("Mark up the input file(s) by editiing."), markupPanel),
            "lblMarkup"));
  auto* markupHelp = HelpButton(markupPanel, "cmdHelpMarkup");
  markupRow->addStretch();
  markupRow->addWidget(markupHelp);
  layout->addWidget(markupPanel);

  for (QRadioButton* button : use_recipe_) {
    connect(button, &QRadioButton::clicked, this, &MainWindow::ShowMethodPanel);
  }
  connect(methodHelp, &QToolButton::clicked, this, [this] { ShowHelp(15); });
  connect(browse, &QPushButton::clicked, this,
          [this] { BrowseFile(recipe_, "Select Recipe File", kRecipeFilter, false); });
  connect(picture, &QToolButton::clicked, browse, &QPushButton::click);
  connect(edit, &QPushButton::clicked, this, [this] { openRecipeEditor(recipe_->currentText()); });
  connect(recipeHelp, &QToolButton::clicked, this, [this] { ShowHelp(13); });
  connect(markupHelp, &QToolButton::clicked, this, [this] { ShowHelp(12); });
  openRecipeEditor = [this](const QString& path) { OpenRecipeEditor(path); };
}

void MainWindow::BuildStep3() {
  auto* frame = step_[2] = Named(
      new QGroupBox(QStringLiteral("STEP 3: Specify the output file(s)"), this), "frameGUI_2");
  auto* grid = new QGridLayout(frame);
  grid->addWidget(Label(frame, "lblOutputFile",
                        QStringLiteral("Output File(s)  For example: c:\\output\\.csv or "
                                       "c:\\excel\\*.xls")),
                  0, 0, 1, 6);
  grid->addWidget(Label(frame, "lblOutputNote",
                        QStringLiteral("NOTE: To generate a CSV file use a file name with the "
                                       "*.CSV extension, to create an XLS, use *.XLS")),
                  1, 0, 1, 6);
  output_ = Field(frame, "cbOutputFile");
  auto* browse =
      Button(frame, "cmdOutputBrowse", tr("Browse..."), QStringLiteral("Select Output File"));
  auto* picture =
      Picture(frame, "picSelectOutput", QStyle::SP_FileIcon, QStringLiteral("Select Output File"));
  auto* folder = Button(frame, "cmdSelectOutputFolder", tr("Folder..."));
  auto* folderPicture =
      Picture(frame, "picSelectOutputFolder", QStyle::SP_DirIcon, tr("Select Output Folder"));
  grid->addWidget(output_, 2, 0);
  grid->addWidget(browse, 2, 1);
  grid->addWidget(picture, 2, 2);
  grid->addWidget(folder, 2, 3);
  grid->addWidget(folderPicture, 2, 4);
  save_to_original_ = Named(new QCheckBox(QStringLiteral("Save to &Original folder"), frame),
                            "cbSaveToOriginalFolder");
  auto* edit = Button(frame, "cmdEditOutput", QStringLiteral("Edit Output"),
                      QStringLiteral("Edit output file"));
  auto* help = HelpButton(frame, "cmdHelpOutputFile", QStringLiteral("Press for help"));
  auto* row = new QHBoxLayout;
  row->addWidget(save_to_original_);
  row->addStretch();
  row->addWidget(edit);
  row->addWidget(help);
  grid->addLayout(row, 3, 0, 1, 6);
  output_browse_[0] = browse;
  output_browse_[1] = picture;
  output_browse_[2] = edit;
  output_folder_[0] = folder;
  output_folder_[1] = folderPicture;

  connect(browse, &QPushButton::clicked, this,
          [this] { BrowseFile(output_, "Select Output File", kOutputFilter, true); });
  connect(picture, &QToolButton::clicked, browse, &QPushButton::click);
  connect(folder, &QPushButton::clicked, this, &MainWindow::ChooseOutputFolder);
  connect(folderPicture, &QToolButton::clicked, folder, &QPushButton::click);
  connect(edit, &QPushButton::clicked, this, [this] { LaunchFile(output_->currentText()); });
  connect(help, &QToolButton::clicked, this, [this] { ShowHelp(16); });
  connect(save_to_original_, &QCheckBox::toggled, this, &MainWindow::UpdateControls);
}

void MainWindow::BuildMenusAndToolbar() {
  QMenu* file = Named(menu_bar_->addMenu(QStringLiteral("&File")), "mnuFile");
  QAction* exit = file->addAction(QStringLiteral("E&xit"));
  exit->setObjectName(QStringLiteral("mnuFileExit"));
  connect(exit, &QAction::triggered, this, [this] { window()->close(); });

  QMenu* edit = Named(menu_bar_->addMenu(QStringLiteral("&Edit")), "mnuEdit");
  QAction* editor = edit->addAction(QStringLiteral("&Recipe Editor..."));
  editor->setObjectName(QStringLiteral("frmEditRecipe"));
  connect(editor, &QAction::triggered, this, [this] { openRecipeEditor(recipe_->currentText()); });

  QMenu* help = Named(menu_bar_->addMenu(QStringLiteral("&Help")), "mnuHelpMenu");
  const struct {
    const char* name;
    QString caption;
    std::function<void()> action;
  } items[] = {
      {"mnuHelp", QStringLiteral("Help &Contents"), [this] { ShowHelp(kHelpContents); }},
      {"mnuHelpHowToUse", tr("&How to Use Kroveld"), [this] { ShowHelp(kHelpHowToUse); }},
      {"mnuHelpWeb", QStringLiteral("&Web Help (most up to date)"),
       [] { QDesktopServices::openUrl(HelpPageFileUrl(kHelpContents)); }},
      {"mnuHelpProductHomePage", QStringLiteral("&Product Home Page"),
       [] { QDesktopServices::openUrl(HelpPageFileUrl(kHelpHowToUse)); }},
      {"mnuHelpProductUpdates", QStringLiteral("Product &Updates"),
       [this] {
         port_.Message(std::string(kProgramName) + " version " + VersionText(), Icon::Information,
                       "Product Updates");
       }},
  };
  for (const auto& item : items) {
    QAction* action = help->addAction(item.caption);
    action->setObjectName(QString::fromLatin1(item.name));
    connect(action, &QAction::triggered, this, item.action);
  }

  toolbar_->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
  const struct {
    const char* key;
    QString caption, tip;
    QStyle::StandardPixmap icon;
  } buttons[] = {
      {"keyConvert", QStringLiteral("Convert"), QStringLiteral("Begin Conversion (F5)"),
       QStyle::SP_MediaPlay},
      {"keyPause", QStringLiteral("&Pause"), QStringLiteral("Pause conversion process"),
       QStyle::SP_MediaPause},
      {"KeyOptions", QStringLiteral("Options"), QString(), QStyle::SP_FileDialogDetailedView},
  };
  for (const auto& b : buttons) {
    QAction* action = toolbar_->addAction(style()->standardIcon(b.icon), b.caption);
    const QString key = QString::fromLatin1(b.key);
    action->setObjectName(key);
    if (!b.tip.isEmpty()) action->setToolTip(b.tip);
    if (QWidget* widget = toolbar_->widgetForAction(action)) Named(widget, key, b.caption);
    connect(action, &QAction::triggered, this, [this, key] { ToolbarButtonClick(key); });
    if (key == QLatin1String("keyConvert")) convert_ = action;
    if (key == QLatin1String("keyPause")) pause_ = action;
  }
  convert_->setShortcut(QKeySequence(Qt::Key_F5));
  convert_->setShortcutContext(Qt::ApplicationShortcut);
  pause_->setEnabled(false);
}

void MainWindow::Load() {
  if (settings_.Read(port_)) use_recipe_[settings_.useRecipeFile ? 0 : 1]->setChecked(true);
  if (!use_recipe_[0]->isChecked() && !use_recipe_[1]->isChecked()) {
    use_recipe_[1]->setChecked(true);
  }
  FillList(input_, settings_.inputs);
  FillList(output_, settings_.outputs);
  FillList(recipe_, settings_.recipes);
  ShowMethodPanel();
  UpdateControls();
  // The paths of the last conversion, when their files are still there.
  if (FileExists(ctx_.currentRecipe)) recipe_->setEditText(Q(ctx_.currentRecipe));
  if (FileExists(ctx_.currentInput)) input_->setEditText(Q(ctx_.currentInput));
  if (FileExists(ctx_.currentOutput)) output_->setEditText(Q(ctx_.currentOutput));
}

void MainWindow::Unload() {
  if (Running()) {
    ctx_.run.stopRequested.store(true);
    // Nobody is left to answer: the conversion is told yes when it asks whether to stop.
    port_.SetAnswerer([](const std::string&, Icon, bool question) { return question; });
    QThread::msleep(1000);
    return;
  }
  settings_.useRecipeFile = use_recipe_[0]->isChecked();
  settings_.Save();
}

void MainWindow::FillList(QComboBox* box, const clsMRU& list) {
  const bool was = list_being_filled_;
  list_being_filled_ = true;
  box->clear();
  const auto& items = list.Items();
  for (auto it = items.rbegin(); it != items.rend(); ++it) box->addItem(Q(*it));
  if (!items.empty()) box->setCurrentIndex(0);
  list_being_filled_ = was;
}

void MainWindow::UpdateMRUs() {
  settings_.inputs.AddUniqueItemToCollection(S(input_->currentText()));
  settings_.outputs.AddUniqueItemToCollection(S(output_->currentText()));
  settings_.recipes.AddUniqueItemToCollection(S(recipe_->currentText()));
  FillList(input_, settings_.inputs);
  FillList(output_, settings_.outputs);
  FillList(recipe_, settings_.recipes);
}

void MainWindow::UpdateControls() {
  const ControlStates s =
      EnableRules(input_->currentText().contains(QLatin1Char('*')), save_to_original_->isChecked());
  do_subfolders_->setEnabled(s.doSubfoldersEnabled);
  edit_input_->setEnabled(s.editInputEnabled);
  if (s.saveToOriginalUnchecked) {
    const QSignalBlocker quiet(save_to_original_);
    save_to_original_->setChecked(false);
  }
  save_to_original_->setEnabled(s.saveToOriginalEnabled);
  for (QWidget* w : output_browse_) w->setEnabled(s.outputBrowseEnabled);
  for (QWidget* w : output_folder_) w->setEnabled(s.outputFolderEnabled);
  output_->setEnabled(s.outputFieldEnabled);
}

void MainWindow::ShowMethodPanel() {
  inner_[0]->setVisible(use_recipe_[0]->isChecked());
  inner_[1]->setVisible(!use_recipe_[0]->isChecked());
}

void MainWindow::ToolbarButtonClick(const QString& key) {
  if (key == QLatin1String("keyConvert")) {
    Convert();
  } else if (key == QLatin1String("keyPause")) {
    Pause();
  } else if (key == QLatin1String("KeyOptions")) {
    ConfigureKROOptions();
  }
}

bool MainWindow::Running() const {
  return ctx_.run.running;
}

bool MainWindow::WarnedAboutTabsInFile() {
  return settings_.WarnedAboutTabsInFile();
}

void MainWindow::SetWarnedAboutTabsInFile() {
  settings_.SetWarnedAboutTabsInFile();
}

void MainWindow::JobStarted() {
  convert_->setEnabled(false);
  pause_->setEnabled(true);
  QApplication::setOverrideCursor(Qt::BusyCursor);
}

void MainWindow::JobFinished() {
  QApplication::restoreOverrideCursor();
  convert_->setEnabled(true);
  pause_->setEnabled(false);
}

void MainWindow::Convert() {
  if (Running()) return;
  clsConversionOptions& o = ctx_.options;
  o.sInputFile = S(input_->currentText());
  o.sOutputFile = S(output_->currentText());
  o.sRecipeFile = S(recipe_->currentText());
  o.bUseRecipe = use_recipe_[0]->isChecked();
  o.bDoSubfolders = do_subfolders_->isChecked();
  o.bSaveInOriginalFolder = save_to_original_->isChecked();
  o.bShowExcel = settings_.bShowExcel;
  o.lTabSize = settings_.lTabSize;
  o.bClearOutputFileBeforeProcessing = settings_.bClearOutputFileBeforeProcessing;
  o.sSheetTarget = settings_.sSheetTarget;
  ParseInputEncoding(settings_.sInputEncoding, o.inputEncoding);
  recipe_box_text_ = o.sRecipeFile;
  ctx_.run.stopRequested.store(false);
  BeginProcessing(ctx_, *this);
}

void MainWindow::Pause() {
  if (Running()) ctx_.run.stopRequested.store(true);
}

void MainWindow::ConfigureKROOptions() {
  OptionsDialog dialog(settings_, port_, this);
  dialog.exec();
}

void MainWindow::LaunchFile(const QString& path) {
  const std::string p = S(path);
  if (FileExists(p) || FolderExists(p)) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(Q(NativePath(p))));
    return;
  }
  port_.Message("File/Folder does not exist:\n\n" + p, Icon::Information, "Error");
}

QString MainWindow::StartFolder(const QComboBox* field) const {
  const std::string text = S(field->currentText());
  if (text.empty()) return {};
  const std::string native = NativePath(text);
  if (FolderExists(native)) return Q(native);
  return QFileInfo(Q(native)).absolutePath();
}

void MainWindow::BrowseFile(QComboBox* field, const char* title, const char* filter, bool save) {
  const QString qtFilter = QtFileFilter(QString::fromLatin1(filter));
  const QString path =
      save ? QFileDialog::getSaveFileName(this, QString::fromLatin1(title), StartFolder(field),
                                          qtFilter, nullptr, QFileDialog::DontConfirmOverwrite)
           : QFileDialog::getOpenFileName(this, QString::fromLatin1(title), StartFolder(field),
                                          qtFilter);
  if (!path.isEmpty()) field->setEditText(path);
}

void MainWindow::ChooseInputFolder() {
  const QString folder =
      QFileDialog::getExistingDirectory(this, tr("Select Input Folder"), StartFolder(input_));
  if (!folder.isEmpty()) input_->setEditText(folder + QStringLiteral("/*.TXT"));
}

void MainWindow::ChooseOutputFolder() {
  const QString folder =
      QFileDialog::getExistingDirectory(this, tr("Select Output Folder"), StartFolder(output_));
  if (folder.isEmpty()) return;
  const std::string current = S(output_->currentText());
  const std::string extension = current.empty() ? std::string() : ExtensionName(current);
  output_->setEditText(folder + QStringLiteral("/*.") + Q(extension));
}

void MainWindow::TakeDroppedPath(const QString& path) {
  QFileInfo info(path);
  input_->setEditText(info.isDir() ? QDir(path).absolutePath() + QStringLiteral("/*.TXT") : path);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls() && event->mimeData()->urls().front().isLocalFile()) {
    event->acceptProposedAction();
  }
}

void MainWindow::dropEvent(QDropEvent* event) {
  const QList<QUrl> urls = event->mimeData()->urls();
  if (urls.isEmpty() || !urls.front().isLocalFile()) return;
  TakeDroppedPath(urls.front().toLocalFile());
  event->acceptProposedAction();
}

void MainWindow::OpenRecipeEditor(const QString& recipePath) {
  if (editor_ != nullptr) {
    editor_->show();
    editor_->raise();
    editor_->activateWindow();
    return;
  }
  RecipeEditorHost host;
  host.mainWindow = this;
  host.appFolder = Q(ctx_.appFolder);
  host.recipeField = [this] { return recipe_->currentText(); };
  host.setRecipeField = [this](const QString& path) { recipe_->setEditText(path); };
  host.inputFile = [this] { return input_->currentText(); };
  host.showHelp = [this](int topic) { ShowHelp(topic); };
  editor_ = new RecipeEditor(port_, std::move(host), this);
  editor_->setAttribute(Qt::WA_DeleteOnClose);
  editor_->Open(recipePath);
  AttachPreview(editor_);
  editor_->show();
}

// The preview beside the editor runs on the recipe as typed and the window's input report, only
// while it is shown; picking one of its messages selects the recipe line it names.
void MainWindow::AttachPreview(RecipeEditor* editor) {
  auto* pane = Named(new PreviewPane, QStringLiteral("panePreview"));
  editor->SetPreviewPane(pane);
  auto feed = [this, editor, pane] {
    if (!editor->PreviewShown()) return;
    pane->SetTabSize(settings_.lTabSize);
    if (pane->SampleReport().isEmpty()) pane->SetSampleReport(editor->SampleReportPath());
    pane->SetRecipeText(editor->RecipeText(), editor->RecipePath());
  };
  connect(editor, &RecipeEditor::previewToggled, pane, feed);
  connect(editor, &RecipeEditor::recipeTextChanged, pane, feed);
  connect(pane, &PreviewPane::recipeLineRequested, editor, &RecipeEditor::SelectRecipeLine);
}

RecipeEditor* MainWindow::RecipeEditorWindow() const {
  return editor_;
}

bool MainWindow::CloseRecipeEditor() {
  return editor_ == nullptr || editor_->close();
}

void MainWindow::ShowHelp(int topic) {
  if (help_ == nullptr) help_ = new HelpWindow(window());
  help_->ShowTopic(topic);
}

}  // namespace kroveld
