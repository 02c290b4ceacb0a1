// An exclusive lock on a file in the application folder, held while a conversion writes and reads
// the shared "_AutoRecipe.rcp" and "_ExportSpecs.krs", so that two kroveld processes working in
// the same application folder never overwrite each other's files halfway.
#pragma once

#include <string>

namespace kroveld {

class AutoRecipeLock {
 public:
  // Blocks until the lock is held. When the lock file cannot be opened the conversion goes on
  // without the lock (Held() is false).
  explicit AutoRecipeLock(const std::string& appFolder);
  ~AutoRecipeLock();
  AutoRecipeLock(const AutoRecipeLock&) = delete;
  AutoRecipeLock& operator=(const AutoRecipeLock&) = delete;

  bool Held() const { return fd_ >= 0; }
  // Releases the lock early (the destructor does nothing afterwards).
  void Release();

  static constexpr const char* kFileName = "_AutoRecipe.lock";

 private:
  int fd_ = -1;
};

}  // namespace kroveld
