#include "editor/recipe_editor.h"

#include <QCloseEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QTextBlock>
#include <QVBoxLayout>
#include <algorithm>

#include "app/help/help_window.h"
#include "app/window/widget_names.h"
#include "editor/editor_support.h"
#include "editor/text_display.h"
#include "util/files.h"
#include "util/profile.h"
#include "util/strings.h"
#include "util/ui_port.h"

namespace kroveld {

namespace {

constexpr const char* kNewRecipe =
    "[Header]\r\nProduct=KRO-B\r\nFileType=RECIPE\r\nFileFormat=1.0\r\n";
constexpr int kRecipeHelpTopic = 13;

// The text box keeps lines apart with "\n"; files carry CR LF, LF or a lone CR.
QString WithNewlines(QString text) {
  text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return text;
}

// A text box lays a line out whole: one line of megabytes (a file that is not text) would hold
// the window for minutes. Breaks such lines; true when there was one.
bool BreakLongLines(QString& text) {
  bool broke = false;
  QString out;
  qsizetype run = 0;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (c == QLatin1Char('\n')) {
      run = 0;
    } else if (++run > kMaxLineChars) {
      if (!broke) {
        out.reserve(text.size() + text.size() / kMaxLineChars + 1);
        out = text.left(i);
      }
      broke = true;
      out += QLatin1Char('\n');
      run = 1;
    }
    if (broke) out += c;
  }
  if (broke) text = std::move(out);
  return broke;
}

std::string S(const QString& text) {
  return text.toStdString();
}

QPushButton* Button(QWidget* parent, const char* name, const QString& caption) {
  return Named(new QPushButton(caption, parent), QString::fromLatin1(name), caption);
}

QString DefaultAskPath(QWidget* parent, bool save, const QString& title, const QString& folder,
                       const QString& filter) {
  return save ? QFileDialog::getSaveFileName(parent, title, folder, filter, nullptr,
                                             QFileDialog::DontConfirmOverwrite)
              : QFileDialog::getOpenFileName(parent, title, folder, filter);
}

}  // namespace

RecipeEditor::RecipeEditor(UiPort& ui, RecipeEditorHost host, QWidget* parent)
    : QWidget(parent, Qt::Window), ui_(ui), host_(std::move(host)) {
  Named(this, QStringLiteral("frmExportBuilder"));
  askSavePath = [this](const QString& t, const QString& d, const QString& f) {
    return DefaultAskPath(this, true, t, d, f);
  };
  askOpenPath = [this](const QString& t, const QString& d, const QString& f) {
    return DefaultAskPath(this, false, t, d, f);
  };

  auto* buttons = Named(new QWidget(this), QStringLiteral("frameButtons"));
  auto* column = new QVBoxLayout(buttons);
  column->setContentsMargins(0, 0, 0, 0);
  auto* newButton = Button(buttons, "cmdNew", QStringLiteral("New..."));
  auto* load = Button(buttons, "cmdLoadFile", QStringLiteral("Read File..."));
  auto* save = Button(buttons, "cmdSave", QStringLiteral("&Save"));
  auto* addTable = Button(buttons, "cmdAddTable", QStringLiteral("Add Table..."));
  auto* view = Button(buttons, "cmdViewInput", tr("View input report..."));
  view->setToolTip(tr("Show the main window's input file, line by line"));
  preview_button_ = Button(buttons, "cmdPreview", tr("Preview"));
  preview_button_->setCheckable(true);
  preview_button_->setEnabled(false);
  preview_button_->setToolTip(tr("Show or hide the preview beside the recipe"));
  auto* help = Button(buttons, "cmdHelp", QStringLiteral("Help..."));
  auto* cancel = Button(buttons, "cmdCancel", QStringLiteral("Cancel"));
  auto* close = Button(buttons, "cmdClose", QStringLiteral("&Close"));
  for (QPushButton* b : {newButton, load, save, addTable, view, preview_button_}) {
    column->addWidget(b);
  }
  column->addStretch(1);
  for (QPushButton* b : {help, cancel, close}) column->addWidget(b);
  buttons->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);

  text_ = Named(new QPlainTextEdit(this), QStringLiteral("txtFileEditor"));
  text_->setFont(FixedPitchFont());
  text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setTabChangesFocus(false);
  preview_box_ = Named(new QWidget(this), QStringLiteral("framePreview"));
  preview_layout_ = new QVBoxLayout(preview_box_);
  preview_layout_->setContentsMargins(0, 0, 0, 0);
  preview_box_->hide();
  splitter_ = Named(new QSplitter(Qt::Horizontal, this), QStringLiteral("splitPreview"));
  splitter_->addWidget(text_);
  splitter_->addWidget(preview_box_);
  splitter_->setChildrenCollapsible(false);
  splitter_->setStretchFactor(0, 1);
  splitter_->setStretchFactor(1, 1);

  auto* status = Named(new QStatusBar(this), QStringLiteral("StatusBar1"));
  status->setSizeGripEnabled(true);
  status_path_ = Named(new QLabel(status), QStringLiteral("StatusBar1Panel1"));
  status_caret_ = Named(new QLabel(status), QStringLiteral("StatusBar1Panel2"));
  status->addWidget(status_path_, 1);
  status->addPermanentWidget(status_caret_);

  // The button frame keeps its place; the text (and the preview) and the status bar take the
  // rest of the window.
  auto* layout = new QVBoxLayout(this);
  auto* row = new QHBoxLayout;
  row->addWidget(buttons);
  row->addWidget(splitter_, 1);
  layout->addLayout(row, 1);
  layout->addWidget(status);
  resize(760, 520);

  connect(newButton, &QPushButton::clicked, this, &RecipeEditor::New);
  connect(load, &QPushButton::clicked, this, &RecipeEditor::ReadFile);
  connect(save, &QPushButton::clicked, this, [this] { Save(); });
  connect(addTable, &QPushButton::clicked, this, &RecipeEditor::AddTable);
  connect(view, &QPushButton::clicked, this, &RecipeEditor::ViewInputReport);
  connect(help, &QPushButton::clicked, this, &RecipeEditor::Help);
  connect(cancel, &QPushButton::clicked, this, &RecipeEditor::Cancel);
  connect(close, &QPushButton::clicked, this, &QWidget::close);
  connect(preview_button_, &QPushButton::toggled, this, [this](bool on) {
    preview_box_->setVisible(on && preview_pane_ != nullptr);
    // The window widens for the pane, as far as the screen allows, so the recipe keeps its room.
    if (PreviewShown() && !isMaximized()) {
      const QScreen* screen = this->screen();
      const QRect area = screen ? screen->availableGeometry() : geometry();
      const int wanted = std::min(area.width(), std::max(width(), 1400));
      if (wanted > width()) {
        resize(wanted, std::min(area.height(), std::max(height(), 720)));
        // Moved back onto the screen when the wider window would stand out on its right.
        const int overhang = frameGeometry().right() - area.right();
        if (overhang > 0) move(std::max(area.left(), x() - overhang), y());
      }
    }
    emit previewToggled(PreviewShown());
  });
  connect(text_, &QPlainTextEdit::textChanged, this, [this] {
    edited_ = true;
    emit recipeTextChanged();
  });
  connect(text_, &QPlainTextEdit::cursorPositionChanged, this, &RecipeEditor::ShowCaret);
  UpdateCaption();
  ShowCaret();
}

