// Private-profile (INI) files: case-insensitive sections and keys, values read without
// surrounding blanks and quotes, edits made in place and saved through a temporary file.
#include "util/private_profile.h"

#include "util/files.h"
#include "util/strings.h"
#include "util/text_file.h"

namespace kroveld {

namespace {

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

// The section name when the line is a heading "[name]", else false.
bool HeadingName(std::string_view line, std::string_view& name) {
  line = TrimBlanks(line);
  if (line.size() < 2 || line.front() != '[') return false;
  const std::size_t close = line.find(']');
  if (close == std::string_view::npos) return false;
  name = TrimBlanks(line.substr(1, close - 1));
  return true;
}

// The key of a "key=value" line (not a comment), else false.
bool KeyOf(std::string_view line, std::string_view& key, std::string_view& value) {
  const std::string_view t = TrimBlanks(line);
  if (t.empty() || t.front() == ';' || t.front() == '#') return false;
  const std::size_t eq = line.find('=');
  if (eq == std::string_view::npos) return false;
  key = TrimBlanks(line.substr(0, eq));
  value = line.substr(eq + 1);
  return true;
}

// [first, last) of the lines of a section, counted after its heading; npos when absent.
struct Range {
  std::size_t heading = std::string::npos;
  std::size_t end = 0;
};

Range FindSection(const std::vector<std::string>& lines, std::string_view section) {
  Range r;
  std::string_view name;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!HeadingName(lines[i], name)) continue;
    if (r.heading != std::string::npos) {
      r.end = i;
      return r;
    }
    if (EqualsNoCase(name, TrimBlanks(section))) r.heading = i;
  }
  r.end = lines.size();
  return r;
}

std::size_t FindKey(const std::vector<std::string>& lines, const Range& r, std::string_view key) {
  std::string_view k, v;
  for (std::size_t i = r.heading + 1; i < r.end; ++i) {
    if (KeyOf(lines[i], k, v) && EqualsNoCase(k, TrimBlanks(key))) return i;
  }
  return std::string::npos;
}

}  // namespace

bool PrivateProfile::Load(const std::string& path) {
  lines_.clear();
  error_.clear();
  if (!FileExists(path)) {
    if (FolderExists(path)) {
      error_ = "Cannot read " + path + ": is a folder";
      return false;
    }
    return true;
  }
  TextFile file;
  if (!file.Open(path)) {
    error_ = "Cannot read " + file.Error();
    return false;
  }
  std::string_view line;
  while (file.ReadLine(line)) lines_.emplace_back(line);
  return true;
}

bool PrivateProfile::Save(const std::string& path, bool durable) {
  AtomicFile out;
  out.SetDurable(durable);
  if (!out.Open(path)) {
    error_ = out.Error();
    return false;
  }
  for (const std::string& line : lines_) {
    out.Write(line);
    out.Write("\r\n");
  }
  if (!out.Commit()) {
    error_ = out.Error();
    return false;
  }
  return true;
}

std::string PrivateProfile::Get(std::string_view section, std::string_view key,
                                std::string_view def) const {
  const Range r = FindSection(lines_, section);
  if (r.heading == std::string::npos) return std::string(def);
  const std::size_t i = FindKey(lines_, r, key);
  if (i == std::string::npos) return std::string(def);
  std::string_view k, v;
  KeyOf(lines_[i], k, v);
  v = TrimBlanks(v);
  if (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') && v.back() == v.front()) {
    v = v.substr(1, v.size() - 2);
  }
  return std::string(v);
}

void PrivateProfile::Set(std::string_view section, std::string_view key, std::string_view value) {
  std::string line;
  line.reserve(key.size() + value.size() + 1);
  line.append(TrimBlanks(key)).append("=").append(value);
  const Range r = FindSection(lines_, section);
  if (r.heading == std::string::npos) {
    if (!lines_.empty() && !TrimBlanks(lines_.back()).empty()) lines_.emplace_back();
    lines_.push_back("[" + std::string(TrimBlanks(section)) + "]");
    lines_.push_back(std::move(line));
    return;
  }
  const std::size_t i = FindKey(lines_, r, key);
  if (i != std::string::npos) {
    // Keep the key as the file spells it; replace the value.
    std::string_view k, v;
    KeyOf(lines_[i], k, v);
    lines_[i] = std::string(k) + "=" + std::string(value);
    return;
  }
  // New key: after the last non-blank line of the section.
  std::size_t at = r.end;
  while (at > r.heading + 1 && TrimBlanks(lines_[at - 1]).empty()) --at;
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(at), std::move(line));
}

std::string ReadPrivateProfileString(const std::string& path, std::string_view section,
                                     std::string_view key, std::string_view def) {
  PrivateProfile p;
  if (!p.Load(path)) return std::string(def);
  return p.Get(section, key, def);
}

bool WritePrivateProfileString(const std::string& path, std::string_view section,
                               std::string_view key, std::string_view value) {
  PrivateProfile p;
  if (!p.Load(path)) return false;
  p.Set(section, key, value);
  // Writers call this once per key, in long runs; the rename alone keeps the file whole.
  return p.Save(path, false);
}

}  // namespace kroveld
