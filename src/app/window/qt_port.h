// The user-interface port of the window: modal message boxes and Yes/No questions with the
// system's icons and titles, status texts in the frame's status bars, the frame's caption, the
// beep, and yields to the Qt event loop. Tests give it an answerer so that no box is left waiting.
#pragma once

#include <QString>
#include <functional>
#include <string>

#include "util/ui_port.h"

class QLabel;
class QProgressBar;
class QWidget;

namespace kroveld {

inline constexpr const char* kApplicationTitle = "Kroveld";

class QtPort final : public UiPort {
 public:
  // Where the port writes: the window that owns its boxes, the status panels 1 to 3 (panel 3 is
  // the file in work), an optional progress bar, and the widget whose caption is the frame's.
  struct Targets {
    QWidget* owner = nullptr;
    QLabel* panels[3] = {nullptr, nullptr, nullptr};
    QProgressBar* progress = nullptr;
  };
  // What a test answers instead of a box: (text, icon, question) → Yes for a question.
  using Answerer = std::function<bool(const std::string& text, Icon icon, bool question)>;

  void SetTargets(const Targets& targets) { targets_ = targets; }
  void SetAnswerer(Answerer answerer) { answerer_ = std::move(answerer); }
  // Told every status text after it is shown (tests act on a conversion's progress with it).
  void SetStatusObserver(std::function<void(int panel, const std::string& text)> observer) {
    status_observer_ = std::move(observer);
  }

  void ShowMessage(std::string_view text, Icon icon, std::string_view title) override;
  bool Ask(std::string_view text, Icon icon, std::string_view title) override;
  void Status(int panel, std::string_view text) override;
  std::string Caption() const override;
  void SetCaption(std::string_view text) override;
  void Beep() override;
  void ProcessEvents() override;

  // The longest time between two ProcessEvents calls since the last reset, in milliseconds: how
  // long the window could not react while a conversion ran.
  double LongestGapMs() const { return longest_gap_ms_; }
  void ResetGapMeter();

 private:
  Targets targets_;
  Answerer answerer_;
  std::function<void(int, const std::string&)> status_observer_;
  std::int64_t last_events_ns_ = 0;
  double longest_gap_ms_ = 0;
};

// Finds "row k of n" or "[i of n files]" at the end of a status text: the numbers the progress
// bar shows. False when the text holds neither.
bool ProgressOfStatus(std::string_view text, long long& done, long long& total);

}  // namespace kroveld
