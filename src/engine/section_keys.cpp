#include "engine/section_keys.h"

#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

void ShowSectionError(UiPort& ui, std::string_view section, std::string_view text) {
  std::string message = "Error in ";
  message += section;
  message += text;
  ui.Message(message, Icon::Critical);
}

int ValidatedNumber(std::string_view text) {
  int value = 0;
  if (!ParseLong(text, value)) return kMissingNumber;
  return value;
}

bool BadWriteColumn(std::string_view column) {
  if (column == kMissing) return true;
  const std::string upper = UpperAscii(column);
  return upper < "A" || upper > "Z";
}

void ShowOffsetError(UiPort& ui, std::string_view section, std::string_view key) {
  std::string what = " : ";
  what += key;
  what += " must be a whole number!";
  ShowSectionError(ui, section, what);
}

bool ReadOffsetKey(UiPort& ui, TextFile& file, std::string_view section, std::string_view key,
                   int& out) {
  const std::string text = GetProfileValue(file, "", key, "0");
  int value = 0;
  if (!ParseLong(text, value)) {
    ShowOffsetError(ui, section, key);
    return false;
  }
  out = value;
  return true;
}

void NoteMissingKey(UiPort& ui, std::string_view section, std::string_view key,
                    std::string_view text) {
  if (text != kMissing) return;
  ui.Message(
      std::string(section) + " has no " + std::string(key) + " key (or it stands after a key " +
          "that is read later): " + std::string(kMissing) + " is the stand-in for a missing key",
      Icon::Information);
}

}  // namespace kroveld
