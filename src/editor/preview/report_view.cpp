#include "editor/preview/report_view.h"

#include <QFontDatabase>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <algorithm>

#include "app/window/widget_names.h"

namespace kroveld {

namespace {

constexpr int kRulerHeight = 18;
const QColor kKeyLine(255, 214, 102);
const QColor kTitleLine(170, 220, 170);

// The strip left of the text (line numbers) and the one above it (character positions).
class Margin : public QWidget {
 public:
  Margin(ReportView* view, bool ruler) : QWidget(view), view_(view), ruler_(ruler) {}

 protected:
  void paintEvent(QPaintEvent* event) override {
    if (ruler_) {
      view_->PaintRuler(event);
    } else {
      view_->PaintGutter(event);
    }
  }

 private:
  ReportView* view_;
  bool ruler_;
};

}  // namespace

ReportView::ReportView(QWidget* parent)
    : QPlainTextEdit(parent),
      gutter_(Named(new Margin(this, false), QStringLiteral("picLineNumbers"))),
      ruler_(Named(new Margin(this, true), QStringLiteral("picRuler"))) {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setStyleHint(QFont::Monospace);
  setFont(font);
  setReadOnly(true);
  setLineWrapMode(QPlainTextEdit::NoWrap);
  setUndoRedoEnabled(false);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  connect(this, &QPlainTextEdit::blockCountChanged, this, [this] { Relayout(); });
  connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect& rect, int dy) {
    if (dy != 0) {
      gutter_->scroll(0, dy);
    } else {
      gutter_->update(0, rect.y(), gutter_->width(), rect.height());
    }
  });
  connect(horizontalScrollBar(), &QScrollBar::valueChanged, ruler_, [this] { ruler_->update(); });
  Relayout();
}

double ReportView::CharWidth() const {
  return QFontMetricsF(font()).horizontalAdvance(QLatin1Char('0'));
}

double ReportView::ColumnX(int column) const {
  const double left = contentOffset().x() + document()->documentMargin();
  return left + (column - 1) * CharWidth();
}

int ReportView::GutterWidth() const {
  int digits = 1;
  for (int max = std::max(1, blockCount()); max >= 10; max /= 10) ++digits;
  return 10 + fontMetrics().horizontalAdvance(QLatin1Char('9')) * std::max(digits, 3);
}

void ReportView::Relayout() {
  setViewportMargins(GutterWidth(), kRulerHeight, 0, 0);
  const QRect r = contentsRect();
  gutter_->setGeometry(r.left(), r.top() + kRulerHeight, GutterWidth(), r.height() - kRulerHeight);
  ruler_->setGeometry(r.left(), r.top(), r.width(), kRulerHeight);
}

void ReportView::resizeEvent(QResizeEvent* event) {
  QPlainTextEdit::resizeEvent(event);
  Relayout();
}

void ReportView::SetMarks(ReportMarks marks) {
  marks_ = std::move(marks);
  const std::size_t lines = static_cast<std::size_t>(std::max(0, blockCount()));
  block_of_line_.assign(lines, 0);
  kinds_.assign(lines, kPlain);
  for (std::size_t b = 0; b < marks_.blocks.size(); ++b) {
    const ReportMarks::Block& block = marks_.blocks[b];
    const std::int64_t from = std::max<std::int64_t>(block.startLine, 1);
    const std::int64_t to = std::min<std::int64_t>(block.endLine, static_cast<std::int64_t>(lines));
    for (std::int64_t line = from; line <= to; ++line) {
      int& slot = block_of_line_[static_cast<std::size_t>(line - 1)];
      if (slot == 0) slot = static_cast<int>(b) + 1;
    }
  }
  const auto flag = [&](const std::vector<std::int64_t>& which, std::uint8_t bit) {
    for (const std::int64_t line : which) {
      if (line >= 1 && line <= static_cast<std::int64_t>(lines)) {
        kinds_[static_cast<std::size_t>(line - 1)] |= bit;
      }
    }
  };
  flag(marks_.keyLines, kKey);
  flag(marks_.titleLines, kTitle);
  viewport()->update();
  gutter_->update();
}

