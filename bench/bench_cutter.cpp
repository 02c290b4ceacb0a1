// The kroveld process against a minimal single-purpose cutter and cp, on the same report in the
// same run. The cutter is written here for the generated ledger and nothing else: it maps the
// report, finds the first line holding each key text, and cuts the five columns of the detail
// ledger recipe (bench/window/ledger.krs) of every line between them into CSV, byte for byte as
// kroveld writes them (the line with one blank added unless it ends in one, fields enclosed in
// quotes when they hold a comma or a quote, leading empty fields without a comma). Each round runs
// cp, kroveld, the cutter, and the cutter once more flushing its output to the disk at the end as
// kroveld does, in turn, as separate processes (and a baseline kroveld binary when one is given);
// the outputs of kroveld and the cutter are compared after every round. Prints the medians of wall
// and CPU time and the peak memory of each.
//
//   kroveld_bench_cutter <kroveld binary> <report> <work folder> [rounds [baseline kroveld]]
//   kroveld_bench_cutter --cut <report> <csv output>       (the cutter alone)
//   kroveld_bench_cutter --cut-durable <report> <csv output>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view kStartKey = "*** DETAIL LEDGER BEGIN ***";
constexpr std::string_view kEndKey = "*** DETAIL LEDGER END ***";
// Columns (1-based, inclusive) of the detail ledger recipe.
constexpr int kColumns[][2] = {{3, 10}, {13, 42}, {43, 58}, {59, 74}, {123, 138}};

// Number (from 1) of the first line of `text` holding `key`, and where that line begins.
bool FindKeyLine(std::string_view text, std::string_view key, std::size_t& lineStart,
                 std::size_t& lineNumber) {
  const void* hit = ::memmem(text.data(), text.size(), key.data(), key.size());
  if (hit == nullptr) return false;
  const std::size_t at = static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
  lineNumber = 1 + static_cast<std::size_t>(std::count(text.data(), text.data() + at, '\n'));
  const std::size_t nl = text.rfind('\n', at);
  lineStart = nl == std::string_view::npos ? 0 : nl + 1;
  return true;
}

// True when `piece` holds a comma or a double quote: sixteen bytes at a time.
bool NeedsQuotes(std::string_view piece) {
  const char* p = piece.data();
  std::size_t n = piece.size();
#if defined(__SSE2__)
  const __m128i commas = _mm_set1_epi8(',');
  const __m128i quotes = _mm_set1_epi8('"');
  for (; n >= 16; p += 16, n -= 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    if (_mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, commas), _mm_cmpeq_epi8(v, quotes))))
      return true;
  }
#endif
  for (; n > 0; ++p, --n) {
    if (*p == ',' || *p == '"') return true;
  }
  return false;
}

