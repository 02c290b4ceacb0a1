// The first lines of a sample report as a viewer shows them: tabs expanded to the tab size (so
// that character positions are the ones the recipe counts) and decoded to UTF-8 (a line that is
// not valid UTF-8 is read as Windows-1252).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kroveld {

struct ReportSample {
  std::vector<std::string> lines;  // UTF-8, tabs expanded
  bool truncated = false;          // the report has more lines than were read
  bool readable = false;           // false when the file could not be opened
  bool allUtf8 = true;             // every line read was valid UTF-8 as it stood
};

ReportSample ReadReportSample(const std::string& path, int tabSize, std::int64_t maxLines);

}  // namespace kroveld
