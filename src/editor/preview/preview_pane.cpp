#include "editor/preview/preview_pane.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/window/widget_names.h"
#include "editor/preview/report_view.h"
#include "jobs/preview/cell_text.h"
#include "jobs/preview/preview_run.h"
#include "jobs/preview/report_sample.h"

namespace kroveld {

namespace {

// One colour per column field, repeated when a table has more columns.
const QColor kColumnColours[] = {{255, 179, 186}, {161, 210, 255}, {170, 240, 185},
                                 {255, 214, 165}, {212, 186, 255}, {245, 245, 150},
                                 {160, 235, 235}, {245, 185, 225}};
// A light tint per table, alternating.
const QColor kTableTints[] = {{228, 236, 250}, {240, 232, 250}};

QColor ColumnColour(std::size_t index) {
  return kColumnColours[index % std::size(kColumnColours)];
}

QString Letters(int column) {
  QString letters;
  for (int n = column; n > 0; n = (n - 1) / 26) letters.prepend(QChar('A' + (n - 1) % 26));
  return letters;
}

QString Local(const std::string& utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QIcon IconOf(const QWidget* widget, const PreviewMessage& message) {
  QStyle::StandardPixmap pixmap = QStyle::SP_MessageBoxInformation;
  switch (message.icon) {
    case Icon::Critical:
      pixmap = QStyle::SP_MessageBoxCritical;
      break;
    case Icon::Exclamation:
      pixmap = QStyle::SP_MessageBoxWarning;
      break;
    case Icon::Question:
      pixmap = QStyle::SP_MessageBoxQuestion;
      break;
    case Icon::None:
    case Icon::Information:
      break;
  }
  return widget->style()->standardIcon(pixmap);
}

}  // namespace

PreviewPane::PreviewPane(QWidget* parent) : QWidget(parent) {
  Named(this, QStringLiteral("PreviewPane"));
  sample_button_ = Named(new QPushButton(tr("Sample report..."), this),
                         QStringLiteral("cmdSampleReport"), tr("Choose the report to preview on"));
  sample_label_ =
      Named(new QLabel(tr("No sample report chosen"), this), QStringLiteral("lblSampleReport"));
  sample_label_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  summary_label_ = Named(new QLabel(this), QStringLiteral("lblPreviewTables"),
                         tr("Where each table was found and its column spans"));
  summary_label_->setTextFormat(Qt::RichText);
  summary_label_->setWordWrap(true);
  note_label_ = Named(new QLabel(this), QStringLiteral("lblPreviewNote"));
  note_label_->setWordWrap(true);
  report_view_ = Named(new ReportView(this), QStringLiteral("txtReportPreview"),
                       tr("The sample report marked with what the recipe picks"));

  sheet_tabs_ = Named(new QTabWidget(this), QStringLiteral("tabPreviewSheets"));
  for (int sheet = 1; sheet <= 2; ++sheet) {
    QTableWidget* grid =
        Named(new QTableWidget(sheet_tabs_), QStringLiteral("grdSheet%1").arg(sheet),
              tr("Cells of sheet %1 as the conversion writes them").arg(sheet));
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 4);
    grids_[sheet - 1] = grid;
    sheet_tabs_->addTab(grid, tr("Sheet %1").arg(sheet));
  }
  messages_ = Named(new QListWidget(this), QStringLiteral("lstPreviewMessages"),
                    tr("Messages the conversion would show; click one to find its recipe line"));
  connect(messages_, &QListWidget::itemClicked, this, &PreviewPane::MessageChosen);
  connect(messages_, &QListWidget::itemActivated, this, &PreviewPane::MessageChosen);

  auto* top = new QHBoxLayout;
  top->addWidget(sample_button_);
  top->addWidget(sample_label_, 1);
  auto* splitter = Named(new QSplitter(Qt::Vertical, this), QStringLiteral("splPreview"));
  splitter->addWidget(report_view_);
  splitter->addWidget(sheet_tabs_);
  splitter->addWidget(messages_);
  splitter->setStretchFactor(0, 5);
  splitter->setStretchFactor(1, 4);
  splitter->setStretchFactor(2, 1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 4);
  layout->addLayout(top);
  layout->addWidget(summary_label_);
  layout->addWidget(note_label_);
  layout->addWidget(splitter, 1);

