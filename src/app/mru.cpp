#include "app/mru.h"

#include "util/private_profile.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// The read buffer of a value holds 500 characters with its terminating NUL.
constexpr std::size_t kMaxValue = 499;

std::string SlotKey(const std::string& name, int slot) {
  return name + ToText(slot);
}

}  // namespace

void clsMRU::Setup(int capacity, const std::string& filePath, const std::string& listName) {
  PrivateProfile ini;
  ini.Load(filePath);  // a file that cannot be read gives an empty list
  Setup(capacity, filePath, listName, ini);
}

void clsMRU::Setup(int capacity, const std::string& filePath, const std::string& listName,
                   const PrivateProfile& ini) {
  capacity_ = capacity;
  path_ = filePath;
  name_ = listName;
  ReadCollection(ini);
}

void clsMRU::ShutDown() {
  WriteCollectionToIniFile();
  items_.clear();
}

void clsMRU::AddUniqueItemToCollection(const std::string& item) {
  if (item.empty()) return;
  for (auto it = items_.begin(); it != items_.end(); ++it) {
    if (EqualsNoCase(*it, item)) {
      items_.erase(it);
      break;
    }
  }
  items_.push_back(item);
}

bool clsMRU::WriteCollectionToIniFile() {
  PrivateProfile ini;
  if (!ini.Load(path_)) return false;
  int slot = kSlots;
  for (int pos = Count(); pos >= 1 && slot >= 1; --pos, --slot) {
    ini.Set(name_, SlotKey(name_, slot), items_[pos - 1]);
  }
  return ini.Save(path_);
}

void clsMRU::ReadIniFileIntoCollection() {
  PrivateProfile ini;
  ini.Load(path_);
  ReadCollection(ini);
}

void clsMRU::ReadCollection(const PrivateProfile& ini) {
  items_.clear();
  for (int slot = 1; slot <= kSlots; ++slot) {
    std::string value = ini.Get(name_, SlotKey(name_, slot), kUnset);
    if (const auto nul = value.find('\0'); nul != std::string::npos) value.resize(nul);
    if (value.size() > kMaxValue) value.resize(kMaxValue);
    if (value != kUnset) AddUniqueItemToCollection(value);
  }
}

}  // namespace kroveld
