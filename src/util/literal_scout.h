// Tells, line after line, whether a line holds a given literal. Lines that lie in order inside one
// block of memory (a mapped report) are answered from a search that runs ahead through the block:
// a line that ends before the next occurrence cannot hold it, so most lines cost two comparisons
// instead of a search each. Any other line (a copy, an empty line past the end) is searched by
// itself. Either way the answer is that of a search in the line alone.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace kroveld {

class LiteralScout {
 public:
  // What the scout looks for: the literal, or any one of its bytes.
  enum class Kind { Literal, AnyByte };

  // `block`: the memory the lines lie in (empty: every line is searched by itself). `literal`
  // empty: every line holds it.
  void Reset(std::string_view block, std::string literal, Kind kind = Kind::Literal);
  // Says that `shorter`'s literal is part of this one's: a line it turns away cannot hold this
  // literal either, and only the lines it lets through are searched (each by itself). So the two
  // literals cost one search ahead. `shorter` must outlive this scout.
  void Within(LiteralScout* shorter) { within_ = shorter; }

  // Whether `line` holds the literal.
  bool Holds(std::string_view line) {
    if (within_ != nullptr) return within_->Holds(line) && Find(line.data(), line.size());
    // The usual case inline: a line that lies, whole, between where the last search started and
    // the occurrence it found (or the end of what it looked at) is answered without a search.
    const std::size_t k = kind_ == Kind::Literal ? literal_.size() : 1;
    const char* const b = line.data();
    const char* const e = b + line.size();
    const std::less<const char*> before;  // pointers into unrelated memory compare safely
    if (k != 0 && line.size() >= k && from_ != nullptr && !before(b, from_) && !before(end_, e)) {
      if (found_ == nullptr) {
        if (!before(reach_, e)) return false;
      } else if (!before(found_, b)) {
        return !before(e, found_ + k);
      }
    }
    return Search(line);
  }

  const std::string& Literal() const { return literal_; }
  Kind Looks() const { return kind_; }

 private:
  // How far one search runs ahead at most, so that a rare literal in a short table of a large
  // report does not send the search through the whole report.
  static constexpr std::size_t kReach = std::size_t{64} << 10;

  bool Search(std::string_view line);
  bool Find(const char* s, std::size_t n) const;
  const char* FindIn(const char* s, std::size_t n) const;

  std::string literal_;
  Kind kind_ = Kind::Literal;
  LiteralScout* within_ = nullptr;
  const char* begin_ = nullptr;  // the block
  const char* end_ = nullptr;
  const char* from_ = nullptr;   // the last search started here...
  const char* reach_ = nullptr;  // ...and looked at the bytes before this
  const char* found_ = nullptr;  // the first occurrence from from_ on, null when none before reach_
};

}  // namespace kroveld
