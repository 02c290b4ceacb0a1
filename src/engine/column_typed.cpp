// The optional Type and DateFormat keys of a column field: reading and checking them, writing
// them back and listing them, and turning a field into its typed value.
#include "engine/column.h"
#include "engine/section_keys.h"
#include "engine/section_map.h"
#include "util/strings.h"

namespace kroveld {

bool clsColumn::ReadTypeKeys(UiPort& ui, const SectionMap& keys, const std::string& section) {
  return SetType(ui, keys.Find(section, "Type"), keys.Find(section, "DateFormat"), section);
}

bool clsColumn::SetType(UiPort& ui, std::string_view typeText, std::string_view dateFormat,
                        const std::string& section) {
  ColumnType type = ColumnType::kNone;
  if (!typeText.empty() && !ParseColumnType(typeText, type)) {
    ShowSectionError(ui, section, " : Type must be Number, Text or Date!");
    return false;
  }
  DateLayout layout;
  if (type == ColumnType::kDate) {
    if (dateFormat.empty()) {
      ShowSectionError(ui, section, " : Type Date needs a DateFormat such as MM/DD/YYYY!");
      return false;
    }
    if (!ParseDateLayout(dateFormat, layout)) {
      ShowSectionError(ui, section,
                       " : DateFormat must be DD, MM and YY or YYYY in some order, separated by "
                       ". / - or a blank (such as MM/DD/YYYY or DD.MM.YY)!");
      return false;
    }
  } else if (!dateFormat.empty()) {
    ShowSectionError(ui, section, " : DateFormat is only for Type Date!");
    return false;
  }
  Type = std::string(typeText);
  DateFormat = std::string(dateFormat);
  converter_.Configure(type, layout);
  return true;
}

void clsColumn::WriteTypeKeys(PrivateProfile& file, const std::string& section) const {
  if (!Type.empty()) file.Set(section, "Type", Type);
  if (!DateFormat.empty()) file.Set(section, "DateFormat", DateFormat);
}

void clsColumn::PrintTypeKeys(std::string& out) const {
  if (!Type.empty()) out += "Type = " + Type + "\n";
  if (!DateFormat.empty()) out += "DateFormat = " + DateFormat + "\n";
}

TypedField clsColumn::Typed(std::string_view value, std::int64_t reportLine, bool forCell) {
  const TypedField field = converter_.Convert(value, forCell);
  if (field.keptAsText) kept_as_text_.Note(field.csv, reportLine);
  return field;
}

void clsColumn::NoteKeptAsText(UiPort& ui, int tableNumber, int columnNumber) const {
  if (kept_as_text_.count == 0) return;
  const std::string section = "Table " + ToText(tableNumber) + " Col " + ToText(columnNumber);
  ui.Message(KeptAsTextNote(section, converter_.Type(), DateFormat, kept_as_text_),
             Icon::Exclamation);
}

}  // namespace kroveld
