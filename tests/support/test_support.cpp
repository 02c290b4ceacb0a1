#include "support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/recording_port.h"

namespace fs = std::filesystem;

namespace kroveld::testing {

TempDir::TempDir() {
  std::string templ = (fs::temp_directory_path() / "kroveld-test-XXXXXX").string();
  char* made = mkdtemp(templ.data());
  if (made == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = made;
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ec);
  fs::remove_all(path_, ec);
}

std::string TempDir::File(std::string_view name) const {
  return path_ + "/" + std::string(name);
}

std::string TempDir::Write(std::string_view name, std::string_view content) const {
  std::string full = File(name);
  fs::create_directories(fs::path(full).parent_path());
  WriteFile(full, content);
  return full;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

void WriteFile(const std::string& path, std::string_view content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
}

void ReplaceInFile(const std::string& path, std::string_view from, std::string_view to) {
  std::string text = ReadFile(path);
  const std::size_t at = text.find(from);
  if (at == std::string::npos) {
    ADD_FAILURE() << path << " does not hold " << from;
    return;
  }
  WriteFile(path, text.replace(at, from.size(), to));
}

std::vector<std::string> FileNames(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

std::string CrLf(std::initializer_list<std::string_view> lines) {
  std::string s;
  for (auto l : lines) {
    s += l;
    s += "\r\n";
  }
  return s;
}

std::string DataFile(std::string_view name) {
  return std::string(KROVELD_TEST_DATA) + "/" + std::string(name);
}

std::string SpecHeader() {
  return CrLf({"[Header]", "Product=KRO", "FileType=EXPORT SPEC", "FileFormat=1.1"});
}

std::string SpecTitle(int n, int sheet, std::string_view column,
                      const std::vector<std::string>& lines) {
  std::string s =
      CrLf({"[Title " + std::to_string(n) + "]", "WriteSheet=" + std::to_string(sheet),
            "WriteColumn=" + std::string(column), "TotalLines=" + std::to_string(lines.size())});
  for (std::size_t i = 0; i < lines.size(); ++i) {
    s += std::to_string(i + 1) + "Text=" + lines[i] + "\r\n";
  }
  return s;
}

std::string SpecTable(int n, std::string_view top, int topOffset, std::string_view bottom,
                      int bottomOffset, const std::vector<SpecColumn>& columns) {
  const std::string t = "Table " + std::to_string(n);
  std::string s = CrLf({"[" + t + "]", "ReadStartLine=" + std::string(top),
                        "ReadStartLineOffset=" + std::to_string(topOffset),
                        "ReadEndLine=" + std::string(bottom),
                        "ReadEndLineOffset=" + std::to_string(bottomOffset),
                        "TotalColumns=" + std::to_string(columns.size())});
  for (std::size_t k = 0; k < columns.size(); ++k) {
    const SpecColumn& c = columns[k];
    s += CrLf({"[" + t + " Col " + std::to_string(k + 1) + "]",
               "ReadColumnStart=" + std::to_string(c.start),
               "ReadColumnEnd=" + std::to_string(c.end), "WriteColumn=" + c.letter,
               "PeriodOperator=" + c.op}) +
         c.extra;
  }
  return s;
}

// ---- RecordingPort ----

RecordingPort::~RecordingPort() {
  for (const auto& [text, answer] : script_) {
    ADD_FAILURE() << "expected question was never asked: " << text;
  }
}

void RecordingPort::ShowMessage(std::string_view text, Icon icon, std::string_view title) {
  messages.push_back({std::string(text), icon, std::string(title), false});
}

void RecordingPort::ShowNote(std::string_view text) {
  messages.push_back({std::string(text), Icon::Information, {}, true});
}

bool RecordingPort::Ask(std::string_view text, Icon, std::string_view) {
  questions.emplace_back(text);
  if (script_.empty()) {
    ADD_FAILURE() << "unexpected question: " << text;
    return false;
  }
  auto [expected, answer] = script_.front();
  script_.pop_front();
  EXPECT_EQ(expected, text) << "a different question was asked";
  return answer;
}

void RecordingPort::Status(int panel, std::string_view text) {
  statuses.emplace_back(panel, std::string(text));
}

void RecordingPort::SetCaption(std::string_view text) {
  caption_ = std::string(text);
  captions.push_back(caption_);
}

void RecordingPort::ProcessEvents() {
  ++events;
  if (onProcessEvents) onProcessEvents();
}

void RecordingPort::ExpectQuestion(std::string text, bool answer) {
  script_.emplace_back(std::move(text), answer);
}

std::vector<std::string> RecordingPort::Texts() const {
  std::vector<std::string> out;
  for (const auto& m : messages) out.push_back(m.text);
  return out;
}

void RecordingPort::Clear() {
  messages.clear();
  questions.clear();
  statuses.clear();
  captions.clear();
  beeps = 0;
}

}  // namespace kroveld::testing
