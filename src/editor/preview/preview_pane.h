// The live preview beside the recipe editor: takes the recipe text as it stands (saved or not) and
// a sample report, runs the conversion engine on them into a workbook held in memory, and shows
// the report marked with what each table picks, the cells of sheets 1 and 2 as they would be
// written, and the messages the run would show, each with its section. It refreshes on its own
// once the recipe text stops changing for a moment, and never writes a file.
#pragma once

#include <QString>
#include <QTimer>
#include <QWidget>

#include "jobs/preview/preview_result.h"

class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QTabWidget;
class QTableWidget;

namespace kroveld {

class ReportView;

class PreviewPane : public QWidget {
  Q_OBJECT

 public:
  // The pause after the last change before the preview runs again.
  static constexpr int kDebounceMilliseconds = 300;
  // Rows of each sheet the grid shows.
  static constexpr int kGridRows = 1000;

  explicit PreviewPane(QWidget* parent = nullptr);

  // The recipe text as typed and the path it is (or will be) saved at; relative names inside it
  // are taken from that path's folder. Refreshes once the calls pause for kDebounceMilliseconds.
  void SetRecipeText(const QString& text, const QString& recipePath);
  // The report to preview the recipe on; shown at once, the cells follow after the pause.
  void SetSampleReport(const QString& path);
  QString SampleReport() const { return report_path_; }
  // Tab stop width used to expand tabs of the report (8 unless changed).
  void SetTabSize(int tabSize);

  // What the last refresh found, and how long it took (engine run and display).
  const PreviewResult& Result() const { return result_; }
  qint64 LastRefreshMilliseconds() const { return last_refresh_ms_; }

 public slots:
  // Runs the preview now (the debounce timer calls it).
  void Refresh();

 signals:
  // The user picked a message: select this line (from 1) of the recipe text.
  void recipeLineRequested(int line);
  // A refresh has finished and the pane shows its result.
  void refreshed();

 private:
  void ChooseSampleReport();
  void LoadReportView();
  void ShowMarks();
  void ShowGrid(int sheet, QTableWidget* grid);
  void ShowMessages();
  void ShowSummary();
  void MessageChosen(QListWidgetItem* item);

  QPushButton* sample_button_;
  QLabel* sample_label_;
  QLabel* summary_label_;
  QLabel* note_label_;
  ReportView* report_view_;
  QTabWidget* sheet_tabs_;
  QTableWidget* grids_[2];
  QListWidget* messages_;
  QTimer debounce_;

  QString recipe_text_;
  QString recipe_path_;
  QString report_path_;
  int tab_size_ = 8;
  bool report_utf8_ = true;
  bool report_lines_cut_ = false;
  bool report_shown_at_block_ = false;  // scrolled to the first table since the report was loaded
  PreviewResult result_;
  qint64 last_refresh_ms_ = 0;
};

}  // namespace kroveld
