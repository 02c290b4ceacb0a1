#include "editor/table_builder.h"

#include <QEvent>
#include <QFocusEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

#include "app/window/widget_names.h"
#include "editor/add_field.h"
#include "editor/editor_support.h"
#include "util/profile.h"
#include "util/ui_port.h"

namespace kroveld {

namespace {

QLineEdit* Field(QWidget* parent, const char* name, const QString& text) {
  auto* field = Named(new QLineEdit(text, parent), QString::fromLatin1(name));
  field->setMinimumWidth(260);
  return field;
}

bool IsWholeNumber(const QString& text) {
  int value = 0;
  return ParseLong(text.toStdString(), value);
}

}  // namespace

TableBuilder::TableBuilder(UiPort& ui, TableBuilderHost& host, QWidget* parent)
    : QDialog(parent), ui_(ui), host_(host) {
  Named(this, QStringLiteral("frmTableBuilder"));
  number_ = Field(this, "txtTableNumber", QString::number(host_.TableCount() + 1));
  top_key_ = Field(this, "txtReadStartLine", QString::fromLatin1(kTopKeyDefault));
  top_offset_ = Field(this, "txtReadStartLineOffset", QStringLiteral("0"));
  bottom_key_ = Field(this, "txtReadEndLine", QString::fromLatin1(kBottomKeyDefault));
  bottom_offset_ = Field(this, "txtReadEndLineOffset", QStringLiteral("0"));
  // The marker line under a ruler of character positions, both in the fixed-pitch font.
  fields_ = Named(new QLabel(this), QStringLiteral("lblFields"));
  ruler_ = Named(new QLabel(this), QStringLiteral("lblRuler"));
  for (QLabel* line : {ruler_, fields_}) {
    line->setFont(FixedPitchFont());
    line->setTextFormat(Qt::PlainText);
  }
  UpdateRuler();
  auto* markerBox = Named(new QFrame(this), QStringLiteral("frameFields"));
  markerBox->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
  auto* markerLines = new QVBoxLayout(markerBox);
  markerLines->setSpacing(0);
  markerLines->setContentsMargins(4, 3, 4, 3);
  markerLines->addWidget(ruler_);
  markerLines->addWidget(fields_);

  auto* form = new QFormLayout;
  form->addRow(tr("Table number:"), number_);
  form->addRow(tr("Top key text:"), top_key_);
  form->addRow(tr("Top line offset:"), top_offset_);
  form->addRow(tr("Bottom key text:"), bottom_key_);
  form->addRow(tr("Bottom line offset:"), bottom_offset_);

  auto* addColumn =
      Named(new QPushButton(tr("Add Column..."), this), QStringLiteral("cmdAddColumn"));
  auto* ok = Named(new QPushButton(tr("OK"), this), QStringLiteral("cmdOK"));
  auto* cancel = Named(new QPushButton(tr("Cancel"), this), QStringLiteral("cmdCancel"));
  addColumn->setAutoDefault(false);
  cancel->setAutoDefault(false);
  ok->setDefault(true);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(addColumn);
  buttons->addStretch(1);
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(new QLabel(tr("Fields (one marker per field, as wide as the field):"), this));
  layout->addWidget(markerBox);
  layout->addLayout(buttons);

  for (QLineEdit* field : {number_, top_key_, top_offset_, bottom_key_, bottom_offset_}) {
    field->installEventFilter(this);
  }
  connect(addColumn, &QPushButton::clicked, this, &TableBuilder::AddColumn);
  connect(ok, &QPushButton::clicked, this, &TableBuilder::Ok);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  UpdateCaption();
}

bool TableBuilder::eventFilter(QObject* watched, QEvent* event) {
  // A field is checked when the user moves to another control of the dialog, not when the
  // dialog itself loses the focus (another window, a message box, a menu).
  if (event->type() == QEvent::FocusOut) {
    const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
    if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
      if (watched == number_) ValidateTableNumber();
      if (watched == top_key_) ValidateTopKey();
      if (watched == top_offset_) ValidateTopOffset();
      if (watched == bottom_key_) ValidateBottomKey();
      if (watched == bottom_offset_) ValidateBottomOffset();
    }
  }
  return QDialog::eventFilter(watched, event);
}

