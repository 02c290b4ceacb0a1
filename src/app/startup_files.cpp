#include "app/startup_files.h"

#include <ctime>

#include "util/lines_io.h"

namespace kroveld {

const std::vector<std::string>& DefaultConfigLines() {
  static const std::vector<std::string> lines = {"[Header]",
                                                 "Product=KRO_B",
                                                 "FileType=CONFIG",
                                                 "FileFormat=1.0",
                                                 "",
                                                 "[General]",
                                                 "DefaultInputFile=",
                                                 "DefaultOutputFile=",
                                                 "UseRecipeFile=",
                                                 "DefaultRecipeFile=",
                                                 ""};
  return lines;
}

bool CreateDefaultConfig(const std::string& path) {
  const auto& lines = DefaultConfigLines();
  return WriteLines(path, lines, static_cast<int>(lines.size()), false);
}

std::string ErrorLogHeader() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char stamp[32];
  std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
  return std::string("Kroveld Error Log [") + stamp + "]";
}

bool WriteErrorLogHeader(const std::string& path) {
  return WriteLines(path, {ErrorLogHeader()}, 1, false);
}

}  // namespace kroveld
