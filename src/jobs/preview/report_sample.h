// The first lines of a sample report as a viewer shows them: tabs expanded to the tab size (so
// that character positions are the ones the recipe counts) and decoded to UTF-8 (a line that is
// not valid UTF-8 is read as Windows-1252). Lines longer than a viewer can sensibly show (a binary
// file read as text may be one line of megabytes) are cut.
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
  bool linesCut = false;           // some line was longer than maxLineBytes and was cut
};

inline constexpr std::size_t kSampleMaxLineBytes = 4000;

ReportSample ReadReportSample(const std::string& path, int tabSize, std::int64_t maxLines,
                              std::size_t maxLineBytes = kSampleMaxLineBytes);

}  // namespace kroveld
