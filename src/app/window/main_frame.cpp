#include "app/window/main_frame.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QProgressBar>
#include <QScreen>
#include <QStatusBar>
#include <QVBoxLayout>
#include <cmath>

#include "app/window/main_window.h"
#include "app/window/qt_port.h"
#include "app/window/widget_names.h"

namespace kroveld {

namespace {

constexpr int kMinWidthTwips = 6030;
constexpr int kMinHeightTwips = 7000;

double Dpi() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen ? screen->logicalDotsPerInch() : 96.0;
}

int ToPixels(int twips) {
  return static_cast<int>(std::lround(twips * Dpi() / 1440.0));
}

int ToTwips(int pixels) {
  return static_cast<int>(std::lround(pixels * 1440.0 / Dpi()));
}

QLabel* Panel(QStatusBar* bar, int number, bool stretch) {
  auto* label =
      Named(new QLabel(bar), QStringLiteral("%1Panel%2").arg(bar->objectName()).arg(number));
  bar->addWidget(label, stretch ? 1 : 0);
  return label;
}

}  // namespace

MainFrame::MainFrame(Context& ctx, QtPort& port, Settings& settings)
    : settings_(settings), main_(new MainWindow(ctx, port, settings)) {
  Named(this, "frmMainMDI");
  setWindowTitle(QString::fromLatin1(kFrameCaption));
  setWindowIcon(QIcon::fromTheme(QStringLiteral("kroveld")));
  // The main window's menus and toolbar stand in for the frame's own, as a child's do in a
  // multiple-document frame.
  setMenuBar(main_->MenuBar());
  addToolBar(main_->ToolBar());

  auto* central = new QWidget(this);
  auto* layout = new QVBoxLayout(central);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(main_);
  auto* currentFile = Named(new QStatusBar(central), "sbCurrentFile");
  currentFile->setSizeGripEnabled(false);
  layout->addWidget(currentFile);
  setCentralWidget(central);
  auto* mainBar = Named(new QStatusBar(this), "sbMain");
  setStatusBar(mainBar);

  QtPort::Targets targets;
  targets.owner = this;
  targets.panels[0] = Panel(mainBar, 1, true);
  targets.panels[1] = Panel(mainBar, 2, false);
  targets.panels[2] = Panel(currentFile, 1, true);
  targets.progress = Named(new QProgressBar(currentFile), "pbProgress");
  targets.progress->setMaximumWidth(220);
  targets.progress->setTextVisible(false);
  targets.progress->setVisible(false);
  currentFile->addPermanentWidget(targets.progress);
  port.SetTargets(targets);

  // The system's smallest frame, or what the controls need at this font and DPI when that is more.
  setMinimumSize(
      QSize(ToPixels(kMinWidthTwips), ToPixels(kMinHeightTwips)).expandedTo(minimumSizeHint()));
}

void MainFrame::ApplyPlacement(const FramePlacement& p) {
  QRect rect(ToPixels(p.left), ToPixels(p.top), ToPixels(p.width), ToPixels(p.height));
  bool visible = false;
  for (const QScreen* screen : QGuiApplication::screens()) {
    visible = visible || screen->availableGeometry().intersects(rect);
  }
  if (!visible && QGuiApplication::primaryScreen()) {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    rect.moveTopLeft(area.topLeft() + QPoint(ToPixels(150), ToPixels(150)));
  }
  resize(rect.size().expandedTo(minimumSize()));
  move(rect.topLeft());
  applied_ = p;
  applied_rect_ = QRect(pos(), size());
  if (p.windowState == 2) setWindowState(Qt::WindowMaximized);
  if (p.windowState == 1) setWindowState(Qt::WindowMinimized);
}

FramePlacement MainFrame::CurrentPlacement() const {
  FramePlacement p;
  p.windowState = isMinimized() ? 1 : isMaximized() ? 2 : 0;
  if (QRect(pos(), size()) == applied_rect_) {
    p.left = applied_.left;
    p.top = applied_.top;
    p.width = applied_.width;
    p.height = applied_.height;
    return p;
  }
  const QRect g = frameGeometry();
  p.left = ToTwips(g.x());
  p.top = ToTwips(g.y());
  p.width = ToTwips(width());
  p.height = ToTwips(height());
  return p;
}

void MainFrame::closeEvent(QCloseEvent* event) {
  // The recipe editor asks about unsaved edits first; a cancelled save keeps everything open.
  if (!main_->CloseRecipeEditor()) {
    event->ignore();
    return;
  }
  CurrentPlacement().Write(settings_.Path());
  main_->Unload();
  event->accept();
}

}  // namespace kroveld