// Cuts the report into `outputPath`; with `durable` the data is flushed to the disk before the
// cutter ends, as kroveld does before it renames its output into place.
int Cut(const char* reportPath, const char* outputPath, bool durable) {
  const int fd = ::open(reportPath, O_RDONLY);
  struct stat st {};
  if (fd < 0 || ::fstat(fd, &st) != 0 || st.st_size == 0) return 1;
  const std::size_t size = static_cast<std::size_t>(st.st_size);
  void* map = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
  if (map == MAP_FAILED) return 1;
  ::madvise(map, size, MADV_SEQUENTIAL);
  const std::string_view text(static_cast<const char*>(map), size);
  std::size_t top = 0, topLine = 0, bottom = 0, bottomLine = 0;
  if (!FindKeyLine(text, kStartKey, top, topLine) ||
      !FindKeyLine(text, kEndKey, bottom, bottomLine) || bottomLine <= topLine)
    return 1;
  ::madvise(map, size, MADV_DONTNEED);  // the search's pages: read again from the cache below
  const int out = ::open(outputPath, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (out < 0) return 1;

  std::vector<char> buffer(1 << 20);
  std::size_t used = 0;
  const auto flush = [&] {
    for (std::size_t done = 0; done < used;) {
      const ssize_t n = ::write(out, buffer.data() + done, used - done);
      if (n <= 0) std::exit(1);
      done += static_cast<std::size_t>(n);
    }
    used = 0;
  };
  const char* const base = text.data();
  std::size_t pos = text.find('\n', top) + 1;  // the line after the start key line
  std::size_t released = 0;
  while (pos < bottom) {
    const char* nlp = static_cast<const char*>(std::memchr(base + pos, '\n', size - pos));
    const std::size_t nl = static_cast<std::size_t>(nlp - base);
    std::size_t end = nl;
    if (end > pos && base[end - 1] == '\r') --end;
    const std::string_view line(base + pos, end - pos);
    pos = nl + 1;
    if (buffer.size() - used < 3 * line.size() + 64) flush();
    char* o = buffer.data() + used;
    char* const rowStart = o;
    // The line as the row reads it: one blank more unless it is empty or ends in one.
    const std::size_t n = line.size();
    const std::size_t slot = n + (n > 0 && line.back() != ' ' ? 1 : 0);
    for (const auto& column : kColumns) {
      if (o != rowStart) *o++ = ',';
      const std::size_t from = static_cast<std::size_t>(column[0] - 1);
      const std::size_t to = std::min(static_cast<std::size_t>(column[1]), slot);
      if (from >= to) continue;
      const std::string_view piece(line.data() + from, std::min(to, n) - std::min(from, n));
      const bool quotes = NeedsQuotes(piece);
      if (quotes) *o++ = '"';
      if (!quotes || piece.find('"') == std::string_view::npos) {
        std::memcpy(o, piece.data(), piece.size());
        o += piece.size();
      } else {
        for (const char c : piece) {
          *o++ = c;
          if (c == '"') *o++ = '"';
        }
      }
      if (to > n) *o++ = ' ';
      if (quotes) *o++ = '"';
    }
    *o++ = '\r';
    *o++ = '\n';
    used = static_cast<std::size_t>(o - buffer.data());
    // The pages read are given back as the cut moves on, so memory stays small.
    if (pos - released > (8u << 20)) {
      const std::size_t upTo = (pos - (1u << 20)) & ~std::size_t{4095};
      ::madvise(const_cast<char*>(base) + released, upTo - released, MADV_DONTNEED);
      released = upTo;
    }
  }
  flush();
  if (durable && ::fsync(out) != 0) return 1;
  return ::close(out) == 0 ? 0 : 1;
}

struct Run {
  double wall = 0;
  double cpu = 0;
  long peakKb = 0;
};

// Runs argv as a child process with the environment given; exits on failure.
Run Spawn(const std::vector<std::string>& args) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  const auto t0 = std::chrono::steady_clock::now();
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::execv(argv[0], argv.data());
    std::_Exit(127);
  }
  int status = 0;
  struct rusage usage {};
  ::wait4(pid, &status, 0, &usage);
  Run run;
  run.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  run.cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
            1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
  run.peakKb = usage.ru_maxrss;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "kroveld_bench_cutter: %s failed (status %d)\n", args[0].c_str(), status);
    std::exit(1);
  }
  return run;
}

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const std::size_t n = v.size();
  return n % 2 == 1 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteRecipe(const std::string& folder) {
  std::ofstream rcp(folder + "/ledger.rcp", std::ios::binary);
  rcp << "[Header]\r\nProduct=KRO\r\nFileType=RECIPE\r\nFileFormat=1.1\r\n"
         "[Output File]\r\nInputFileFirst=1\r\nInputFileLast=1\r\n"
         "ExportSpecFileName=ledger.krs\r\n[Input Files]\r\n1FileName=report.txt\r\n";
  std::ofstream krs(folder + "/ledger.krs", std::ios::binary);
  krs << "[Header]\r\nProduct=KRO\r\nFileType=EXPORT SPEC\r\nFileFormat=1.1\r\n"
         "[General]\r\nName=Detail ledger\r\n[Table 1]\r\n"
         "ReadStartLine="
      << kStartKey
      << "\r\nReadStartLineOffset=1\r\n"
         "ReadEndLine="
      << kEndKey << "\r\nReadEndLineOffset=-1\r\nTotalColumns=5\r\n";
  int n = 0;
  for (const auto& column : kColumns) {
    ++n;
    krs << "[Table 1 Col " << n << "]\r\nReadColumnStart=" << column[0]
        << "\r\nReadColumnEnd=" << column[1] << "\r\nWriteColumn=" << static_cast<char>('A' + n - 1)
        << "\r\nPeriodOperator=\r\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::string_view(argv[1]) == "--cut") return Cut(argv[2], argv[3], false);
  if (argc == 4 && std::string_view(argv[1]) == "--cut-durable") return Cut(argv[2], argv[3], true);
  if (argc < 4 || argc > 6) {
    std::fprintf(stderr,
                 "usage: kroveld_bench_cutter <kroveld binary> <report> <work folder> [rounds "
                 "[baseline kroveld binary]]\n"
                 "       kroveld_bench_cutter --cut|--cut-durable <report> <csv output>\n");
    return 2;
  }
  const std::string kroveld = argv[1];
  const std::string report = argv[2];
  const std::string work = argv[3];
  const int rounds = argc >= 5 ? std::max(1, std::atoi(argv[4])) : 5;
  char self[4096] = {};
  if (::readlink("/proc/self/exe", self, sizeof self - 1) <= 0) return 1;
  WriteRecipe(work);
  ::setenv("KROVELD_HOME", work.c_str(), 1);
  // kroveld reads the report named in the recipe beside it: the work folder holds a link to it.
  const std::string input = work + "/report.txt";
  if (input != report) {
    ::unlink(input.c_str());
    if (::symlink(report.c_str(), input.c_str()) != 0) return 1;
  }
  { const std::string warm = Slurp(report); }  // page cache warm for everyone

  struct Tool {
    std::string name;
    std::vector<std::string> args;
    std::string output;  // the CSV it writes, removed before each run ("" for cp)
    std::vector<double> wall, cpu;
    long peakKb = 0;
  };
  const std::string cutterCsv = work + "/cutter.csv";
  const auto kroveldTool = [&](std::string name, const std::string& binary) {
    const std::string out = work + "/" + name + ".csv";
    return Tool{name, {binary, "-i", input, "-o", out, "-r", work + "/ledger.rcp"}, out, {}, {}, 0};
  };
  std::vector<Tool> tools;
  tools.push_back(Tool{"cp", {"/bin/cp", report, work + "/copy.txt"}, "", {}, {}, 0});
  tools.push_back(kroveldTool("kroveld", kroveld));
  if (argc == 6) tools.push_back(kroveldTool("baseline", argv[5]));
  tools.push_back(Tool{"cutter", {self, "--cut", report, cutterCsv}, cutterCsv, {}, {}, 0});
  tools.push_back(
      Tool{"cutter+fsync", {self, "--cut-durable", report, cutterCsv}, cutterCsv, {}, {}, 0});
  for (int round = 0; round < rounds; ++round) {
    for (Tool& tool : tools) {
      ::unlink((work + "/copy.txt").c_str());
      if (!tool.output.empty()) ::unlink(tool.output.c_str());
      const Run run = Spawn(tool.args);
      tool.wall.push_back(run.wall);
      tool.cpu.push_back(run.cpu);
      tool.peakKb = std::max(tool.peakKb, run.peakKb);
    }
    const std::string expected = Slurp(cutterCsv);
    for (const Tool& tool : tools) {
      if (tool.output.empty() || tool.output == cutterCsv) continue;
      if (Slurp(tool.output) != expected) {
        std::fprintf(stderr, "kroveld_bench_cutter: the CSV of %s and of the cutter differ\n",
                     tool.name.c_str());
        return 1;
      }
    }
  }
  ::unlink((work + "/copy.txt").c_str());
  struct stat st {};
  ::stat(report.c_str(), &st);
  struct stat csv {};
  ::stat(cutterCsv.c_str(), &csv);
  std::printf("report %.1f MB, CSV %.1f MB (the same from every tool), %d rounds\n",
              static_cast<double>(st.st_size) / 1e6, static_cast<double>(csv.st_size) / 1e6,
              rounds);
  std::printf("%-13s %12s %12s %10s %12s %12s\n", "tool", "median wall", "median CPU", "peak MB",
              "wall/cutter", "CPU/cutter");
  const Tool& cutter = tools[tools.size() - 2];
  const double cutterWall = Median(cutter.wall);
  const double cutterCpu = Median(cutter.cpu);
  for (const Tool& tool : tools) {
    std::printf("%-13s %11.3fs %11.3fs %10.1f %11.2fx %11.2fx\n", tool.name.c_str(),
                Median(tool.wall), Median(tool.cpu), static_cast<double>(tool.peakKb) / 1024,
                Median(tool.wall) / cutterWall, Median(tool.cpu) / cutterCpu);
  }
  return 0;
}
