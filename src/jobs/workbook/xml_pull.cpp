// The buffer holds the unread rest of the part from pos_ on; it is refilled (and the read part
// dropped) only when a token does not end inside it, so it stays about one chunk long.
#include "jobs/workbook/xml_pull.h"

#include <charconv>
#include <cstring>

#include "jobs/workbook/text_encoding.h"

namespace kroveld {
namespace {

constexpr std::size_t kChunk = 1 << 16;
// A single tag or text run longer than this is not one a workbook part holds: the part is broken.
constexpr std::size_t kMaxToken = std::size_t{16} << 20;

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string_view LocalName(std::string_view name) {
  const std::size_t colon = name.rfind(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

// Appends an entity or character reference that starts at raw[i] ('&'); returns the index of its
// last character. One that is not understood is kept as it stands.
std::size_t AppendEntity(std::string_view raw, std::size_t i, std::string& out) {
  const std::size_t semi = raw.find(';', i + 1);
  if (semi == std::string_view::npos || semi - i > 12) {
    out += '&';
    return i;
  }
  const std::string_view name = raw.substr(i + 1, semi - i - 1);
  static constexpr struct {
    std::string_view name;
    char c;
  } kNamed[] = {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
  for (const auto& e : kNamed) {
    if (name == e.name) {
      out += e.c;
      return semi;
    }
  }
  if (name.size() > 1 && name[0] == '#') {
    const bool hex = name[1] == 'x';
    const std::string_view digits = name.substr(hex ? 2 : 1);
    std::uint32_t cp = 0;
    const auto res =
        std::from_chars(digits.data(), digits.data() + digits.size(), cp, hex ? 16 : 10);
    if (!digits.empty() && res.ec == std::errc() && res.ptr == digits.data() + digits.size() &&
        cp > 0 && cp <= 0x10FFFF) {
      AppendCodePoint(cp, out);
      return semi;
    }
  }
  out += '&';
  return i;
}

// Resolves references and makes line ends LF; in an attribute value every white-space character
// becomes a blank, as XML reads attributes.
void Decode(std::string_view raw, std::string& out, bool attribute) {
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const char c = raw[i];
    if (c == '&') {
      i = AppendEntity(raw, i, out);
    } else if (c == '\r') {
      if (i + 1 < raw.size() && raw[i + 1] == '\n') ++i;
      out += attribute ? ' ' : '\n';
    } else if (attribute && (c == '\n' || c == '\t')) {
      out += ' ';
    } else {
      out += c;
    }
  }
}

}  // namespace

XmlPull::XmlPull(Source source) : source_(std::move(source)) {
  buffer_.reserve(2 * kChunk);
}

bool XmlPull::Fill() {
  if (source_ended_) return false;
  if (buffer_.size() - pos_ > kMaxToken) return false;
  buffer_.erase(0, pos_);
  pos_ = 0;
  const std::size_t old = buffer_.size();
  buffer_.resize(old + kChunk);
  const long long got = source_(buffer_.data() + old, kChunk);
  buffer_.resize(old + static_cast<std::size_t>(got > 0 ? got : 0));
  if (got < 0) failed_ = true;
  if (got <= 0) source_ended_ = true;
  return got > 0;
}

bool XmlPull::Ensure(std::size_t n) {
  while (buffer_.size() - pos_ < n) {
    if (!Fill()) return false;
  }
  return true;
}

// Finds `what` at or after offset `at` from pos_, reading more as needed; `at` becomes its offset.
bool XmlPull::Find(std::size_t& at, std::string_view what) {
  for (;;) {
    const std::size_t hit = buffer_.find(what, pos_ + at);
    if (hit != std::string::npos) {
      at = hit - pos_;
      return true;
    }
    const std::size_t have = buffer_.size() - pos_;
    at = have >= what.size() ? have - what.size() + 1 : 0;
    if (!Fill()) return false;
  }
}

// Finds the '>' that closes the tag at pos_ (not one inside a quoted attribute value).
bool XmlPull::FindTagEnd(std::size_t& at) {
  char quote = 0;
  for (std::size_t i = pos_ + 1;; ++i) {
    if (i == buffer_.size()) {
      const std::size_t offset = i - pos_;
      if (!Fill()) return false;
      i = pos_ + offset;
    }
    const char c = buffer_[i];
    if (quote) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      at = i - pos_;
      return true;
    } else if (c == '<') {
      return false;
    }
  }
}

XmlPull::Event XmlPull::Fail() {
  failed_ = true;
  return Event::kError;
}

XmlPull::Event XmlPull::Next() {
  if (failed_) return Event::kError;
  if (pending_end_) {
    pending_end_ = false;
    return Event::kEnd;
  }
  if (done_) return Event::kDone;
  for (;;) {
    if (!Ensure(1)) {
      if (failed_ || !source_ended_ || open_count_ > 0 || !root_seen_) return Fail();
      done_ = true;
      return Event::kDone;
    }
    if (buffer_[pos_] == '<') {
      bool skipped = false;
      const Event e = ReadTag(skipped);
      if (!skipped) return e;
      continue;
    }
    std::size_t end = 0;
    const bool found = Find(end, "<");
    if (open_count_ == 0) {
      // Outside the root only white space may stand.
      const std::size_t stop = found ? end : buffer_.size() - pos_;
      for (std::size_t i = 0; i < stop; ++i) {
        if (!IsSpace(buffer_[pos_ + i])) return Fail();
      }
      pos_ += stop;
      continue;
    }
    if (!found) return Fail();
    text_.clear();
    Decode(std::string_view(buffer_).substr(pos_, end), text_, false);
    pos_ += end;
    depth_ = open_count_ - 1;
    return Event::kText;
  }
}

XmlPull::Event XmlPull::ReadTag(bool& skipped) {
  if (!Ensure(2)) return Fail();
  const char second = buffer_[pos_ + 1];
  std::size_t at = 2;
  if (second == '?') {
    if (!Find(at, "?>")) return Fail();
    pos_ += at + 2;
    skipped = true;
    return Event::kError;
  }
  if (second == '!') {
    if (Ensure(4) && buffer_.compare(pos_, 4, "<!--") == 0) {
      at = 4;
      if (!Find(at, "-->")) return Fail();
      pos_ += at + 3;
      skipped = true;
      return Event::kError;
    }
    if (!Ensure(9) || buffer_.compare(pos_, 9, "<![CDATA[") != 0 || open_count_ == 0) {
      return Fail();  // a document type declaration, or something that is not XML
    }
    at = 9;
    if (!Find(at, "]]>")) return Fail();
    text_.clear();
    const std::string_view raw = std::string_view(buffer_).substr(pos_ + 9, at - 9);
    for (std::size_t i = 0; i < raw.size(); ++i) {
      if (raw[i] == '\r') {
        if (i + 1 < raw.size() && raw[i + 1] == '\n') ++i;
        text_ += '\n';
      } else {
        text_ += raw[i];
      }
    }
    pos_ += at + 3;
    depth_ = open_count_ - 1;
    return Event::kText;
  }

  if (!FindTagEnd(at)) return Fail();
  std::string_view tag = std::string_view(buffer_).substr(pos_ + 1, at - 1);
  pos_ += at + 1;
  if (second == '/') {
    tag.remove_prefix(1);
    while (!tag.empty() && IsSpace(tag.back())) tag.remove_suffix(1);
    // The closing name must be the innermost open one.
    if (open_count_ == 0) return Fail();
    const std::size_t start = open_.rfind('\n', open_.size() - 2);
    const std::size_t begin = start == std::string::npos ? 0 : start + 1;
    if (std::string_view(open_).substr(begin, open_.size() - 1 - begin) != tag) return Fail();
    open_.resize(begin);
    --open_count_;
    depth_ = open_count_;
    name_.assign(LocalName(tag));
    return Event::kEnd;
  }

  const bool empty = !tag.empty() && tag.back() == '/';
  if (empty) tag.remove_suffix(1);
  std::size_t name_end = 0;
  while (name_end < tag.size() && !IsSpace(tag[name_end])) ++name_end;
  const std::string_view name = tag.substr(0, name_end);
  if (name.empty() || (open_count_ == 0 && root_seen_)) return Fail();
  if (!ReadAttributes(tag.substr(name_end))) return Fail();
  root_seen_ = true;
  name_.assign(LocalName(name));
  depth_ = open_count_;
  if (empty) {
    pending_end_ = true;
  } else {
    open_.append(name).push_back('\n');
    ++open_count_;
  }
  return Event::kStart;
}

bool XmlPull::ReadAttributes(std::string_view rest) {
  attr_text_.clear();
  attrs_.clear();
  std::size_t i = 0;
  for (;;) {
    while (i < rest.size() && IsSpace(rest[i])) ++i;
    if (i == rest.size()) return true;
    const std::size_t name_begin = i;
    while (i < rest.size() && rest[i] != '=' && !IsSpace(rest[i])) ++i;
    const std::string_view name = LocalName(rest.substr(name_begin, i - name_begin));
    while (i < rest.size() && IsSpace(rest[i])) ++i;
    if (name.empty() || i == rest.size() || rest[i] != '=') return false;
    ++i;
    while (i < rest.size() && IsSpace(rest[i])) ++i;
    if (i == rest.size() || (rest[i] != '"' && rest[i] != '\'')) return false;
    const std::size_t close = rest.find(rest[i], i + 1);
    if (close == std::string_view::npos) return false;
    Attr a;
    a.name = attr_text_.size();
    attr_text_.append(name);
    a.name_end = a.value = attr_text_.size();
    Decode(rest.substr(i + 1, close - i - 1), attr_text_, true);
    a.value_end = attr_text_.size();
    attrs_.push_back(a);
    i = close + 1;
  }
}

bool XmlPull::Attribute(std::string_view local, std::string_view& value) const {
  const std::string_view all = attr_text_;
  for (const Attr& a : attrs_) {
    if (all.substr(a.name, a.name_end - a.name) == local) {
      value = all.substr(a.value, a.value_end - a.value);
      return true;
    }
  }
  return false;
}

}  // namespace kroveld
