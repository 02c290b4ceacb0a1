// Gives a control the system's name as its object name and as its accessible name, so tests,
// screen readers and outside tools find it by that name.
#pragma once

#include <QString>
#include <QWidget>

namespace kroveld {

template <class W>
W* Named(W* widget, const QString& name, const QString& description = {}) {
  widget->setObjectName(name);
  widget->setAccessibleName(name);
  if (!description.isEmpty()) widget->setAccessibleDescription(description);
  return widget;
}

}  // namespace kroveld