// Each check puts the field back before it speaks, so the message box taking the focus finds a
// valid field and nothing is reported twice.
void TableBuilder::ValidateTableNumber() {
  const double value = LeadingNumber(number_->text());
  const long long number = std::llround(std::min(value, 1e9));
  if (value > 0 && number >= 1) {
    number_->setText(QString::number(number));
  } else {
    number_->setText(QString::number(host_.TableCount() + 1));
    ui_.Message("Table Number must be a number larger than 0", Icon::Exclamation);
  }
  UpdateCaption();
}

void TableBuilder::ValidateTopKey() {
  if (!top_key_->text().trimmed().isEmpty()) return;
  top_key_->setText(QString::fromLatin1(kTopKeyDefault));
  ui_.Message("Top Key Text should not be a blank!", Icon::Exclamation);
}

void TableBuilder::ValidateTopOffset() {
  if (IsWholeNumber(top_offset_->text())) return;
  top_offset_->setText(QStringLiteral("0"));
  ui_.Message("Top Line offset must be a number", Icon::Exclamation);
}

void TableBuilder::ValidateBottomKey() {
  if (!bottom_key_->text().trimmed().isEmpty()) return;
  bottom_key_->setText(QString::fromLatin1(kBottomKeyDefault));
  ui_.Message("Bottom Key Text should not be a blank!", Icon::Exclamation);
}

void TableBuilder::ValidateBottomOffset() {
  if (IsWholeNumber(bottom_offset_->text())) return;
  bottom_offset_->setText(QStringLiteral("0"));
  ui_.Message("Bottom Line offset must be a number", Icon::Exclamation);
}

QString TableBuilder::FieldMarkers() const {
  return fields_->text();
}

void TableBuilder::SetFieldMarkers(const QString& markers) {
  fields_->setText(markers);
  UpdateRuler();
}

// "....+....1....+....2..." at least ten positions past the marker line (and 60 wide at least).
void TableBuilder::UpdateRuler() {
  const qsizetype tens = std::max<qsizetype>(6, fields_->text().size() / 10 + 1);
  QString positions;
  for (qsizetype k = 1; k <= tens; ++k) {
    positions += QStringLiteral("....+....") + QString::number(k % 10);
  }
  ruler_->setText(positions);
}

void TableBuilder::AddColumn() {
  AddField dialog(*this);
  dialog.exec();
}

QString TableBuilder::SectionText() const {
  QString markers = FieldMarkers().trimmed();
  if (markers.isEmpty()) markers = QStringLiteral("-");
  const QStringList lines = {
      QStringLiteral("[Table ") + number_->text().trimmed() + QLatin1Char(']'),
      QStringLiteral("ReadStartLine=") + top_key_->text().trimmed(),
      QStringLiteral("ReadStartLineOffset=") + top_offset_->text().trimmed(),
      QStringLiteral("ReadEndLine=") + bottom_key_->text().trimmed(),
      QStringLiteral("ReadEndLineOffset=") + bottom_offset_->text().trimmed(),
      QStringLiteral("Parsing=") + markers,
      QStringLiteral("WriteColumn=A"),
  };
  return lines.join(QStringLiteral("\r\n"));
}

void TableBuilder::Ok() {
  // Fields are checked on leaving them; a keyboard shortcut can press OK without leaving one.
  ValidateTableNumber();
  ValidateTopKey();
  ValidateTopOffset();
  ValidateBottomKey();
  ValidateBottomOffset();
  host_.AppendRecipeText(SectionText() + QStringLiteral("\r\n"));
  host_.SetTableCount(number_->text().toInt());
  accept();
}

void TableBuilder::UpdateCaption() {
  setWindowTitle(QStringLiteral("Add Table ") + number_->text());
}

}  // namespace kroveld
