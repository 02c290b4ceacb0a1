// FindNextLine on an open file, and the block-wise key search over a whole file.
#include "util/line_search.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "util/files.h"

namespace kroveld {

namespace {

constexpr std::int64_t kText3Offset = 10000000;
constexpr std::size_t kBlockSize = 4u << 20;

// InStr's answer: an empty line contains nothing, not even the empty text; any other line
// contains the empty text.
inline bool Contains(std::string_view hay, std::string_view needle) {
  return !hay.empty() && hay.find(needle) != std::string_view::npos;
}

// Counts line ends (CR LF, LF, lone CR) in [s, e). `prev_cr` says the byte before s was a CR;
// it is updated to say the same of the byte before e.
std::int64_t CountLineEnds(const char* s, const char* e, bool& prev_cr) {
  if (s >= e) return 0;
  if (prev_cr && *s == '\n') ++s;  // second half of a CR LF already counted
  std::int64_t count = 0;
  for (const char* p = s; p < e;) {
    const void* f = std::memchr(p, '\n', static_cast<std::size_t>(e - p));
    if (f == nullptr) break;
    ++count;
    p = static_cast<const char*>(f) + 1;
  }
  for (const char* p = s; p < e;) {
    const void* f = std::memchr(p, '\r', static_cast<std::size_t>(e - p));
    if (f == nullptr) break;
    const char* cr = static_cast<const char*>(f);
    if (cr + 1 >= e || cr[1] != '\n') ++count;  // a CR LF pair is counted by its LF
    p = cr + 1;
  }
  prev_cr = e[-1] == '\r';
  return count;
}

class RawFile {
 public:
  explicit RawFile(const std::string& path) {
    fd_ = ::open(NativePath(path).c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ >= 0) ::posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
  }
  ~RawFile() {
    if (fd_ >= 0) ::close(fd_);
  }
  bool ok() const { return fd_ >= 0; }
  // Fills up to n bytes; returns the count (0 at end of file or on error).
  std::size_t Read(char* p, std::size_t n) {
    std::size_t got = 0;
    while (got < n) {
      const ssize_t r = ::read(fd_, p + got, n - got);
      if (r < 0 && errno == EINTR) continue;
      if (r <= 0) break;
      got += static_cast<std::size_t>(r);
    }
    return got;
  }

 private:
  int fd_ = -1;
};

std::int64_t FirstNonEmptyLine(RawFile& file, std::vector<char>& buf) {
  std::int64_t ends = 0;
  bool prev_cr = false;
  for (;;) {
    const std::size_t n = file.Read(buf.data(), buf.size());
    if (n == 0) return 0;
    for (std::size_t i = 0; i < n; ++i) {
      const char c = buf[i];
      if (c == '\n') {
        if (!prev_cr) ++ends;
        prev_cr = false;
      } else if (c == '\r') {
        ++ends;
        prev_cr = true;
      } else {
        return ends + 1;
      }
    }
  }
}

}  // namespace

std::int64_t FindNextLine(TextFile& file, std::string_view text1, std::string_view text2,
                          std::string_view text3, std::string_view exclusion, int startPos,
                          int compareLength) {
  std::string_view line;
  std::int64_t n = 0;
  while (file.ReadLine(line)) {
    ++n;
    std::string_view part = line;
    if (compareLength > 0) {
      const std::size_t from = startPos > 1 ? static_cast<std::size_t>(startPos - 1) : 0;
      part = from < line.size() ? line.substr(from, static_cast<std::size_t>(compareLength))
                                : std::string_view();
    }
    if (!exclusion.empty() && Contains(part, exclusion)) continue;
    if (Contains(part, text1)) return n;
    if (!text2.empty() && Contains(part, text2)) return -n;
    if (!text3.empty() && Contains(part, text3)) return n + kText3Offset;
  }
  return 0;
}

std::int64_t FindFirstLineContaining(const std::string& path, std::string_view key) {
  RawFile file(path);
  if (!file.ok()) return 0;
  // A key holding a line end can never lie inside one line.
  if (key.find_first_of("\r\n") != std::string_view::npos) return 0;
  std::vector<char> buf(kBlockSize + key.size());
  if (key.empty()) return FirstNonEmptyLine(file, buf);

  // Each block is searched together with the last key.size() - 1 bytes of the block before, so
  // a key that straddles two reads is still found. The key has no line end, so a match lies
  // inside one line; lines are counted only up to the match.
  const std::size_t keep = key.size() - 1;
  std::size_t carry = 0;
  std::int64_t ends = 0;
  bool prev_cr = false;
  for (;;) {
    const std::size_t n = file.Read(buf.data() + carry, kBlockSize);
    if (n == 0) return 0;
    const std::size_t len = carry + n;
    const void* hit = ::memmem(buf.data(), len, key.data(), key.size());
    if (hit != nullptr) {
      const std::size_t m = static_cast<std::size_t>(static_cast<const char*>(hit) - buf.data());
      if (m > carry) ends += CountLineEnds(buf.data() + carry, buf.data() + m, prev_cr);
      return ends + 1;
    }
    ends += CountLineEnds(buf.data() + carry, buf.data() + len, prev_cr);
    const std::size_t next = std::min(keep, len);
    std::memmove(buf.data(), buf.data() + len - next, next);
    carry = next;
  }
}

}  // namespace kroveld
