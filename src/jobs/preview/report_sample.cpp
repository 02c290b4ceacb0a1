#include "jobs/preview/report_sample.h"

#include "jobs/workbook/text_encoding.h"
#include "util/strings.h"
#include "util/text_file.h"

namespace kroveld {

ReportSample ReadReportSample(const std::string& path, int tabSize, std::int64_t maxLines,
                              std::size_t maxLineBytes) {
  ReportSample sample;
  TextFile file;
  if (!file.Open(path)) return sample;
  sample.readable = true;
  std::string_view line;
  std::string expanded;
  while (file.ReadLine(line)) {
    if (static_cast<std::int64_t>(sample.lines.size()) >= maxLines) {
      sample.truncated = true;
      break;
    }
    if (tabSize > 0 && line.find('\t') != std::string_view::npos) {
      ExpandTabs(line, tabSize, expanded);
      line = expanded;
    }
    if (line.size() > maxLineBytes) {
      line = line.substr(0, maxLineBytes);
      sample.linesCut = true;
    }
    if (!IsValidUtf8(line)) sample.allUtf8 = false;
    sample.lines.push_back(AsUtf8(line));
  }
  return sample;
}

}  // namespace kroveld
