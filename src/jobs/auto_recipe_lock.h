// An exclusive lock on the application folder, held while a conversion writes and reads the
// shared "_AutoRecipe.rcp" and "_ExportSpecs.krs", so that two kroveld processes working in the
// same application folder never overwrite each other's files halfway. The lock is taken on the
// folder itself (flock), so no lock file is left behind. Waiting for it never blocks the user
// interface: the lock is tried, events are processed through the port, a stop request ends the
// wait, and the lock is tried again.
#pragma once

#include <atomic>
#include <string>

#include "util/ui_port.h"

namespace kroveld {

class AutoRecipeLock {
 public:
  // Returns once the lock is held, or once `stop` is set while another process holds it
  // (Stopped() is then true and the caller gives up its conversion). When the folder cannot be
  // opened or locked the conversion goes on without the lock (Held() is false).
  AutoRecipeLock(const std::string& appFolder, UiPort& ui, const std::atomic<bool>& stop);
  ~AutoRecipeLock();
  AutoRecipeLock(const AutoRecipeLock&) = delete;
  AutoRecipeLock& operator=(const AutoRecipeLock&) = delete;

  bool Held() const { return fd_ >= 0; }
  bool Stopped() const { return stopped_; }
  // Releases the lock early (the destructor does nothing afterwards).
  void Release();

 private:
  int fd_ = -1;
  bool stopped_ = false;
};

}  // namespace kroveld
