// FindNextLine on an open file, and the block-wise key search over a whole file.
#include "util/line_search.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include "util/byte_scan.h"
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
  // The size of the file when it is a regular file, else the given fallback.
  std::size_t SizeOr(std::size_t fallback) const {
    struct stat st {};
    if (::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode)) return fallback;
    return static_cast<std::size_t>(st.st_size);
  }
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

namespace {

// One block of the key search: [data, data + size), whose first `carry` bytes are the last bytes
// of the block before; data[0] is byte `base` of the file.
struct Block {
  const char* data = nullptr;
  std::size_t size = 0;
  std::size_t carry = 0;
  std::int64_t base = 0;
};

// Blocks read from a file into one buffer, the bytes carried moved to its front.
class FileBlocks {
 public:
  explicit FileBlocks(const std::string& path) : file_(path) {}
  bool ok() const { return file_.ok(); }
  bool Next(std::size_t keep, Block& block) {
    // Not zero-filled, and no bigger than a small file needs: a search of a short file (a recipe,
    // a one-page report) costs its bytes, not a 4 MB buffer.
    if (!buf_) {
      block_ = std::min(kBlockSize, file_.SizeOr(kBlockSize) + 1);
      buf_ = std::make_unique_for_overwrite<char[]>(block_ + keep);
    }
    std::size_t carry = 0;
    if (size_ > 0) {
      carry = std::min(keep, size_);
      std::memmove(buf_.get(), buf_.get() + size_ - carry, carry);
      base_ += static_cast<std::int64_t>(size_ - carry);
    }
    const std::size_t n = file_.Read(buf_.get() + carry, block_);
    if (n == 0) return false;
    size_ = carry + n;
    block = Block{buf_.get(), size_, carry, base_};
    return true;
  }

 private:
  RawFile file_;
  std::unique_ptr<char[]> buf_;
  std::size_t block_ = 0;  // bytes read at a time
  std::size_t size_ = 0;
  std::int64_t base_ = 0;
};

// Blocks of bytes already in memory: nothing is copied, the bytes carried are those before.
class MemoryBlocks {
 public:
  explicit MemoryBlocks(std::string_view bytes) : bytes_(bytes) {}
  bool Next(std::size_t keep, Block& block) {
    if (pos_ >= bytes_.size()) return false;
    const std::size_t carry = std::min(keep, pos_);
    const std::size_t n = std::min(kBlockSize, bytes_.size() - pos_);
    block = Block{bytes_.data() + pos_ - carry, carry + n, carry,
                  static_cast<std::int64_t>(pos_ - carry)};
    pos_ += n;
    return true;
  }

 private:
  std::string_view bytes_;
  std::size_t pos_ = 0;
};

// The search over the blocks of `source`. `afterBlock` is told how far the search has come.
template <typename Source>
std::vector<KeyLine> SearchKeys(Source& source, std::span<const std::string_view> keys,
                                const std::function<void(std::int64_t)>& afterBlock) {
  std::vector<KeyLine> found(keys.size());
  // A key holding a line end can never lie inside one line: it is not searched for.
  std::vector<bool> pending(keys.size());
  std::size_t left = 0;
  std::size_t longest = 0;
  for (std::size_t k = 0; k < keys.size(); ++k) {
    if (keys[k].find_first_of("\r\n") != std::string_view::npos) continue;
    pending[k] = true;
    ++left;
    longest = std::max(longest, keys[k].size());
  }
  if (left == 0) return found;

  // Each block is searched together with the last longest - 1 bytes of the block before, so a
  // key that straddles two blocks is still found; as a key holds no line end, those carried bytes
  // hold no line end after the start of such a match. Line ends are counted only up to the last
  // match needed, and the search ends as soon as every key is found.
  const std::size_t keep = longest > 0 ? longest - 1 : 0;
  std::vector<std::pair<std::size_t, std::size_t>> hits;  // (position in the block, key)
  std::int64_t ends = 0;
  std::int64_t lineStart = 0;
  bool prevCr = false;
  Block block;
  while (source.Next(keep, block)) {
    const char* const b = block.data;
    const std::size_t len = block.size;
    hits.clear();
    for (std::size_t k = 0; k < keys.size(); ++k) {
      if (!pending[k]) continue;
      // An empty key is found in the first line that is not empty.
      const char* hit = keys[k].empty() ? scan::FindNotCrLf(b + block.carry, b + len)
                                        : scan::FindKey(b, len, keys[k]);
      if (hit != nullptr && hit != b + len) hits.emplace_back(hit - b, k);
    }
    std::sort(hits.begin(), hits.end());
    const char* counted = b + block.carry;
    const char* start = nullptr;
    auto countTo = [&](const char* to) {
      if (to <= counted) return;
      ends += scan::CountLineEnds(counted, to, prevCr, start);
      if (start != nullptr) lineStart = block.base + (start - b);
      start = nullptr;
      counted = to;
    };
    for (const auto& [at, k] : hits) {
      countTo(b + at);
      found[k] = KeyLine{ends + 1, lineStart};
      pending[k] = false;
      --left;
    }
    if (left == 0) return found;
    countTo(b + len);
    // The bytes carried into the next block are looked at again; those before them are done with.
    if (afterBlock) afterBlock(block.base + static_cast<std::int64_t>(len - std::min(keep, len)));
  }
  return found;
}

}  // namespace

std::vector<KeyLine> FindFirstLinesContaining(const std::string& path,
                                              std::span<const std::string_view> keys,
                                              const std::function<void()>& afterBlock) {
  FileBlocks source(path);
  if (!source.ok()) return std::vector<KeyLine>(keys.size());
  std::function<void(std::int64_t)> told;
  if (afterBlock) told = [&afterBlock](std::int64_t) { afterBlock(); };
  return SearchKeys(source, keys, told);
}

std::vector<KeyLine> FindFirstLinesContaining(std::string_view bytes,
                                              std::span<const std::string_view> keys,
                                              const std::function<void(std::int64_t)>& afterBlock) {
  MemoryBlocks source(bytes);
  return SearchKeys(source, keys, afterBlock);
}

std::int64_t StartOfLineBefore(std::string_view bytes, std::int64_t offset, std::int64_t count) {
  if (offset < 0 || static_cast<std::uint64_t>(offset) > bytes.size()) return -1;
  std::size_t pos = static_cast<std::size_t>(offset);
  for (std::int64_t i = 0; i < count; ++i) {
    if (pos == 0) return -1;  // the text begins first
    // The line end before `pos`: CR LF, LF or a lone CR.
    std::size_t end = pos - 1;
    if (bytes[end] == '\n' && end > 0 && bytes[end - 1] == '\r') --end;
    // The line runs back to the line end before it, or to the start of the text.
    while (end > 0 && bytes[end - 1] != '\n' && bytes[end - 1] != '\r') --end;
    pos = end;
  }
  return static_cast<std::int64_t>(pos);
}

std::int64_t FindFirstLineContaining(const std::string& path, std::string_view key) {
  return FindFirstLinesContaining(path, std::span<const std::string_view>(&key, 1))[0].line;
}

}  // namespace kroveld
