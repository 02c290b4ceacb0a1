#include "jobs/preview/scratch_folder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace kroveld {

ScratchFolder::ScratchFolder() {
  std::error_code ec;
  std::filesystem::path base = std::filesystem::temp_directory_path(ec);
  if (ec) base = "/tmp";
  std::string pattern = (base / "kroveld-preview-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    error_ = "Cannot make a temporary folder in " + base.string() + ": " + std::strerror(errno);
    return;
  }
  path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
  if (path_.empty()) return;
  std::error_code ec;
  std::filesystem::remove_all(path_, ec);
}

}  // namespace kroveld
