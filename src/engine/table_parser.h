// The table template analyzer: finds a table in a report between its two key texts and turns a
// parsing template into the read positions of the table's column fields. It serves the
// short-format recipes, whose tables are described by key texts and one template line instead
// of character positions. Everything it decides depends only on the template and the located
// lines, so the same report and template always give the same columns.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "util/ui_port.h"

namespace kroveld {

// The read positions of one column field (1-based, both ends included) and whether the field is
// summed across input files (its template field began with '+').
struct ColumnSpan {
  int start = 0;
  int end = 0;
  bool sum = false;
  bool operator==(const ColumnSpan&) const = default;
};

class clsTableParser {
 public:
  static constexpr int kMaxRows = 9999;

  enum class Located { kFound, kNotFound, kTooManyRows };

  // Locates the table the way a table section does: the first line containing `startKey` plus
  // `startOffset` is the first row, the first line containing `endKey` (searched again from line
  // 1) plus `endOffset` the last row. A key that is missing, an end before the start, or a row
  // below 1 means not found; so does a block that lies wholly past the end of the file. The rows
  // (those that exist) are kept, tabs expanded with `tabSize` when it is at least 1. More than
  // 9999 rows shows "Error: A table must have no more than 9999 rows!" (critical). True when
  // found. With `utf8` a row holding characters beyond ASCII is kept as its ColumnPicture, so
  // that every position below counts printed columns, as the cutting of a UTF-8 report does.
  bool TestGetTemplate(UiPort& ui, const std::string& inputPath, std::string_view startKey,
                       int startOffset, std::string_view endKey, int endOffset, int tabSize,
                       bool utf8 = false);
  // The same search without any message.
  Located Locate(const std::string& inputPath, std::string_view startKey, int startOffset,
                 std::string_view endKey, int endOffset, int tabSize, bool utf8 = false);

  // Uses these lines as the located table (tests, and callers that hold the text already).
  void SetLines(std::vector<std::string> lines);
  void ClearLines();
  const std::vector<std::string>& Lines() const { return lines_; }
  // Line number (from 1) of the first located row in the input; 0 when set by SetLines.
  std::int64_t FirstLine() const { return first_line_; }
  // Length of the longest located line (trailing blanks included).
  int LongestLine() const;

  // Working templates made from the located lines ("" when every line is blank):
  // - InferredTemplate: '-' over every position that is non-blank in at least one line, so a
  //   field boundary lies wherever a position is blank in every line. With bridgeSingleBlanks,
  //   a single such blank position between two occupied ones does not split a field.
  // - MarkedTemplate: the line with the most fields (runs of non-blanks; the first such line on
  //   a tie) marked with `mark`. 'L' marks each field from its first character up to the blank
  //   before the next field (left-aligned columns); 'R' marks each field from the second
  //   position after the previous field's last character up to its own last character
  //   (right-aligned columns).
  std::string InferredTemplate(bool bridgeSingleBlanks) const;
  std::string MarkedTemplate(char mark) const;

  // Widens every field that contains '=' to the data found under it: while a located line has
  // a stretch of text (words joined by single blanks) that overlaps the field and goes on past
  // its right edge, the edge moves to the end of that stretch, but never closer than one blank
  // before the next field's first mark. Other fields and blanks stay as they are.
  std::string VariableToFixedTemplate(std::string_view tmpl) const;

  // Turns a template into column spans. The codes "-", "=" (inferred templates) and "=L", "=R"
  // (marked templates) are recognised after trimming and without regard to case; anything else
  // is an explicit template, widened first where it contains '='. The fields of the template
  // become spans: the first is read from position 1, every later one from one past the previous
  // field's end entry (so the blanks before a field belong to it), each up to its own end entry;
  // the last field reaches at least to the end of the longest located line, so nothing to the
  // right of the template is lost. False (spans empty) when the template yields no field.
  bool analyze_template(UiPort& ui, std::string_view tmpl, std::vector<ColumnSpan>& spans) const;

 private:
  std::vector<std::string> lines_;
  std::int64_t first_line_ = 0;
  bool utf8_ = false;  // the lines were located in a UTF-8 report
};

}  // namespace kroveld
