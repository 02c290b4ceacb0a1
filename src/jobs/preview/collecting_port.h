// A user-interface port that shows nothing: it keeps every message with its icon and the section
// being worked on when it came, answers questions as an unattended run does (Yes) and ignores
// status texts and captions. The preview runs the engine through it.
#pragma once

#include <string>
#include <vector>

#include "jobs/preview/preview_result.h"
#include "util/ui_port.h"

namespace kroveld {

class CollectingPort final : public UiPort {
 public:
  void ShowMessage(std::string_view text, Icon icon, std::string_view title) override;
  void ShowNote(std::string_view text) override;
  bool Ask(std::string_view text, Icon icon, std::string_view title) override;
  void Status(int, std::string_view) override {}
  std::string Caption() const override { return caption_; }
  void SetCaption(std::string_view text) override { caption_ = std::string(text); }
  void Beep() override {}
  void ProcessEvents() override {}

  // The section that messages from now on belong to ("" for the recipe as a whole).
  void SetSection(std::string section) { section_ = std::move(section); }

  std::vector<PreviewMessage>& Messages() { return messages_; }

 private:
  std::vector<PreviewMessage> messages_;
  std::string section_;
  std::string caption_;
};

}  // namespace kroveld
