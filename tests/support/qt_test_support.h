// Helpers of the Qt window tests: what the user-interface port was asked to show, and small
// whole-file reads and writes.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
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

}  // namespace kroveld::testing
