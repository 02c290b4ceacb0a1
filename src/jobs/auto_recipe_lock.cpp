#include "jobs/auto_recipe_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "util/files.h"

namespace kroveld {

namespace {

// How long one wait between two tries lasts: short against a conversion, long against a poll.
constexpr auto kRetryInterval = std::chrono::milliseconds(5);

}  // namespace

AutoRecipeLock::AutoRecipeLock(const std::string& appFolder, UiPort& ui,
                               const std::atomic<bool>& stop) {
  const std::string folder = NativePath(appFolder);
  fd_ = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd_ < 0) return;
  while (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    if (errno == EWOULDBLOCK) {
      ui.ProcessEvents();
      if (!stop.load()) {
        std::this_thread::sleep_for(kRetryInterval);
        continue;
      }
      stopped_ = true;
    }
    ::close(fd_);
    fd_ = -1;
    return;
  }
}

AutoRecipeLock::~AutoRecipeLock() {
  Release();
}

void AutoRecipeLock::Release() {
  if (fd_ < 0) return;
  ::flock(fd_, LOCK_UN);
  ::close(fd_);
  fd_ = -1;
}

}  // namespace kroveld
