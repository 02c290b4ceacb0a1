#include "jobs/preview/collecting_port.h"

namespace kroveld {

void CollectingPort::ShowMessage(std::string_view text, Icon icon, std::string_view) {
  messages_.push_back(PreviewMessage{std::string(text), icon, false, section_, 0});
}

void CollectingPort::ShowNote(std::string_view text) {
  messages_.push_back(PreviewMessage{std::string(text), Icon::Information, true, section_, 0});
}

bool CollectingPort::Ask(std::string_view text, Icon icon, std::string_view) {
  messages_.push_back(PreviewMessage{std::string(text), icon, false, section_, 0});
  return true;
}

}  // namespace kroveld
