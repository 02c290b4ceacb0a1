#include "app/window/run_window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QThread>
#include <cstdio>

#include "app/app_folder.h"
#include "app/settings.h"
#include "app/startup.h"
#include "app/window/main_frame.h"
#include "app/window/main_window.h"
#include "app/window/qt_port.h"
#include "app/window/widget_names.h"
#include "engine/context.h"

namespace kroveld {

int RunWindow(int argc, char** argv) {
  if (!DisplayAvailable()) {
    std::fputs(
        "kroveld: error: no display found to open the window (DISPLAY and WAYLAND_DISPLAY are "
        "not set); to convert from the command line, see kroveld --help\n",
        stderr);
    return 1;
  }
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Kroveld"));
  QApplication::setDesktopFileName(QStringLiteral("kroveld"));

  QtPort port;
  Context ctx(port, FindAppFolder());
  Settings settings(PrepareApplicationFolder(ctx));

  QLabel splash(QStringLiteral("Kroveld\n\nPlease wait..."));
  Named(&splash, QStringLiteral("frmPleaseWait"));
  splash.setWindowFlags(Qt::SplashScreen | Qt::FramelessWindowHint);
  splash.setAlignment(Qt::AlignCenter);
  splash.setMinimumSize(260, 110);
  splash.setFrameStyle(QFrame::Box);
  splash.show();
  QApplication::processEvents();

  MainFrame frame(ctx, port, settings);
  frame.ApplyPlacement(FramePlacement::Read(settings.Path()));
  frame.Main()->Load();
  frame.show();
  QElapsedTimer shown;
  shown.start();
  while (shown.elapsed() < 250) {
    QApplication::processEvents(QEventLoop::AllEvents, 50);
    QThread::msleep(10);
  }
  splash.hide();
  return QApplication::exec();
}

}  // namespace kroveld
