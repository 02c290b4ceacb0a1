// A most-recently-used list of paths (clsMRU), kept in config.ini: section N holds keys N1..N20,
// the newest entry in N20. Entries are unique without regard to letter case; the newest spelling
// wins.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

class PrivateProfile;

class clsMRU {
 public:
  static constexpr int kSlots = 20;
  static constexpr std::string_view kUnset = "+-!#";

  // Stores the values, empties the list and reads it from the file.
  void Setup(int capacity, const std::string& filePath, const std::string& listName);
  // The same, with the list read from `ini`, the file as already loaded.
  void Setup(int capacity, const std::string& filePath, const std::string& listName,
             const PrivateProfile& ini);
  // Writes the list to the file and empties it. The system's named interface; no caller yet.
  void ShutDown();
  // Makes `item` the newest entry; an empty item is ignored.
  void AddUniqueItemToCollection(const std::string& item);
  // Writes the newest 20 entries to slots 20, 19, ...; lower slots are left as they are.
  // False when the file cannot be written.
  bool WriteCollectionToIniFile();
  // Reads the list again from the file. The system's named interface; no caller yet.
  void ReadIniFileIntoCollection();
  int Count() const { return static_cast<int>(items_.size()); }

  // Oldest first.
  const std::vector<std::string>& Items() const { return items_; }
  const std::string& Name() const { return name_; }

 private:
  void ReadCollection(const PrivateProfile& ini);

  int capacity_ = kSlots;
  std::vector<std::string> items_;
  std::string name_;
  std::string path_;
};

}  // namespace kroveld