  debounce_.setSingleShot(true);
  debounce_.setInterval(kDebounceMilliseconds);
  connect(&debounce_, &QTimer::timeout, this, &PreviewPane::Refresh);
  connect(sample_button_, &QPushButton::clicked, this, &PreviewPane::ChooseSampleReport);
  note_label_->setText(tr("Choose a sample report to see what the recipe extracts."));
}

void PreviewPane::SetRecipeText(const QString& text, const QString& recipePath) {
  recipe_text_ = text;
  recipe_path_ = recipePath;
  debounce_.start();
}

void PreviewPane::SetSampleReport(const QString& path) {
  report_path_ = path;
  sample_label_->setText(path);
  LoadReportView();
  debounce_.start();
}

void PreviewPane::SetTabSize(int tabSize) {
  if (tabSize == tab_size_) return;
  tab_size_ = tabSize;
  if (!report_path_.isEmpty()) LoadReportView();
  debounce_.start();
}

void PreviewPane::ChooseSampleReport() {
  const QString folder = report_path_.isEmpty() ? QFileInfo(recipe_path_).absolutePath()
                                                : QFileInfo(report_path_).absolutePath();
  const QString path = QFileDialog::getOpenFileName(
      this, tr("Sample report"), folder, tr("Text reports (*.txt *.prn *.lst);;All files (*)"));
  if (path.isEmpty()) return;
  SetSampleReport(path);
  Refresh();
}

void PreviewPane::LoadReportView() {
  const ReportSample sample =
      ReadReportSample(QFile::encodeName(report_path_).toStdString(), tab_size_, kPreviewMaxLines);
  report_utf8_ = sample.allUtf8;
  report_lines_cut_ = sample.linesCut;
  std::string text;
  for (std::size_t i = 0; i < sample.lines.size(); ++i) {
    if (i > 0) text += '\n';
    text += sample.lines[i];
  }
  report_view_->setPlainText(Local(text));
  report_view_->SetMarks({});
  report_shown_at_block_ = false;
}

void PreviewPane::Refresh() {
  debounce_.stop();
  QElapsedTimer clock;
  clock.start();
  const bool blank = recipe_text_.trimmed().isEmpty();
  if (report_path_.isEmpty() || blank) {
    result_ = PreviewResult();
  } else {
    PreviewRequest request;
    // The recipe's key texts are compared with the report's bytes: typed text goes in the
    // encoding the report is in.
    const QByteArray bytes = report_utf8_ ? recipe_text_.toUtf8() : recipe_text_.toLatin1();
    request.recipeText.assign(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    request.recipePath = QFile::encodeName(recipe_path_).toStdString();
    request.reportPath = QFile::encodeName(report_path_).toStdString();
    request.tabSize = tab_size_;
    result_ = RunPreview(request);
  }
  ShowMarks();
  ShowGrid(1, grids_[0]);
  ShowGrid(2, grids_[1]);
  ShowMessages();
  ShowSummary();
  last_refresh_ms_ = clock.elapsed();

  QStringList notes;
  for (const std::string& note : result_.notes) notes << Local(note);
  if (report_lines_cut_) {
    notes << tr("Lines longer than %L1 characters are shown cut.").arg(kSampleMaxLineBytes);
  }
  if (report_path_.isEmpty()) {
    notes << tr("Choose a sample report to see what the recipe extracts.");
  } else if (blank) {
    notes << tr("The recipe is empty: add a table to see what it extracts.");
  } else {
    const qint64 count = result_.linesPreviewed;
    notes << (count == 1 ? tr("Preview of 1 report line, refreshed in %1 ms; nothing is saved.")
                         : tr("Preview of %L1 report lines, refreshed in %2 ms; nothing is saved.")
                               .arg(count))
                 .arg(last_refresh_ms_);
  }
  note_label_->setText(notes.join(QLatin1Char(' ')));
  emit refreshed();
}

void PreviewPane::ShowMarks() {
  ReportMarks marks;
  std::size_t t = 0;
  for (const PreviewTable& table : result_.tables) {
    if (table.topKeyLine > 0) marks.keyLines.push_back(table.topKeyLine);
    if (table.bottomKeyLine > 0) marks.keyLines.push_back(table.bottomKeyLine);
    if (table.startLine > 0 && table.endLine >= table.startLine) {
      ReportMarks::Block block;
      block.startLine = table.startLine;
      block.endLine = table.endLine;
      block.tint = kTableTints[t % std::size(kTableTints)];
      for (std::size_t c = 0; c < table.columns.size(); ++c) {
        block.spans.push_back({table.columns[c].start, table.columns[c].end, ColumnColour(c)});
      }
      marks.blocks.push_back(std::move(block));
    }
    ++t;
  }
  for (const PreviewTitle& title : result_.titles) {
    marks.titleLines.insert(marks.titleLines.end(), title.reportLines.begin(),
                            title.reportLines.end());
  }
  report_view_->SetMarks(std::move(marks));
  if (!report_shown_at_block_ && !result_.tables.empty() && result_.tables[0].topKeyLine > 0) {
    report_view_->ShowLine(result_.tables[0].topKeyLine);
    report_shown_at_block_ = true;
  }
}

void PreviewPane::ShowGrid(int number, QTableWidget* grid) {
  grid->setUpdatesEnabled(false);
  grid->clearContents();
  const bool present = result_.workbook.SheetCount() >= number;
  const Sheet* sheet = present ? &result_.workbook.GetSheet(number) : nullptr;
  const int rows = sheet != nullptr ? std::min(sheet->MaxRow(), kGridRows) : 0;
  const int columns = sheet != nullptr ? sheet->MaxColumn() : 0;
  grid->setRowCount(rows);
  grid->setColumnCount(columns);
  QStringList headers;
  for (int c = 1; c <= columns; ++c) headers << Letters(c);
  grid->setHorizontalHeaderLabels(headers);
  for (int r = 1; r <= rows; ++r) {
    for (int c = 1; c <= columns; ++c) {
      const CellView cell = sheet->Get(r, c);
      if (cell.type == CellType::kEmpty) continue;
      auto* item = new QTableWidgetItem(Local(CellDisplayText(cell)));
      item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
      if (cell.type == CellType::kNumber) {
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        const std::string_view code = NumberFormatCode(cell.format);
        item->setToolTip(tr("Number %1, format %2")
                             .arg(cell.number, 0, 'g', 15)
                             .arg(QString::fromLatin1(code.data(), code.size())));
      }
      grid->setItem(r - 1, c - 1, item);
    }
  }
  if (columns > 0) {
    grid->resizeColumnsToContents();
    // A long title line must not push the table's own columns out of sight.
    const int widest = grid->fontMetrics().horizontalAdvance(QLatin1Char('0')) * 40;
    for (int c = 0; c < columns; ++c) {
      if (grid->columnWidth(c) > widest) grid->setColumnWidth(c, widest);
    }
  }
  grid->setUpdatesEnabled(true);
  QString title = tr("Sheet %1").arg(number);
  if (sheet != nullptr) {
    title += QStringLiteral(": ") + Local(sheet->Name());
    if (sheet->MaxRow() > rows)
      title += tr(" (first %L1 of %L2 rows)").arg(rows).arg(sheet->MaxRow());
  }
  sheet_tabs_->setTabText(number - 1, title);
}

void PreviewPane::ShowMessages() {
  messages_->clear();
  for (const PreviewMessage& message : result_.messages) {
    QString text = Local(message.text);
    if (!message.section.empty())
      text = QStringLiteral("[%1] %2").arg(Local(message.section), text);
    auto* item = new QListWidgetItem(IconOf(this, message), text, messages_);
    item->setData(Qt::UserRole, message.recipeLine);
    if (message.recipeLine > 0) {
      item->setToolTip(tr("Click to select line %1 of the recipe").arg(message.recipeLine));
    }
  }
  if (result_.messages.empty() && !report_path_.isEmpty() && !recipe_text_.trimmed().isEmpty()) {
    auto* item =
        new QListWidgetItem(tr("No messages: the conversion would run without a word."), messages_);
    item->setData(Qt::UserRole, 0);
    item->setFlags(Qt::ItemIsEnabled);
  }
}

void PreviewPane::ShowSummary() {
  QStringList lines;
  for (const PreviewTitle& title : result_.titles) {
    const int last = title.firstRow + static_cast<int>(title.lines.size()) - 1;
    QString line =
        tr("<b>Title %1</b>: sheet %2, column %3, row %4")
            .arg(title.number)
            .arg(title.sheet)
            .arg(Local(title.writeColumn).toHtmlEscaped())
            .arg(last > title.firstRow ? QStringLiteral("%1&ndash;%2").arg(title.firstRow).arg(last)
                                       : QString::number(title.firstRow));
    if (!title.reportLines.empty()) {
      line += tr(" (repeats report line %1)").arg(title.reportLines.front());
    }
    lines << line;
  }
  for (const PreviewTable& table : result_.tables) {
    QString line = tr("<b>Table %1</b>: ").arg(table.number);
    if (table.topKeyLine == 0) {
      line += tr("<span style='color:#b00000'>top key text not found</span>");
    } else if (table.bottomKeyLine == 0) {
      line += tr("top key on line %1, <span style='color:#b00000'>bottom key text not found</span>")
                  .arg(table.topKeyLine);
    } else {
      line += tr("lines %1&ndash;%2 (keys on lines %3 and %4)")
                  .arg(table.startLine)
                  .arg(table.endLine)
                  .arg(table.topKeyLine)
                  .arg(table.bottomKeyLine);
      if (table.linesFiltered > 0) {
        line += tr(", %n line(s) filtered out", nullptr, static_cast<int>(table.linesFiltered));
      }
      for (std::size_t c = 0; c < table.columns.size(); ++c) {
        const PreviewColumn& column = table.columns[c];
        line += QStringLiteral(
                    " <span style='background-color:%1'>&nbsp;%2&ndash;%3&rarr;%4&nbsp;</span>")
                    .arg(ColumnColour(c).name())
                    .arg(column.start)
                    .arg(column.end)
                    .arg(Local(column.writeColumn).toHtmlEscaped());
      }
    }
    lines << line;
  }
  summary_label_->setText(lines.join(QStringLiteral("<br>")));
}

void PreviewPane::MessageChosen(QListWidgetItem* item) {
  const int line = item != nullptr ? item->data(Qt::UserRole).toInt() : 0;
  if (line > 0) emit recipeLineRequested(line);
}

}  // namespace kroveld
