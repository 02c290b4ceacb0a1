#include "app/help/help_window.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHBoxLayout>
#include <QStandardPaths>
#include <QTextBrowser>
#include <QToolButton>
#include <QVBoxLayout>

// The pages live in a static library, whose resources the linker keeps only when asked for.
static void LoadHelpResources() {
  static const bool loaded = [] {
    Q_INIT_RESOURCE(help);
    return true;
  }();
  (void)loaded;
}

namespace kroveld {

namespace {

constexpr const char* kResourceFolder = ":/help";

QString PageName(int topic) {
  LoadHelpResources();
  if (topic == kHelpHowToUse) return QStringLiteral("how-to-use.html");
  const QString name = QStringLiteral("topic-%1.html").arg(topic);
  if (topic != kHelpContents && QFile::exists(QString(kResourceFolder) + "/" + name)) return name;
  return QStringLiteral("index.html");
}

void Name(QWidget* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  widget->setAccessibleName(QString::fromLatin1(name));
}

}  // namespace

QUrl HelpPageUrl(int topic) {
  return QUrl(QStringLiteral("qrc:/help/") + PageName(topic));
}

QUrl HelpPageFileUrl(int topic) {
  const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
  if (cache.isEmpty()) return {};
  const QString folder = cache + "/kroveld/help-" + QStringLiteral(KROVELD_VERSION);
  if (!QDir().mkpath(folder)) return {};
  LoadHelpResources();
  QDirIterator pages(kResourceFolder, QDir::Files);
  while (pages.hasNext()) {
    const QString source = pages.next();
    const QString target = folder + "/" + pages.fileName();
    if (QFile::exists(target)) continue;
    if (!QFile::copy(source, target)) return {};
    // Resource files come out read-only; a later version's copy must be able to replace them.
    QFile::setPermissions(
        target, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
  }
  return QUrl::fromLocalFile(folder + "/" + PageName(topic));
}

HelpWindow::HelpWindow(QWidget* parent)
    : QDialog(parent),
      browser_(new QTextBrowser(this)),
      back_(new QToolButton(this)),
      forward_(new QToolButton(this)) {
  Name(this, "frmHelp");
  Name(browser_, "txtHelp");
  Name(back_, "cmdHelpBack");
  Name(forward_, "cmdHelpForward");
  auto* contents = new QToolButton(this);
  Name(contents, "cmdHelpContents");

  setWindowTitle(tr("Kroveld Help"));
  back_->setText(tr("< &Back"));
  forward_->setText(tr("&Forward >"));
  contents->setText(tr("&Contents"));
  back_->setEnabled(false);
  forward_->setEnabled(false);
  browser_->setOpenLinks(true);
  browser_->setOpenExternalLinks(true);

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(back_);
  buttons->addWidget(forward_);
  buttons->addWidget(contents);
  buttons->addStretch();
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(buttons);
  layout->addWidget(browser_);
  resize(760, 620);

  connect(back_, &QToolButton::clicked, browser_, &QTextBrowser::backward);
  connect(forward_, &QToolButton::clicked, browser_, &QTextBrowser::forward);
  connect(contents, &QToolButton::clicked, this, [this] { ShowTopic(kHelpContents); });
  connect(browser_, &QTextBrowser::backwardAvailable, back_, &QToolButton::setEnabled);
  connect(browser_, &QTextBrowser::forwardAvailable, forward_, &QToolButton::setEnabled);
  connect(browser_, &QTextBrowser::sourceChanged, this,
          [this] { setWindowTitle(browser_->documentTitle()); });
}

void HelpWindow::ShowTopic(int topic) {
  browser_->setSource(HelpPageUrl(topic));
  show();
  raise();
  activateWindow();
}

}  // namespace kroveld
