// The recipe editor, its table and column field dialogs and the text viewer, driven offscreen as
// a user drives them. Every box and question is answered through the port; file dialogs are
// answered through the editor's hooks. One session builds a two-table recipe through the
// dialogs, saves it and converts a report with it through the real command line.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <functional>
#include <memory>

#include "app/help/help_window.h"
#include "app/settings.h"
#include "app/startup.h"
#include "app/window/main_frame.h"
#include "app/window/main_window.h"
#include "app/window/qt_port.h"
#include "editor/add_field.h"
#include "editor/preview/preview_pane.h"
#include "editor/recipe_editor.h"
#include "editor/table_builder.h"
#include "editor/text_display.h"
#include "engine/context.h"
#include "support/window_session.h"

using namespace kroveld;

namespace {

const QString kExamples = QStringLiteral(KROVELD_SOURCE_DIR "/examples/");
const QByteArray kNewRecipe = "[Header]\r\nProduct=KRO-B\r\nFileType=RECIPE\r\nFileFormat=1.0\r\n";

using testing::Read;
using testing::Said;
using testing::Write;

// An editor in a temporary folder, with a stand-in main window: its recipe and input fields.
struct Bench {
  QTemporaryDir dir;
  QtPort port;
  std::vector<Said> said;
  bool answer = true;  // the answer to every question
  QString recipeField, inputField;
  QString savePath;         // what the save dialog answers ("" = cancelled)
  QStringList saveDialogs;  // title|folder|filter of each save dialog shown
  std::unique_ptr<RecipeEditor> editor;

  Bench() {
    port.SetAnswerer([this](const std::string& text, Icon icon, bool question) {
      said.push_back({text, icon, question});
      return question && answer;
    });
    RecipeEditorHost host;
    host.appFolder = dir.path();
    host.recipeField = [this] { return recipeField; };
    host.setRecipeField = [this](const QString& path) { recipeField = path; };
    host.inputFile = [this] { return inputField; };
    editor = std::make_unique<RecipeEditor>(port, host);
    editor->askSavePath = [this](const QString& title, const QString& folder,
                                 const QString& filter) {
      saveDialogs << title + QLatin1Char('|') + folder + QLatin1Char('|') + filter;
      return savePath;
    };
    editor->askOpenPath = [](const QString&, const QString&, const QString&) { return QString(); };
  }
  QString Path(const char* name) const { return dir.filePath(QLatin1String(name)); }
  void TypeAtEnd(const QString& text) const {
    QPlainTextEdit* box = editor->TextBox();
    box->moveCursor(QTextCursor::End);
    QTest::keyClicks(box, text);
  }
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const Said& s : said) texts.push_back(s.text);
    return texts;
  }
};

// Runs `act` on the modal dialog of type D once it is shown (by an exec() that follows).
template <class D>
void OnModal(std::function<void(D*)> act, int tries = 300) {
  QTimer::singleShot(10, qApp, [act, tries] {
    if (auto* dialog = qobject_cast<D*>(QApplication::activeModalWidget())) {
      act(dialog);
    } else if (tries > 0) {
      OnModal<D>(act, tries - 1);
    } else {
      qWarning("no modal dialog appeared");
    }
  });
}

template <class W>
W* Child(const QObject* parent, const char* name) {
  W* w = parent->findChild<W*>(QLatin1String(name));
  if (w == nullptr) qWarning("no control %s", name);
  return w;
}

// Stands in for the table dialog's editor: a count and the text appended to it.
struct FakeEditor : TableBuilderHost {
  int count = 2;
  QString appended;
  int TableCount() const override { return count; }
  void SetTableCount(int c) override { count = c; }
  void AppendRecipeText(const QString& text) override { appended += text; }
};

}  // namespace

