#include "engine/table_parser.h"

#include <algorithm>
#include <utility>

#include "engine/template_parser.h"
#include "util/line_search.h"
#include "util/strings.h"
#include "util/text_file.h"
#include "util/utf8_text.h"

namespace kroveld {

namespace {

bool IsBlank(char c) {
  return c == ' ';
}

// A run of marks of a template, 1-based first and last position.
struct Run {
  int first = 0;
  int last = 0;
};

// Runs of non-blank characters of a line (the fields of a template line, the words of a row).
std::vector<Run> RunsOf(std::string_view text) {
  std::vector<Run> runs;
  const int n = static_cast<int>(text.size());
  for (int p = 1; p <= n; ++p) {
    if (IsBlank(text[static_cast<std::size_t>(p - 1)])) continue;
    Run r{p, p};
    while (r.last < n && !IsBlank(text[static_cast<std::size_t>(r.last)])) ++r.last;
    runs.push_back(r);
    p = r.last;
  }
  return runs;
}

std::size_t CountRuns(std::string_view text) {
  std::size_t runs = 0;
  bool after_blank = true;
  for (const char c : text) {
    if (!IsBlank(c) && after_blank) ++runs;
    after_blank = IsBlank(c);
  }
  return runs;
}

// Stretches of text of a line: words joined by single blanks; two blanks or more separate them.
std::vector<Run> StretchesOf(std::string_view text) {
  std::vector<Run> words = RunsOf(text);
  std::vector<Run> stretches;
  for (const Run& w : words) {
    if (!stretches.empty() && w.first == stretches.back().last + 2) {
      stretches.back().last = w.last;
    } else {
      stretches.push_back(w);
    }
  }
  return stretches;
}

}  // namespace

clsTableParser::Located clsTableParser::Locate(const std::string& inputPath,
                                               std::string_view startKey, int startOffset,
                                               std::string_view endKey, int endOffset, int tabSize,
                                               bool utf8) {
  ClearLines();
  utf8_ = utf8;
  // Both keys are searched from line 1, in one pass over the file.
  const std::string_view keys[] = {startKey, endKey};
  const std::vector<KeyLine> found = FindFirstLinesContaining(inputPath, keys);
  const KeyLine top = found[0];
  const KeyLine bottom = found[1];
  if (top.line == 0 || bottom.line == 0) return Located::kNotFound;
  const std::int64_t first = top.line + startOffset;
  const std::int64_t last = bottom.line + endOffset;
  if (last < first || first < 1 || last < 1) return Located::kNotFound;
  if (last - first + 1 > kMaxRows) return Located::kTooManyRows;

  TextFile file;
  if (!file.Open(inputPath)) return Located::kNotFound;
  // A first row at or after the start key line is reached from that line, whose byte offset the
  // search gave; one above it is reached from line 1.
  const bool positioned = startOffset >= 0
                              ? file.SeekToLine(top.offset, top.line) && file.SkipLines(startOffset)
                              : file.SkipLines(first - 1);
  if (!positioned) return Located::kNotFound;
  std::string_view line;
  std::string expanded;
  std::string repaired;
  for (std::int64_t n = first; n <= last && file.ReadLine(line); ++n) {
    if (utf8 && !IsAscii(line)) {
      RepairUtf8(line, repaired);
      if (tabSize >= 1) {
        ExpandTabsByColumns(repaired, tabSize, expanded);
        repaired.swap(expanded);
      }
      lines_.push_back(ColumnPicture(repaired));
    } else if (tabSize >= 1) {
      ExpandTabs(line, tabSize, expanded);
      lines_.push_back(expanded);
    } else {
      lines_.emplace_back(line);
    }
  }
  if (lines_.empty()) return Located::kNotFound;
  first_line_ = first;
  return Located::kFound;
}

bool clsTableParser::TestGetTemplate(UiPort& ui, const std::string& inputPath,
                                     std::string_view startKey, int startOffset,
                                     std::string_view endKey, int endOffset, int tabSize,
                                     bool utf8) {
  const Located result = Locate(inputPath, startKey, startOffset, endKey, endOffset, tabSize, utf8);
  if (result == Located::kTooManyRows) {
    ui.Message("Error: A table must have no more than 9999 rows!", Icon::Critical);
  }
  return result == Located::kFound;
}

void clsTableParser::SetLines(std::vector<std::string> lines) {
  lines_ = std::move(lines);
  first_line_ = 0;
}

void clsTableParser::ClearLines() {
  lines_.clear();
  first_line_ = 0;
}

int clsTableParser::LongestLine() const {
  std::size_t longest = 0;
  for (const std::string& l : lines_) longest = std::max(longest, l.size());
  return static_cast<int>(longest);
}

std::string clsTableParser::InferredTemplate(bool bridgeSingleBlanks) const {
  const int width = LongestLine();
  // The whitespace profile of the whole table: a position is occupied when any line has a
  // non-blank there. Blank and short lines simply occupy nothing.
  std::string tmpl(static_cast<std::size_t>(width), ' ');
  for (const std::string& l : lines_) {
    for (std::size_t i = 0; i < l.size(); ++i) {
      if (!IsBlank(l[i])) tmpl[i] = '-';
    }
  }
  if (bridgeSingleBlanks) {
    for (std::size_t i = 1; i + 1 < tmpl.size(); ++i) {
      if (tmpl[i] == ' ' && tmpl[i - 1] == '-' && tmpl[i + 1] == '-') tmpl[i] = '-';
    }
  }
  if (tmpl.find('-') == std::string::npos) return std::string();
  return tmpl;
}

std::string clsTableParser::MarkedTemplate(char mark) const {
  const std::string* best = nullptr;
  std::size_t most = 0;
  for (const std::string& l : lines_) {
    const std::size_t fields = CountRuns(l);
    if (fields > most) {
      most = fields;
      best = &l;
    }
  }
  if (best == nullptr) return std::string();

  const std::vector<Run> runs = RunsOf(*best);
  std::string tmpl(best->size(), ' ');
  auto fill = [&tmpl, mark](int from, int to) {
    for (int p = from; p <= to; ++p) tmpl[static_cast<std::size_t>(p - 1)] = mark;
  };
  for (std::size_t k = 0; k < runs.size(); ++k) {
    const bool last = k + 1 == runs.size();
    if (mark == 'R') {
      const int from = k == 0 ? runs[k].first : runs[k - 1].last + 2;
      fill(from, runs[k].last);
    } else {
      fill(runs[k].first, last ? runs[k].last : runs[k + 1].first - 2);
    }
  }
  return tmpl;
}

std::string clsTableParser::VariableToFixedTemplate(std::string_view tmpl) const {
  std::string out(tmpl);
  const std::vector<Run> fields = RunsOf(tmpl);
  if (lines_.empty()) return out;

  std::vector<std::vector<Run>> stretches;
  stretches.reserve(lines_.size());
  for (const std::string& l : lines_) stretches.push_back(StretchesOf(l));

  for (std::size_t k = 0; k < fields.size(); ++k) {
    const Run& f = fields[k];
    if (tmpl.substr(static_cast<std::size_t>(f.first - 1),
                    static_cast<std::size_t>(f.last - f.first + 1))
            .find('=') == std::string_view::npos) {
      continue;
    }
    // Keep at least one blank before the next field so it stays a field of its own.
    const int limit = k + 1 < fields.size() ? fields[k + 1].first - 2 : 1 << 30;
    int edge = f.last;
    bool grew = true;
    while (grew && edge < limit) {
      grew = false;
      for (const auto& line : stretches) {
        for (const Run& s : line) {
          if (s.first <= edge && s.last > edge && s.last >= f.first) {
            edge = std::min(s.last, limit);
            grew = true;
          }
        }
      }
    }
    if (edge > f.last) {
      if (out.size() < static_cast<std::size_t>(edge))
        out.resize(static_cast<std::size_t>(edge), ' ');
      for (int p = f.last + 1; p <= edge; ++p) out[static_cast<std::size_t>(p - 1)] = '=';
    }
  }
  return out;
}

bool clsTableParser::analyze_template(UiPort& ui, std::string_view tmpl,
                                      std::vector<ColumnSpan>& spans) const {
  spans.clear();
  // A template typed with characters beyond ASCII under a UTF-8 report marks printed columns.
  std::string picture;
  if (utf8_ && !IsAscii(tmpl)) {
    picture = ColumnPicture(tmpl);
    tmpl = picture;
  }
  const std::string code = UpperAscii(Trim(tmpl));
  std::string working;
  if (code == "-") {
    working = InferredTemplate(false);
  } else if (code == "=") {
    working = InferredTemplate(true);
  } else if (code == "=L") {
    working = MarkedTemplate('L');
  } else if (code == "=R") {
    working = MarkedTemplate('R');
  } else if (tmpl.find('=') != std::string_view::npos) {
    working = VariableToFixedTemplate(tmpl);
  } else {
    working = std::string(tmpl);
  }

  std::vector<int> starts;
  std::vector<int> ends;
  std::vector<std::string> operators;
  ParseTemplateLine(ui, working, starts, ends, operators);
  // A last field on the very last position makes the parser answer false with complete lists;
  // such a template is still a good one here.
  if (starts.empty() || starts.size() != ends.size() || starts.size() != operators.size()) {
    return false;
  }

  spans.reserve(starts.size());
  for (std::size_t k = 0; k < starts.size(); ++k) {
    ColumnSpan s;
    s.start = k == 0 ? 1 : ends[k - 1] + 1;
    s.end = ends[k];
    s.sum = operators[k] == "Sum";
    spans.push_back(s);
  }
  spans.back().end = std::max(spans.back().end, LongestLine());
  return true;
}

}  // namespace kroveld