RecipeEditor::~RecipeEditor() = default;

void RecipeEditor::Open(const QString& recipePath) {
  PlaceBelow(this, host_.mainWindow, 400, 400);
  if (recipePath.trimmed().isEmpty()) {
    New();
  } else {
    LoadRecipeIntoEditor(recipePath);
  }
  UpdateCaption();
}

void RecipeEditor::LoadRecipeIntoEditor(const QString& path) {
  const std::string p = S(path);
  if (!FileExists(p)) {
    ui_.Message("File: " + p + " does not exist!", Icon::Exclamation);
    return;
  }
  QFile file(QString::fromStdString(NativePath(Trim(p))));
  if (file.size() > kMaxRecipeBytes) {
    ui_.Message("File: " + p + " is larger than 16 MiB (" + std::to_string(file.size()) +
                    " bytes); the recipe editor opens files of up to 16 MiB.",
                Icon::Exclamation);
    return;
  }
  if (!file.open(QIODevice::ReadOnly)) {
    ui_.Message("File: " + p + " cannot be read: " + S(file.errorString()), Icon::Exclamation);
    return;
  }
  const QByteArray bytes = file.read(kMaxRecipeBytes);
  QString text = WithNewlines(DecodeText(bytes, &utf8_));
  if (BreakLongLines(text)) {
    ui_.Message("File: " + p + " holds lines longer than " + std::to_string(kMaxLineChars) +
                    " characters, so it is probably not a recipe; they are shown broken into "
                    "lines of that length, and saving writes them so.",
                Icon::Exclamation);
  }
  SetText(text);
  path_ = path;
  table_count_ = CountSectionHeadings(p, "[Table ", "Col");
  edited_ = false;
  UpdateCaption();
}

void RecipeEditor::New() {
  path_.clear();
  utf8_ = true;
  table_count_ = 0;
  SetText(WithNewlines(QString::fromLatin1(kNewRecipe)));
  UpdateCaption();
}

void RecipeEditor::ReadFile() {
  const QString folder = path_.isEmpty() ? QString() : QFileInfo(path_).absolutePath();
  const QString chosen =
      askOpenPath(QStringLiteral("Select Recipe File"), folder,
                  QtFilter(QStringLiteral("Recipe Files (*.rcp)|*.rcp|All Files (*.*)|*.*")));
  if (!chosen.isEmpty()) LoadRecipeIntoEditor(chosen);
}

