// Reading the keys a section may carry after its fixed ones (patterns, TRUE/FALSE switches), and
// reading the fixed keys themselves from wherever they stand when a section has given up a key
// text for a pattern: then the sequential order no longer holds (a missing key text would make
// the sequential lookup run on into the next heading), so every key of that section is looked up
// by name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "util/text_file.h"
#include "util/ui_port.h"

namespace kroveld {

class SectionMap;

// Reads pattern key `key` of `section` into `out` (empty when absent, or when `keys` is null).
// A pattern that does not compile shows "Error in <section> : Invalid <key> pattern: ..." and
// gives false.
bool ReadPatternKey(UiPort& ui, const SectionMap* keys, std::string_view section,
                    std::string_view key, std::string& out);

// Reads a TRUE/FALSE key (either case); unset when absent. Anything else shows
// "Error in <section> : <key> must be TRUE or FALSE!" and gives false.
bool ReadSwitchKey(UiPort& ui, const SectionMap* keys, std::string_view section,
                   std::string_view key, std::optional<bool>& out);

// The fixed keys of one section, in their order: from the open file sequentially (the first one
// finds the section's heading), or, for a section that uses pattern keys, from the map by name.
class FixedKeys {
 public:
  FixedKeys(TextFile& file, const SectionMap* keys, std::string section, bool byName)
      : file_(file), keys_(keys), section_(std::move(section)), byName_(byName && keys) {}

  std::string Get(std::string_view key, std::string_view def);
  // An offset key (default 0); false after "Error in <section> : <key> must be a whole number!".
  bool Offset(UiPort& ui, std::string_view key, int& out);

 private:
  TextFile& file_;
  const SectionMap* keys_;
  std::string section_;
  bool byName_;
  bool first_ = true;
};

}  // namespace kroveld
