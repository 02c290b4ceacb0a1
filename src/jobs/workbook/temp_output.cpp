// Temporary output files beside the target, renamed over it when complete.
#include "jobs/workbook/temp_output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "util/files.h"

namespace kroveld {

TempOutput::~TempOutput() {
  if (!temp_.empty()) ::unlink(temp_.c_str());
}

bool TempOutput::Create(const std::string& target, std::string& error) {
  target_ = NativePath(target);
  const std::string folder = FolderOfPath(target_);
  std::string pattern = folder + ".kroveld-" + FileName(target_) + "-XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  const int fd = ::mkstemp(name.data());
  if (fd < 0) {
    error = target + ": " + LastErrorText();
    return false;
  }
  // mkstemp makes the file private; an output gets the usual permissions.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::fchmod(fd, 0666 & ~mask);
  ::close(fd);
  temp_ = name.data();
  return true;
}

bool TempOutput::Commit(std::string& error) {
  if (std::rename(temp_.c_str(), target_.c_str()) != 0) {
    error = target_ + ": " + LastErrorText();
    return false;
  }
  temp_.clear();
  return true;
}

}  // namespace kroveld
