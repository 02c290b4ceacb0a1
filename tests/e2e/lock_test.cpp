// Several automatic conversions started at once in the same application folder: each writes and
// reads the shared _AutoRecipe.rcp and _ExportSpecs.krs, so each must hold the folder's lock for
// that time. Every input has its own column layout (and some a second table), so a conversion
// that picked up another's automatic files would cut its rows differently.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/e2e_support.h"

namespace kroveld {
namespace {

namespace fs = std::filesystem;
using testing::ReadFile;
using testing::TempDir;

constexpr int kRows = 1500;

std::string Padded(std::string text, std::size_t width, bool right = false) {
  if (text.size() >= width) return text.substr(0, width);
  const std::string blanks(width - text.size(), ' ');
  return right ? blanks + text : text + blanks;
}

// One table of three columns of the given widths, numbered `table`, seeded by `seed`.
struct Table {
  int table;
  std::size_t code, name, amount;
  int seed;

  std::string Row(int i) const {
    return Padded("C" + std::to_string(seed * 100000 + i), code) + " " +
           Padded("item " + std::to_string(i % 97) + " of " + std::to_string(seed), name) + " " +
           Padded(std::to_string(i * seed + 3), amount, true);
  }
  std::string Template() const {
    return std::string(code, 'X') + " " + std::string(name, 'X') + " " + std::string(amount, 'X');
  }
  // The CSV row: a column runs up to and including the blank after its run of the template;
  // the last one to the end of the row.
  std::string CsvRow(int i) const {
    const std::string row = Row(i);
    return row.substr(0, code + 1) + "," + row.substr(code + 1, name + 1) + "," +
           row.substr(code + name + 2) + "\r\n";
  }
};

struct Report {
  std::vector<Table> tables;

  std::string Text() const {
    std::string text = "REPORT\r\n";
    for (std::size_t t = 0; t < tables.size(); ++t) {
      const Table& table = tables[t];
      text += ">>" + std::to_string(table.table) + "\r\nCode Name Amount\r\n";
      for (int i = 1; i <= kRows; ++i) text += table.Row(i) + "\r\n";
      text += "<<" + std::to_string(table.table) + "\r\n" + table.Template() + "\r\n";
    }
    return text + ">>\r\nEnd of report\r\n";
  }
  std::string Csv() const {
    std::string csv;
    for (const Table& table : tables) {
      for (int i = 1; i <= kRows; ++i) csv += table.CsvRow(i);
    }
    return csv;
  }
};

std::vector<Report> Reports() {
  return {
      Report{{Table{1, 6, 12, 7, 1}}},
      Report{{Table{1, 9, 16, 8, 2}, Table{2, 7, 14, 6, 3}}},
      Report{{Table{1, 8, 20, 10, 4}}},
      Report{{Table{1, 11, 13, 9, 5}, Table{2, 6, 18, 8, 6}}},
  };
}

TEST(AutomaticFilesLock, ConcurrentConversionsInOneApplicationFolderKeepTheirOwnRecipes) {
  TempDir dir;
  const std::vector<Report> reports = Reports();
  for (std::size_t k = 0; k < reports.size(); ++k) {
    testing::WriteFile(dir.File("in" + std::to_string(k) + ".txt"), reports[k].Text());
  }
  constexpr int kRounds = 4;
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const std::string home = dir.File("home" + std::to_string(round));
    fs::create_directories(home);
    std::vector<testing::Started> started;
    for (std::size_t k = 0; k < reports.size(); ++k) {
      // All started before any is waited for; each writes a CSV of its own.
      started.push_back(
          testing::StartKroveld(home,
                                {"-i", "in" + std::to_string(k) + ".txt", "-o",
                                 "out" + std::to_string(round) + "-" + std::to_string(k) + ".csv"},
                                dir.path()));
    }
    for (std::size_t k = 0; k < reports.size(); ++k) {
      const testing::RunResult r = testing::WaitKroveld(started[k]);
      EXPECT_EQ(r.status, 0) << "input " << k << ": " << r.err;
      EXPECT_EQ(r.err, "") << "input " << k;
      const std::string csv =
          ReadFile(dir.File("out" + std::to_string(round) + "-" + std::to_string(k) + ".csv"));
      // Byte for byte; on a mismatch show only the first line, not megabytes.
      EXPECT_TRUE(csv == reports[k].Csv())
          << "input " << k << " starts " << csv.substr(0, csv.find('\n')) << " instead of "
          << reports[k].tables[0].CsvRow(1);
    }
    // Only the application's own files are left in its folder.
    EXPECT_EQ(testing::FileNames(home),
              (std::vector<std::string>{"ErrorLog.txt", "_AutoRecipe.rcp", "_ExportSpecs.krs",
                                        "config.ini"}));
  }
}

}  // namespace
}  // namespace kroveld
