// The user-interface port of command-line runs: every message is one line on stderr prefixed by
// its icon (the first one met while a file of a batch is converted preceded by a line naming that
// file), questions get the answers an unattended run needs, and a progress line is drawn on
// stderr only when it is a terminal. Remembers whether anything was shown, for the exit status.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

#include "util/ui_port.h"

namespace kroveld {

class ConsolePort final : public UiPort {
 public:
  // `out` is where lines go (stderr in the program); progress is drawn when `progress` is true.
  explicit ConsolePort(std::FILE* out = stderr, bool progress = false);
  ~ConsolePort() override;

  void ShowMessage(std::string_view text, Icon icon, std::string_view title) override;
  void ShowNote(std::string_view text) override;
  bool Ask(std::string_view text, Icon icon, std::string_view title) override;
  void Status(int panel, std::string_view text) override;
  std::string Caption() const override { return caption_; }
  void SetCaption(std::string_view text) override { caption_ = std::string(text); }
  void Beep() override {}
  // Redraws the progress line now and then, so its elapsed seconds move during long phases.
  void ProcessEvents() override;
  // The progress line is drawn from these numbers once the run gives them.
  void Progress(const RunProgress& where) override;

  // True once a message other than a note (or a question) has been shown.
  bool MessageShown() const { return MessagesShown() > 0; }
  // True once the terminate question has been asked (and answered Yes).
  bool TerminateConfirmed() const { return terminate_confirmed_; }
  // File `number` of `count` of a batch is being converted: the first line shown while it is
  // converted is preceded by a line that names it.
  void BeginFile(std::string_view file, std::size_t number, std::size_t count);
  // The batch is over: later lines belong to no file.
  void EndFile() { file_heading_.clear(); }
  // A line of information asked for (the verbose summary): shown, never counted as a message.
  void Summary(std::string_view text);
  // Removes the progress line, if one is drawn.
  void EraseProgress();

  // "kroveld: error: " and the like for an icon.
  static const char* Prefix(Icon icon);
  // The text on one line: every run of CR and LF becomes one blank.
  static std::string OneLine(std::string_view text);

 private:
  void WriteLine(const char* prefix, std::string_view text);
  void DrawProgress(bool force);
  void LineFromNumbers();

  std::FILE* out_;
  bool progress_;
  bool drawn_ = false;
  bool terminate_confirmed_ = false;
  std::string caption_ = "Kroveld - Document To CSV/XLS Conversion";
  std::string panel2_;
  bool numbers_ = false;  // the run has given its numbers: the line is drawn from them
  RunProgress where_;
  std::string phase_;  // where_.phase, kept
  std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
  std::string file_;    // "file   [i of n files]"
  std::string detail_;  // the other panel-3 texts (table, row)
  std::string line_;
  std::string file_heading_;  // shown before the next line, then forgotten
  std::chrono::steady_clock::time_point last_draw_{};
};

}  // namespace kroveld
