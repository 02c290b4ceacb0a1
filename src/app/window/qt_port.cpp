#include "app/window/qt_port.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <charconv>
#include <chrono>

namespace kroveld {

namespace {

QString Q(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QMessageBox::Icon BoxIcon(Icon icon) {
  switch (icon) {
    case Icon::Critical:
      return QMessageBox::Critical;
    case Icon::Question:
      return QMessageBox::Question;
    case Icon::Exclamation:
      return QMessageBox::Warning;
    case Icon::Information:
      return QMessageBox::Information;
    case Icon::None:
      break;
  }
  return QMessageBox::NoIcon;
}

std::int64_t NowNs() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

bool ParseNumber(std::string_view text, long long& value) {
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return ec == std::errc() && end == text.data() + text.size();
}

// "k of n" at the end of `text` (after `lead`), `tail` following n.
bool NumbersBefore(std::string_view text, std::string_view lead, std::string_view tail,
                   long long& done, long long& total) {
  if (!text.ends_with(tail)) return false;
  text.remove_suffix(tail.size());
  const auto at = text.rfind(lead);
  if (at == std::string_view::npos) return false;
  const std::string_view numbers = text.substr(at + lead.size());
  const auto of = numbers.find(" of ");
  return of != std::string_view::npos && ParseNumber(numbers.substr(0, of), done) &&
         ParseNumber(numbers.substr(of + 4), total);
}

}  // namespace

bool ProgressOfStatus(std::string_view text, long long& done, long long& total) {
  return NumbersBefore(text, " row ", "", done, total) ||
         NumbersBefore(text, "[", kBatchStatusSuffix, done, total);
}

void QtPort::ShowMessage(std::string_view text, Icon icon, std::string_view title) {
  if (answerer_) {
    answerer_(std::string(text), icon, false);
    return;
  }
  QMessageBox box(BoxIcon(icon), title.empty() ? QString(kApplicationTitle) : Q(title), Q(text),
                  QMessageBox::Ok, targets_.owner);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse);
  box.exec();
}

bool QtPort::Ask(std::string_view text, Icon icon, std::string_view title) {
  if (answerer_) return answerer_(std::string(text), icon, true);
  QMessageBox box(BoxIcon(icon), title.empty() ? QString(kApplicationTitle) : Q(title), Q(text),
                  QMessageBox::Yes | QMessageBox::No, targets_.owner);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse);
  return box.exec() == QMessageBox::Yes;
}

void QtPort::Status(int panel, std::string_view text) {
  if (panel < 1 || panel > 3 || targets_.panels[panel - 1] == nullptr) return;
  targets_.panels[panel - 1]->setText(Q(text));
  if (status_observer_) status_observer_(panel, std::string(text));
  if (panel != 3 || targets_.progress == nullptr) return;
  long long done = 0, total = 0;
  if (ProgressOfStatus(text, done, total) && total > 0 && done <= total) {
    // QProgressBar counts in int; a table of more rows is shown in thousandths.
    targets_.progress->setRange(0, 1000);
    targets_.progress->setValue(static_cast<int>(done * 1000 / total));
    targets_.progress->setVisible(true);
  } else {
    targets_.progress->setVisible(false);
  }
}

std::string QtPort::Caption() const {
  return targets_.owner ? targets_.owner->window()->windowTitle().toStdString() : std::string();
}

void QtPort::SetCaption(std::string_view text) {
  if (targets_.owner) targets_.owner->window()->setWindowTitle(Q(text));
}

void QtPort::Beep() {
  QApplication::beep();
}

void QtPort::ProcessEvents() {
  const std::int64_t now = NowNs();
  if (last_events_ns_ != 0) {
    longest_gap_ms_ = std::max(longest_gap_ms_, static_cast<double>(now - last_events_ns_) / 1e6);
  }
  last_events_ns_ = now;
  QCoreApplication::processEvents();
}

void QtPort::ResetGapMeter() {
  last_events_ns_ = 0;
  longest_gap_ms_ = 0;
}

}  // namespace kroveld
