// Renders the window's faces to PNG files for the README and the help: the main window with each
// conversion method, each options tab, the help window, and the recipe editor with its table and
// column field dialogs. Run by scripts/screenshots, offscreen.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
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
#include "editor/add_field.h"
#include "editor/preview/preview_pane.h"
#include "editor/recipe_editor.h"
#include "editor/table_builder.h"
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

  // The editor on a new short recipe for the example report, its two tables added through the
  // table dialog; the dialog and the column field dialog are shown while the second is added.
  RecipeEditorHost host;
  host.mainWindow = frame.Main();
  host.appFolder = home.path();
  RecipeEditor editor(port, host);
  editor.Open(QString());
  editor.resize(860, 560);
  editor.show();
  struct Table {
    const char *top, *bottom, *markers;
  } tables[] = {
      {"Account  Description", "TOTAL    SECTION A",
       "-------- ============================== ------------- ------------- "},
      {"Employee Name", "TOTAL    PAYROLL", "-------- ============================== ------- "},
  };
  for (const Table& t : tables) {
    TableBuilder table(port, editor, &editor);
    table.findChild<QLineEdit*>(QStringLiteral("txtReadStartLine"))->setText(t.top);
    table.findChild<QLineEdit*>(QStringLiteral("txtReadStartLineOffset"))->setText("2");
    table.findChild<QLineEdit*>(QStringLiteral("txtReadEndLine"))->setText(t.bottom);
    table.findChild<QLineEdit*>(QStringLiteral("txtReadEndLineOffset"))->setText("-2");
    table.SetFieldMarkers(QString::fromLatin1(t.markers));
    table.SetFieldCount(static_cast<int>(QString::fromLatin1(t.markers).count(QLatin1Char(' '))));
    if (&t == &tables[1]) {
      table.show();
      ok = Save(&table, out, "table-dialog") && ok;
      AddField field(table);
      field.findChild<QLineEdit*>(QStringLiteral("txtFieldWidth"))->setText("13");
      field.show();
      ok = Save(&field, out, "column-dialog") && ok;
      table.SetFieldMarkers(table.FieldMarkers() + QStringLiteral("------------ "));
    }
    table.findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
  }
  editor.TextBox()->moveCursor(QTextCursor::Start);
  ok = Save(&editor, out, "editor") && ok;

  // The same recipe with the preview open on the example report.
  auto* pane = new PreviewPane;
  editor.SetPreviewPane(pane);
  editor.findChild<QPushButton*>(QStringLiteral("cmdPreview"))->click();
  pane->SetSampleReport(examples + QStringLiteral("/trial-balance.txt"));
  pane->SetRecipeText(editor.RecipeText(), QString());
  pane->Refresh();
  editor.resize(1400, 720);
  ok = Save(&editor, out, "editor-preview") && ok;
  return ok ? 0 : 1;
}