bool RecipeEditor::Save() {
  const QString field = host_.recipeField ? host_.recipeField() : QString();
  const QString folder = field.trimmed().isEmpty()
                             ? host_.appFolder + QLatin1Char('/')
                             : QString::fromStdString(NativePath(FolderOfPath(S(field.trimmed()))));
  const QString chosen = askSavePath(QStringLiteral("Save Recipe File As"), folder,
                                     QtFilter(QStringLiteral("Recipe Files(*.rcp)|*.rcp")));
  if (chosen.isEmpty()) return false;
  const std::string p = S(chosen);
  const bool write =
      !FileExists(p) || ui_.AskYesNo("Overwrite existing file: " + p, Icon::Question);
  if (write) {
    const QByteArray bytes = EncodeText(RecipeText(), utf8_);
    AtomicFile file;
    bool ok = file.Open(p);
    if (ok) {
      file.Write(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
      ok = file.Commit();
    }
    if (!ok) {
      ui_.Message("The recipe could not be saved: " + file.Error(), Icon::Exclamation);
      return false;
    }
    path_ = chosen;
  }
  // Declining the overwrite still counts the edit as dealt with: the main window takes the
  // chosen path either way.
  if (host_.setRecipeField) host_.setRecipeField(chosen);
  edited_ = false;
  UpdateCaption();
  return true;
}

void RecipeEditor::AddTable() {
  TableBuilder dialog(ui_, *this, this);
  dialog.exec();
}

void RecipeEditor::Help() {
  if (host_.showHelp) {
    host_.showHelp(kRecipeHelpTopic);
    return;
  }
  if (help_ == nullptr) help_ = new HelpWindow(this);
  help_->ShowTopic(kRecipeHelpTopic);
}

void RecipeEditor::Cancel() {
  closing_without_asking_ = true;
  if (!close()) closing_without_asking_ = false;
}

void RecipeEditor::ViewInputReport() {
  auto* viewer = new TextDisplay(ui_, SampleReportPath(), host_.mainWindow, this);
  viewer->setAttribute(Qt::WA_DeleteOnClose);
  viewer->Load();
  viewer->show();
}

void RecipeEditor::closeEvent(QCloseEvent* event) {
  if (!closing_without_asking_ && edited_ &&
      ui_.AskYesNo("You've edited the file, do you want to save your changes?", Icon::Question) &&
      !Save()) {
    // The save dialog was cancelled or the file could not be written: keep the edits open.
    event->ignore();
    return;
  }
  event->accept();
}

void RecipeEditor::SetTableCount(int count) {
  table_count_ = count;
  UpdateCaption();
}

void RecipeEditor::AppendRecipeText(const QString& text) {
  QString added = WithNewlines(text);
  const QString current = text_->toPlainText();
  if (!current.isEmpty() && !current.endsWith(QLatin1Char('\n'))) added.prepend(QLatin1Char('\n'));
  QTextCursor cursor(text_->document());
  cursor.movePosition(QTextCursor::End);
  cursor.insertText(added);
  text_->setTextCursor(cursor);
  text_->ensureCursorVisible();
}

QString RecipeEditor::RecipeText() const {
  return text_->toPlainText().replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
}

QString RecipeEditor::SampleReportPath() const {
  return host_.inputFile ? host_.inputFile() : QString();
}

void RecipeEditor::SelectRecipeLine(int lineNumber) {
  const QTextBlock block = text_->document()->findBlockByNumber(lineNumber - 1);
  if (!block.isValid()) return;
  QTextCursor cursor(block);
  cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
  text_->setTextCursor(cursor);
  text_->centerCursor();
  text_->setFocus();
}

void RecipeEditor::SetPreviewPane(QWidget* pane) {
  if (preview_pane_ == pane) return;
  if (preview_pane_ != nullptr) preview_pane_->deleteLater();
  preview_pane_ = pane;
  if (pane != nullptr) preview_layout_->addWidget(pane);
  preview_button_->setEnabled(pane != nullptr);
  if (pane == nullptr) preview_button_->setChecked(false);
  preview_box_->setVisible(pane != nullptr && preview_button_->isChecked());
}

bool RecipeEditor::PreviewShown() const {
  return preview_pane_ != nullptr && preview_button_->isChecked();
}

void RecipeEditor::UpdateCaption() {
  setWindowTitle(QString::fromLatin1(kEditorCaption) + QString::number(table_count_));
  status_path_->setText(path_.isEmpty() ? tr("New recipe") : path_);
}

void RecipeEditor::ShowCaret() {
  const QTextCursor cursor = text_->textCursor();
  status_caret_->setText(
      tr("Line %1, Col %2").arg(cursor.blockNumber() + 1).arg(cursor.positionInBlock() + 1));
}

void RecipeEditor::SetText(const QString& text) {
  text_->setPlainText(text);
}

}  // namespace kroveld
