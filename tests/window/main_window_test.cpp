// The window driven as a user drives it, offscreen: the enable rules, the options dialog, the
// recent-file drop-downs, the frame's placement, LaunchFile's message, and conversions started,
// paused and abandoned from the window. Every box is answered through the port.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <memory>

#include "app/settings.h"
#include "app/startup.h"
#include "app/window/main_frame.h"
#include "app/window/main_window.h"
#include "app/window/options_dialog.h"
#include "app/window/qt_port.h"
#include "engine/context.h"
#include "support/window_session.h"

using namespace kroveld;

namespace {

using testing::Read;
using testing::Session;
using testing::Write;

const QString kExamples = QStringLiteral(KROVELD_SOURCE_DIR "/examples/");

// Three small reports in in/, converted with the example recipe's layout.
QString MakeBatch(const QTemporaryDir& dir) {
  QDir(dir.path()).mkpath(QStringLiteral("in"));
  const QByteArray report = Read(kExamples + QStringLiteral("trial-balance.txt"));
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
    Write(dir.filePath(QStringLiteral("in/") + QLatin1String(name)), report);
  }
  return dir.filePath(QStringLiteral("in/*.txt"));
}

// Fills the window for a conversion of `input` with the example recipe into `output`.
void FillRun(Session& s, const QString& input, const QString& output) {
  s.Find<QAbstractButton>("rbUseRecipe_0")->click();
  s.Type("cbInputFile", input);
  s.Type("cbRecipeFile", kExamples + QStringLiteral("trial-balance.rcp"));
  s.Type("cbOutputFile", output);
}

}  // namespace

class MainWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void EnableRules_data() {
    QTest::addColumn<QString>("input");
    QTest::addColumn<bool>("saveToOriginal");
    QTest::addColumn<QString>("enabled");
    QTest::addColumn<QString>("disabled");
    QTest::newRow("one file") << "c:\\input\\test.txt" << false
                              << "cmdEditInput cmdOutputBrowse picSelectOutput cmdEditOutput "
                                 "cbOutputFile"
                              << "cbDoSubfolders cbSaveToOriginalFolder cmdSelectOutputFolder "
                                 "picSelectOutputFolder";
    QTest::newRow("several files") << "c:\\bills\\*.txt" << false
                                   << "cbDoSubfolders cbSaveToOriginalFolder "
                                      "cmdSelectOutputFolder picSelectOutputFolder cbOutputFile"
                                   << "cmdEditInput cmdOutputBrowse picSelectOutput cmdEditOutput";
    QTest::newRow("several files, beside their reports")
        << "c:\\bills\\*.txt" << true << "cbDoSubfolders cbSaveToOriginalFolder"
        << "cmdEditInput cmdOutputBrowse picSelectOutput cmdEditOutput cmdSelectOutputFolder "
           "picSelectOutputFolder cbOutputFile";
  }
  void EnableRules() {
    QFETCH(QString, input);
    QFETCH(bool, saveToOriginal);
    QFETCH(QString, enabled);
    QFETCH(QString, disabled);
    Session s;
    s.Type("cbInputFile", input);
    s.Find<QCheckBox>("cbSaveToOriginalFolder")->setChecked(saveToOriginal);
    for (const QString& name : enabled.split(QLatin1Char(' '))) {
      QWidget* w = s.frame->findChild<QWidget*>(name);
      QVERIFY2(w && w->isEnabled(), qPrintable(name));
      QCOMPARE(w->accessibleName(), name);
    }
    for (const QString& name : disabled.split(QLatin1Char(' '))) {
      QWidget* w = s.frame->findChild<QWidget*>(name);
      QVERIFY2(w && !w->isEnabled(), qPrintable(name));
    }
    // Back to one file: the check box is cleared and the output field comes back.
    s.Type("cbInputFile", QStringLiteral("c:\\input\\test.txt"));
    QVERIFY(!s.Find<QCheckBox>("cbSaveToOriginalFolder")->isChecked());
    QVERIFY(s.Find<QComboBox>("cbOutputFile")->isEnabled());
  }

  void OptionsApplyCancelAndRefusedTabSize() {
    Session s;
    Settings& owner = *s.settings;
    QCOMPARE(owner.lTabSize, 8);
    {
      OptionsDialog dialog(owner, s.port);
      dialog.findChild<QLineEdit*>(QStringLiteral("txtTabSize"))->setText(QStringLiteral("4"));
      dialog.findChild<QCheckBox*>(QStringLiteral("cbShowExcel"))->setChecked(false);
      dialog.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
      QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }
    QCOMPARE(owner.lTabSize, 8);
    QVERIFY(owner.bShowExcel);
    {
      OptionsDialog dialog(owner, s.port);
      dialog.show();
      dialog.findChild<QLineEdit*>(QStringLiteral("txtTabSize"))->setText(QStringLiteral("4.5"));
      dialog.findChild<QPushButton*>(QStringLiteral("cmdApply"))->click();
      QVERIFY(dialog.isVisible());
      QCOMPARE(s.said.size(), size_t(1));
      QCOMPARE(s.said[0].icon, Icon::Exclamation);
      QCOMPARE(owner.lTabSize, 8);
      dialog.findChild<QLineEdit*>(QStringLiteral("txtTabSize"))->setText(QStringLiteral("4"));
      dialog.findChild<QLineEdit*>(QStringLiteral("txtSheetTarget"))->setText(QString());
      dialog.findChild<QCheckBox*>(QStringLiteral("cbShowExcel"))->setChecked(false);
      auto* encoding = dialog.findChild<QComboBox*>(QStringLiteral("cboInputEncoding"));
      QCOMPARE(encoding->accessibleName(), QStringLiteral("cboInputEncoding"));
      QCOMPARE(encoding->currentData().toString(), QString());  // as the recipe says
      encoding->setCurrentIndex(encoding->findData(QStringLiteral("utf-8")));
      dialog.findChild<QPushButton*>(QStringLiteral("cmdApply"))->click();
      QVERIFY(!dialog.isVisible());
    }
    QCOMPARE(owner.lTabSize, 4);
    QVERIFY(!owner.bShowExcel);
    QCOMPARE(owner.sInputEncoding, std::string("utf-8"));
    QCOMPARE(owner.sSheetTarget, std::string());
    // Apply writes no file; the main window's unload does.
    QVERIFY(!Read(s.Config()).contains("lTabSize"));
    s.frame->close();
    QVERIFY(Read(s.Config()).contains("lTabSize=4\r\n"));
    QVERIFY(Read(s.Config()).contains("bShowExcel=FALSE\r\n"));
  }

  void DropDownsComeFromConfigNewestFirst() {
    Session s(
        "[mruInputFile]\r\nmruInputFile2=/in/old.txt\r\nmruInputFile7=/in/new.txt\r\n"
        "mruInputFile9=/IN/OLD.TXT\r\n");
    auto* input = s.Find<QComboBox>("cbInputFile");
    QCOMPARE(input->count(), 2);
    QCOMPARE(input->itemText(0), QStringLiteral("/IN/OLD.TXT"));
    QCOMPARE(input->itemText(1), QStringLiteral("/in/new.txt"));
    QCOMPARE(input->currentText(), QStringLiteral("/IN/OLD.TXT"));
  }

  void PlacementRoundTrip() {
    {
      Session s("[frmMainMDI]\r\nLeft=1500\r\nTop=1200\r\nWidth=15000\r\nHeight=13000\r\n");
      // What the frame took from the file is what it writes back on closing.
      s.frame->close();
      const FramePlacement back = FramePlacement::Read(s.Config().toStdString());
      QCOMPARE(back.windowState, 0);
      QCOMPARE(back.left, 1500);
      QCOMPARE(back.top, 1200);
      QCOMPARE(back.width, 15000);
      QCOMPARE(back.height, 13000);
    }
    {
      // Off every screen: moved back onto the primary screen.
      Session s("[frmMainMDI]\r\nLeft=-900000\r\nTop=900000\r\n");
      QVERIFY(s.frame->x() >= 0 && s.frame->y() >= 0);
    }
    {
      Session s("[frmMainMDI]\r\nWindowState=2\r\nLeft=1500\r\n");
      QVERIFY(s.frame->isMaximized());
      s.frame->close();
      const QByteArray text = Read(s.Config());
      QVERIFY(text.contains("WindowState=2\r\n"));
      QVERIFY(text.contains("Left=1500\r\n"));
      QVERIFY(!text.contains("Width="));
    }
  }

  void LaunchFileSaysWhenNothingIsThere() {
    Session s;
    s.Main()->LaunchFile(QStringLiteral("/no/such/report.txt"));
    QCOMPARE(s.said.size(), size_t(1));
    QCOMPARE(s.said[0].text, std::string("File/Folder does not exist:\n\n/no/such/report.txt"));
    QCOMPARE(s.said[0].icon, Icon::Information);
  }

  // The window writes the CSV the command line writes (the e2e tests hold the binary to this
  // file), and fills its lists.
  void ConversionThroughTheWindow() {
    Session s;
    const QString output = s.dir.filePath(QStringLiteral("window.csv"));
    FillRun(s, kExamples + QStringLiteral("trial-balance.txt"), output);
    s.Press("keyConvert");
    QCOMPARE(s.Panel3(), QStringLiteral("Conversion Complete"));
    QVERIFY(!s.Main()->Running());
    QCOMPARE(s.Texts(), std::vector<std::string>{std::string(kTabNote)});
    QCOMPARE(Read(output),
             Read(QStringLiteral(KROVELD_SOURCE_DIR "/tests/data/e2e/trial-balance.csv")));

    QCOMPARE(s.Find<QComboBox>("cbOutputFile")->itemText(0), output);
    QCOMPARE(s.settings->recipes.Items().back(),
             (kExamples + QStringLiteral("trial-balance.rcp")).toStdString());
  }

  // Pause during the second file of three: the batch stops before the third.
  void BatchPausedMidWay() {
    Session s;
    FillRun(s, MakeBatch(s.dir), s.dir.filePath(QStringLiteral("out/*.csv")));
    s.port.SetStatusObserver([&s](int panel, const std::string& text) {
      if (panel == 3 && text.find("[2 of 3 files]") != std::string::npos) s.Main()->Pause();
    });
    s.Press("keyConvert");
    QVERIFY(QFile::exists(s.dir.filePath(QStringLiteral("out/a.csv"))));
    QVERIFY(!QFile::exists(s.dir.filePath(QStringLiteral("out/c.csv"))));
    // The second file's table was asked to stop, and was told yes.
    const auto texts = s.Texts();
    QVERIFY(std::find(texts.begin(), texts.end(), "Do you want to terminate the process?") !=
            texts.end());
    QCOMPARE(s.Panel3(), QStringLiteral("Conversion Complete"));
    // The next Convert starts afresh and does all three.
    s.port.SetStatusObserver(nullptr);
    s.Press("keyConvert");
    QVERIFY(QFile::exists(s.dir.filePath(QStringLiteral("out/c.csv"))));
  }

  // Closing the frame during a conversion: the placement is written, the run is told to stop,
  // and the settings are not saved.
  void ClosedMidConversion() {
    Session s;
    const QByteArray before = Read(s.Config());
    FillRun(s, MakeBatch(s.dir), s.dir.filePath(QStringLiteral("out/*.csv")));
    bool closed = false;
    s.port.SetStatusObserver([&s, &closed](int panel, const std::string& text) {
      if (!closed && panel == 3 && text.find("[1 of 3 files]") != std::string::npos) {
        closed = true;
        s.frame->close();
      }
    });
    s.Press("keyConvert");
    QVERIFY(closed);
    QVERIFY(!s.frame->isVisible());
    QVERIFY(!QFile::exists(s.dir.filePath(QStringLiteral("out/b.csv"))));
    const QByteArray after = Read(s.Config());
    QVERIFY(after.contains("[frmMainMDI]"));
    QVERIFY(!after.contains("lTabSize"));
    QVERIFY(!after.contains("mruInputFile"));
    QVERIFY(after.startsWith(before.left(before.indexOf("[General]"))));
  }

  void ProgressNumbersFromStatusTexts() {
    long long done = 0, total = 0;
    QVERIFY(ProgressOfStatus("Exporting Table 1: row 12 of 40", done, total));
    QCOMPARE(done, 12LL);
    QCOMPARE(total, 40LL);
    QVERIFY(ProgressOfStatus("/in/a.txt   [2 of 3 files]", done, total));
    QCOMPARE(done, 2LL);
    QCOMPARE(total, 3LL);
    QVERIFY(!ProgressOfStatus("Conversion Complete", done, total));
    QVERIFY(!ProgressOfStatus("row x of 3", done, total));
  }
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
