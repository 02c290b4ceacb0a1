// Workbook output benchmark: 200,000 rows x 5 columns through WorkbookSink (cell texts as a table
// passes them) saved as .xlsx, and 60,000 x 5 saved as .xls, against libxlsxwriter used directly
// and openpyxl's write-only mode, in the same run. Prints seconds, ratios and the model's bytes
// per cell (resident memory before and after filling).
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "jobs/workbook/workbook_sink.h"

namespace {

double Seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

long ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  long pages = 0, resident = 0;
  statm >> pages >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

long FileBytes(const std::string& path) {
  std::ifstream f(path, std::ios::binary | std::ios::ate);
  return f ? static_cast<long>(f.tellg()) : -1;
}

// Fills the sink with `rows` rows of the texts a table section hands over; returns the model's
// resident growth in bytes.
long Fill(kroveld::WorkbookSink& sink, int rows) {
  const long before = ResidentBytes();
  char text[64];
  for (int r = 0; r < rows; ++r) {
    std::snprintf(text, sizeof text, "%05d", r % 100000);
    sink.SetCell(1, r + 1, 1, text);
    std::snprintf(text, sizeof text, "Account description %d", r % 5000);
    sink.SetCell(1, r + 1, 2, text);
    std::snprintf(text, sizeof text, "%d,%03d.%02d", (r * 37) % 1000 + 1, (r * 13) % 1000, r % 100);
    sink.SetCell(1, r + 1, 3, text);
    std::snprintf(text, sizeof text, "%d.%02d", (r * 7) % 10000, (r * 3) % 100);
    sink.SetCell(1, r + 1, 4, text);
    std::snprintf(text, sizeof text, "(%d)", r % 1000);
    sink.SetCell(1, r + 1, 5, text);
  }
  return ResidentBytes() - before;
}

double TimeCommand(const std::string& command) {
  const auto start = std::chrono::steady_clock::now();
  const int rc = std::system(command.c_str());
  if (rc != 0) std::fprintf(stderr, "failed (%d): %s\n", rc, command.c_str());
  return rc == 0 ? Seconds(start) : -1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string dir = argc > 1 ? argv[1] : "/tmp";
  const int kXlsxRows = 200000;
  const int kXlsRows = 60000;
  const double cells = kXlsxRows * 5.0;

  // .xlsx through the sink.
  const std::string ours = dir + "/bench_sink.xlsx";
  std::remove(ours.c_str());
  kroveld::WorkbookSink sink;
  auto start = std::chrono::steady_clock::now();
  sink.Open(ours, false);
  const long grown = Fill(sink, kXlsxRows);
  const double fill = Seconds(start);
  if (!sink.Save()) {
    std::fprintf(stderr, "%s\n", sink.Error().c_str());
    return 1;
  }
  const double sink_xlsx = Seconds(start);
  sink.Close();

  const std::string direct = dir + "/bench_direct.xlsx";
  const double ref =
      TimeCommand(std::string(REF_PROGRAM) + " " + direct + " " + std::to_string(kXlsxRows));
  const std::string py = dir + "/bench_openpyxl.xlsx";
  const double openpyxl =
      TimeCommand("/usr/bin/python3 " OPENPYXL_SCRIPT " " + py + " " + std::to_string(kXlsxRows));

  // .xls through the sink.
  const std::string xls = dir + "/bench_sink.xls";
  std::remove(xls.c_str());
  kroveld::WorkbookSink xls_sink;
  start = std::chrono::steady_clock::now();
  xls_sink.Open(xls, false);
  Fill(xls_sink, kXlsRows);
  if (!xls_sink.Save()) {
    std::fprintf(stderr, "%s\n", xls_sink.Error().c_str());
    return 1;
  }
  const double sink_xls = Seconds(start);

  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("xlsx %d x 5 through WorkbookSink: %.2f s (filling the model %.2f s), %ld bytes\n",
              kXlsxRows, sink_xlsx, fill, FileBytes(ours));
  std::printf("xlsx %d x 5 libxlsxwriter direct: %.2f s, %ld bytes\n", kXlsxRows, ref,
              FileBytes(direct));
  std::printf("xlsx %d x 5 openpyxl write-only:  %.2f s, %ld bytes\n", kXlsxRows, openpyxl,
              FileBytes(py));
  if (ref > 0) std::printf("ratio sink / direct libxlsxwriter: %.2f\n", sink_xlsx / ref);
  if (openpyxl > 0) std::printf("ratio sink / openpyxl: %.2f\n", sink_xlsx / openpyxl);
  std::printf("model: %.1f bytes per cell (resident growth while filling)\n", grown / cells);
  std::printf("xls %d x 5 through WorkbookSink: %.2f s, %ld bytes\n", kXlsRows, sink_xls,
              FileBytes(xls));
  std::printf("peak resident set: %.1f MB\n", usage.ru_maxrss / 1024.0);
  return 0;
}
