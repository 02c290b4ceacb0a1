// INI files with the usual private-profile semantics, used for config.ini and as the writer of
// recipe and export-specification files: sections and keys match without regard to case,
// surrounding blanks and quotes are removed from values, a missing key gives the default. Writing
// keeps the file as it is, replaces a key's value in place, adds new keys at the end of their
// section and new sections at the end of the file. Saving goes through a temporary file renamed
// over the target, so a failure never leaves a truncated file. Lines are written with CR LF.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

class PrivateProfile {
 public:
  // Reads the file; a missing file gives an empty document. False (with Error()) if it exists but
  // cannot be read.
  bool Load(const std::string& path);
  // Writes the document to `path` (atomically). False with Error() on failure. `durable` false
  // skips flushing to the disk before the rename (for a file rewritten once per key).
  bool Save(const std::string& path, bool durable = true);

  std::string Get(std::string_view section, std::string_view key, std::string_view def) const;
  void Set(std::string_view section, std::string_view key, std::string_view value);

  const std::string& Error() const { return error_; }
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
  std::string error_;
};

// One-shot helpers on a path, for callers that touch a single key.
std::string ReadPrivateProfileString(const std::string& path, std::string_view section,
                                     std::string_view key, std::string_view def);
// Returns false when the file cannot be written.
bool WritePrivateProfileString(const std::string& path, std::string_view section,
                               std::string_view key, std::string_view value);
// The system's name for the same operation: its named interface, no caller yet.
inline bool WriteProfileValue(const std::string& path, std::string_view section,
                              std::string_view key, std::string_view value) {
  return WritePrivateProfileString(path, section, key, value);
}

}  // namespace kroveld
