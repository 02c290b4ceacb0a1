// The frame window frmMainMDI: holds the main window, shows its menus and toolbar as its own,
// carries the status bars sbMain and sbCurrentFile, and keeps its placement in config.ini in
// twips. Closing it writes the placement, then unloads the main window, then ends the program.
#pragma once

#include <QMainWindow>
#include <QRect>

#include "app/settings.h"

class QLabel;
class QProgressBar;
class QStatusBar;

namespace kroveld {

class Context;
class MainWindow;
class QtPort;

inline constexpr const char* kFrameCaption = "Kroveld - Document To CSV/XLS Conversion";

class MainFrame : public QMainWindow {
  Q_OBJECT
 public:
  MainFrame(Context& ctx, QtPort& port, Settings& settings);

  MainWindow* Main() const { return main_; }
  // Reads [frmMainMDI] and applies it: size and position in twips at the screen's logical DPI,
  // moved back onto the primary screen when it would lie off every screen; then the state.
  void ApplyPlacement(const FramePlacement& placement);
  FramePlacement CurrentPlacement() const;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  Settings& settings_;
  MainWindow* main_;
  // The placement read from config.ini and where it put the frame: a frame that was not moved or
  // resized writes back the twips it read, not a rounded-off copy.
  FramePlacement applied_;
  QRect applied_rect_;
};

}  // namespace kroveld
