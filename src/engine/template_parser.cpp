#include "engine/template_parser.h"

#include "util/collections.h"

namespace kroveld {

bool ParseTemplateLine(UiPort& ui, std::string_view tmpl, std::vector<int>& starts,
                       std::vector<int>& ends, std::vector<std::string>& operators) {
  CollectionClear(starts);
  CollectionClear(ends);
  CollectionClear(operators);

  const int length = static_cast<int>(tmpl.size());
  bool in_field = false;

  for (int p = 1; p <= length; ++p) {
    const char c = tmpl[static_cast<std::size_t>(p - 1)];
    const bool blank = c == ' ';

    if (in_field) {
      if (blank) {
        in_field = false;
        ends.push_back(p);  // the blank that closes the field
      } else if (p == length) {
        ends.push_back(p);  // the field runs to the end: its last character
      }
    } else if (!blank) {
      starts.push_back(p);
      in_field = true;
      operators.emplace_back(c == '+' ? "Sum" : "");
    }
  }

  const std::size_t s = starts.size();
  const std::size_t e = ends.size();
  if (s == e) return s >= 1;
  if (s == e + 1) {
    // The last field began on the last position: nothing closed it inside the loop.
    ends.push_back(length);
    return false;
  }
  ui.Message("unexpected error in template analyzer!", Icon::Critical);
  CollectionClear(starts);
  CollectionClear(ends);
  CollectionClear(operators);
  return false;
}

}  // namespace kroveld
