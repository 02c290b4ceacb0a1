// An exclusive lock on the application folder, held while a conversion writes and reads the
// shared "_AutoRecipe.rcp" and "_ExportSpecs.krs", so that two kroveld processes working in the
// same application folder never overwrite each other's files halfway. The lock is taken on the
// folder itself (flock), so no lock file is left behind.
#pragma once

#include <string>

namespace kroveld {

class AutoRecipeLock {
 public:
  // Blocks until the lock is held. When the folder cannot be opened or locked the conversion
  // goes on without the lock (Held() is false).
  explicit AutoRecipeLock(const std::string& appFolder);
  ~AutoRecipeLock();
  AutoRecipeLock(const AutoRecipeLock&) = delete;
  AutoRecipeLock& operator=(const AutoRecipeLock&) = delete;

  bool Held() const { return fd_ >= 0; }
  // Releases the lock early (the destructor does nothing afterwards).
  void Release();

 private:
  int fd_ = -1;
};

}  // namespace kroveld
