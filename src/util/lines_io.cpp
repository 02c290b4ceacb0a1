// Reading a run of lines of a file into an array, and writing an array of lines.
#include "util/lines_io.h"

#include <algorithm>
#include <cstdio>

#include "util/files.h"
#include "util/text_file.h"

namespace kroveld {

void file_read(UiPort& ui, std::vector<std::string>& lines, const std::string& path,
               long long start, long long count) {
  if (start < 1) {
    ui.Message(" invalid start_line in utilities.file_read!", Icon::Critical);
    return;
  }
  if (count < 1) return;
  if (lines.size() < static_cast<std::size_t>(count)) lines.resize(static_cast<std::size_t>(count));
  TextFile file;
  if (!file.Open(path)) return;
  if (!file.SkipLines(start - 1)) return;
  std::string_view line;
  for (long long i = 0; i < count; ++i) {
    if (!file.ReadLine(line)) return;
    lines[static_cast<std::size_t>(i)].assign(line.data(), line.size());
  }
}

bool WriteLines(const std::string& path, const std::vector<std::string>& lines, int count,
                bool append, std::string* error) {
  const std::size_t n = count < 0 ? 0 : std::min(lines.size(), static_cast<std::size_t>(count));
  AtomicFile out;
  if (!out.Open(path)) {
    if (error) *error = out.Error();
    return false;
  }
  if (append && FileExists(path)) {
    // Copy the old content byte for byte, then add the new lines.
    std::FILE* f = std::fopen(NativePath(path).c_str(), "rb");
    if (f == nullptr) {
      if (error) *error = "Cannot read " + path + ": " + LastErrorText();
      return false;
    }
    std::string block(1u << 20, '\0');
    std::size_t got;
    while ((got = std::fread(block.data(), 1, block.size(), f)) > 0) {
      out.Write(std::string_view(block.data(), got));
    }
    std::fclose(f);
  }
  for (std::size_t i = 0; i < n; ++i) {
    out.Write(lines[i]);
    out.Write("\r\n");
  }
  if (!out.Commit()) {
    if (error) *error = out.Error();
    return false;
  }
  return true;
}

}  // namespace kroveld
