#include "app/window/options_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "app/settings.h"
#include "app/window/qt_port.h"
#include "app/window/widget_names.h"

namespace kroveld {

namespace {

QWidget* Page(QTabWidget* tabs, int index, const QString& caption) {
  auto* page = Named(new QWidget(tabs), QStringLiteral("FrameArray_%1").arg(index), caption);
  tabs->addTab(page, caption);
  return page;
}

QLabel* Wrapped(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setWordWrap(true);
  return label;
}

}  // namespace

OptionsDialog::OptionsDialog(Settings& owner, QtPort& port, QWidget* parent)
    : QDialog(parent),
      owner_(owner),
      port_(port),
      tabs_(Named(new QTabWidget(this), "tsDisplay")),
      tab_size_(Named(new QLineEdit(this), "txtTabSize")),
      sheet_target_(Named(new QLineEdit(this), "txtSheetTarget")),
      clear_output_(Named(new QCheckBox(tr("&Clear sheet contents before processing"), this),
                          "cbClearOutputFileBeforeProcessing")),
      show_excel_(
          Named(new QCheckBox(tr("Show Excel Application while processing"), this), "cbShowExcel")),
      input_encoding_(
          Named(new QComboBox(this), "cboInputEncoding", QStringLiteral("Input encoding"))) {
  Named(this, "frmKROOptions");
  setWindowTitle(QStringLiteral("Kroveld Options"));
  setModal(true);

  QWidget* general = Page(tabs_, 0, QStringLiteral("General"));
  auto* generalLayout = new QVBoxLayout(general);
  generalLayout->addWidget(show_excel_);
  generalLayout->addStretch();

  QWidget* input = Page(tabs_, 1, QStringLiteral("Input Text File"));
  auto* inputLayout = new QVBoxLayout(input);
  auto* tabRow = new QHBoxLayout;
  auto* tabLabel = new QLabel(QStringLiteral("Tab Size:"), input);
  tabLabel->setBuddy(tab_size_);
  tab_size_->setMaximumWidth(80);
  tabRow->addWidget(tabLabel);
  tabRow->addWidget(tab_size_);
  tabRow->addStretch();
  inputLayout->addLayout(tabRow);
  inputLayout->addWidget(Wrapped(
      QStringLiteral("When the text in the Input File contains tab characters you must speciy the "
                     "tab stop size that was used when the file was created."),
      input));
  inputLayout->addWidget(
      Wrapped(QStringLiteral("Typical values are 2 to 16, with 8 used most commonly."), input));
  auto* encodingRow = new QHBoxLayout;
  auto* encodingLabel = new QLabel(tr("Input &encoding:"), input);
  encodingLabel->setBuddy(input_encoding_);
  input_encoding_->addItem(tr("As the recipe says (8-bit text when it says nothing)"), QString());
  input_encoding_->addItem(tr("Automatic (UTF-8 when the whole report is UTF-8)"),
                           QStringLiteral("auto"));
  input_encoding_->addItem(tr("UTF-8 (positions count printed characters)"),
                           QStringLiteral("utf-8"));
  input_encoding_->addItem(tr("Windows-1252 (8-bit)"), QStringLiteral("cp1252"));
  input_encoding_->addItem(tr("Latin-1 (8-bit)"), QStringLiteral("latin1"));
  encodingRow->addWidget(encodingLabel);
  encodingRow->addWidget(input_encoding_, 1);
  inputLayout->addLayout(encodingRow);
  inputLayout->addStretch();

  QWidget* output = Page(tabs_, 2, QStringLiteral("Output Excel File"));
  auto* outputLayout = new QVBoxLayout(output);
  outputLayout->addWidget(sheet_target_);
  outputLayout->addWidget(Wrapped(
      QStringLiteral("Sheet by name or number.  e.g. \"Budget, Expense\" or \"2\"  for 2nd sheet."),
      output));
  outputLayout->addWidget(clear_output_);
  outputLayout->addStretch();

  auto* apply = Named(new QPushButton(tr("&Apply"), this), "cmdApply");
  auto* cancel = Named(new QPushButton(tr("&Cancel"), this), "cmdCancel");
  apply->setDefault(true);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(apply);
  buttons->addWidget(cancel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
  layout->addLayout(buttons);
  setMinimumWidth(440);

  // Load: the first page in front, the controls from the owner's four settings.
  tabs_->setCurrentIndex(0);
  tab_size_->setText(QString::number(owner_.lTabSize));
  show_excel_->setChecked(owner_.bShowExcel);
  clear_output_->setChecked(owner_.bClearOutputFileBeforeProcessing);
  sheet_target_->setText(QString::fromStdString(owner_.sSheetTarget));
  input_encoding_->setCurrentIndex(
      std::max(0, input_encoding_->findData(QString::fromStdString(owner_.sInputEncoding))));

  connect(apply, &QPushButton::clicked, this, &OptionsDialog::Apply);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

void OptionsDialog::Apply() {
  bool whole = false;
  const int tabSize = tab_size_->text().trimmed().toInt(&whole);
  if (!whole) {
    tabs_->setCurrentWidget(tab_size_->parentWidget());
    port_.Message("Tab Size must be a whole number, for example 8.", Icon::Exclamation, {});
    tab_size_->setFocus();
    tab_size_->selectAll();
    return;
  }
  owner_.lTabSize = tabSize;
  owner_.bShowExcel = show_excel_->isChecked();
  owner_.bClearOutputFileBeforeProcessing = clear_output_->isChecked();
  owner_.sSheetTarget = sheet_target_->text().toStdString();
  owner_.sInputEncoding = input_encoding_->currentData().toString().toStdString();
  accept();
}

}  // namespace kroveld