class RecipeEditorTest : public QObject {
  Q_OBJECT
 private slots:
  // Opening with an empty recipe field, a recipe with tables, column sections and a
  // consolidation, a missing file, a folder, and a file over the size limit.
  void OpeningAndLoading() {
    Bench b;
    b.editor->Open(QString());
    QCOMPARE(b.editor->RecipeText().toLatin1(), kNewRecipe);
    QCOMPARE(b.editor->windowTitle(), QStringLiteral("Recipe Editor - Tables = 0"));
    QVERIFY(b.editor->Edited());  // a new recipe asks to be saved
    const QFontMetrics metrics(b.editor->TextBox()->font());
    QCOMPARE(metrics.horizontalAdvance(QStringLiteral("iiii")),
             metrics.horizontalAdvance(QStringLiteral("WWWW")));

    const QByteArray recipe =
        "[Header]\r\nProduct=KRO\r\n[Table 1]\r\nTotalColumns=1\r\n[Table 1 Col 1]\r\n"
        "ReadColumnStart=1\r\n[Table 2]\r\n[Table 2 Col 1]\r\n[Consolidate 1]\r\nTable=1\r\n";
    Write(b.Path("two.rcp"), recipe);
    b.editor->Open(b.Path("two.rcp"));
    QCOMPARE(b.editor->windowTitle(), QStringLiteral("Recipe Editor - Tables = 2"));
    QCOMPARE(b.editor->RecipeText().toLatin1(), recipe);
    QCOMPARE(b.editor->RecipePath(), b.Path("two.rcp"));
    QVERIFY(!b.editor->Edited());
    QVERIFY(b.said.empty());

    // Refused files leave the text as it was.
    QFile big(b.Path("big.rcp"));
    QVERIFY(big.open(QIODevice::WriteOnly));
    QVERIFY(big.resize(kMaxRecipeBytes + 1));
    big.close();
    QDir(b.dir.path()).mkdir(QStringLiteral("folder.rcp"));
    for (const char* name : {"missing.rcp", "folder.rcp", "big.rcp"}) {
      b.said.clear();
      b.editor->LoadRecipeIntoEditor(b.Path(name));
      QCOMPARE(b.said.size(), 1u);
      QCOMPARE(b.said[0].icon, Icon::Exclamation);
      const std::string p = b.Path(name).toStdString();
      if (std::string(name) == "big.rcp") {
        QVERIFY2(b.said[0].text.find("16 MiB") != std::string::npos, b.said[0].text.c_str());
      } else {
        QCOMPARE(b.said[0].text, "File: " + p + " does not exist!");
      }
      QCOMPARE(b.editor->RecipeText().toLatin1(), recipe);
      QCOMPARE(b.editor->windowTitle(), QStringLiteral("Recipe Editor - Tables = 2"));
    }
  }

