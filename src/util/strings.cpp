// Small string helpers: tab expansion with the printers' quirk, trimming, ASCII case mapping.
#include "util/strings.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <vector>

namespace kroveld {

void ExpandTabs(std::string_view text, int tabSize, std::string& out) {
  out.clear();
  if (text.empty() || tabSize < 1) return;
  // Fast path: nothing to expand.
  if (std::memchr(text.data(), '\t', text.size()) == nullptr) {
    out.assign(text);
    return;
  }
  out.reserve(text.size() + 16);
  long long stop = 1;
  for (char c : text) {
    if (c != '\t') {
      out.push_back(c);
      continue;
    }
    stop += tabSize;
    const auto len = static_cast<long long>(out.size());
    while (len >= stop) stop += tabSize;
    const long long blanks = stop - len - 1;
    if (blanks > 0) out.append(static_cast<std::size_t>(blanks), ' ');
  }
}

std::string ExpandTabs(std::string_view text, int tabSize) {
  std::string out;
  ExpandTabs(text, tabSize, out);
  return out;
}

void ReplaceNonBreakingSpaces(std::string& text) {
  std::replace(text.begin(), text.end(), static_cast<char>(160), ' ');
}

void AppendRepeated(std::string& out, std::string_view text, int count) {
  if (count <= 0 || text.empty()) return;
  out.reserve(out.size() + text.size() * static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) out.append(text);
}

std::string_view TrimLeft(std::string_view s) {
  std::size_t i = 0;
  while (i < s.size() && s[i] == ' ') ++i;
  return s.substr(i);
}

std::string_view TrimRight(std::string_view s) {
  std::size_t n = s.size();
  while (n > 0 && s[n - 1] == ' ') --n;
  return s.substr(0, n);
}

std::string_view Trim(std::string_view s) {
  return TrimRight(TrimLeft(s));
}

namespace {
inline char Up(char c) {
  return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}
inline char Low(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}
}  // namespace

std::string UpperAscii(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = Up(c);
  return r;
}

std::string LowerAscii(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = Low(c);
  return r;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (Up(a[i]) != Up(b[i])) return false;
  }
  return true;
}

std::size_t FindNoCase(std::string_view hay, std::string_view needle) {
  if (needle.empty()) return 0;
  if (needle.size() > hay.size()) return std::string_view::npos;
  const std::size_t last = hay.size() - needle.size();
  for (std::size_t i = 0; i <= last; ++i) {
    if (Up(hay[i]) != Up(needle[0])) continue;
    if (EqualsNoCase(hay.substr(i, needle.size()), needle)) return i;
  }
  return std::string_view::npos;
}

std::string ToText(long long value) {
  std::string s;
  AppendInt(s, value);
  return s;
}

void AppendInt(std::string& out, long long value) {
  char buf[24];
  auto res = std::to_chars(buf, buf + sizeof buf, value);
  out.append(buf, res.ptr);
}

std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

}  // namespace kroveld
