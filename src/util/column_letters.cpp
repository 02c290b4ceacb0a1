// Column letters and numbers, with the routines' own messages.
#include "util/column_letters.h"

namespace kroveld {

std::string NumToAlpha(UiPort& ui, int n) {
  if (n < 1 || n > 26) {
    ui.Message("unexpected number code in utilities.NumToAlpha!", Icon::Critical);
    return {};
  }
  return std::string(1, static_cast<char>('A' + n - 1));
}

int AlphaToNum(UiPort& ui, std::string& letter) {
  for (char& c : letter) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  if (letter.size() != 1 || letter[0] < 'A' || letter[0] > 'Z') {
    ui.Message("unexpected Letter code in utilities.AlphaToNum!", Icon::Critical);
    return 0;
  }
  return letter[0] - 'A' + 1;
}

std::string NumToAlpha2(UiPort& ui, int n) {
  if (n < 1 || n > 702) {
    ui.Message("unexpected number code in xl.NumToAlpha2!", Icon::Critical);
    return {};
  }
  if (n <= 26) return NumToAlpha(ui, n);
  const int rest = n % 26;
  return NumToAlpha(ui, (n - 1) / 26) + NumToAlpha(ui, rest == 0 ? 26 : rest);
}

int AlphaToNum2(UiPort& ui, std::string_view letters) {
  if (letters.empty() || letters.size() > 2) {
    ui.Message("unexpected letter code in xl.AlphaToNum2!", Icon::Critical);
    return 0;
  }
  std::string first(letters.substr(0, 1));
  if (letters.size() == 1) return AlphaToNum(ui, first);
  std::string second(letters.substr(1, 1));
  return 26 * AlphaToNum(ui, first) + AlphaToNum(ui, second);
}

}  // namespace kroveld
