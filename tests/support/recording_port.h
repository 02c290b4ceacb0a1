// A user-interface port for tests: keeps every message with its icon and title, every status
// text and caption, answers questions from a script the test gives it, and fails the test on a
// question it was not told to expect.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "util/ui_port.h"

namespace kroveld::testing {

struct RecordedMessage {
  std::string text;
  Icon icon;
  std::string title;
  bool note = false;
};

class RecordingPort : public UiPort {
 public:
  RecordingPort() { SetAlwaysDue(true); }
  ~RecordingPort() override;

  void ShowMessage(std::string_view text, Icon icon, std::string_view title) override;
  void ShowNote(std::string_view text) override;
  bool Ask(std::string_view text, Icon icon, std::string_view title) override;
  void Status(int panel, std::string_view text) override;
  std::string Caption() const override { return caption_; }
  void SetCaption(std::string_view text) override;
  void Beep() override { ++beeps; }
  void ProcessEvents() override;

  // The next question must be `text`; it is answered `answer`.
  void ExpectQuestion(std::string text, bool answer);
  // Called on every ProcessEvents (for example to request a stop after some rows).
  std::function<void()> onProcessEvents;

  std::vector<RecordedMessage> messages;
  std::vector<std::string> questions;
  std::vector<std::pair<int, std::string>> statuses;
  std::vector<std::string> captions;
  int beeps = 0;
  int events = 0;

  // Message texts only, in order.
  std::vector<std::string> Texts() const;
  void Clear();

 private:
  std::deque<std::pair<std::string, bool>> script_;
  std::string caption_ = "Kroveld - Document To CSV/XLS Conversion";
};

}  // namespace kroveld::testing
