// The preview pane offscreen on the shipped trial-balance example: the blocks and column spans it
// marks, the cells of the grid, the pause before a refresh, and a key text that is not in the
// report showing up in the message list under its section, a click leading to its recipe line.
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>
#include <QTextBlock>

#include "editor/preview/preview_pane.h"
#include "editor/preview/report_view.h"
#include "support/qt_test_support.h"

using kroveld::PreviewPane;
using kroveld::ReportView;

namespace {

const QString kExamples = QStringLiteral(KROVELD_SOURCE_DIR "/examples/");

// The trial balance as a short recipe typed in the editor; Table 2's top key misspelt.
QString ShortRecipeWithTypo() {
  return QStringLiteral(
      "[Header]\r\nProduct=KRO-B\r\nFileType=RECIPE\r\nFileFormat=1.0\r\n\r\n"
      "[Table 1]\r\nReadStartLine=Account  Description\r\nReadStartLineOffset=2\r\n"
      "ReadEndLine=TOTAL    SECTION A\r\nReadEndLineOffset=-2\r\n"
      "Parsing=xxxxxxxx xxxxxxxxxxxxxxxxxxxxxxxxxxxxxx xxxxxxxxxxxxx xxxxxxxxxxxxx\r\n"
      "WriteColumn=A\r\n\r\n"
      "[Table 2]\r\nReadStartLine=Employee Nmae\r\nReadStartLineOffset=2\r\n"
      "ReadEndLine=TOTAL    PAYROLL\r\nReadEndLineOffset=-2\r\n"
      "Parsing=xxxxxxxx xxxxxxxxxxxxxxxxxxxxxxxxxxxxxx xxxxxxx xxxxxxxxxxxx\r\n"
      "WriteColumn=A\r\n");
}

}  // namespace

class PreviewPaneTest : public QObject {
  Q_OBJECT
 private slots:
  void ExampleMarksBlocksAndSpansAndFillsTheGrid() {
    PreviewPane pane;
    QSignalSpy refreshed(&pane, &PreviewPane::refreshed);
    const QString recipe = kExamples + QStringLiteral("trial-balance.rcp");
    // Typing in quick succession gives one refresh, after the pause.
    pane.SetRecipeText(QStringLiteral("[Header]"), recipe);
    pane.SetSampleReport(kExamples + QStringLiteral("trial-balance.txt"));
    pane.SetRecipeText(QString::fromUtf8(kroveld::testing::Read(recipe)), recipe);
    QVERIFY(refreshed.wait(3000));
    QTest::qWait(PreviewPane::kDebounceMilliseconds + 200);
    QCOMPARE(refreshed.count(), 1);

    auto* view = pane.findChild<ReportView*>(QStringLiteral("txtReportPreview"));
    QVERIFY(view != nullptr);
    QCOMPARE(view->blockCount(), 28);
    const kroveld::ReportMarks& marks = view->Marks();
    QCOMPARE(marks.blocks.size(), std::size_t{2});
    QCOMPARE(marks.blocks[0].startLine, 8);
    QCOMPARE(marks.blocks[0].endLine, 14);
    QCOMPARE(marks.blocks[1].startLine, 21);
    QCOMPARE(marks.blocks[1].endLine, 24);
    QCOMPARE(marks.keyLines, (std::vector<std::int64_t>{6, 16, 19, 26}));
    // The spans as they fall on the text shown (tabs expanded): line 8 and line 22.
    const int spans1[4][2] = {{1, 8}, {10, 39}, {41, 53}, {55, 67}};
    const char* line8[4] = {"1000    ", "Cash at bank                  ", "    12,450.00", ""};
    const int spans2[4][2] = {{1, 8}, {10, 39}, {41, 47}, {49, 60}};
    const char* line22[4] = {"E-0023  ", "Bram de Vries                 ", "  152.5",
                             "    3,977.25"};
    for (int c = 0; c < 4; ++c) {
      QCOMPARE(marks.blocks[0].spans[c].start, spans1[c][0]);
      QCOMPARE(marks.blocks[0].spans[c].end, spans1[c][1]);
      QCOMPARE(marks.blocks[1].spans[c].start, spans2[c][0]);
      QCOMPARE(marks.blocks[1].spans[c].end, spans2[c][1]);
      const QString text8 = view->document()->findBlockByNumber(7).text();
      QCOMPARE(text8.mid(spans1[c][0] - 1, spans1[c][1] - spans1[c][0] + 1).trimmed(),
               QString::fromLatin1(line8[c]).trimmed());
      const QString text22 = view->document()->findBlockByNumber(21).text();
      QCOMPARE(text22.mid(spans2[c][0] - 1, spans2[c][1] - spans2[c][0] + 1),
               QString::fromLatin1(line22[c]));
    }

    // The grid: titles in rows 1-2 and 10, Table 1 in rows 3-9, Table 2 in rows 11-14.
    auto* grid = pane.findChild<QTableWidget*>(QStringLiteral("grdSheet1"));
    QVERIFY(grid != nullptr);
    QCOMPARE(grid->rowCount(), 14);
    QCOMPARE(grid->columnCount(), 4);
    const struct {
      int row, column;
      const char* text;
      bool number;
    } cells[] = {{1, 1, "ACME WIDGETS LTD - TRIAL BALANCE BY DEPARTMENT", false},
                 {3, 1, "1000", true},
                 {3, 2, "Cash at bank                  ", false},
                 {3, 3, "12,450.00", true},
                 {5, 4, "4,120.10", true},
                 {10, 1, "PAYROLL", false},
                 {11, 1, "E-0017  ", false},
                 {12, 3, "152.5", true},
                 {14, 4, "1,920.00", true}};
    for (const auto& cell : cells) {
      const QTableWidgetItem* item = grid->item(cell.row - 1, cell.column - 1);
      QVERIFY2(item != nullptr, cell.text);
      QCOMPARE(item->text(), QString::fromLatin1(cell.text));
      QCOMPARE(bool(item->textAlignment() & Qt::AlignRight), cell.number);
    }
    QVERIFY(grid->item(3 - 1, 4 - 1) == nullptr);  // no credit on the cash line
    QCOMPARE(pane.findChild<QTableWidget*>(QStringLiteral("grdSheet2"))->rowCount(), 0);

    // No messages; the one line saying so leads nowhere.
    auto* list = pane.findChild<QListWidget*>(QStringLiteral("lstPreviewMessages"));
    QCOMPARE(list->count(), 1);
    QCOMPARE(list->item(0)->data(Qt::UserRole).toInt(), 0);
    QVERIFY(pane.findChild<QLabel*>(QStringLiteral("lblPreviewTables"))
                ->text()
                .contains(QStringLiteral("lines 8&ndash;14 (keys on lines 6 and 16)")));

    // Every control carries its name as its accessible name.
    for (const char* name : {"cmdSampleReport", "lblSampleReport", "lblPreviewTables",
                             "lblPreviewNote", "txtReportPreview", "picRuler", "picLineNumbers",
                             "tabPreviewSheets", "grdSheet1", "grdSheet2", "lstPreviewMessages"}) {
      auto* widget = pane.findChild<QWidget*>(QString::fromLatin1(name));
      QVERIFY2(widget != nullptr, name);
      QCOMPARE(widget->accessibleName(), QString::fromLatin1(name));
    }
    QCOMPARE(pane.findChild<QPushButton*>(QStringLiteral("cmdSampleReport"))->text(),
             QStringLiteral("Sample report..."));
  }

