// Not a test: shows the preview pane on a report and recipe (the trial-balance example unless
// given), saves it as a PNG, and prints how long a refresh took. With --lines N it also writes a
// report of N lines shaped like the example and times the pane on it.
//   preview_screenshot OUT.png [--lines N] [REPORT RECIPE]
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <cstdio>

#include "editor/preview/preview_pane.h"

namespace {

QString Read(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The example's two sections with section A stretched to fill `lines` lines.
QString WriteLongReport(const QString& folder, int lines) {
  const QString path = folder + QStringLiteral("/long-report.txt");
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return {};
  QTextStream out(&file);
  out << "ACME WIDGETS LTD\r\nTRIAL BALANCE BY DEPARTMENT\r\n\r\n"
      << "Account  Description                            Debit        Credit\r\n"
      << "-------- ------------------------------ ------------- -------------\r\n";
  const int rows = std::max(1, lines - 16);
  for (int i = 0; i < rows; ++i) {
    // Account in 1-8, description in 10-39, debit in 41-53, as the example's recipe cuts them.
    out << QStringLiteral("%1 %2 %3\r\n")
               .arg(1000 + i % 9000, -8)
               .arg(QStringLiteral("Account number %1").arg(i), -30)
               .arg(QStringLiteral("%L1").arg(1234.5 + i, 0, 'f', 2), 13);
  }
  out << "-------- ------------------------------ ------------- -------------\r\n"
      << "TOTAL    SECTION A                          37,060.55     37,060.55\r\n\r\n"
      << "SECTION B - PAYROLL\r\n"
      << "Employee Name                             Hours    Gross pay\r\n"
      << "-------- ------------------------------ ------- ------------\r\n"
      << "E-0017   Ann Okafor                       160.0     4,812.00\r\n"
      << "-------- ------------------------------ ------- ------------\r\n"
      << "TOTAL    PAYROLL                          160.0     4,812.00\r\n";
  return path;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QStringList args = app.arguments().mid(1);
  if (args.isEmpty()) {
    std::fprintf(stderr, "usage: preview_screenshot OUT.png [--lines N] [REPORT RECIPE]\n");
    return 2;
  }
  const QString png = args.takeFirst();
  int lines = 0;
  if (args.size() >= 2 && args[0] == QStringLiteral("--lines")) {
    lines = args[1].toInt();
    args = args.mid(2);
  }
  const QString examples = QStringLiteral(KROVELD_SOURCE_DIR "/examples/");
  QString report = args.size() >= 2 ? args[0] : examples + QStringLiteral("trial-balance.txt");
  const QString recipe =
      args.size() >= 2 ? args[1] : examples + QStringLiteral("trial-balance.rcp");
  QTemporaryDir scratch;
  if (lines > 0) report = WriteLongReport(scratch.path(), lines);

  kroveld::PreviewPane pane;
  pane.resize(1100, 860);
  pane.show();
  QElapsedTimer clock;
  clock.start();
  pane.SetSampleReport(report);
  const qint64 load = clock.elapsed();
  pane.SetRecipeText(Read(recipe), recipe);
  pane.Refresh();
  app.processEvents();
  std::printf("report shown in %lld ms; refresh (engine and display) %lld ms; %lld lines\n",
              static_cast<long long>(load), static_cast<long long>(pane.LastRefreshMilliseconds()),
              static_cast<long long>(pane.Result().linesPreviewed));
  for (int i = 0; i < 3; ++i) {
    pane.Refresh();
    std::printf("refresh again: %lld ms\n", static_cast<long long>(pane.LastRefreshMilliseconds()));
  }
  app.processEvents();
  return pane.grab().save(png) ? 0 : 1;
}
