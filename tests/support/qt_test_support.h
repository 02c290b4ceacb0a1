// Helpers of the Qt window tests: what the user-interface port was asked to show, small whole-file
// reads and writes, and a run of the real binary.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTest>
#include <string>

#include "util/ui_port.h"

namespace kroveld::testing {

// One message box or question the port was asked to show.
struct Said {
  std::string text;
  Icon icon;
  bool question;
};

// The file's bytes; empty when it cannot be read.
inline QByteArray Read(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void Write(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  QVERIFY(file.open(QIODevice::WriteOnly));
  file.write(bytes);
}

// Runs the kroveld binary with its application folder at `home`; its exit code, or -1 when it did
// not end by itself within a minute.
inline int RunKroveld(const QString& home, const QStringList& args) {
  QProcess cli;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(QStringLiteral("KROVELD_HOME"), home);
  cli.setProcessEnvironment(env);
  cli.start(QStringLiteral(KROVELD_BINARY), args);
  const bool ended = cli.waitForFinished(60000) && cli.exitStatus() == QProcess::NormalExit;
  return ended ? cli.exitCode() : -1;
}

}  // namespace kroveld::testing
