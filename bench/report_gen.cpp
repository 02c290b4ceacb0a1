// Writes a deterministic accounting report of about the requested size: a preamble, a unique start
// key line, then pages of a departmental trial balance (page headers every 60 lines with title and
// column headings, department breaks and totals, account lines with a name and six amount columns
// with thousands separators and parenthesised negatives), a GRAND TOTAL line, a unique end key line
// and a trailer. The same arguments always give the same bytes.
//
//   kroveld_report_gen <size in MB> <output path>
//
// Layout of an account line (1-based columns): code 3-10, name 13-42, six amounts of 16 columns
// each at 43-58, 59-74, 75-90, 91-106, 107-122, 123-138.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr const char* kStartKey = "*** DETAIL LEDGER BEGIN ***";
constexpr const char* kEndKey = "*** DETAIL LEDGER END ***";
constexpr int kPageLines = 60;

class Random {
 public:
  std::uint64_t Next() {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return state_ >> 33;
  }
  int Below(int n) { return static_cast<int>(Next() % static_cast<std::uint64_t>(n)); }

 private:
  std::uint64_t state_ = 20240229;
};

const char* const kWords[] = {"Cash",      "Bank",      "Receivable", "Payable",    "Accrued",
                              "Prepaid",   "Inventory", "Salaries",   "Wages",      "Rent",
                              "Utilities", "Travel",    "Freight",    "Insurance",  "Depreciation",
                              "Interest",  "Tax",       "Sales",      "Returns",    "Discounts",
                              "Supplies",  "Repairs",   "Licences",   "Consulting", "Deferred"};
const char* const kDepartments[] = {"ADMINISTRATION", "SALES NORTH", "SALES SOUTH", "WAREHOUSE",
                                    "PRODUCTION",     "RESEARCH",    "FINANCE",     "LOGISTICS"};

// Cents as "1,234,567.89" or "(1,234.50)" right-aligned in `width` columns.
void AppendAmount(std::string& out, long long cents, int width) {
  const bool negative = cents < 0;
  unsigned long long v = negative ? static_cast<unsigned long long>(-cents) : cents;
  char digits[32];
  int n = 0;
  const unsigned frac = static_cast<unsigned>(v % 100);
  v /= 100;
  digits[n++] = static_cast<char>('0' + frac % 10);
  digits[n++] = static_cast<char>('0' + frac / 10);
  digits[n++] = '.';
  int group = 0;
  do {
    if (group == 3) {
      digits[n++] = ',';
      group = 0;
    }
    digits[n++] = static_cast<char>('0' + v % 10);
    v /= 10;
    ++group;
  } while (v > 0);
  const int len = n + (negative ? 2 : 1);  // parentheses, or a trailing blank for alignment
  for (int i = len; i < width; ++i) out.push_back(' ');
  if (negative) out.push_back('(');
  while (n > 0) out.push_back(digits[--n]);
  out.push_back(negative ? ')' : ' ');
}

void Pad(std::string& out, std::size_t column) {  // pad to `column` characters
  while (out.size() < column) out.push_back(' ');
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: kroveld_report_gen <size in MB> <output path>\n");
    return 2;
  }
  const long long target = std::atoll(argv[1]) * 1000 * 1000;
  std::FILE* out = std::fopen(argv[2], "wb");
  if (out == nullptr) {
    std::perror(argv[2]);
    return 1;
  }
  std::setvbuf(out, nullptr, _IOFBF, 1 << 20);
  Random rnd;
  long long written = 0;
  std::string line;
  auto emit = [&](const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), out);
    std::fwrite("\r\n", 1, 2, out);
    written += static_cast<long long>(text.size()) + 2;
  };

  emit("ACME HOLDINGS LIMITED");
  emit("General Ledger - Departmental Trial Balance");
  emit("Run date 2024-02-29   Period 12   Currency USD");
  emit("");
  emit(kStartKey);

  int page = 0;
  int pageLine = kPageLines;
  int department = 0;
  int deptLeft = 0;
  long long grand[6] = {0, 0, 0, 0, 0, 0};
  long long dept[6] = {0, 0, 0, 0, 0, 0};
  auto totalLine = [&](const char* label, const long long* sums) {
    line.assign("            ");
    line += label;
    Pad(line, 42);
    for (int c = 0; c < 6; ++c) AppendAmount(line, sums[c], 16);
    emit(line);
  };

  while (written < target) {
    if (pageLine >= kPageLines) {
      ++page;
      pageLine = 0;
      line = "ACME HOLDINGS LIMITED";
      Pad(line, 120);
      line += "Page " + std::to_string(page);
      emit(line);
      emit("DEPARTMENTAL TRIAL BALANCE - PERIOD ENDING 31 DECEMBER 2023");
      emit("");
      emit(
          "  Account   Description                          Opening         Debits"
          "        Credits       Movement         Budget       Variance");
      emit(
          "  --------  ------------------------------  --------------  --------------"
          "  --------------  --------------  --------------  --------------");
      pageLine = 5;
    }
    if (deptLeft == 0) {
      if (department > 0) {
        totalLine("DEPARTMENT TOTAL", dept);
        for (auto& d : dept) d = 0;
        emit("");
        pageLine += 2;
      }
      ++department;
      deptLeft = 20 + rnd.Below(60);
      line = "  DEPARTMENT " + std::to_string(1000 + department) + " - " +
             kDepartments[department % 8];
      emit(line);
      ++pageLine;
      continue;
    }
    --deptLeft;
    line.assign("  ");
    line += std::to_string(1000 + rnd.Below(9000));
    line += '-';
    line += std::to_string(100 + rnd.Below(900));
    Pad(line, 12);
    line += kWords[rnd.Below(25)];
    line += ' ';
    line += kWords[rnd.Below(25)];
    if (rnd.Below(3) == 0) {
      line += ", ";
      line += kWords[rnd.Below(25)];
    }
    Pad(line, 42);
    line.resize(42);
    for (int c = 0; c < 6; ++c) {
      long long cents = rnd.Below(100000000);
      if (rnd.Below(4) == 0) cents = rnd.Below(100000);
      if (rnd.Below(7) == 0) cents = -cents;
      dept[c] += cents;
      grand[c] += cents;
      AppendAmount(line, cents, 16);
    }
    emit(line);
    ++pageLine;
  }
  totalLine("DEPARTMENT TOTAL", dept);
  emit("");
  totalLine("GRAND TOTAL", grand);
  emit(kEndKey);
  emit("");
  emit("End of report");
  if (std::fclose(out) != 0) {
    std::perror(argv[2]);
    return 1;
  }
  return 0;
}
