#include "jobs/preview/collecting_port.h"

namespace kroveld {

void CollectingPort::Message(std::string_view text, Icon icon, std::string_view) {
  messages_.push_back(PreviewMessage{std::string(text), icon, false, section_, 0});
}

void CollectingPort::Note(std::string_view text) {
  messages_.push_back(PreviewMessage{std::string(text), Icon::Information, true, section_, 0});
}

bool CollectingPort::AskYesNo(std::string_view text, Icon icon, std::string_view) {
  messages_.push_back(PreviewMessage{std::string(text), icon, false, section_, 0});
  return true;
}

}  // namespace kroveld