void ReportView::ShowLine(std::int64_t line) {
  const QTextBlock block = document()->findBlockByNumber(static_cast<int>(line - 1));
  if (!block.isValid()) return;
  verticalScrollBar()->setValue(std::max(0, block.blockNumber() - 2));
}

void ReportView::paintEvent(QPaintEvent* event) {
  {
    QPainter painter(viewport());
    const double width = viewport()->width();
    const double cw = CharWidth();
    QTextBlock block = firstVisibleBlock();
    double top = blockBoundingGeometry(block).translated(contentOffset()).top();
    while (block.isValid() && top <= event->rect().bottom()) {
      const double height = blockBoundingRect(block).height();
      const std::size_t index = static_cast<std::size_t>(block.blockNumber());
      if (index < kinds_.size()) {
        if (kinds_[index] & kKey) {
          painter.fillRect(QRectF(0, top, width, height), kKeyLine);
        } else if (kinds_[index] & kTitle) {
          painter.fillRect(QRectF(0, top, width, height), kTitleLine);
        }
        if (const int b = block_of_line_[index]; b > 0) {
          const ReportMarks::Block& marks = marks_.blocks[static_cast<std::size_t>(b - 1)];
          if (!(kinds_[index] & kKey)) painter.fillRect(QRectF(0, top, width, height), marks.tint);
          for (const ReportMarks::Span& span : marks.spans) {
            if (span.end < span.start) continue;
            const double x = ColumnX(span.start);
            painter.fillRect(QRectF(x, top, (span.end - span.start + 1) * cw, height), span.colour);
          }
        }
      }
      top += height;
      block = block.next();
    }
  }
  QPlainTextEdit::paintEvent(event);
}

void ReportView::PaintGutter(QPaintEvent* event) {
  QPainter painter(gutter_);
  painter.fillRect(event->rect(), palette().color(QPalette::Window));
  painter.setFont(font());
  QTextBlock block = firstVisibleBlock();
  double top = blockBoundingGeometry(block).translated(contentOffset()).top();
  const int width = gutter_->width();
  while (block.isValid() && top <= event->rect().bottom()) {
    const double height = blockBoundingRect(block).height();
    const std::size_t index = static_cast<std::size_t>(block.blockNumber());
    if (index < block_of_line_.size()) {
      if (const int b = block_of_line_[index]; b > 0) {
        QColor band = marks_.blocks[static_cast<std::size_t>(b - 1)].tint.darker(160);
        band.setAlpha(255);
        painter.fillRect(QRectF(0, top, 4, height), band);
      }
      if (kinds_[index] & kKey) painter.fillRect(QRectF(0, top, 4, height), kKeyLine.darker(130));
    }
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(QRectF(0, top, width - 4, height), Qt::AlignRight | Qt::AlignVCenter,
                     QString::number(block.blockNumber() + 1));
    top += height;
    block = block.next();
  }
}

void ReportView::PaintRuler(QPaintEvent* event) {
  QPainter painter(ruler_);
  painter.fillRect(event->rect(), palette().color(QPalette::Window));
  QFont small = font();
  small.setPointSizeF(std::max(6.0, font().pointSizeF() * 0.8));
  painter.setFont(small);
  painter.setPen(palette().color(QPalette::WindowText));
  const double cw = CharWidth();
  const double offset = GutterWidth();  // the ruler spans the gutter too
  const double right = ruler_->width();
  const int h = ruler_->height();
  painter.drawLine(QPointF(offset, h - 1), QPointF(right, h - 1));
  for (int column = 1;; ++column) {
    const double x = offset + ColumnX(column);
    if (x > right) break;
    if (x < offset) continue;
    const double mid = x + cw / 2;
    if (column % 10 == 0) {
      painter.drawLine(QPointF(mid, h - 6), QPointF(mid, h - 1));
      const QString label = QString::number(column);
      painter.drawText(QRectF(mid - 3 * cw, 0, 6 * cw, h - 6), Qt::AlignCenter, label);
    } else if (column % 5 == 0) {
      painter.drawLine(QPointF(mid, h - 4), QPointF(mid, h - 1));
    } else {
      painter.drawLine(QPointF(mid, h - 2), QPointF(mid, h - 1));
    }
  }
}

}  // namespace kroveld
