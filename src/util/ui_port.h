// The user-interface port: every message box, question, status text, caption change, beep and
// "yield to the user interface" of the core goes through this one interface. The Qt window, the
// console front end and the recording port of the tests implement it. The core never prints.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

// Texts that the core shows and a front end recognises, so both sides use the one constant.
// The question a stop request asks; an unattended front end answers it Yes.
inline constexpr std::string_view kTerminateQuestion = "Do you want to terminate the process?";
// The end of the panel-3 status naming the file a batch is converting: "name   [i of n files]".
inline constexpr std::string_view kBatchStatusSuffix = " files]";

// The icon of a message box; it also tells the console front end how to prefix the line.
enum class Icon { None, Critical, Question, Exclamation, Information };

// Where a run stands, in numbers: the file of the batch, the table and its row, and the phase
// ("reading" while key texts are searched, "writing" rows, "saving" a workbook). A front end may
// draw its progress from these rather than from the status texts.
struct RunProgress {
  std::size_t file = 0;  // 1-based; 0 before the first file
  std::size_t files = 0;
  int table = 0;
  std::int64_t row = 0;
  std::int64_t rows = 0;
  std::string_view phase;
};

class UiPort {
 public:
  virtual ~UiPort() = default;

  // A modal message box. An empty title means the application's default title.
  void Message(std::string_view text, Icon icon = Icon::None, std::string_view title = {}) {
    Settle();
    ShowMessage(text, icon, title);
  }
  // An informational note that is not a failure (the tab-characters note): shown like a message
  // with the information icon, but a front end does not count it against the run's exit status.
  void Note(std::string_view text) {
    Settle();
    ShowNote(text);
  }
  // A Yes/No question; true means Yes.
  bool AskYesNo(std::string_view text, Icon icon = Icon::Question, std::string_view title = {}) {
    Settle();
    return Ask(text, icon, title);
  }
  // Something to be shown before whatever the port shows next, but not known yet (the tab note
  // while a second thread still looks for tabs, differences a second thread still looks for):
  // `settle` runs once, at the next message, note or question, or at Settle(), whichever comes
  // first. What several owners hold back runs in the order it was held. An owner that goes first
  // calls Settle() or Withdraw().
  void ShowFirst(const void* owner, std::function<void()> settle) {
    held_.push_back(Held{owner, std::move(settle)});
  }
  void Withdraw(const void* owner) {
    std::erase_if(held_, [owner](const Held& h) { return h.owner == owner; });
  }
  void Settle() {
    if (held_.empty()) return;
    // What runs here may show something itself: by then nothing is held.
    const std::vector<Held> held = std::move(held_);
    held_.clear();
    for (const Held& h : held) h.settle();
  }
  // Status-bar panel text (panels 1..3 of the main frame; 2 is the elapsed time, 3 the file and
  // row).
  virtual void Status(int panel, std::string_view text) = 0;
  // The main frame's caption: read so it can be put back, and replaced.
  virtual std::string Caption() const = 0;
  virtual void SetCaption(std::string_view text) = 0;
  virtual void Beep() = 0;
  // Let the user interface process pending events (the place where a Pause press is seen).
  virtual void ProcessEvents() = 0;
  // Where the run stands; called where status texts are (so at most about 30 times a second).
  virtual void Progress(const RunProgress& /*where*/) {}

  // Cheap throttle for per-row status and event processing: true at most about 30 times a second.
  // Callers on hot paths do `if (ui.Due()) { ui.ProcessEvents(); ui.Status(...); }`.
  bool Due() {
    if ((++calls_ & 255u) != 1u && !always_due_) return false;
    const auto now = std::chrono::steady_clock::now();
    if (!always_due_ && now - last_due_ < std::chrono::milliseconds(33)) return false;
    last_due_ = now;
    return true;
  }
  // Tests that want to see every status text switch the throttle off.
  void SetAlwaysDue(bool on) { always_due_ = on; }

  // Messages shown so far that count against a run (notes do not), for the front ends that tally
  // them: the console port counts; a port that does not keeps 0.
  std::uint64_t MessagesShown() const { return messages_shown_; }

 protected:
  // What a front end implements: the box, the note and the question themselves.
  virtual void ShowMessage(std::string_view text, Icon icon, std::string_view title) = 0;
  virtual void ShowNote(std::string_view text) { ShowMessage(text, Icon::Information, {}); }
  virtual bool Ask(std::string_view text, Icon icon, std::string_view title) = 0;

  void CountMessage() { ++messages_shown_; }

 private:
  struct Held {
    const void* owner;
    std::function<void()> settle;
  };
  std::vector<Held> held_;
  std::uint64_t messages_shown_ = 0;
  std::uint32_t calls_ = 0;
  bool always_due_ = false;
  std::chrono::steady_clock::time_point last_due_{};
};

}  // namespace kroveld
