// Renders the window's faces to PNG files for the README and the help: the main window with each
// conversion method, each options tab and the help window. Run by scripts/screenshots, offscreen.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <cstdio>

#include "app/help/help_window.h"
#include "app/settings.h"
#include "app/startup.h"
#include "app/window/main_frame.h"
#include "app/window/main_window.h"
#include "app/window/options_dialog.h"
#include "app/window/qt_port.h"
#include "engine/context.h"

using namespace kroveld;

namespace {

bool Save(QWidget* widget, const QString& folder, const char* name) {
  // A panel shown or hidden re-lays its parents out over several posted events.
  for (int i = 0; i < 5; ++i) QApplication::processEvents();
  const QString path = folder + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".png");
  const bool ok = widget->grab().save(path);
  std::printf("%s %s\n", ok ? "wrote" : "FAILED", qPrintable(path));
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("docs/images");
  const QString examples = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QStringLiteral("examples");
  QDir().mkpath(out);
  QTemporaryDir home;
  QtPort port;
  port.SetAnswerer([](const std::string&, Icon, bool) { return false; });
  Context ctx(port, home.path().toStdString());
  Settings settings(PrepareApplicationFolder(ctx));
  MainFrame frame(ctx, port, settings);
  frame.Main()->Load();
  frame.resize(frame.minimumSize().expandedTo(QSize(760, 0)));
  frame.show();
  auto field = [&frame](const char* name, const QString& text) {
    frame.findChild<QComboBox*>(QLatin1String(name))->setEditText(text);
  };
  field("cbInputFile", examples + QStringLiteral("/trial-balance.txt"));
  field("cbOutputFile", QStringLiteral("trial-balance.xlsx"));
  field("cbRecipeFile", examples + QStringLiteral("/trial-balance.rcp"));
  bool ok = true;
  frame.findChild<QAbstractButton*>(QStringLiteral("rbUseRecipe_0"))->click();
  ok = Save(&frame, out, "main-window-recipe") && ok;
  frame.findChild<QAbstractButton*>(QStringLiteral("rbUseRecipe_1"))->click();
  ok = Save(&frame, out, "main-window-markup") && ok;

  OptionsDialog options(settings, port);
  options.show();
  auto* tabs = options.findChild<QTabWidget*>(QStringLiteral("tsDisplay"));
  const char* names[] = {"options-general", "options-input", "options-output"};
  for (int i = 0; i < tabs->count(); ++i) {
    tabs->setCurrentIndex(i);
    ok = Save(&options, out, names[i]) && ok;
  }

  HelpWindow help;
  help.ShowTopic(kHelpHowToUse);
  ok = Save(&help, out, "help-window") && ok;
  return ok ? 0 : 1;
}
