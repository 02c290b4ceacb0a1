#include "engine/optional_keys.h"

#include "engine/pattern.h"
#include "engine/section_keys.h"
#include "engine/section_map.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

bool ReadPatternKey(UiPort& ui, const SectionMap* keys, std::string_view section,
                    std::string_view key, std::string& out) {
  out.clear();
  if (keys == nullptr) return true;
  const std::string_view text = keys->Find(section, key);
  if (text.empty()) return true;
  Pattern pattern;
  std::string why;
  if (!pattern.Compile(text, why)) {
    ui.Message(PatternError(section, key, text, why), Icon::Critical);
    return false;
  }
  out = std::string(text);
  return true;
}

bool ReadSwitchKey(UiPort& ui, const SectionMap* keys, std::string_view section,
                   std::string_view key, std::optional<bool>& out) {
  out.reset();
  if (keys == nullptr) return true;
  const std::string_view text = keys->Find(section, key);
  if (text.empty()) return true;
  const std::string upper = UpperAscii(text);
  if (upper == "TRUE" || upper == "FALSE") {
    out = upper == "TRUE";
    return true;
  }
  ShowSectionError(ui, section, " : " + std::string(key) + " must be TRUE or FALSE!");
  return false;
}

std::string FixedKeys::Get(std::string_view key, std::string_view def) {
  if (byName_) {
    const std::string_view value = keys_->Find(section_, key);
    return std::string(value.empty() ? def : value);
  }
  const std::string value = GetProfileValue(file_, first_ ? section_ : "", key, def);
  first_ = false;
  return value;
}

bool FixedKeys::Offset(UiPort& ui, std::string_view key, int& out) {
  const std::string text = Get(key, "0");
  int value = 0;
  if (!ParseLong(text, value)) {
    ShowOffsetError(ui, section_, key);
    return false;
  }
  out = value;
  return true;
}

}  // namespace kroveld
