#include "engine/context.h"

#include "util/files.h"

namespace kroveld {

Context::Context(UiPort& ui_port, std::string folder)
    : ui(ui_port), appFolder(std::move(folder)), lineProcessor(*this), sink(&null_sink_) {}

std::string Context::AppFile(std::string_view name) const {
  std::string path = appFolder;
  if (!path.empty() && !IsSeparator(path.back())) path += '/';
  path += name;
  return path;
}

}  // namespace kroveld
