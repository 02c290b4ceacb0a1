// Converts the detail table of a generated report (six amount columns) to CSV through the library,
// as a conversion job does, and prints the elapsed time, the throughput and the peak memory of the
// process. scripts/bench-csv compares the figures with cat, cp, gawk and pandas.
// With --utf8-vs-default the same report is converted read as 8-bit text (the default) and read
// as UTF-8, alternately, best of five each, and both throughputs are printed with their ratio;
// the two outputs must be the same bytes (scripts/bench-encoding).
//
// With --type=Number (or Text) every amount column carries that Type; the page headings inside the
// table are then noted as values kept as text, which is expected and not an error here.
//
//   kroveld_bench_csv <report path> <csv output path> [--utf8-vs-default | --type=Number|Text]
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "detail_ledger.h"
#include "engine/context.h"
#include "jobs/csv/csv_conversion.h"

namespace {

// Says nothing; counts what the engine would have shown.
class QuietPort final : public kroveld::UiPort {
 public:
  void ShowMessage(std::string_view text, kroveld::Icon, std::string_view) override {
    if (messages++ == 0) first.assign(text);
  }
  bool Ask(std::string_view, kroveld::Icon, std::string_view) override { return true; }
  void Status(int, std::string_view) override { ++statuses; }
  std::string Caption() const override { return {}; }
  void SetCaption(std::string_view) override {}
  void Beep() override {}
  void ProcessEvents() override { ++events; }

  long long messages = 0;
  long long statuses = 0;
  bool allowNotes = false;  // messages are expected (typed columns' notes)
  long long events = 0;
  std::string first;
};

// A context that converts the detail table of `report`, read as UTF-8 when `utf8`, its amount
// columns typed `type` (none when empty).
std::unique_ptr<kroveld::Context> DetailTable(QuietPort& ui, const std::string& report, bool utf8,
                                              const std::string& type = {}) {
  auto ctx = std::make_unique<kroveld::Context>(ui, std::filesystem::current_path().string());
  ctx->lineProcessor.SetUtf8(utf8);
  kroveld::clsTable& table = bench::UseDetailLedger(*ctx, report);
  if (!type.empty()) {
    for (std::size_t c = 0; c < table.Columns.size(); ++c) {
      table.Columns[c].SetType(ui, type, "", "Table 1 Col " + std::to_string(c + 1));
    }
  }
  return ctx;
}

// Seconds one conversion took, or a negative number after saying what went wrong.
double Convert(QuietPort& ui, kroveld::Context& ctx, const std::string& output) {
  const auto t0 = std::chrono::steady_clock::now();
  std::string error;
  const bool ok = kroveld::ConvertToCsv(ctx, output, &error);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  if (!ok) {
    std::fprintf(stderr, "kroveld_bench_csv: %s\n", error.c_str());
    return -1;
  }
  if ((ui.messages > 0 && !ui.allowNotes) || ctx.recipe.ExportSpecs.Failed) {
    std::fprintf(stderr, "kroveld_bench_csv: the conversion showed %lld message(s), first: %s\n",
                 ui.messages, ui.first.c_str());
    return -1;
  }
  return seconds;
}

std::string Contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

int CompareEncodings(const std::string& report, const std::string& output) {
  const double megabytes = static_cast<double>(std::filesystem::file_size(report)) / 1e6;
  const std::string utf8Output = output + ".utf8";
  double best[2] = {1e300, 1e300};  // default, utf-8
  for (int round = 0; round < 5; ++round) {
    for (const bool utf8 : {false, true}) {
      QuietPort ui;
      auto ctx = DetailTable(ui, report, utf8);
      const double seconds = Convert(ui, *ctx, utf8 ? utf8Output : output);
      if (seconds < 0) return 1;
      best[utf8] = std::min(best[utf8], seconds);
    }
  }
  if (Contents(output) != Contents(utf8Output)) {
    std::fprintf(stderr, "kroveld_bench_csv: the UTF-8 reading gave other bytes\n");
    return 1;
  }
  std::filesystem::remove(utf8Output);
  std::printf("default   seconds=%.3f mb_per_s=%.1f\n", best[0], megabytes / best[0]);
  std::printf("utf-8     seconds=%.3f mb_per_s=%.1f\n", best[1], megabytes / best[1]);
  std::printf("utf-8 / default throughput = %.3f\n", best[0] / best[1]);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const bool compare = argc == 4 && std::strcmp(argv[3], "--utf8-vs-default") == 0;
  const bool typed = argc == 4 && std::strncmp(argv[3], "--type=", 7) == 0;
  if (argc != 3 && !compare && !typed) {
    std::fprintf(stderr,
                 "usage: kroveld_bench_csv <report path> <csv output path> [--utf8-vs-default | "
                 "--type=Number|Text]\n");
    return 2;
  }
  const std::string report = argv[1];
  const std::string output = argv[2];
  if (compare) return CompareEncodings(report, output);

  QuietPort ui;
  auto ctx = DetailTable(ui, report, false, typed ? argv[3] + 7 : "");
  if (typed && !ctx->recipe.ExportSpecs.Tables[0].Columns[0].IsTyped()) {
    std::fprintf(stderr, "kroveld_bench_csv: %s\n", ui.first.c_str());
    return 2;
  }
  ui.allowNotes = typed;
  const double seconds = Convert(ui, *ctx, output);
  if (seconds < 0) return 1;
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  const double bytes = static_cast<double>(std::filesystem::file_size(report));
  const auto& t = ctx->recipe.ExportSpecs.Tables[0];
  std::printf("seconds=%.3f mb_per_s=%.1f rows=%d peak_rss_kb=%ld status_updates=%lld\n", seconds,
              bytes / 1e6 / seconds, t.LastRowWritten - t.FirstRowWritten + 1, usage.ru_maxrss,
              ui.statuses);
  return 0;
}
