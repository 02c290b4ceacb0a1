// Helpers of the workbook tests: run python3 readers we did not write (xlrd, openpyxl) on our
// files, and let python3 write files for our readers.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace kroveld::testing {

// Whether /usr/bin/python3 can import the modules. When the environment variable CI is set, a
// missing module fails the calling test: a build machine must not pass by skipping the readers.
inline bool HavePythonModules(const std::string& modules) {
  const std::string cmd = "/usr/bin/python3 -c 'import " + modules + "' >/dev/null 2>&1";
  if (std::system(cmd.c_str()) == 0) return true;
  if (std::getenv("CI") != nullptr) ADD_FAILURE() << "CI is set but python3 lacks " << modules;
  return false;
}

inline std::string RunCapture(const std::string& cmd, int* status = nullptr) {
  std::string out;
  FILE* p = ::popen(cmd.c_str(), "r");
  if (!p) return out;
  std::array<char, 4096> buf;
  std::size_t n;
  while ((n = std::fread(buf.data(), 1, buf.size(), p)) > 0) out.append(buf.data(), n);
  const int rc = ::pclose(p);
  if (status) *status = rc;
  return out;
}

struct DumpedCell {
  std::string type;  // "n" or "s"
  std::string value;
  std::string format;
};

struct DumpedSheet {
  std::string name;
  std::map<std::pair<int, int>, DumpedCell> cells;
};

struct DumpedBook {
  std::string font;
  std::vector<DumpedSheet> sheets;
};

// Parses the --lines output of tests/e2e/read_workbook.py. Fails the test on a line it does not
// understand.
inline DumpedBook ParseDump(const std::string& text) {
  DumpedBook book;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
      const std::size_t tab = line.find('\t', start);
      parts.push_back(line.substr(start, tab - start));
      if (tab == std::string::npos) break;
      start = tab + 1;
    }
    if (parts[0] == "font" && parts.size() == 2) {
      book.font = parts[1];
    } else if (parts[0] == "sheet" && parts.size() == 2) {
      book.sheets.push_back({parts[1], {}});
    } else if (parts[0] == "cell" && parts.size() == 6 && !book.sheets.empty()) {
      book.sheets.back().cells[{std::stoi(parts[1]), std::stoi(parts[2])}] = {parts[3], parts[4],
                                                                              parts[5]};
    } else {
      ADD_FAILURE() << "unexpected reader output: " << line;
    }
  }
  return book;
}

// A cell as the readers dump it: "TYPE [VALUE] FORMAT".
inline std::string Describe(const DumpedCell& c) {
  return c.type + " [" + c.value + "] " + c.format;
}

struct CellIs {
  int row;
  int column;
  std::string cell;  // as Describe gives it
};

// Checks the given cells of a dumped sheet; with `only`, that the sheet holds no others.
inline void ExpectCells(const DumpedSheet& sheet, const std::vector<CellIs>& cells, bool only) {
  if (only) {
    EXPECT_EQ(sheet.cells.size(), cells.size());
  }
  for (const CellIs& e : cells) {
    const auto it = sheet.cells.find({e.row, e.column});
    EXPECT_EQ(it == sheet.cells.end() ? "missing" : Describe(it->second), e.cell)
        << "R" << e.row << "C" << e.column;
  }
}

// Reads a workbook with tests/e2e/read_workbook.py (xlrd or openpyxl). Fails the test when the
// reader fails.
inline DumpedBook ReadWithPython(const std::string& path) {
  int status = 0;
  const std::string out =
      RunCapture("/usr/bin/python3 " KROVELD_SOURCE_DIR "/tests/e2e/read_workbook.py --lines '" +
                     path + "' 2>&1",
                 &status);
  EXPECT_EQ(status, 0) << out;
  return ParseDump(out);
}

// Runs a python3 snippet with the file path as sys.argv[1]; false when it fails.
inline bool RunPython(const std::string& code, const std::string& path) {
  std::string quoted;
  for (char c : code) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += c;
    }
  }
  int status = 0;
  const std::string out =
      RunCapture("/usr/bin/python3 -c '" + quoted + "' '" + path + "' 2>&1", &status);
  EXPECT_EQ(status, 0) << out;
  return status == 0;
}

}  // namespace kroveld::testing
