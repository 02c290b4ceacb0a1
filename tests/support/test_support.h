// Shared helpers of the tests: a temporary folder removed at the end of the test, and reading and
// writing whole files byte for byte.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kroveld::testing {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  // path() + "/" + name
  std::string File(std::string_view name) const;
  // Writes `content` byte for byte to path()/name (creating folders) and returns the full path.
  std::string Write(std::string_view name, std::string_view content) const;

 private:
  std::string path_;
};

std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, std::string_view content);
// Replaces the first `from` in the file by `to`; fails the test when `from` is not there.
void ReplaceInFile(const std::string& path, std::string_view from, std::string_view to);
// Names of the files and folders in `folder`, sorted.
std::vector<std::string> FileNames(const std::string& folder);
// Joins lines with CR LF after each.
std::string CrLf(std::initializer_list<std::string_view> lines);
// Path of a file in tests/data.
std::string DataFile(std::string_view name);

// The [Header] lines of an export definition.
std::string SpecHeader();
// A [Title n] section writing `lines` to sheet `sheet` from column `column` down.
std::string SpecTitle(int n, int sheet, std::string_view column,
                      const std::vector<std::string>& lines);
// A column of a table section: report columns start..end written to column `letter`; `extra`
// holds further key lines (each ending in CR LF).
struct SpecColumn {
  SpecColumn(int start, int end, std::string letter = "A", std::string op = "",
             std::string extra = "")
      : start(start),
        end(end),
        letter(std::move(letter)),
        op(std::move(op)),
        extra(std::move(extra)) {}
  int start;
  int end;
  std::string letter;
  std::string op;
  std::string extra;
};
// A [Table n] section between the key texts `top` and `bottom`, with its column sections, keys in
// the order the program writes them.
std::string SpecTable(int n, std::string_view top, int topOffset, std::string_view bottom,
                      int bottomOffset, const std::vector<SpecColumn>& columns);

}  // namespace kroveld::testing
