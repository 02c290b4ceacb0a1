#include "editor/add_field.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <cmath>

#include "app/window/widget_names.h"
#include "editor/editor_support.h"
#include "editor/table_builder.h"

namespace kroveld {

namespace {

// A marker line wider than any report line is a typing slip, not a field.
constexpr int kMaxFieldWidth = 32767;

}  // namespace

AddField::AddField(TableBuilder& table) : QDialog(&table), table_(table) {
  Named(this, QStringLiteral("frmAddField"));
  setWindowTitle(QStringLiteral("Add Column Field ") + QString::number(table.FieldCount() + 1));
  width_field_ = Named(new QLineEdit(this), QStringLiteral("txtFieldWidth"));
  width_field_->setToolTip(tr("Characters of the field, with the one blank before the next field"));
  single_ = Named(new QRadioButton(tr("Single data field (fixed width)"), this),
                  QStringLiteral("obSingleDataField"));
  other_ = Named(new QRadioButton(tr("Field that grows to fit its text"), this),
                 QStringLiteral("obVariableWidthField"));
  single_->setChecked(true);

  auto* ok = Named(new QPushButton(tr("OK"), this), QStringLiteral("cmdOK"));
  auto* cancel = Named(new QPushButton(tr("Cancel"), this), QStringLiteral("cmdCancel"));
  ok->setDefault(true);
  cancel->setAutoDefault(false);
  auto* widthRow = new QHBoxLayout;
  widthRow->addWidget(Named(new QLabel(tr("Field width:"), this), QStringLiteral("lblFieldWidth")));
  widthRow->addWidget(width_field_);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(widthRow);
  layout->addWidget(single_);
  layout->addWidget(other_);
  layout->addLayout(buttons);

  connect(ok, &QPushButton::clicked, this, [this] { Ok(); });
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  // At the table dialog's left edge, 400 twips below its top.
  adjustSize();
  PlaceBelow(this, &table, 400, 0);
}

bool AddField::Ok() {
  const double value = LeadingNumber(width_field_->text());
  if (!(value >= 0.5) || value > kMaxFieldWidth) return false;  // below 1 once rounded
  width_ = static_cast<int>(std::lround(value));
  kind_ = single_->isChecked() ? 1 : 0;
  const QChar marker = kind_ == 1 ? QLatin1Char('-') : QLatin1Char('=');
  table_.SetFieldMarkers(table_.FieldMarkers() + QString(width_ - 1, marker) + QLatin1Char(' '));
  table_.SetFieldCount(table_.FieldCount() + 1);
  accept();
  return true;
}

}  // namespace kroveld