  void MissingKeyTextIsListedUnderItsSectionAndLeadsToItsLine() {
    PreviewPane pane;
    pane.resize(900, 700);
    pane.show();
    QVERIFY(QTest::qWaitForWindowExposed(&pane));
    QSignalSpy lines(&pane, &PreviewPane::recipeLineRequested);
    pane.SetSampleReport(kExamples + QStringLiteral("trial-balance.txt"));
    pane.SetRecipeText(ShortRecipeWithTypo(), QStringLiteral("/nowhere/unsaved.rcp"));
    pane.Refresh();

    auto* list = pane.findChild<QListWidget*>(QStringLiteral("lstPreviewMessages"));
    QCOMPARE(list->count(), 1);
    QListWidgetItem* item = list->item(0);
    QCOMPARE(item->text(), QStringLiteral("[Table 2] Error in Table specs: Can not find "
                                          "ReadStartLine: Employee Nmae"));
    // Table 1 still converted; the pass ended at Table 2.
    QCOMPARE(pane.findChild<QTableWidget*>(QStringLiteral("grdSheet1"))->rowCount(), 7);
    QVERIFY(pane.findChild<QLabel*>(QStringLiteral("lblPreviewTables"))
                ->text()
                .contains(QStringLiteral("<b>Table 2</b>: <span style='color:#b00000'>top key "
                                         "text not found")));

    list->scrollToItem(item);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(item).center());
    QCOMPARE(lines.count(), 1);
    // Line 15 of the recipe text is "ReadStartLine=Employee Nmae".
    QCOMPARE(lines.takeFirst().at(0).toInt(), 15);
    QCOMPARE(ShortRecipeWithTypo().split(QStringLiteral("\r\n")).at(14),
             QStringLiteral("ReadStartLine=Employee Nmae"));

    // An emptied recipe clears the list and the grid instead of reporting a missing definition.
    pane.SetRecipeText(QStringLiteral("  \r\n"), QString());
    pane.Refresh();
    QCOMPARE(list->count(), 0);
    QCOMPARE(pane.findChild<QTableWidget*>(QStringLiteral("grdSheet1"))->rowCount(), 0);
    QVERIFY(pane.findChild<QLabel*>(QStringLiteral("lblPreviewNote"))
                ->text()
                .contains(QStringLiteral("The recipe is empty")));
  }
};

QTEST_MAIN(PreviewPaneTest)
#include "preview_pane_test.moc"
