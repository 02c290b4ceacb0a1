#include "engine/section_map.h"

#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

void SectionMap::Note(std::string_view line) {
  const std::size_t eq = line.find('=');
  if (eq != std::string_view::npos && line.substr(0, eq).find('[') == std::string_view::npos) {
    if (current_ == nullptr) return;
    std::string_view value = line.substr(eq + 1);
    const std::size_t semi = value.find(';');
    if (semi != std::string_view::npos) value = value.substr(0, semi);
    value = Trim(value);
    if (value.empty()) return;
    current_->emplace_back(std::string(Trim(line.substr(0, eq))), std::string(value));
    return;
  }
  std::string_view name;
  if (HeadingName(line, name)) current_ = &sections_[std::string(name)];
}

std::string_view SectionMap::Find(std::string_view section, std::string_view key) const {
  const auto it = sections_.find(std::string(section));
  if (it == sections_.end()) return {};
  for (const auto& [name, value] : it->second) {
    if (name == key) return value;
  }
  return {};
}

}  // namespace kroveld
