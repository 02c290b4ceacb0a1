// The row rules against the plain table, on the same generated ledger in one run: the detail table
// (six amount columns) to CSV as it stands, then the same table keeping only the account lines
// (blank lines and a skip pattern for page headers, rules, department headings and totals), with
// the department carried onto every row and every department total checked against its rows.
// Prints the time and throughput of each, the rows and totals, and the ratio of the two times.
//
//   kroveld_bench_mining <report path> <csv output folder> [runs]
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include "detail_ledger.h"
#include "engine/context.h"
#include "jobs/csv/csv_conversion.h"

namespace {

class QuietPort final : public kroveld::UiPort {
 public:
  void ShowMessage(std::string_view text, kroveld::Icon, std::string_view) override {
    if (messages++ == 0) first.assign(text);
  }
  bool Ask(std::string_view, kroveld::Icon, std::string_view) override { return true; }
  void Status(int, std::string_view) override {}
  std::string Caption() const override { return {}; }
  void SetCaption(std::string_view) override {}
  void Beep() override {}
  void ProcessEvents() override {}

  long long messages = 0;
  std::string first;
};

double CpuSeconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

struct Result {
  double seconds = 0;
  double cpu = 0;  // CPU time of the process: less at the mercy of the neighbours than the wall
  int rows = 0;
  std::uint64_t totals = 0;
  std::uint64_t differing = 0;
  bool ok = false;
};

Result Convert(const std::string& report, const std::string& output, bool rules) {
  QuietPort ui;
  kroveld::Context ctx(ui, std::filesystem::current_path().string());
  std::vector<kroveld::clsColumn> first;
  if (rules) {
    first.push_back(bench::Column(14, 17, "G"));
    first.back().CarryFrom = "^  DEPARTMENT [0-9]";
  }
  kroveld::clsTable& table = bench::UseDetailLedger(ctx, report, std::move(first));
  if (rules) {
    table.SkipBlankLines = true;
    table.SkipLinesMatching = "^(ACME|DEPARTMENTAL|  Account|  ---|  DEPARTMENT)|TOTAL";
    table.TotalLinesMatching = "DEPARTMENT TOTAL";
  }
  auto& specs = ctx.recipe.ExportSpecs;

  Result r;
  const auto t0 = std::chrono::steady_clock::now();
  const double c0 = CpuSeconds();
  std::string error;
  const bool converted = kroveld::ConvertToCsv(ctx, output, &error);
  r.cpu = CpuSeconds() - c0;
  r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  const auto& t = specs.Tables[0];
  r.rows = t.LastRowWritten - t.FirstRowWritten + 1;
  r.totals = ctx.run.tally.totalsChecked;
  r.differing = ctx.run.tally.totalsDiffering;
  r.ok = converted && ui.messages == 0 && !specs.Failed;
  if (!r.ok) {
    std::fprintf(stderr, "kroveld_bench_mining: %s\n",
                 !converted ? error.c_str() : ui.first.c_str());
  }
  return r;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: kroveld_bench_mining <report path> <csv output folder> [runs]\n");
    return 2;
  }
  const std::string report = argv[1];
  const std::string folder = argv[2];
  const int runs = argc > 3 ? std::max(1, std::atoi(argv[3])) : 3;
  const double megabytes = static_cast<double>(std::filesystem::file_size(report)) / 1e6;
  // Alternating, best of `runs` each, so that both see the same machine.
  Result plain, ruled;
  for (int i = 0; i < runs; ++i) {
    const Result p = Convert(report, folder + "/plain.csv", false);
    const Result r = Convert(report, folder + "/rules.csv", true);
    if (!p.ok || !r.ok) return 1;
    if (i == 0) plain = p, ruled = r;
    plain.seconds = std::min(plain.seconds, p.seconds);
    plain.cpu = std::min(plain.cpu, p.cpu);
    ruled.seconds = std::min(ruled.seconds, r.seconds);
    ruled.cpu = std::min(ruled.cpu, r.cpu);
  }
  std::printf("plain: seconds=%.3f cpu=%.3f mb_per_s=%.1f rows=%d\n", plain.seconds, plain.cpu,
              megabytes / plain.seconds, plain.rows);
  std::printf(
      "rules: seconds=%.3f cpu=%.3f mb_per_s=%.1f rows=%d totals_checked=%llu differing=%llu\n",
      ruled.seconds, ruled.cpu, megabytes / ruled.seconds, ruled.rows,
      static_cast<unsigned long long>(ruled.totals),
      static_cast<unsigned long long>(ruled.differing));
  std::printf("ratio: wall=%.2f cpu=%.2f (rules / plain, best of %d each)\n",
              ruled.seconds / plain.seconds, ruled.cpu / plain.cpu, runs);
  return 0;
}
