// Converts the detail table of a generated report (six amount columns) to CSV through the library,
// as a conversion job does, and prints the elapsed time, the throughput and the peak memory of the
// process. scripts/bench-csv compares the figures with cat, cp, gawk and pandas.
//
//   kroveld_bench_csv <report path> <csv output path>
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include "engine/context.h"
#include "jobs/csv/csv_conversion.h"

namespace {

// Says nothing; counts what the engine would have shown.
class QuietPort final : public kroveld::UiPort {
 public:
  void Message(std::string_view text, kroveld::Icon, std::string_view) override {
    if (messages++ == 0) first.assign(text);
  }
  bool AskYesNo(std::string_view, kroveld::Icon, std::string_view) override { return true; }
  void Status(int, std::string_view) override { ++statuses; }
  std::string Caption() const override { return {}; }
  void SetCaption(std::string_view) override {}
  void Beep() override {}
  void ProcessEvents() override { ++events; }

  long long messages = 0;
  long long statuses = 0;
  long long events = 0;
  std::string first;
};

kroveld::clsColumn Column(int start, int end, const char* letter) {
  kroveld::clsColumn c;
  c.ReadColumnStart = start;
  c.ReadColumnEnd = end;
  c.WriteColumn = letter;
  return c;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: kroveld_bench_csv <report path> <csv output path>\n");
    return 2;
  }
  const std::string report = argv[1];
  const std::string output = argv[2];

  QuietPort ui;
  kroveld::Context ctx(ui, std::filesystem::current_path().string());
  ctx.recipe.InputFileNames[0] = report;
  ctx.recipe.InputFileFirst = 1;
  ctx.recipe.InputFileLast = 1;
  ctx.statusPrefix = "Converting";
  kroveld::clsTable table;
  table.ReadStartLine = "*** DETAIL LEDGER BEGIN ***";
  table.ReadStartLineOffset = 1;
  table.ReadEndLine = "*** DETAIL LEDGER END ***";
  table.ReadEndLineOffset = -1;
  const char* letters[] = {"A", "B", "C", "D", "E", "F"};
  for (int c = 0; c < 6; ++c) table.Columns.push_back(Column(43 + 16 * c, 58 + 16 * c, letters[c]));
  table.TotalColumns = 6;
  auto& specs = ctx.recipe.ExportSpecs;
  specs.Tables.push_back(std::move(table));
  specs.TableCount = 1;
  specs.SectionSequenceCollection = {"Table"};

  const auto t0 = std::chrono::steady_clock::now();
  std::string error;
  const bool ok = kroveld::ConvertToCsv(ctx, output, &error);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  if (!ok) {
    std::fprintf(stderr, "kroveld_bench_csv: %s\n", error.c_str());
    return 1;
  }
  if (ui.messages > 0 || specs.Failed) {
    std::fprintf(stderr, "kroveld_bench_csv: the conversion showed %lld message(s), first: %s\n",
                 ui.messages, ui.first.c_str());
    return 1;
  }
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  const double bytes = static_cast<double>(std::filesystem::file_size(report));
  const auto& t = specs.Tables[0];
  std::printf("seconds=%.3f mb_per_s=%.1f rows=%d peak_rss_kb=%ld status_updates=%lld\n", seconds,
              bytes / 1e6 / seconds, t.LastRowWritten - t.FirstRowWritten + 1, usage.ru_maxrss,
              ui.statuses);
  return 0;
}
