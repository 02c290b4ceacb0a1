// The same single-table conversion through the window (offscreen, in this process) and through
// the command line (the real binary), alternately, several rounds: wall times, their ratio, and
// the longest time the window's event loop went unserviced during its runs.
//
//   kroveld_bench_window KROVELD_BINARY REPORT RECIPE WORKDIR [ROUNDS]
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "app/settings.h"
#include "app/startup.h"
#include "app/window/main_frame.h"
#include "app/window/main_window.h"
#include "app/window/qt_port.h"
#include "engine/context.h"

using namespace kroveld;

namespace {

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) {
    std::fprintf(stderr, "usage: %s KROVELD REPORT RECIPE WORKDIR [ROUNDS]\n", argv[0]);
    return 2;
  }
  QApplication app(argc, argv);
  const QString binary = QString::fromLocal8Bit(argv[1]);
  const QString report = QString::fromLocal8Bit(argv[2]);
  const QString recipe = QString::fromLocal8Bit(argv[3]);
  const QString work = QString::fromLocal8Bit(argv[4]);
  const int rounds = argc > 5 ? std::max(1, std::atoi(argv[5])) : 3;

  QtPort port;
  port.SetAnswerer([](const std::string& text, Icon, bool) {
    std::fprintf(stderr, "window said: %s\n", text.c_str());
    return false;
  });
  // The window's own application folder, made as start-up makes one, so config.ini is created.
  QDir().mkpath(work + QStringLiteral("/window-home"));
  Context ctx(port, (work + QStringLiteral("/window-home")).toStdString());
  Settings settings(PrepareApplicationFolder(ctx));
  MainFrame frame(ctx, port, settings);
  frame.Main()->Load();
  frame.show();
  frame.findChild<QAbstractButton*>(QStringLiteral("rbUseRecipe_0"))->click();
  frame.findChild<QComboBox*>(QStringLiteral("cbInputFile"))->setEditText(report);
  frame.findChild<QComboBox*>(QStringLiteral("cbRecipeFile"))->setEditText(recipe);
  frame.findChild<QComboBox*>(QStringLiteral("cbOutputFile"))
      ->setEditText(work + QStringLiteral("/window.csv"));
  QAction* convert = frame.findChild<QAction*>(QStringLiteral("keyConvert"));

  std::vector<double> windowSeconds, cliSeconds;
  double longestGap = 0;
  for (int round = 1; round <= rounds; ++round) {
    QProcess cli;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("KROVELD_HOME"), work + QStringLiteral("/cli-home"));
    cli.setProcessEnvironment(env);
    QElapsedTimer t;
    t.start();
    cli.start(binary, {QStringLiteral("-i"), report, QStringLiteral("-r"), recipe,
                       QStringLiteral("-o"), work + QStringLiteral("/cli.csv")});
    cli.waitForFinished(-1);
    cliSeconds.push_back(t.nsecsElapsed() / 1e9);

    port.ResetGapMeter();
    t.restart();
    convert->trigger();
    windowSeconds.push_back(t.nsecsElapsed() / 1e9);
    longestGap = std::max(longestGap, port.LongestGapMs());
    std::printf("round %d: command line %.2f s, window %.2f s, longest event-loop gap %.0f ms\n",
                round, cliSeconds.back(), windowSeconds.back(), port.LongestGapMs());
    std::fflush(stdout);
  }
  const double cli = Median(cliSeconds), window = Median(windowSeconds);
  std::printf("median: command line %.2f s, window %.2f s, window/command line %.3f\n", cli, window,
              window / cli);
  std::printf("longest event-loop gap in the window: %.0f ms (%.1f services a second at least)\n",
              longestGap, longestGap > 0 ? 1000.0 / longestGap : 0.0);
  return 0;
}
