// The recipe key lookup, the header check and the counting of section headings.
#include "util/profile.h"

#include <charconv>
#include <limits>

#include "util/strings.h"

namespace kroveld {

namespace {

bool IsHeadingOf(std::string_view line, std::string_view section) {
  std::string_view name;
  return HeadingName(line, name) && name == section;
}

}  // namespace

bool HeadingName(std::string_view line, std::string_view& name) {
  const std::size_t open = line.find('[');
  if (open == std::string_view::npos) return false;
  const std::size_t close = line.find(']', open + 1);
  if (close == std::string_view::npos || close < open + 2) return false;
  name = Trim(line.substr(open + 1, close - open - 1));
  return true;
}

std::string GetProfileValue(TextFile& file, std::string_view section, std::string_view key,
                            std::string_view def, int trim) {
  if (!file.IsOpen()) return std::string(def);
  std::string_view line;
  if (!section.empty()) {
    bool found = false;
    while (file.ReadLine(line)) {
      if (IsHeadingOf(line, section)) {
        found = true;
        break;
      }
    }
    if (!found) return std::string(def);
  }
  while (file.ReadLine(line)) {
    if (line.find('[') != std::string_view::npos) return std::string(def);
    if (line.find(key) == std::string_view::npos) continue;
    const std::size_t eq = line.find('=');
    if (eq == std::string_view::npos) continue;
    // The first line holding the key and an "=" decides.
    if (Trim(line.substr(0, eq)) != key) return std::string(def);
    std::string_view value = line.substr(eq + 1);
    const std::size_t semi = value.find(';');
    if (semi != std::string_view::npos) value = value.substr(0, semi);
    if (Trim(value).empty()) return std::string(def);
    switch (trim) {
      case kTrimLeading:
        value = TrimLeft(value);
        break;
      case kTrimTrailing:
        value = TrimRight(value);
        break;
      default:
        value = Trim(value);
        break;
    }
    return std::string(value);
  }
  return std::string(def);
}

std::string GetProfileValueFromFile(const std::string& path, std::string_view section,
                                    std::string_view key, std::string_view def) {
  TextFile file;
  if (!file.Open(path)) return std::string(def);
  return GetProfileValue(file, section, key, def, kTrimBoth);
}

bool CheckFileHeader(UiPort& ui, const std::string& path, std::string_view product,
                     std::string_view fileType, std::string_view fileFormat) {
  struct Check {
    std::string_view key;
    std::string_view expected;
    const char* message;
  };
  const Check checks[] = {
      {"Product", product, "Incorrect product code!"},
      {"FileType", fileType, "Incorrect file type!"},
      {"FileFormat", fileFormat, "Incorrect file format!"},
  };
  for (const Check& c : checks) {
    const std::string value = GetProfileValueFromFile(path, "Header", c.key, kMissing);
    if (UpperAscii(Trim(value)) != UpperAscii(c.expected)) {
      ui.Message(c.message, Icon::Critical);
      return true;
    }
  }
  return false;
}

int CountSectionHeadings(const std::string& path, std::string_view heading,
                         std::string_view exclusion) {
  TextFile file;
  if (!file.Open(path)) return 0;
  int count = 0;
  std::string_view line;
  while (file.ReadLine(line)) {
    if (line.find(heading) == std::string_view::npos) continue;
    if (!exclusion.empty() && line.find(exclusion) != std::string_view::npos) continue;
    ++count;
  }
  return count;
}

bool ParseLong(std::string_view text, int& value) {
  text = Trim(text);
  if (text.empty()) return false;
  bool negative = false;
  if (text.front() == '+' || text.front() == '-') {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  if (text.empty()) return false;
  long long v = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    v = v * 10 + (c - '0');
    if (v > static_cast<long long>(std::numeric_limits<int>::max()) + 1) return false;
  }
  if (negative) v = -v;
  if (v < std::numeric_limits<int>::min() || v > std::numeric_limits<int>::max()) return false;
  value = static_cast<int>(v);
  return true;
}

}  // namespace kroveld
