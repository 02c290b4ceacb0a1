// The table definition dialog frmTableBuilder: a table number, the top and bottom key texts with
// their line offsets, and the field marker line laid out field by field with the column field
// dialog. Each field is checked when the user leaves it and put back to its default when it is
// not acceptable. OK adds the table to the recipe text in the short recipe form:
//   [Table n] / ReadStartLine= / ReadStartLineOffset= / ReadEndLine= / ReadEndLineOffset= /
//   Parsing=<marker line, or "-" without fields> / WriteColumn=A
#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QLineEdit;
class QPushButton;

namespace kroveld {

class UiPort;

// What the dialog needs from the recipe editor.
class TableBuilderHost {
 public:
  virtual ~TableBuilderHost() = default;
  virtual int TableCount() const = 0;
  virtual void SetTableCount(int count) = 0;
  virtual void AppendRecipeText(const QString& text) = 0;
};

inline constexpr const char* kTopKeyDefault = "KEY TEXT AT TOP";
inline constexpr const char* kBottomKeyDefault = "KEY TEXT AT BOTTOM";

class TableBuilder : public QDialog {
  Q_OBJECT
 public:
  TableBuilder(UiPort& ui, TableBuilderHost& host, QWidget* parent = nullptr);

  // The leave-the-field checks; each shows its message and resets the field when it rejects.
  void ValidateTableNumber();
  void ValidateTopKey();
  void ValidateTopOffset();
  void ValidateBottomKey();
  void ValidateBottomOffset();

  // The field marker line and the number of fields added (the column field dialog's side).
  QString FieldMarkers() const;
  void SetFieldMarkers(const QString& markers);
  int FieldCount() const { return field_count_; }
  void SetFieldCount(int count) { field_count_ = count; }

  // Opens the column field dialog for the next field.
  void AddColumn();
  // The section OK appends, built from the fields as they stand.
  QString SectionText() const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Ok();
  void UpdateCaption();
  void UpdateRuler();

  UiPort& ui_;
  TableBuilderHost& host_;
  int field_count_ = 0;
  QLineEdit* number_;
  QLineEdit* top_key_;
  QLineEdit* top_offset_;
  QLineEdit* bottom_key_;
  QLineEdit* bottom_offset_;
  QLabel* fields_;
  QLabel* ruler_;
};

}  // namespace kroveld