  // A recipe in Windows-1252 (a key text with an accented letter, as 8-bit reports carry them)
  // and one with LF line ends: both shown as text; saving writes the 8-bit bytes back and CR LF.
  void EncodingAndLineEnds() {
    Bench b;
    const QByteArray latin = "[Table 1]\r\nReadStartLine=Caf\xe9 \x80 TOTAL\r\n";
    Write(b.Path("latin.rcp"), latin);
    b.editor->LoadRecipeIntoEditor(b.Path("latin.rcp"));
    QVERIFY(b.editor->RecipeText().contains(QString::fromUtf8("Café € TOTAL")));
    b.savePath = b.Path("latin-copy.rcp");
    QVERIFY(b.editor->Save());
    QCOMPARE(Read(b.Path("latin-copy.rcp")), latin);

    Write(b.Path("lf.rcp"), "[Table 1]\nParsing=-\n");
    b.editor->LoadRecipeIntoEditor(b.Path("lf.rcp"));
    b.savePath = b.Path("lf-copy.rcp");
    QVERIFY(b.editor->Save());
    QCOMPARE(Read(b.Path("lf-copy.rcp")), QByteArray("[Table 1]\r\nParsing=-\r\n"));

    // Bytes that are no text at all load without trouble.
    QByteArray binary;
    for (int i = 0; i < 65536; ++i) binary += static_cast<char>(i * 7 % 256);
    Write(b.Path("binary.rcp"), binary);
    b.editor->LoadRecipeIntoEditor(b.Path("binary.rcp"));
    QVERIFY(b.editor->TextBox()->toPlainText().size() > 60000);

    // One line of 25,000 characters is shown as lines of 10,000, nothing dropped, and said so.
    b.said.clear();
    const QByteArray oneLine(25000, 'x');
    Write(b.Path("one-line.rcp"), oneLine);
    b.editor->LoadRecipeIntoEditor(b.Path("one-line.rcp"));
    QCOMPARE(b.said.size(), 1u);
    QVERIFY(b.said[0].text.find("longer than 10000 characters") != std::string::npos);
    const QStringList lines = b.editor->RecipeText().split(QStringLiteral("\r\n"));
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0].size(), 10000);
    QCOMPARE(lines.join(QString()).toLatin1(), oneLine);
  }

  void Save_data() {
    QTest::addColumn<QString>("recipeField");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("overwrite");
    QTest::newRow("new file") << "" << false << true;
    QTest::newRow("existing, overwrite Yes") << "sub/old.rcp" << true << true;
    QTest::newRow("existing, overwrite No") << "sub/old.rcp" << true << false;
  }
  // Save as: its dialog, the overwrite question, and "No still counts as saved".
  void Save() {
    QFETCH(QString, recipeField);
    QFETCH(bool, exists);
    QFETCH(bool, overwrite);
    Bench b;
    QDir(b.dir.path()).mkdir(QStringLiteral("sub"));
    b.recipeField = recipeField.isEmpty() ? QString() : b.Path(qPrintable(recipeField));
    const QString target = b.Path("sub/target.rcp");
    if (exists) Write(target, "OLD");
    b.editor->Open(QString());
    b.TypeAtEnd(QStringLiteral("[Table 1]"));
    b.answer = overwrite;
    b.savePath = target;
    QVERIFY(b.editor->Save());

    const QString folder =
        recipeField.isEmpty() ? b.dir.path() + QLatin1Char('/') : b.Path("sub") + QLatin1Char('/');
    QCOMPARE(b.saveDialogs, QStringList{QStringLiteral("Save Recipe File As|") + folder +
                                        QStringLiteral("|Recipe Files(*.rcp)")});
    if (exists) {
      QCOMPARE(b.Texts(),
               std::vector<std::string>{"Overwrite existing file: " + target.toStdString()});
      QVERIFY(b.said[0].question);
      QCOMPARE(b.said[0].icon, Icon::Question);
    } else {
      QVERIFY(b.said.empty());
    }
    QCOMPARE(Read(target), overwrite ? kNewRecipe + "[Table 1]" : QByteArray("OLD"));
    QCOMPARE(b.recipeField, target);
    QVERIFY(!b.editor->Edited());
  }

  void Close_data() {
    QTest::addColumn<QString>("how");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QString>("saveTo");
    QTest::addColumn<bool>("asks");
    QTest::addColumn<bool>("closed");
    QTest::addColumn<QByteArray>("file");
    const struct {
      const char *name, *how;
      bool answer;
      const char* saveTo;
      bool asks, closed;
      const char* file;
    } rows[] = {
        {"cmdClose, No discards", "cmdClose", false, "", true, true, "KEEP\r\n"},
        {"close box, No discards", "box", false, "", true, true, "KEEP\r\n"},
        {"cmdClose, Yes saves", "cmdClose", true, "out.rcp", true, true, "KEEP\r\nmore"},
        {"Yes, save dialog cancelled: stays open", "box", true, "", true, false, "KEEP\r\n"},
        {"cmdCancel asks nothing", "cmdCancel", true, "", false, true, "KEEP\r\n"},
    };
    for (const auto& r : rows) {
      QTest::newRow(r.name) << QString(r.how) << r.answer << QString(r.saveTo) << r.asks << r.closed
                            << QByteArray(r.file);
    }
  }
  // Closing after an edit: the question, and what each answer does to the file.
  void Close() {
    QFETCH(QString, how);
    QFETCH(bool, answer);
    QFETCH(QString, saveTo);
    QFETCH(bool, asks);
    QFETCH(bool, closed);
    QFETCH(QByteArray, file);
    Bench b;
    Write(b.Path("r.rcp"), "KEEP\r\n");
    b.editor->Open(b.Path("r.rcp"));
    b.editor->show();
    b.TypeAtEnd(QStringLiteral("more"));
    b.answer = answer;
    b.savePath = saveTo.isEmpty() ? QString() : b.Path("r.rcp");
    if (how == QLatin1String("box")) {
      b.editor->close();
    } else {
      Child<QPushButton>(b.editor.get(), qPrintable(how))->click();
    }
    if (asks) {
      QCOMPARE(b.Texts().front(), "You've edited the file, do you want to save your changes?");
      QCOMPARE(b.said.front().icon, Icon::Question);
    } else {
      QVERIFY(b.said.empty());
    }
    QCOMPARE(b.editor->isVisible(), !closed);
    QCOMPARE(Read(b.Path("r.rcp")), file);
  }

  void TableFieldChecks_data() {
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("caption");
    const char* number = "Table Number must be a number larger than 0";
    const struct {
      const char *name, *field, *typed, *message, *after, *caption;
    } rows[] = {
        {"number 0", "txtTableNumber", "0", number, "3", "Add Table 3"},
        {"number abc", "txtTableNumber", "abc", number, "3", "Add Table 3"},
        {"number 12abc", "txtTableNumber", "12abc", "", "12", "Add Table 12"},
        {"top key blank", "txtReadStartLine", "   ", "Top Key Text should not be a blank!",
         "KEY TEXT AT TOP", "Add Table 3"},
        {"bottom key cleared", "txtReadEndLine", "", "Bottom Key Text should not be a blank!",
         "KEY TEXT AT BOTTOM", "Add Table 3"},
        {"top offset x", "txtReadStartLineOffset", "x", "Top Line offset must be a number", "0",
         "Add Table 3"},
        {"top offset -2", "txtReadStartLineOffset", "-2", "", "-2", "Add Table 3"},
        {"bottom offset 1.5", "txtReadEndLineOffset", "1.5", "Bottom Line offset must be a number",
         "0", "Add Table 3"},
    };
    for (const auto& r : rows) {
      QTest::newRow(r.name) << QString(r.field) << QString(r.typed) << QString(r.message)
                            << QString(r.after) << QString(r.caption);
    }
  }
  // Leaving a field checks it; a rejected value is put back with its message.
  void TableFieldChecks() {
    QFETCH(QString, field);
    QFETCH(QString, typed);
    QFETCH(QString, message);
    QFETCH(QString, after);
    QFETCH(QString, caption);
    Bench b;
    FakeEditor host;  // two tables so far
    TableBuilder dialog(b.port, host);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Add Table 3"));
    dialog.show();
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    auto* edit = Child<QLineEdit>(&dialog, qPrintable(field));
    edit->setFocus(Qt::TabFocusReason);
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, typed);
    QVERIFY(b.said.empty());  // nothing is checked while typing
    Child<QPushButton>(&dialog, "cmdAddColumn")->setFocus(Qt::TabFocusReason);
    if (message.isEmpty()) {
      QVERIFY(b.said.empty());
    } else {
      QCOMPARE(b.Texts(), std::vector<std::string>{message.toStdString()});
      QCOMPARE(b.said[0].icon, Icon::Exclamation);
    }
    QCOMPARE(edit->text(), after);
    QCOMPARE(dialog.windowTitle(), caption);
  }

  // OK with no field: the seven lines, trimmed values and "Parsing=-".
  void TableOkWithoutFields() {
    Bench b;
    b.editor->Open(QString());
    TableBuilder dialog(b.port, *b.editor);
    Child<QLineEdit>(&dialog, "txtReadStartLine")->setText(QStringLiteral("  Account  "));
    Child<QLineEdit>(&dialog, "txtReadStartLineOffset")->setText(QStringLiteral(" 2 "));
    Child<QLineEdit>(&dialog, "txtReadEndLine")->setText(QStringLiteral("TOTAL "));
    Child<QLineEdit>(&dialog, "txtReadEndLineOffset")->setText(QStringLiteral("-1"));
    Child<QPushButton>(&dialog, "cmdOK")->click();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(b.editor->RecipeText().toLatin1(),
             kNewRecipe +
                 "[Table 1]\r\nReadStartLine=Account\r\nReadStartLineOffset=2\r\n"
                 "ReadEndLine=TOTAL\r\nReadEndLineOffset=-1\r\nParsing=-\r\nWriteColumn=A\r\n");
    QVERIFY(b.said.empty());
  }

  void ColumnWidths_data() {
    QTest::addColumn<QString>("width");
    QTest::addColumn<bool>("single");
    QTest::addColumn<QString>("markers");  // after "-- " already there
    QTest::newRow("5 single") << "5" << true << "-- ---- ";
    QTest::newRow("3 other") << "3" << false << "-- == ";
    QTest::newRow("1 adds the blank only") << "1" << true << "--  ";
    QTest::newRow("2.6 rounds to 3") << "2.6" << true << "-- -- ";
    QTest::newRow("0") << "0" << true << "";
    QTest::newRow("abc") << "abc" << true << "";
  }
  // The width rule and the marker characters; below 1 nothing happens and the dialog stays.
  void ColumnWidths() {
    QFETCH(QString, width);
    QFETCH(bool, single);
    QFETCH(QString, markers);
    Bench b;
    FakeEditor host;
    TableBuilder table(b.port, host);
    table.SetFieldMarkers(QStringLiteral("-- "));
    table.SetFieldCount(1);
    AddField field(table);
    QCOMPARE(field.windowTitle(), QStringLiteral("Add Column Field 2"));
    field.show();
    Child<QLineEdit>(&field, "txtFieldWidth")->setText(width);
    Child<QRadioButton>(&field, single ? "obSingleDataField" : "obVariableWidthField")
        ->setChecked(true);
    Child<QPushButton>(&field, "cmdOK")->click();
    if (markers.isEmpty()) {
      QVERIFY(field.isVisible());
      QCOMPARE(table.FieldMarkers(), QStringLiteral("-- "));
      QCOMPARE(table.FieldCount(), 1);
    } else {
      QVERIFY(!field.isVisible());
      QCOMPARE(table.FieldMarkers(), markers);
      QCOMPARE(table.FieldCount(), 2);
    }
    QVERIFY(b.said.empty());
  }

  // The viewer: lines in order with tabs expanded; an empty file; a folder; a missing file.
  void TextViewer() {
    Bench b;
    Write(b.Path("report.txt"), "A\tB\r\nCaf\xe9\r\n\r\nlast");
    Write(b.Path("empty.txt"), "");
    struct Case {
      const char* name;
      QStringList lines;
      bool message;
    } cases[] = {
        {"report.txt",
         {QStringLiteral("A       B"), QString::fromUtf8("Café"), QString(),
          QStringLiteral("last")},
         false},
        {"empty.txt", {}, false},
        {"", {}, true},  // the folder itself
        {"missing.txt", {}, true},
    };
    for (const Case& c : cases) {
      b.said.clear();
      const QString path = *c.name ? b.Path(c.name) : b.dir.path();
      TextDisplay viewer(b.port, path, nullptr);
      viewer.Load();
      QStringList shown;
      for (int i = 0; i < viewer.List()->count(); ++i) shown << viewer.List()->item(i)->text();
      QCOMPARE(shown, c.lines);
      if (c.message) {
        QCOMPARE(b.Texts(),
                 std::vector<std::string>{"Help file " + path.toStdString() + " does not exist!"});
        QCOMPARE(b.said[0].icon, Icon::Exclamation);
      } else {
        QVERIFY(b.said.empty());
      }
    }
    // Reached from the editor on the main window's input file.
    b.inputField = b.Path("report.txt");
    Child<QPushButton>(b.editor.get(), "cmdViewInput")->click();
    auto* viewer = b.editor->findChild<TextDisplay*>();
    QVERIFY(viewer != nullptr);
    QCOMPARE(viewer->FilePath(), b.Path("report.txt"));
    QCOMPARE(viewer->List()->count(), 4);
  }

  // What the preview pane is given: the container and its toggle, the text and its changes,
  // and selecting a line of the recipe.
  void PreviewRoom() {
    Bench b;
    b.editor->Open(QString());
    b.editor->show();
    auto* toggle = Child<QPushButton>(b.editor.get(), "cmdPreview");
    QVERIFY(!toggle->isEnabled());
    auto* pane = new QLabel(QStringLiteral("pane"));
    b.editor->SetPreviewPane(pane);
    QVERIFY(toggle->isEnabled() && !pane->isVisible());
    QSignalSpy toggled(b.editor.get(), &RecipeEditor::previewToggled);
    toggle->click();
    QVERIFY(pane->isVisible() && b.editor->PreviewShown());
    toggle->click();
    QVERIFY(!pane->isVisible() && !b.editor->PreviewShown());
    QCOMPARE(toggled.count(), 2);

    QSignalSpy changed(b.editor.get(), &RecipeEditor::recipeTextChanged);
    b.TypeAtEnd(QStringLiteral("x"));
    QCOMPARE(changed.count(), 1);
    QVERIFY(b.editor->RecipeText().endsWith(QStringLiteral("\r\nx")));
    b.editor->SelectRecipeLine(3);
    QCOMPARE(b.editor->TextBox()->textCursor().selectedText(), QStringLiteral("FileType=RECIPE"));
    b.editor->SelectRecipeLine(99);  // past the end: nothing moves
    QCOMPARE(b.editor->TextBox()->textCursor().selectedText(), QStringLiteral("FileType=RECIPE"));
  }

  // From the main window: both ways in open one editor on the recipe field's path; Save puts
  // its path into the field; Help shows topic 13; closing the frame closes the editor first.
  void OpenedFromMainWindow() {
    testing::Session s;
    MainFrame& frame = *s.frame;
    const QTemporaryDir& dir = s.dir;
    const QString recipe = dir.filePath(QStringLiteral("r.rcp"));
    Write(recipe, "[Table 1]\r\n");
    s.Type("cbRecipeFile", recipe);
    Child<QPushButton>(&frame, "cmdEditRecipe")->click();
    QPointer<RecipeEditor> editor = frame.Main()->RecipeEditorWindow();
    QVERIFY(editor != nullptr && editor->isVisible());
    QCOMPARE(editor->RecipePath(), recipe);
    QCOMPARE(editor->windowTitle(), QStringLiteral("Recipe Editor - Tables = 1"));
    Child<QAction>(&frame, "frmEditRecipe")->trigger();
    QCOMPARE(frame.Main()->RecipeEditorWindow(), editor.data());

    // The preview pane: fed once shown, on the window's input report; its messages lead to lines.
    const QString report = kExamples + QStringLiteral("trial-balance.txt");
    s.Type("cbInputFile", report);
    auto* pane = qobject_cast<PreviewPane*>(editor->PreviewPane());
    QVERIFY(pane != nullptr && pane->SampleReport().isEmpty());
    QSignalSpy refreshed(pane, &PreviewPane::refreshed);
    Child<QPushButton>(editor.data(), "cmdPreview")->click();
    QVERIFY(pane->isVisible());
    QCOMPARE(pane->SampleReport(), report);
    QVERIFY(refreshed.wait(5000));
    emit pane->recipeLineRequested(1);
    QCOMPARE(editor->TextBox()->textCursor().selectedText(), QStringLiteral("[Table 1]"));

    editor->askSavePath = [&dir](const QString&, const QString&, const QString&) {
      return dir.filePath(QStringLiteral("saved.rcp"));
    };
    QVERIFY(editor->Save());
    QCOMPARE(s.Find<QComboBox>("cbRecipeFile")->currentText(),
             dir.filePath(QStringLiteral("saved.rcp")));
    Child<QPushButton>(editor.data(), "cmdHelp")->click();
    auto* help = frame.findChild<HelpWindow*>();
    QVERIFY(help != nullptr);
    QCOMPARE(help->Browser()->source(), HelpPageUrl(13));

    // Unsaved edits, and the save dialog cancelled at the frame's close: everything stays.
    editor->TextBox()->appendPlainText(QStringLiteral("more"));
    editor->askSavePath = [](const QString&, const QString&, const QString&) { return QString(); };
    QVERIFY(!frame.close());  // the question is answered Yes
    QVERIFY(editor != nullptr && editor->isVisible());
    s.said.clear();
    Child<QPushButton>(editor.data(), "cmdCancel")->click();
    QVERIFY(s.said.empty());
    QTRY_VERIFY(editor == nullptr);  // deleted on close
  }

  // A user's session: a two-table recipe built through the dialogs, saved, and used by the
  // command line on a report, giving the CSV worked out by hand from the report's columns.
  void BuildSaveAndConvert() {
    Bench b;
    b.editor->Open(QString());
    b.editor->show();
    struct Table {
      const char *top, *topOffset, *bottom, *bottomOffset;
      std::vector<std::pair<const char*, bool>> fields;  // width, single data field
    };
    const Table tables[] = {
        {"Code Item", "2", "END ONE", "-1", {{"5", true}, {"9", false}, {"10", true}}},
        {"Region", "2", "END TWO", "-1", {{"7", true}, {"7", true}}},
    };
    for (const Table& t : tables) {
      OnModal<TableBuilder>([&t](TableBuilder* dialog) {
        Child<QLineEdit>(dialog, "txtReadStartLine")->setText(t.top);
        Child<QLineEdit>(dialog, "txtReadStartLineOffset")->setText(t.topOffset);
        Child<QLineEdit>(dialog, "txtReadEndLine")->setText(t.bottom);
        Child<QLineEdit>(dialog, "txtReadEndLineOffset")->setText(t.bottomOffset);
        for (const auto& [width, single] : t.fields) {
          OnModal<AddField>([width, single](AddField* field) {
            Child<QLineEdit>(field, "txtFieldWidth")->setText(width);
            Child<QRadioButton>(field, single ? "obSingleDataField" : "obVariableWidthField")
                ->setChecked(true);
            Child<QPushButton>(field, "cmdOK")->click();
          });
          Child<QPushButton>(dialog, "cmdAddColumn")->click();
        }
        Child<QPushButton>(dialog, "cmdOK")->click();
      });
      Child<QPushButton>(b.editor.get(), "cmdAddTable")->click();
    }
    QCOMPARE(b.editor->windowTitle(), QStringLiteral("Recipe Editor - Tables = 2"));

    b.savePath = b.Path("built.rcp");
    Child<QPushButton>(b.editor.get(), "cmdSave")->click();
    QVERIFY(b.said.empty());
    // The layout of a table's lines is checked on one table; here the markers the fields made.
    const QByteArray recipe = Read(b.Path("built.rcp"));
    QVERIFY(recipe.contains("\r\nParsing=---- ======== ---------\r\nWriteColumn=A\r\n[Table 2]"));
    QVERIFY(recipe.endsWith("\r\nParsing=------ ------\r\nWriteColumn=A\r\n"));
    QCOMPARE(b.recipeField, b.Path("built.rcp"));

    Write(b.Path("report.txt"),
          "SMALL REPORT\n"
          "Code Item        Amount\n"
          "---- -------- ---------\n"
          "A1   Bolts       12.50\n"
          "B2   Nuts         3.00\n"
          "==== END ONE\n"
          "\n"
          "Region Total\n"
          "------ ------\n"
          "North  100\n"
          "South  250\n"
          "==== END TWO\n");
    QCOMPARE(testing::RunKroveld(b.Path("home"),
                                 {QStringLiteral("-i"), b.Path("report.txt"), QStringLiteral("-o"),
                                  b.Path("out.csv"), QStringLiteral("-r"), b.Path("built.rcp")}),
             0);
    // Table 1: fields at 1-5, 6-14 and 15 to the line's end; table 2: 1-7 and 8 to the end.
    // Each line read carries one added blank at its end.
    QCOMPARE(Read(b.Path("out.csv")), QByteArray("A1   ,Bolts    ,   12.50 \r\n"
                                                 "B2   ,Nuts     ,    3.00 \r\n"
                                                 "North  ,100 \r\n"
                                                 "South  ,250 \r\n"));
  }
};

QTEST_MAIN(RecipeEditorTest)
#include "recipe_editor_test.moc"
