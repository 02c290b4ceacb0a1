// The column field dialog frmAddField: one field of the table being defined, given by its width
// in characters (the blank before the next field included) and its kind. OK appends the field's
// marker to the table dialog's marker line: width - 1 marker characters ("-" for a single data
// field, "=" otherwise) and one blank. A width below 1 is not taken and the dialog stays open.
#pragma once

#include <QDialog>

class QLineEdit;
class QRadioButton;

namespace kroveld {

class TableBuilder;

class AddField : public QDialog {
  Q_OBJECT
 public:
  explicit AddField(TableBuilder& table);

  // False (dialog left open, nothing appended) for a width below 1.
  bool Ok();

 private:
  TableBuilder& table_;
  QLineEdit* width_field_;
  QRadioButton* single_;
  QRadioButton* other_;
  int width_ = 0;
  int kind_ = 1;
};

}  // namespace kroveld
