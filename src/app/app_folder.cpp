#include "app/app_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "util/files.h"

namespace kroveld {

namespace {

std::string ExecutableFolder() {
  std::error_code ec;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (ec) return {};
  return exe.parent_path().string();
}

bool Writable(const std::string& folder) {
  return !folder.empty() && ::access(folder.c_str(), W_OK | X_OK) == 0;
}

// A program installed by the package manager shares /usr/bin with every other program; its
// settings belong to the user even when the user is root and could write there.
bool SystemInstalled(const std::string& folder) {
  return folder == "/usr/bin" || folder == "/usr/local/bin";
}

std::string UserConfigFolder() {
  std::string base;
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg != nullptr && *xdg != '\0') {
    base = xdg;
  } else if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
    base = std::string(home) + "/.config";
  } else {
    base = "/tmp";
  }
  std::string folder = base + "/kroveld";
  CreateFolderTree(folder);
  return folder;
}

}  // namespace

std::string FindAppFolder() {
  std::string folder;
  if (const char* home = std::getenv("KROVELD_HOME"); home != nullptr && *home != '\0') {
    folder = home;
    if (!FolderExists(folder)) CreateFolderTree(folder);
  } else {
    folder = ExecutableFolder();
    if (SystemInstalled(folder)) folder.clear();
  }
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  if (!Writable(folder)) folder = UserConfigFolder();
  return folder;
}

}  // namespace kroveld
