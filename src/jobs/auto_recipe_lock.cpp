#include "jobs/auto_recipe_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "util/files.h"

namespace kroveld {

AutoRecipeLock::AutoRecipeLock(const std::string& appFolder) {
  const std::string folder = NativePath(appFolder);
  fd_ = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd_ < 0) return;
  while (::flock(fd_, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
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
