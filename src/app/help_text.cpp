#include "app/help_text.h"

#include "help_topics.inc"  // generated from docs/help: kHelpTopic4Html

namespace kroveld {

std::string PlainTextOfHelpPage(std::string_view html) {
  const auto begin = html.find("<pre>");
  if (begin == std::string_view::npos) return {};
  const auto end = html.find("</pre>", begin);
  const std::string_view body = html.substr(
      begin + 5, end == std::string_view::npos ? std::string_view::npos : end - begin - 5);
  std::string text;
  text.reserve(body.size());
  constexpr std::pair<std::string_view, char> kEntities[] = {
      {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&amp;", '&'}};
  for (std::size_t i = 0; i < body.size(); ++i) {
    bool decoded = false;
    if (body[i] == '&') {
      for (const auto& [entity, ch] : kEntities) {
        if (body.substr(i, entity.size()) == entity) {
          text.push_back(ch);
          i += entity.size() - 1;
          decoded = true;
          break;
        }
      }
    }
    if (!decoded) text.push_back(body[i]);
  }
  return text;
}

const std::string& CommandLineHelpText() {
  static const std::string text = PlainTextOfHelpPage(kHelpTopic4Html);
  return text;
}

}  // namespace kroveld
