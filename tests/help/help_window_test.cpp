// The help window over the built-in pages: every topic the program opens has its page, every
// link between pages lands on a page, history works, and the browser copy matches the pages.
#include <QDirIterator>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QToolButton>

#include "app/help/help_window.h"
#include "support/qt_test_support.h"

using kroveld::HelpPageUrl;
using kroveld::HelpWindow;
using kroveld::testing::Read;

namespace {

QString ResourcePath(const QUrl& url) {
  return QStringLiteral(":") + url.path();
}

}  // namespace

class HelpWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void TopicsTheProgramOpensHaveTheirOwnPages_data() {
    QTest::addColumn<int>("topic");
    QTest::addColumn<QString>("title");
    QTest::newRow("command line") << 4 << "Using the Command Line";
    QTest::newRow("mark-up") << 12 << "Step 2B: Marking Up a Report";
    QTest::newRow("recipe file") << 13 << "Step 2B: The Recipe File";
    QTest::newRow("input file") << 14 << "Step 1: The Input File";
    QTest::newRow("conversion method") << 15 << "Step 2: The Conversion Method";
    QTest::newRow("output file") << 16 << "Step 3: The Output File";
    QTest::newRow("contents") << kroveld::kHelpContents << "Contents";
    QTest::newRow("how to use") << kroveld::kHelpHowToUse << "How to use Kroveld";
    QTest::newRow("a topic without a page") << 99 << "Contents";
  }
  void TopicsTheProgramOpensHaveTheirOwnPages() {
    QFETCH(int, topic);
    QFETCH(QString, title);
    HelpWindow window;
    window.ShowTopic(topic);
    QCOMPARE(window.Browser()->documentTitle(), "Kroveld Help - " + title);
    QCOMPARE(window.windowTitle(), "Kroveld Help - " + title);
  }

  void EveryLinkLandsOnAPage() {
    const QRegularExpression href(QStringLiteral("(?:href|src)=\"([^\"#]+)"));
    int links = 0;
    QDirIterator pages(QStringLiteral(":/help"), {QStringLiteral("*.html")}, QDir::Files);
    while (pages.hasNext()) {
      const QString page = pages.next();
      const QString html = QString::fromUtf8(Read(page));
      QVERIFY2(!html.isEmpty(), qPrintable(page));
      for (auto match = href.globalMatch(html); match.hasNext();) {
        const QString target = match.next().captured(1);
        if (target.startsWith(QStringLiteral("http"))) continue;
        QVERIFY2(QFile::exists(":/help/" + target), qPrintable(page + " -> " + target));
        ++links;
      }
    }
    QVERIFY(links > 50);
  }

  void BackAndForwardFollowTheLinksTaken() {
    HelpWindow window;
    auto* back = window.findChild<QToolButton*>(QStringLiteral("cmdHelpBack"));
    auto* forward = window.findChild<QToolButton*>(QStringLiteral("cmdHelpForward"));
    QVERIFY(back && forward);
    QCOMPARE(back->accessibleName(), QStringLiteral("cmdHelpBack"));
    window.ShowTopic(15);
    QVERIFY(!back->isEnabled());
    window.Browser()->setSource(window.Browser()->source().resolved(QUrl("topic-12.html")));
    QCOMPARE(window.Browser()->source(), HelpPageUrl(12));
    QVERIFY(back->isEnabled());
    back->click();
    QCOMPARE(window.Browser()->source(), HelpPageUrl(15));
    QVERIFY(forward->isEnabled());
    forward->click();
    QCOMPARE(window.Browser()->source(), HelpPageUrl(12));
    window.findChild<QToolButton*>(QStringLiteral("cmdHelpContents"))->click();
    QCOMPARE(window.Browser()->source(), HelpPageUrl(kroveld::kHelpContents));
  }

  void TheBrowserCopyHoldsEveryPage() {
    QTemporaryDir cache;
    qputenv("XDG_CACHE_HOME", cache.path().toUtf8());
    const QUrl url = kroveld::HelpPageFileUrl(13);
    QVERIFY(url.isLocalFile());
    QCOMPARE(Read(url.toLocalFile()), Read(ResourcePath(HelpPageUrl(13))));
    const QDir folder = QFileInfo(url.toLocalFile()).dir();
    int copied = 0;
    QDirIterator pages(QStringLiteral(":/help"), QDir::Files);
    while (pages.hasNext()) {
      pages.next();
      QVERIFY2(folder.exists(pages.fileName()), qPrintable(pages.fileName()));
      ++copied;
    }
    QVERIFY(copied >= 9);
    // A second call finds the copy in place and still answers.
    QCOMPARE(kroveld::HelpPageFileUrl(kroveld::kHelpContents).fileName(),
             QStringLiteral("index.html"));
  }
};

QTEST_MAIN(HelpWindowTest)
#include "help_window_test.moc"
