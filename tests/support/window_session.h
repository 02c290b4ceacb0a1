// A start of the main window offscreen in a fresh application folder, as the window tests use it:
// every box and question goes to `said`, every question is answered Yes.
#pragma once

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QTemporaryDir>
#include <memory>
#include <vector>

#include "app/settings.h"
#include "app/startup.h"
#include "app/window/main_frame.h"
#include "app/window/main_window.h"
#include "app/window/qt_port.h"
#include "engine/context.h"
#include "support/qt_test_support.h"

namespace kroveld::testing {

struct Session {
  QTemporaryDir dir;
  QtPort port;
  std::vector<Said> said;
  std::unique_ptr<Context> ctx;
  std::unique_ptr<Settings> settings;
  std::unique_ptr<MainFrame> frame;

  // `configExtra` is appended to the config.ini the start writes, before the window reads it.
  explicit Session(const QByteArray& configExtra = {}) {
    port.SetAnswerer([this](const std::string& text, Icon icon, bool question) {
      said.push_back({text, icon, question});
      return question;
    });
    ctx = std::make_unique<Context>(port, dir.path().toStdString());
    settings = std::make_unique<Settings>(PrepareApplicationFolder(*ctx));
    if (!configExtra.isEmpty()) Write(Config(), Read(Config()) + configExtra);
    frame = std::make_unique<MainFrame>(*ctx, port, *settings);
    frame->ApplyPlacement(FramePlacement::Read(settings->Path()));
    Main()->Load();
    frame->show();
  }
  QString Config() const { return dir.filePath(QStringLiteral("config.ini")); }
  MainWindow* Main() const { return frame->Main(); }
  template <class W>
  W* Find(const char* name) const {
    W* widget = frame->findChild<W*>(QString::fromLatin1(name));
    if (widget == nullptr) qWarning("no control %s", name);
    return widget;
  }
  void Type(const char* field, const QString& text) const {
    Find<QComboBox>(field)->setEditText(text);
  }
  void Press(const char* key) const { Find<QAction>(key)->trigger(); }
  QString Panel3() const { return Find<QLabel>("sbCurrentFilePanel1")->text(); }
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const Said& s : said) texts.push_back(s.text);
    return texts;
  }
};

}  // namespace kroveld::testing
