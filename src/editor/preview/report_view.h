// The sample report in a fixed-pitch view with line numbers and a character ruler, marked with
// what the recipe picks: each table's block of lines tinted, each column field's character span
// shaded in its own colour on those lines, the lines where key texts were found and the lines
// that title sections repeat. Marks are painted for the visible lines only, so a 10,000-line
// report stays quick to scroll and to re-mark.
#pragma once

#include <QColor>
#include <QPlainTextEdit>
#include <cstdint>
#include <vector>

namespace kroveld {

struct ReportMarks {
  struct Span {
    int start = 0;  // character positions from 1, inclusive
    int end = 0;
    QColor colour;
  };
  struct Block {
    std::int64_t startLine = 0;  // lines from 1, inclusive
    std::int64_t endLine = 0;
    QColor tint;
    std::vector<Span> spans;
  };
  std::vector<Block> blocks;
  std::vector<std::int64_t> keyLines;    // lines holding a table's top or bottom key text
  std::vector<std::int64_t> titleLines;  // lines a title section repeats
};

class ReportView : public QPlainTextEdit {
  Q_OBJECT

 public:
  explicit ReportView(QWidget* parent = nullptr);

  void SetMarks(ReportMarks marks);
  const ReportMarks& Marks() const { return marks_; }
  // Scrolls so that `line` (from 1) is near the top.
  void ShowLine(std::int64_t line);

  // For the gutter and the ruler.
  int GutterWidth() const;
  void PaintGutter(QPaintEvent* event);
  void PaintRuler(QPaintEvent* event);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  enum LineKind : std::uint8_t { kPlain = 0, kKey = 1, kTitle = 2 };
  void Relayout();
  double CharWidth() const;
  // x (viewport coordinates) of the left edge of character position `column` (from 1).
  double ColumnX(int column) const;

  QWidget* gutter_;
  QWidget* ruler_;
  ReportMarks marks_;
  std::vector<int> block_of_line_;   // index + 1 into marks_.blocks, 0 for none (index = line - 1)
  std::vector<std::uint8_t> kinds_;  // LineKind bits per line
};

}  // namespace kroveld
